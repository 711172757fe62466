// Copies to lower addresses, for parts of every length and any room around them.
#include "sdk/xml/CopyDown.h"

#include <string>
#include <vector>

#include <gtest/gtest.h>

TEST(CopyDown, copiesThePartAndKeepsWhatFollowsIt) {
    std::string text(600, 'x');
    for (std::size_t i = 0; i < text.size(); ++i) text[i] = static_cast<char>('0' + i % 75);
    for (const std::size_t distance : {1U, 2U, 63U, 64U, 65U, 100U}) {
        for (std::size_t size = 0; size <= 200; ++size) {
            for (const std::size_t behind : {0U, 1U, 62U, 63U, 64U, 65U, 127U, 128U}) {
                // Exactly as long as what may be read, so that the sanitizers see more.
                const std::size_t begin = 10 + distance;
                const std::string before = text.substr(0, begin + size + behind);
                std::vector<char> bytes(before.begin(), before.end());
                dax::copyDown(bytes.data() + 10, {bytes.data() + begin, size},
                              bytes.data() + bytes.size());
                const std::string after(bytes.begin(), bytes.end());
                ASSERT_EQ(after.substr(0, 10), before.substr(0, 10));
                ASSERT_EQ(after.substr(10, size), before.substr(begin, size))
                    << size << " bytes, " << distance << " back";
                ASSERT_EQ(after.substr(begin + size), before.substr(begin + size))
                    << size << " bytes, " << distance << " back";
            }
        }
    }
}
