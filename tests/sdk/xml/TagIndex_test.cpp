// The index of a text's tags beside a plain search. Texts lie right before memory that must not be
// read.
#include "sdk/xml/TagIndex.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <random>
#include <string>
#include <string_view>
#include <vector>

#include <gtest/gtest.h>

#include "support/GuardedPage.h"
#include "support/TagText.h"

namespace {

using dax::kNoTag;
using dax::TagIndex;
using dax::TagKind;
using thermika_test::GuardedPage;
using thermika_test::tagOf;

using Places = std::vector<std::size_t>;
using TagNames = std::vector<std::string>;

constexpr TagKind kKinds[] = {TagKind::kOpening, TagKind::kClosing};
constexpr std::size_t kLongestRange = 40;
constexpr std::size_t kLongestName = 20;
constexpr std::size_t kColliding = 6;  // names with one fingerprint

Places placesOfTags(const std::string& text) {
    Places places;
    for (std::size_t at = 0; at < text.size(); ++at)
        if (text[at] == '<') places.push_back(at);
    return places;
}

std::string searchText(const std::string& text, const std::string& tag) {
    return "text " + testing::PrintToString(text) + ", tag " + testing::PrintToString(tag);
}

/// Whether the index knows the places of a text's tags and, from each place, the next of them.
bool knowsPlaces(const TagIndex& index, const std::string& text, const Places& places) {
    bool isSame = index.count() == places.size();
    for (std::size_t tag = 0; isSame && tag < places.size(); ++tag)
        isSame = index.offsetOf(tag) == places[tag];
    std::size_t expected = 0;
    for (std::size_t offset = 0; isSame && offset <= text.size() + 1; ++offset) {
        while (expected < places.size() && places[expected] < offset) ++expected;
        isSame = index.firstAt(offset, 0) == expected &&
                 index.firstAt(offset, expected) == expected &&
                 index.firstAt(offset, places.size()) == places.size();
    }
    EXPECT_TRUE(isSame) << testing::PrintToString(text);
    return isSame;
}

/// Whether the index finds the tag in every range of at most kLongestRange tags and in the whole.
bool findsTag(const TagIndex& index, const std::string& text, const std::string& name, TagKind kind,
              const Places& places) {
    const std::string tag = tagOf(name, kind);
    std::vector<bool> isOne;
    for (const std::size_t place : places)
        isOne.push_back(text.compare(place, tag.size(), tag) == 0);
    bool isSame = true;
    for (std::size_t at = 0; at < places.size(); ++at)
        isSame = isSame && index.isAt(name, kind, at) == isOne[at];
    for (std::size_t from = 0; isSame && from <= places.size(); ++from) {
        std::size_t expected = kNoTag;
        const std::size_t last = std::min(places.size(), from + kLongestRange);
        for (std::size_t to = from; isSame && to <= last; ++to) {
            if (expected == kNoTag && to > from && isOne[to - 1]) expected = to - 1;
            isSame = index.find(name, kind, from, to) == expected;
        }
        const auto next =
            std::find(isOne.begin() + static_cast<std::ptrdiff_t>(from), isOne.end(), true);
        expected = next == isOne.end() ? kNoTag : static_cast<std::size_t>(next - isOne.begin());
        isSame = isSame && index.find(name, kind, from, places.size()) == expected;
    }
    EXPECT_TRUE(isSame) << searchText(text, tag);
    return isSame;
}

bool agrees(GuardedPage& page, const std::string& text, const TagNames& names) {
    const std::string_view guarded = page.put(text);
    const TagIndex index(guarded);
    const Places places = placesOfTags(text);
    bool isSame = knowsPlaces(index, text, places);
    for (const std::string& name : names)
        for (const TagKind kind : kKinds)
            isSame = isSame && findsTag(index, text, name, kind, places);
    return isSame;
}

std::string randomText(std::mt19937& random, std::string_view alphabet, std::size_t length) {
    std::string text;
    while (text.size() < length) text += alphabet[random() % alphabet.size()];
    return text;
}

/// Tags of the names, whole, changed in one place or cut, with little or nothing between them.
std::string randomTags(std::mt19937& random, const TagNames& names, std::size_t tags) {
    std::string text;
    for (std::size_t i = 0; i < tags; ++i) {
        std::string tag = tagOf(names[random() % names.size()], kKinds[random() % 2]);
        if (random() % 4 == 0) tag[random() % tag.size()] = "<>/ab"[random() % 5];
        if (random() % 8 == 0) tag.resize(random() % tag.size());
        text += tag + std::string(random() % 3, '\n');
    }
    return text;
}

TEST(TagIndex, agreesWithAPlainSearchInTextsOfFewCharacters) {
    GuardedPage page;
    std::mt19937 random(20240613);
    for (std::size_t length = 0; length <= kLongestName; ++length) {
        for (int round = 0; round < 40; ++round) {
            const TagNames names = {randomText(random, "ab", length),
                                    randomText(random, "a<>/", length)};
            ASSERT_TRUE(agrees(page, randomText(random, "<>/ab", random() % 150), names));
            ASSERT_TRUE(agrees(page, randomTags(random, names, random() % 50), names));
        }
    }
}

TEST(TagIndex, tellsNamesWithTheSameFirstBytesApart) {
    GuardedPage page;
    std::mt19937 random(20240614);
    const TagNames names = {
        "Temperat",    "Temperatu",     "Temperature",           "Temperaturf",
        "Temperat>",   "Temperat/",     "TemperatureRange",      "TemperatureRangf",
        "Temperatu<",  "TemperatureRa", "TemperatureRangeOfABC", "Tempera",
        "Tempera>ure", "Temper",        "/Temperature"};
    for (int round = 0; round < 40; ++round)
        ASSERT_TRUE(agrees(page, randomTags(random, names, random() % 100), names));
}

/// Names of different texts whose opening or closing tags have the same fingerprint.
TagNames collidingNames(TagKind kind, unsigned int fingerprint) {
    TagNames names;
    for (int number = 0; names.size() < kColliding && number < 100000; ++number) {
        std::string name = "n" + std::to_string(number);
        if (dax::tagFingerprint(name, kind) == fingerprint) names.push_back(std::move(name));
    }
    return names;
}

TEST(TagIndex, tellsNamesWithTheSameFingerprintApart) {
    GuardedPage page;
    std::mt19937 random(20240615);
    for (const TagKind kind : kKinds) {
        // Zero is also what stands behind the last fingerprint.
        for (const unsigned int fingerprint : {0U, 1U, 127U, 128U, 255U}) {
            const TagNames names = collidingNames(kind, fingerprint);
            ASSERT_EQ(names.size(), kColliding);
            for (int round = 0; round < 10; ++round)
                ASSERT_TRUE(agrees(page, randomTags(random, names, 1 + random() % 60), names));
            const std::string one = tagOf(names[0], kind);
            const TagIndex index(one);
            EXPECT_EQ(index.find(names[0], kind, 0, 1), 0U);
            EXPECT_EQ(index.find(names[0], kind, 1, 1), kNoTag);
            EXPECT_EQ(index.find(names[1], kind, 0, 1), kNoTag);
        }
    }
}

TEST(TagIndex, spreadsNamesOverAllFingerprints) {
    // Otherwise every tag would be compared: correct, but slow.
    std::array<int, 256> uses{};
    for (int number = 0; number < 25600; ++number)
        ++uses[dax::tagFingerprint("n" + std::to_string(number), TagKind::kOpening)];
    EXPECT_GT(*std::min_element(uses.begin(), uses.end()), 0);
    EXPECT_LT(*std::max_element(uses.begin(), uses.end()), 1000);
}

TEST(TagIndex, readsNothingBehindATextThatEndsAnywhereInATag) {
    GuardedPage page;
    for (std::size_t length = 0; length <= kLongestName; ++length) {
        const std::string name = std::string("TemperatureRangeOfOptics").substr(0, length);
        for (const TagKind kind : kKinds) {
            const std::string tag = tagOf(name, kind);
            for (std::size_t end = 0; end <= tag.size(); ++end) {
                ASSERT_TRUE(agrees(page, tag.substr(0, end), {name}));
                ASSERT_TRUE(agrees(page, tag + tag.substr(0, end), {name}));
                ASSERT_TRUE(agrees(page, std::string(end, '<') + tag, {name}));
            }
        }
    }
}

TEST(TagIndex, findsTagsInTheLastBytes) {
    GuardedPage page;
    for (std::size_t behind = 0; behind <= 10; ++behind) {
        for (const char* const tail : {"<a>", "</a>", "<ab>", "<>", "</>", "<a></a>", "<a", "<"}) {
            for (const char filler : {'x', '<', '>', '\0'}) {
                const std::string text = "<x></x>" + (tail + std::string(behind, filler));
                ASSERT_TRUE(agrees(page, text, {"a", "ab", "", "/a", std::string("a\0", 2)}));
            }
        }
    }
}

TEST(TagIndex, findsOneTagAmongManyOfAnotherName) {
    GuardedPage page;
    for (const std::size_t count : {1U, 15U, 16U, 17U, 31U, 32U, 33U, 60U}) {
        for (std::size_t at = 0; at < count; ++at) {
            std::string text;
            for (std::size_t tag = 0; tag < count; ++tag) text += tag == at ? "<b>" : "<a>";
            ASSERT_TRUE(agrees(page, text, {"b"}));
        }
    }
}

TEST(TagIndex, listsNothingOfAnEmptyText) {
    const TagIndex index("");
    EXPECT_EQ(index.count(), 0U);
    EXPECT_EQ(index.firstAt(0, 0), 0U);
    EXPECT_EQ(index.find("a", TagKind::kOpening, 0, 0), kNoTag);
}

}  // namespace
