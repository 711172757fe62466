// What the example program prints, byte for byte.
#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

#include "support/BuildPaths.h"
#include "support/Sandbox.h"
#include "support/TestFiles.h"

namespace thermika_test {
namespace {

RunResult listOptics(std::vector<std::string> arguments) {
    arguments.insert(arguments.begin(), "list-optics");
    return run(THERMIKA_LIST_OPTICS, arguments);
}

TEST(ListOptics, printsEverythingAboutTheExampleCamera) {
    const RunResult result = listOptics({THERMIKA_EXAMPLES, "14080045"});
    EXPECT_EQ(result.out, readFile(THERMIKA_TEST_DATA "/plain/list-optics-14080045.txt"));
    EXPECT_EQ(result.status, 0);
}

TEST(ListOptics, printsADescriptionThatLacksNearlyEverything) {
    EXPECT_EQ(listOptics({THERMIKA_EXAMPLES, "14080046"}).out,
              "optics 0, 60 degrees, \"\"\n"
              "  0 to 250 (extended: 0 to 250), frame rates: any\n"
              "over all: 0 to 250\n"
              "missing files:\n"
              "  Cali-14080046-60-0-250.dat\n"
              "  Kennlinie-14080046-60-0-250.prn\n"
              "menu:\n"
              "  60  [0..250]\n");
}

TEST(ListOptics, namesNoMissingFileOfACompleteFolder) {
    const TempDir folder;
    std::filesystem::copy_file(THERMIKA_EXAMPLES "/Cali-14080046.xml",
                               folder / "Cali-14080046.xml");
    writeFile(folder / "Cali-14080046-60-0-250.dat", "");
    writeFile(folder / "Kennlinie-14080046-60-0-250.prn", "");
    const std::string output = listOptics({folder.path(), "14080046"}).out;
    EXPECT_NE(output.find("\nmissing files: none\nmenu:\n"), std::string::npos) << output;
}

TEST(ListOptics, printsTheDefaultsOfACameraWithoutDescription) {
    const TempDir folder;
    EXPECT_EQ(listOptics({folder.path(), "14080045"}).out,
              "no description of camera 14080045, these are the defaults\n"
              "optics 0, 30 degrees, \"\"\n"
              "  -20 to 100 (extended: -100 to -100), frame rates: any\n"
              "  0 to 250 (extended: -100 to -100), frame rates: any\n"
              "  150 to 900 (extended: -100 to -100), frame rates: any\n"
              "over all: -20 to 900\n"
              "missing files:\n"
              "  Cali-14080045.xml\n"
              "menu:\n");
}

TEST(ListOptics, refusesWrongUsage) {
    const RunResult result = listOptics({});
    EXPECT_NE(result.status, 0);
    EXPECT_EQ(result.out, "");
}

}  // namespace
}  // namespace thermika_test
