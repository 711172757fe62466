// The walk over the places of a byte and of its pairs, beside a plain loop. Texts lie right before
// memory that must not be read.
#include "sdk/RunScan.h"

#include <cstddef>
#include <random>
#include <string>
#include <string_view>
#include <vector>

#include <gtest/gtest.h>

#include "support/GuardedPage.h"

namespace {

using dax::Run;
using dax::RunScan;
using thermika_test::GuardedPage;

using Places = std::vector<std::size_t>;

constexpr std::size_t kBorderLengths[] = {63, 64, 65, 127, 128, 129};

/// Every place that the walk hands out, and what it says behind the last of them, twice.
template <char kByte, Run kRun>
Places walked(std::string_view text) {
    RunScan<kByte, kRun> scan(text);
    Places places;
    std::size_t at = scan.next();
    for (; at < text.size() && places.size() < text.size(); at = scan.next()) places.push_back(at);
    places.push_back(at);
    places.push_back(scan.next());
    return places;
}

Places expected(std::string_view text, std::string_view run) {
    Places places;
    for (std::size_t at = 0; at < text.size(); ++at)
        if (text.substr(at, run.size()) == run) places.push_back(at);
    places.insert(places.end(), 2, text.size());
    return places;
}

bool agrees(GuardedPage& page, const std::string& text) {
    const std::string_view guarded = page.put(text);
    const bool isSame = walked<'<', Run::kOne>(guarded) == expected(text, "<") &&
                        walked<'<', Run::kTwo>(guarded) == expected(text, "<<") &&
                        walked<'-', Run::kOne>(guarded) == expected(text, "-") &&
                        walked<'-', Run::kTwo>(guarded) == expected(text, "--") &&
                        // A byte whose value is negative where characters are signed.
                        walked<'\xFF', Run::kOne>(guarded) == expected(text, "\xFF") &&
                        walked<'\xFF', Run::kTwo>(guarded) == expected(text, "\xFF\xFF");
    EXPECT_TRUE(isSame) << testing::PrintToString(text);
    return isSame;
}

TEST(RunScan, findsTheSamePlacesAsAPlainLoopForEveryTextLength) {
    GuardedPage page;
    std::mt19937 random(20240612);
    for (std::size_t length = 0; length <= 300; ++length) {
        // From texts that are nearly all of the bytes to those that hardly have one.
        for (const std::size_t others : {1U, 5U, 40U, 400U}) {
            std::string text;
            while (text.size() < length) {
                const std::size_t pick = random() % (3 + others);
                text += pick < 3 ? "<-\xFF"[pick] : static_cast<char>(random() % 256);
            }
            ASSERT_TRUE(agrees(page, text));
        }
    }
}

TEST(RunScan, letsPairsOverlap) {
    EXPECT_EQ((walked<'-', Run::kTwo>("a----b--")), (Places{1, 2, 3, 6, 8, 8}));
}

TEST(RunScan, findsEveryPlaceInATextOfNothingElse) {
    GuardedPage page;
    for (std::size_t length = 0; length <= 300; ++length)
        ASSERT_TRUE(agrees(page, std::string(length, '<')));
}

TEST(RunScan, findsOneByteOrPairWhereverItStands) {
    GuardedPage page;
    for (const std::size_t length : kBorderLengths) {
        for (std::size_t at = 0; at < length; ++at) {
            std::string text(length, 'x');
            text[at] = '<';
            ASSERT_TRUE(agrees(page, text));
            if (at + 1 == length) continue;
            text[at + 1] = '<';
            ASSERT_TRUE(agrees(page, text));
        }
    }
}

TEST(RunScan, takesNoByteBehindTheTextForTheSecondOfAPair) {
    for (const std::size_t length : kBorderLengths) {
        const std::string text = std::string(length - 1, 'x') + "<<";
        const std::string_view cut = std::string_view(text).substr(0, length);
        EXPECT_EQ((walked<'<', Run::kOne>(cut)), (Places{length - 1, length, length}));
        EXPECT_EQ((walked<'<', Run::kTwo>(cut)), (Places{length, length}));
    }
}

}  // namespace
