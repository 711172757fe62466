// What the example program prints, byte for byte.
#include <gtest/gtest.h>

#include <array>
#include <cstdio>
#include <filesystem>
#include <stdexcept>
#include <string>
#include <utility>

#include "support/BuildPaths.h"
#include "support/TestFiles.h"

namespace thermika_test {
namespace {

/// Its output and the status that the system reports of it.
std::pair<std::string, int> listOptics(const std::string& arguments) {
    FILE* const pipe = popen(("'" THERMIKA_LIST_OPTICS "' " + arguments).c_str(), "r");
    if (pipe == nullptr) throw std::runtime_error("cannot start the example");
    std::string output;
    std::array<char, 4096> chunk{};
    for (std::size_t got = 0; (got = fread(chunk.data(), 1, chunk.size(), pipe)) > 0;)
        output.append(chunk.data(), got);
    return {output, pclose(pipe)};
}

TEST(ListOptics, printsEverythingAboutTheExampleCamera) {
    const auto [output, status] = listOptics("'" THERMIKA_EXAMPLES "' 14080045");
    EXPECT_EQ(output, readFile(THERMIKA_TEST_DATA "/plain/list-optics-14080045.txt"));
    EXPECT_EQ(status, 0);
}

TEST(ListOptics, printsADescriptionThatLacksNearlyEverything) {
    EXPECT_EQ(listOptics("'" THERMIKA_EXAMPLES "' 14080046").first,
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
    const std::string output = listOptics("'" + folder.path() + "' 14080046").first;
    EXPECT_NE(output.find("\nmissing files: none\nmenu:\n"), std::string::npos) << output;
}

TEST(ListOptics, printsTheDefaultsOfACameraWithoutDescription) {
    const TempDir folder;
    EXPECT_EQ(listOptics("'" + folder.path() + "' 14080045").first,
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
    EXPECT_NE(listOptics("2>/dev/null").second, 0);
    EXPECT_EQ(listOptics("2>/dev/null").first, "");
}

}  // namespace
}  // namespace thermika_test
