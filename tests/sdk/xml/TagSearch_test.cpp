// The search for literal tags beside std::string::find. Texts lie right before memory that must not
// be read.
#include "sdk/xml/TagSearch.h"

#include <algorithm>
#include <cstddef>
#include <random>
#include <string>
#include <string_view>

#include <gtest/gtest.h>

#include "support/GuardedPage.h"
#include "support/TagText.h"

namespace {

using dax::findTag;
using dax::kNoTag;
using dax::TagKind;
using dax::tagLength;
using thermika_test::GuardedPage;
using thermika_test::tagOf;

std::size_t expectedPlace(const std::string& text, const std::string& tag, std::size_t from,
                          std::size_t limit) {
    const std::size_t at = text.find(tag, from);
    return at < limit ? at : kNoTag;
}

/// The search from and to the places around `places`; false at the first difference.
bool agreesAround(GuardedPage& page, const std::string& text, const std::string& name,
                  TagKind kind) {
    const std::string tag = tagOf(name, kind);
    const std::string_view guarded = page.put(text);
    const std::size_t found = std::min(text.find(tag), text.size());
    for (const std::size_t from : {std::size_t{0}, std::size_t{1}, found, found + 1,
                                   text.size() / 2, text.size(), text.size() + 5}) {
        for (const std::size_t limit :
             {std::size_t{0}, std::size_t{1}, from, from + 1, found, found + 1, found + tag.size(),
              text.size() / 2, text.size() - std::min(tag.size(), text.size()),
              text.size() + 1 - std::min(tag.size(), text.size()), text.size(), text.size() + 1,
              text.size() + 100}) {
            const std::size_t expected = expectedPlace(text, tag, from, limit);
            if (findTag(guarded, name, kind, from, limit) == expected) continue;
            ADD_FAILURE() << "text " << testing::PrintToString(text) << ", tag "
                          << testing::PrintToString(tag) << " from " << from << " to " << limit;
            return false;
        }
    }
    return true;
}

const std::string& nameOfLength(std::size_t length) {
    static std::string name;
    name = std::string("abba_TemperatureRangeDefinitionOfOneOptic").substr(0, length);
    return name;
}

}  // namespace

TEST(TagSearch, countsTheWholeTag) {
    EXPECT_EQ(tagLength("abc", TagKind::kOpening), 5U);
    EXPECT_EQ(tagLength("abc", TagKind::kClosing), 6U);
    EXPECT_EQ(tagLength("", TagKind::kOpening), 2U);
    EXPECT_EQ(tagLength("", TagKind::kClosing), 3U);
}

TEST(TagSearch, findsTheFirstTagFromTheGivenPlaceOn) {
    const std::string text = "<a></a><a></a>";
    EXPECT_EQ(findTag(text, "a", TagKind::kOpening, 0, text.size()), 0U);
    EXPECT_EQ(findTag(text, "a", TagKind::kOpening, 1, text.size()), 7U);
    EXPECT_EQ(findTag(text, "a", TagKind::kOpening, 8, text.size()), kNoTag);
    EXPECT_EQ(findTag(text, "a", TagKind::kClosing, 0, text.size()), 3U);
    EXPECT_EQ(findTag(text, "a", TagKind::kClosing, 4, text.size()), 10U);
}

TEST(TagSearch, countsATagThatBeginsRightBeforeTheLimit) {
    const std::string text = "xx<a>yy";
    EXPECT_EQ(findTag(text, "a", TagKind::kOpening, 0, 3), 2U);
    EXPECT_EQ(findTag(text, "a", TagKind::kOpening, 0, 2), kNoTag);
    EXPECT_EQ(findTag(text, "a", TagKind::kOpening, 2, 2), kNoTag);
    EXPECT_EQ(findTag(text, "a", TagKind::kOpening, 3, 100), kNoTag);
}

TEST(TagSearch, findsNoTagThatTheTextCutsOff) {
    const std::string text = "xx<abc";
    EXPECT_EQ(findTag(text, "abc", TagKind::kOpening, 0, 100), kNoTag);
    EXPECT_EQ(findTag(text, "abcdefghijklmnopqrstuvwxyz", TagKind::kOpening, 0, 100), kNoTag);
}

TEST(TagSearch, agreesWithStringSearchForEveryTextLength) {
    constexpr std::string_view kAlphabet = "<</>>aab_TRe";
    GuardedPage page;
    std::mt19937 random(20240611);
    for (std::size_t length = 0; length <= 80; ++length) {
        for (const std::size_t nameLength : {0U, 1U, 2U, 15U, 16U, 17U, 40U}) {
            const std::string name = nameOfLength(nameLength);
            for (const TagKind kind : {TagKind::kOpening, TagKind::kClosing}) {
                std::string text;
                while (text.size() < length) text += kAlphabet[random() % kAlphabet.size()];
                ASSERT_TRUE(agreesAround(page, text, name, kind));
                // And with the tag somewhere in it, or what is almost the tag.
                std::string tag = tagOf(name, kind);
                if (tag.size() > length) continue;
                text.replace(random() % (length - tag.size() + 1), tag.size(), tag);
                ASSERT_TRUE(agreesAround(page, text, name, kind));
                tag[random() % tag.size()] = '#';
                text.replace(random() % (length - tag.size() + 1), tag.size(), tag);
                ASSERT_TRUE(agreesAround(page, text, name, kind));
            }
        }
    }
}

TEST(TagSearch, findsATagAtEveryPlace) {
    GuardedPage page;
    for (const std::size_t nameLength : {0U, 1U, 2U, 15U, 16U, 17U, 40U}) {
        const std::string name = nameOfLength(nameLength);
        for (const TagKind kind : {TagKind::kOpening, TagKind::kClosing}) {
            const std::string tag = tagOf(name, kind);
            for (std::size_t at = 0; at + tag.size() <= 100; ++at) {
                std::string text(100, '<');
                text.replace(at, tag.size(), tag);
                // A character before the tag may complete an earlier one: "<" with an empty name.
                const std::size_t expected = text.find(tag);
                ASSERT_EQ(findTag(page.put(text), name, kind, 0, 100), expected) << text;
            }
        }
    }
}

TEST(TagSearch, readsNothingBeyondATagThatBeginsRightBeforeTheLimit) {
    GuardedPage page;
    for (std::size_t limit = 1; limit <= 70; ++limit) {
        for (const std::size_t nameLength : {0U, 1U, 16U, 40U}) {
            const std::string name = nameOfLength(nameLength);
            for (const TagKind kind : {TagKind::kOpening, TagKind::kClosing}) {
                // What the view claims beyond the page's end is never touched.
                const std::string readable(limit + tagLength(name, kind) - 1, '<');
                const std::string_view claimed(page.put(readable).data(), readable.size() + 200);
                EXPECT_EQ(findTag(claimed, name, kind, 0, limit), kNoTag);
            }
        }
    }
}
