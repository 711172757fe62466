// The offsets of a byte and of its pairs, and the next of a byte, beside plain loops. Texts lie
// right before memory that must not be read.
#include "sdk/xml/ByteScan.h"

#include <algorithm>
#include <cstddef>
#include <random>
#include <string>
#include <string_view>
#include <vector>

#include <gtest/gtest.h>

#include "support/GuardedPage.h"

namespace {

using dax::visitBytes;
using dax::visitPairs;
using thermika_test::GuardedPage;

using Places = std::vector<std::size_t>;

constexpr char kBytes[] = {'<', '-', '\xFF'};  // the last is negative where characters are signed

constexpr std::size_t kBorderLengths[] = {63, 64, 65, 127, 128, 129};

Places bytesVisited(std::string_view text, char byte) {
    Places places;
    EXPECT_TRUE(visitBytes(text, byte, [&](std::size_t at) {
        places.push_back(at);
        return true;
    }));
    return places;
}

Places pairsVisited(std::string_view text, char first, char second) {
    Places places;
    EXPECT_TRUE(visitPairs(text, first, second, [&](std::size_t at) {
        places.push_back(at);
        return true;
    }));
    return places;
}

Places expected(std::string_view text, std::string_view run) {
    Places places;
    for (std::size_t at = 0; at < text.size(); ++at)
        if (text.substr(at, run.size()) == run) places.push_back(at);
    return places;
}

bool agrees(GuardedPage& page, const std::string& text) {
    const std::string_view guarded = page.put(text);
    bool isSame = true;
    for (const char first : kBytes) {
        isSame = isSame && bytesVisited(guarded, first) == expected(text, std::string(1, first));
        for (const char second : kBytes)
            isSame = isSame && pairsVisited(guarded, first, second) ==
                                   expected(text, std::string{first, second});
    }
    EXPECT_TRUE(isSame) << testing::PrintToString(text);
    return isSame;
}

TEST(ByteScan, findsTheSamePlacesAsAPlainLoopForEveryTextLength) {
    GuardedPage page;
    std::mt19937 random(20240612);
    for (std::size_t length = 0; length <= 300; ++length) {
        // From texts that are nearly all of the bytes to those that hardly have one.
        for (const std::size_t others : {1U, 5U, 40U, 400U}) {
            std::string text;
            while (text.size() < length) {
                const std::size_t pick = random() % (3 + others);
                text += pick < 3 ? kBytes[pick] : static_cast<char>(random() % 256);
            }
            ASSERT_TRUE(agrees(page, text));
        }
    }
}

TEST(ByteScan, endsAtThePlaceWhoseVisitorSaysSo) {
    for (const std::size_t length : kBorderLengths) {
        const std::string text(length, '<');
        for (std::size_t last = 0; last < length; ++last) {
            std::size_t visits = 0;
            EXPECT_FALSE(visitBytes(text, '<', [&](std::size_t at) {
                ++visits;
                return at != last;
            }));
            EXPECT_EQ(visits, last + 1);
        }
    }
}

TEST(ByteScan, letsPairsOverlap) {
    EXPECT_EQ(pairsVisited("a----b--", '-', '-'), (Places{1, 2, 3, 6}));
}

TEST(ByteScan, findsEveryPlaceInATextOfNothingElse) {
    GuardedPage page;
    for (std::size_t length = 0; length <= 300; ++length)
        ASSERT_TRUE(agrees(page, std::string(length, '<')));
}

TEST(ByteScan, findsOneByteOrPairWhereverItStands) {
    GuardedPage page;
    for (const std::size_t length : kBorderLengths) {
        for (std::size_t at = 0; at < length; ++at) {
            std::string text(length, 'x');
            text[at] = '<';
            ASSERT_TRUE(agrees(page, text));
            if (at + 1 == length) continue;
            text[at + 1] = '-';
            ASSERT_TRUE(agrees(page, text));
        }
    }
}

TEST(ByteScan, takesNoByteBehindTheTextForTheSecondOfAPair) {
    for (const std::size_t length : kBorderLengths) {
        const std::string text = std::string(length - 1, 'x') + "<<";
        const std::string_view cut = std::string_view(text).substr(0, length);
        EXPECT_EQ(bytesVisited(cut, '<'), (Places{length - 1}));
        EXPECT_EQ(pairsVisited(cut, '<', '<'), Places());
    }
}

TEST(ByteScan, findsTheNextByteOfEveryRange) {
    std::mt19937 random(20240616);
    for (const char value : {'\0', '\1', '\x7F', '\x80', '\xFF'}) {
        const auto byte = static_cast<unsigned char>(value);
        for (int round = 0; round < 50; ++round) {
            std::vector<unsigned char> bytes(random() % 60);
            for (unsigned char& each : bytes)
                each = random() % 20 == 0 ? byte : static_cast<unsigned char>(random());
            const std::size_t count = bytes.size();
            // Exactly what may be read, and nothing behind the range counts.
            bytes.resize(count + dax::kScanStep, byte);
            for (std::size_t from = 0; from <= count; ++from) {
                std::size_t expected = from;
                while (expected < count && bytes[expected] != byte) ++expected;
                const std::size_t found = dax::nextByte(bytes.data(), byte, from, count);
                ASSERT_EQ(std::min(found, count), expected);
            }
        }
    }
}

}  // namespace
