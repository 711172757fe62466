// The camera that a command is about.
#include "cli/Camera.h"

#include <string>

#include <gtest/gtest.h>

#include "support/CaliDescriptions.h"
#include "support/CameraSet.h"
#include "support/Companion.h"
#include "support/HealthyMachine.h"

namespace {

using thermika::cli::chosenCamera;
using thermika::cli::Problem;
using thermika::cli::Status;
using thermika_test::description;
using thermika_test::HealthyMachine;
using thermika_test::inSandbox;
using thermika_test::kCaliDir;
using thermika_test::kDescriptionName;
using thermika_test::opticsElement;
using thermika_test::opticsList;
using thermika_test::rangeElement;
using thermika_test::runCompanion;
using thermika_test::RunResult;
using thermika_test::writeFile;

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

/// A hundred optics of one name, each with the hundred ranges of the first, each of these with the
/// hundred frame rates of the first: two million files in some kilobytes.
std::string endlessDescription() {
    std::string rates;
    std::string ranges;
    std::string optics;
    for (int i = 0; i < 100; ++i)
        rates += "<Framerate><FR>" + std::to_string(i + 1) + "</FR></Framerate>\n";
    for (int i = 0; i < 100; ++i)
        ranges += rangeElement("0", "9", i > 0 ? "" : "<Framerates>\n" + rates + "</Framerates>");
    for (int i = 0; i < 100; ++i) optics += opticsElement(33, "", i > 0 ? "" : ranges);
    return description(opticsList(optics));
}

// Each command made the whole list, which took hundreds of megabytes and longer than --max-time.
TEST(Camera, descriptionThatListsMoreFilesThanAnyCameraNeedsIsRefused) {
    inSandbox([] {
        const HealthyMachine machine;
        writeFile(std::string(kCaliDir) + "/" + kDescriptionName, endlessDescription());
        const std::string problem = std::string(kCaliDir) + "/" + kDescriptionName +
                                    " lists more than 20000 files or optics, which no camera "
                                    "needs (fetch it anew: thermika fetch 14080045 --all)";
        EXPECT_EQ(runCompanion({"files", "--missing"}),
                  (RunResult{"", "thermika: " + problem + "\n", 3}));
        const std::string document = "/usr/share/camera.xml";
        writeFile(document, "<imager><serial>14080045</serial><fov>33</fov></imager>");
        for (const std::vector<std::string>& command : {std::vector<std::string>{"optics"},
                                                        {"config", "--optics", "33"},
                                                        {"completion", "optics"},
                                                        {"validate", document}})
            EXPECT_EQ(runCompanion(command), (RunResult{"", "thermika: " + problem + "\n", 3}))
                << command.front();
        EXPECT_NE(runCompanion({"cameras"}).out.find("description unusable"), std::string::npos);
        const RunResult doctor = runCompanion({"doctor", "--json"});
        EXPECT_EQ(doctor.status, 1);
        EXPECT_NE(doctor.out.find(problem), std::string::npos) << doctor;
    });
}

TEST(Camera, descriptionThatListsMoreOpticsThanAnyCameraHasIsRefused) {
    const thermika_test::TempDir folder;
    std::string optics;
    for (int i = 0; i <= 20000; ++i) optics += "<OpticsDef>\n<FOV>33</FOV>\n</OpticsDef>\n";
    thermika_test::writeDescription(folder, 14080045, opticsList(optics));
    EXPECT_NE(runCompanion({"--dir", folder.path(), "completion", "optics", "14080045"})
                  .err.find(" lists more than 20000 files or optics, "),
              std::string::npos);
}

TEST(Camera, descriptionWhoseCommentsDoNotPairUpIsRefused) {
    const thermika_test::TempDir folder;
    writeFile(folder / kDescriptionName, "<CaliData>\n<!--\n</CaliData>\n");
    EXPECT_EQ(runCompanion({"optics", "14080045", "--dir", folder.path()}),
              (RunResult{"",
                         "thermika: " + (folder / kDescriptionName) +
                             " is no calibration description that can be read (fetch it: thermika "
                             "fetch 14080045)\n",
                         3}));
}

TEST(Camera, descriptionThatListsMoreFilesThanAllowedIsNotFetched) {
    inSandbox([] {
        const HealthyMachine machine;
        writeFile(std::string(kCaliDir) + "/" + kDescriptionName, endlessDescription());
        for (const char* const most : {"10", "20000"})
            for (const char* const way : {"-q", "--dry-run"})
                EXPECT_EQ(runCompanion({"fetch", "--max-files", most, way}).err,
                          "thermika: the description calls for more than 20000 files (take more: "
                          "--max-files N)\n");
        EXPECT_EQ(runCompanion({"fetch", "-q", "--max-files", "30000"}).err,
                  "thermika: the description calls for more than 30000 files (take more: "
                  "--max-files N)\n");
    });
}

}  // namespace
