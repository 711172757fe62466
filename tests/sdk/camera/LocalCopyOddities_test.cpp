// The copy of a camera's files from a folder where something is odd: texts that could be taken for
// a format, a directory without its end, a command that writes, files that appear meanwhile.
#include <csignal>
#include <filesystem>
#include <string>

#include <gtest/gtest.h>

#include "sdk/IRCalibrationManager.h"
#include "support/CameraSet.h"
#include "support/DownloadSandbox.h"
#include "support/LateFiles.h"
#include "support/LocalCopy.h"
#include "support/Recorder.h"
#include "support/Sandbox.h"

namespace {

namespace fs = std::filesystem;
using namespace thermika_test;

TEST(LocalCopyOddities, printsAFormatInTheSourceAsItStands) {
    inQuietWorld([] {
        const std::string source = "/usr/share/100%s%n%d";
        lay(source, cameraFiles());
        EXPECT_EQ(copyFrom(source), copied(kCopiedAll, source));
        EXPECT_EQ(contents(kCaliDir), cameraFiles());
    });
}

/// Frees memory of the size of a manager's arrays: in those created next, what follows is not zero.
void leaveUncleanMemory() {
    const Texts blocks(16, std::string(263, 'x'));
    EXPECT_EQ(blocks.back().back(), 'x');
}

TEST(LocalCopyOddities, usesNothingBehindADirectoryThatFillsItsArray) {
    inQuietWorld([] {
        const std::string dir = "/usr/share/" + std::string(248, 'd') + "/";
        ASSERT_EQ(dir.size(), 260U);
        fs::create_directory(dir);
        lay(kCopySource, cameraFiles());
        const RunResult result = copyFrom(kCopySource, [&dir] {
            leaveUncleanMemory();
            dax::IRCalibrationManager::getInstance()->setCalibrationDir((dir + "more").c_str());
        });
        EXPECT_EQ(result,
                  (RunResult{copyCommand(kCopySource, dir) + "\n",
                             "path of 260 characters exceeds the limit of 259: " + dir + "\n",
                             128 + SIGABRT}));
        EXPECT_EQ(contents(dir), cameraFiles());
    });
}

TEST(LocalCopyOddities, keepsTheCommandsOutputFromItsOwn) {
    inQuietWorld([] {
        recordProgram("find", "echo found something");
        EXPECT_EQ(copyFrom(kCopySource), copied(kCopiedLess));
        EXPECT_EQ(callsOf("find").size(), 1U);
    });
}

TEST(LocalCopyOddities, answersTrueWhenTheFilesAppearBetweenTheTwoLooksAtTheList) {
    inQuietWorld([] {
        lay(kCopySource, {});
        const RunResult result = copyInProcess([] {
            return answerWhenFilesAppear([] {
                return dax::IRCalibrationManager::getInstance()->copyCalibrationFromLocalRepo(
                    kCamera, kCopySource);
            });
        });
        EXPECT_EQ(result, copied(kCopiedAll));
        EXPECT_EQ(contents(kCaliDir), cameraFiles());
    });
}

// As when a part of the tree may not be read.
TEST(LocalCopyOddities, judgesByTheFilesAndNotByWhatFindAnswers) {
    inQuietWorld([] {
        installFiles(cameraFiles());
        recordProgram("find", "exit 1");
        EXPECT_EQ(copyFrom(kCopySource), copied(kCopiedAll));
        EXPECT_EQ(callsOf("find").size(), 1U);
    });
}

}  // namespace
