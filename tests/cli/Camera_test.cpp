// The camera that a command is about.
#include "cli/Camera.h"

#include <string>

#include <gtest/gtest.h>

namespace {

using thermika::cli::chosenCamera;
using thermika::cli::Problem;
using thermika::cli::Status;

TEST(Camera, isNamedByEightDigits) {
    EXPECT_EQ(chosenCamera("10000000", "files"), 10000000UL);
    EXPECT_EQ(chosenCamera("99999999", "files"), 99999999UL);
    for (const std::string wrong : {"04080045", "1408004", "140800450", "1408004x", "x4080045",
                                    "+4080045", "-4080045", " 4080045", "14080045 ", "0x408004"}) {
        try {
            chosenCamera(wrong, "files");
            ADD_FAILURE() << wrong;
        } catch (const Problem& problem) {
            EXPECT_EQ(problem.status(), Status::kUsage);
            EXPECT_EQ(problem.what(), "\"" + wrong +
                                          "\" is no serial number: it has 8 digits and does not "
                                          "begin with 0 (see: thermika cameras)");
        }
    }
}

}  // namespace
