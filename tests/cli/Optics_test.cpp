// `thermika optics`.
#include <filesystem>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include "support/CaliDescriptions.h"
#include "support/CameraSet.h"
#include "support/Companion.h"

namespace {

using nlohmann::json;
using thermika_test::opticsElement;
using thermika_test::opticsList;
using thermika_test::rangeElement;
using thermika_test::runCompanion;
using thermika_test::RunResult;
using thermika_test::TempDir;
using thermika_test::writeDescription;

void writeTwoOptics(const TempDir& folder) {
    writeDescription(
        folder, 14080045,
        opticsList(opticsElement(33, "wide \033[31m",
                                 rangeElement("-20", "100",
                                              "<TempLoExt>-40.5</TempLoExt><Decimal>2</Decimal>"
                                              "<Framerates>\n<Framerate><FR>27</FR></Framerate>\n"
                                              "<Framerate><FR>80</FR></Framerate>\n"
                                              "</Framerates>")) +
                   opticsElement(60, "", rangeElement("0", "250"))));
}

TEST(Optics, listsEachOpticsWithItsRanges) {
    const TempDir folder;
    writeTwoOptics(folder);
    EXPECT_EQ(runCompanion({"optics", "14080045", "--dir", folder.path()}),
              (RunResult{"FOV  TEXT           RANGE     EXTENDED    DECIMALS  FILES      HZ\n"
                         " 33  wide \\x1B[31m  -20..100  -40.5..100         2  4 missing  27 80\n"
                         " 60  -              0..250    0..250             1  2 missing  any\n",
                         "", 0}));
}

TEST(Optics, showsAnOpticsWithoutRanges) {
    const TempDir folder;
    writeDescription(
        folder, 14080045,
        opticsList(opticsElement(33, "", "") + opticsElement(60, "", rangeElement("0", "250"))));
    EXPECT_EQ(runCompanion({"optics", "14080045", "--dir", folder.path()}),
              (RunResult{"FOV  TEXT  RANGE   EXTENDED  DECIMALS  FILES      HZ\n"
                         " 33  -     -       -                -  -          -\n"
                         " 60  -     0..250  0..250           1  2 missing  any\n",
                         "", 0}));
}

TEST(Optics, tellsAnEmptyListOfFrameRatesFromNone) {
    const TempDir folder;
    writeDescription(
        folder, 14080045,
        opticsList(opticsElement(
            33, "",
            rangeElement("0", "250", "<Framerates>\n</Framerates>") + rangeElement("150", "900"))));
    EXPECT_EQ(runCompanion({"optics", "14080045", "--dir", folder.path()}).out,
              "FOV  TEXT  RANGE     EXTENDED  DECIMALS  FILES      HZ\n"
              " 33  -     0..250    0..250           1  2 missing  none\n"
              " 33  -     150..900  150..900         1  2 missing  any\n");
    const json ranges =
        json::parse(runCompanion({"optics", "14080045", "--dir", folder.path(), "--json"})
                        .out)["optics"][0]["ranges"];
    EXPECT_EQ(ranges[0]["framerates"], json::array());
    EXPECT_EQ(ranges[1]["framerates"], nullptr);
}

TEST(Optics, takesAMissingTextForAnEmptyOne) {
    const TempDir folder;
    std::string optics = opticsElement(33, "", rangeElement("0", "250"));
    const std::string text = "<Text></Text>";
    ASSERT_NE(optics.find(text), std::string::npos);
    optics.erase(optics.find(text), text.size());
    writeDescription(folder, 14080045, opticsList(optics));
    EXPECT_EQ(runCompanion({"optics", "14080045", "--dir", folder.path()}).out,
              "FOV  TEXT  RANGE   EXTENDED  DECIMALS  FILES      HZ\n"
              " 33  -     0..250  0..250           1  2 missing  any\n");
}

TEST(Optics, answersProgramsInJson) {
    const TempDir folder;
    for (const auto& [name, bytes] : thermika_test::cameraFiles())
        thermika_test::writeFile(folder / name, bytes);
    writeDescription(
        folder, 14080045,
        opticsList(opticsElement(
            33, "",
            rangeElement("-20", "100",
                         "<TempLoExt>-40.5</TempLoExt><Framerates>\n<Framerate><FR>27</FR>"
                         "</Framerate>\n<Framerate><FR>80</FR></Framerate>\n</Framerates>") +
                rangeElement("0", "250"))));
    const json first = {{"min", -20},         {"max", 100},    {"extendedMin", -40.5},
                        {"extendedMax", 100}, {"decimals", 1}, {"framerates", {27, 80}},
                        {"missing", 0}};
    const json second = {{"min", 0},           {"max", 250},    {"extendedMin", 0},
                         {"extendedMax", 250}, {"decimals", 1}, {"framerates", nullptr},
                         {"missing", 2}};
    const json optics = {
        {"fov", 33}, {"text", ""}, {"complete", false}, {"ranges", {first, second}}};
    EXPECT_EQ(
        json::parse(runCompanion({"optics", "14080045", "--json", "--dir", folder.path()}).out),
        json({{"serial", 14080045}, {"optics", json::array({optics})}}));
}

TEST(Optics, colorsWhatHasItsFilesAndWhatLacksSome) {
    const TempDir folder;
    for (const auto& [name, bytes] : thermika_test::cameraFiles())
        thermika_test::writeFile(folder / name, bytes);
    const std::vector<std::string> command = {"optics", "14080045", "--dir", folder.path(),
                                              "--color=always"};
    EXPECT_NE(runCompanion(command).out.find("\033[32mcomplete\033[0m  27 80\n"),
              std::string::npos);
    std::filesystem::remove(folder / thermika_test::kLastData);
    EXPECT_NE(runCompanion(command).out.find("\033[31m1 missing\033[0m  27 80\n"),
              std::string::npos);
}

TEST(Optics, saysWhichDescriptionIsMissingAndHowToGetIt) {
    const TempDir folder;
    EXPECT_EQ(
        runCompanion({"--dir", folder / "none", "optics", "14080045"}),
        (RunResult{"",
                   "thermika: the calibration description " + (folder / "none/Cali-14080045.xml") +
                       " is missing (fetch it: thermika fetch 14080045)\n",
                   3}));
}

}  // namespace
