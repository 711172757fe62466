// Composing text in a buffer of fixed size.
#include "sdk/base/BoundedText.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <limits>
#include <memory>
#include <string>

namespace {

using dax::BoundedText;

TEST(BoundedText, isEmptyAtFirst) {
    char out[] = "????";
    BoundedText text(out, sizeof out);
    EXPECT_STREQ(out, "");
}

TEST(BoundedText, addsPiecesAndNumbersInTurn) {
    char out[64];
    BoundedText(out, sizeof out).append("a").append(-20).append("").append("bc").append(0);
    EXPECT_STREQ(out, "a-20bc0");
}

TEST(BoundedText, addsSingleCharacters) {
    char out[4] = "???";
    BoundedText text(out, sizeof out);
    text.append('a').append('b');
    EXPECT_STREQ(out, "ab");
    text.append('c').append('d');
    EXPECT_STREQ(out, "abc");
}

TEST(BoundedText, writesEveryInt) {
    char out[64];
    BoundedText(out, sizeof out)
        .append(std::numeric_limits<int>::min())
        .append(" ")
        .append(std::numeric_limits<int>::max());
    EXPECT_STREQ(out, "-2147483648 2147483647");
}

TEST(BoundedText, cutsAtEveryCapacity) {
    const std::string full = "first;-12;last";
    for (std::size_t bytes = 1; bytes <= full.size() + 2; ++bytes) {
        const std::unique_ptr<char[]> exact(new char[bytes]);  // watched by sanitizers
        BoundedText(exact.get(), bytes).append("first;").append(-12).append(";").append("last");
        EXPECT_EQ(exact.get(), full.substr(0, bytes - 1));
        BoundedText(exact.get(), bytes).append(std::numeric_limits<int>::min());
        EXPECT_EQ(exact.get(), std::string("-2147483648").substr(0, bytes - 1));
    }
}

TEST(BoundedText, writesNothingWithoutRoom) {
    char out[] = "?";
    BoundedText(out, 0).append("text").append(1);
    EXPECT_STREQ(out, "?");
    BoundedText(nullptr, 0).append("text");
}

}  // namespace
