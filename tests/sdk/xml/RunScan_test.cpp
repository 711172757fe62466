// The visit to the places of a byte and of its pairs, beside a plain loop. Texts lie right before
// memory that must not be read.
#include "sdk/xml/RunScan.h"

#include <cstddef>
#include <random>
#include <string>
#include <string_view>
#include <vector>

#include <gtest/gtest.h>

#include "support/GuardedPage.h"

namespace {

using dax::Run;
using dax::visitRuns;
using thermika_test::GuardedPage;

using Places = std::vector<std::size_t>;

constexpr std::size_t kBorderLengths[] = {63, 64, 65, 127, 128, 129};

/// Every place that is visited.
template <char kByte, Run kRun>
Places visited(std::string_view text) {
    Places places;
    EXPECT_TRUE((visitRuns<kByte, kRun>(text, [&](std::size_t at) {
        places.push_back(at);
        return true;
    })));
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
    const bool isSame = visited<'<', Run::kOne>(guarded) == expected(text, "<") &&
                        visited<'<', Run::kTwo>(guarded) == expected(text, "<<") &&
                        visited<'-', Run::kOne>(guarded) == expected(text, "-") &&
                        visited<'-', Run::kTwo>(guarded) == expected(text, "--") &&
                        // A byte whose value is negative where characters are signed.
                        visited<'\xFF', Run::kOne>(guarded) == expected(text, "\xFF") &&
                        visited<'\xFF', Run::kTwo>(guarded) == expected(text, "\xFF\xFF");
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

TEST(RunScan, endsAtThePlaceWhoseVisitorSaysSo) {
    for (const std::size_t length : kBorderLengths) {
        const std::string text(length, '<');
        for (std::size_t last = 0; last < length; ++last) {
            std::size_t visits = 0;
            EXPECT_FALSE((visitRuns<'<', Run::kOne>(text, [&](std::size_t at) {
                ++visits;
                return at != last;
            })));
            EXPECT_EQ(visits, last + 1);
        }
    }
}

TEST(RunScan, letsPairsOverlap) {
    EXPECT_EQ((visited<'-', Run::kTwo>("a----b--")), (Places{1, 2, 3, 6}));
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
        EXPECT_EQ((visited<'<', Run::kOne>(cut)), (Places{length - 1}));
        EXPECT_EQ((visited<'<', Run::kTwo>(cut)), Places());
    }
}

}  // namespace
