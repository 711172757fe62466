// The copy of a camera's files from a folder with the real find and cp: what it runs, prints,
// copies and answers.
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdio>
#include <filesystem>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "sdk/IRCalibrationManager.h"
#include "support/CameraSet.h"
#include "support/DownloadSandbox.h"
#include "support/LocalCopy.h"
#include "support/Recorder.h"
#include "support/Sandbox.h"
#include "support/TestFiles.h"

namespace {

namespace fs = std::filesystem;
using namespace thermika_test;

TEST(LocalCopy, copiesAWholeSet) {
    inQuietWorld([] {
        lay(kCopySource, cameraFiles());
        EXPECT_EQ(copyFrom(kCopySource), copied(kCopiedAll));
        EXPECT_EQ(contents(kCaliDir), cameraFiles());
        EXPECT_EQ(contents("/tmp"), Files());
    });
}

TEST(LocalCopy, printsAndRunsTheSameCommand) {
    inQuietWorld([] {
        lay(kCopySource, cameraFiles());
        recordShell();
        const RunResult result = copyFrom(kCopySource);
        EXPECT_EQ(result.out,
                  R"(find /usr/share/medium -name Cali-14080045* -exec cp "{}" )"
                  R"(/usr/share/libthermika/cali \; -o -name Kennlinie-14080045* -exec cp "{}" )"
                  R"(/usr/share/libthermika/cali \; 2> /dev/null)"
                  "\n");
        ASSERT_EQ(shellTexts().size(), 1U);
        EXPECT_EQ(shellTexts()[0] + "\n", result.out);
    });
}

TEST(LocalCopy, givesFindAndCpExactlyThis) {
    inQuietWorld([] {
        lay(kCopySource, {{kFirstData, "data"}});
        recordProgram("find");
        recordProgram("cp");
        copyFrom(kCopySource);
        EXPECT_EQ(callsOf("find"),
                  (std::vector<Texts>{{kCopySource, "-name", "Cali-14080045*", "-exec", "cp", "{}",
                                       kCaliDir, ";", "-o", "-name", "Kennlinie-14080045*", "-exec",
                                       "cp", "{}", kCaliDir, ";"}}));
        EXPECT_EQ(callsOf("cp"), (std::vector<Texts>{{kCopySource + "/" + kFirstData, kCaliDir}}));
    });
}

TEST(LocalCopy, copiesWhatThereIsOfAnIncompleteSet) {
    inQuietWorld([] {
        Files some = cameraFiles();
        some.erase(kFirstCurve);
        lay(kCopySource, some);
        EXPECT_EQ(copyFrom(kCopySource), copied(kCopiedLess));
        EXPECT_EQ(contents(kCaliDir), some);
    });
}

TEST(LocalCopy, answersFalseForATreeWithoutTheCamera) {
    inQuietWorld([] {
        lay(kCopySource, {{"Cali-14080046.xml", "another camera's"}, {"readme", ""}});
        recordProgram("find");
        EXPECT_EQ(copyFrom(kCopySource), copied(kCopiedLess));
        EXPECT_EQ(callsOf("find").size(), 1U);
        EXPECT_EQ(contents(kCaliDir), Files());
    });
}

TEST(LocalCopy, answersTrueForATreeWithoutTheCameraWhenNothingIsMissing) {
    inQuietWorld([] {
        installFiles(cameraFiles());
        lay(kCopySource, {});
        recordProgram("find");
        EXPECT_EQ(copyFrom(kCopySource), copied(kCopiedAll));
        EXPECT_EQ(callsOf("find").size(), 1U);
        EXPECT_EQ(contents(kCaliDir), cameraFiles());
    });
}

TEST(LocalCopy, addsWhatIsMissingAndOverwritesWhatIsThere) {
    inQuietWorld([] {
        installFiles({{kFirstData, "older, and longer than what comes"}, {"mine", "kept"}});
        lay(kCopySource, cameraFiles());
        EXPECT_EQ(copyFrom(kCopySource), copied(kCopiedAll));
        Files expected = cameraFiles();
        expected["mine"] = "kept";
        EXPECT_EQ(contents(kCaliDir), expected);
    });
}

TEST(LocalCopy, completesASetWhoseOtherFilesAreThere) {
    inQuietWorld([] {
        Files there = cameraFiles();
        there.erase(kLastData);
        installFiles(there);
        lay(kCopySource, {{kLastData, "data at 80 Hz\n"}});
        EXPECT_EQ(copyFrom(kCopySource), copied(kCopiedAll));
        EXPECT_EQ(contents(kCaliDir), cameraFiles());
    });
}

TEST(LocalCopy, findsFilesAnywhereInTheTreeAndPutsThemSideBySide) {
    inQuietWorld([] {
        std::string deep = kCopySource;
        for (int level = 0; level < 60; ++level) deep += "/level " + std::to_string(level);
        const Files all = cameraFiles();
        lay(deep, {{kDescriptionName, all.at(kDescriptionName)}});
        lay(kCopySource + "/x/Califiles SN14080045", {{kFirstData, all.at(kFirstData)}});
        lay(kCopySource + "/-name", {{kFirstCurve, all.at(kFirstCurve)}});
        lay(kCopySource, {{kLastData, all.at(kLastData)}});
        lay(kCopySource + "/.hidden/'\"$(id)", {{kLastCurve, all.at(kLastCurve)}});
        for (int folder = 0; folder < 500; ++folder)
            lay(kCopySource + "/wide/" + std::to_string(folder), {{"other", ""}});
        EXPECT_EQ(copyFrom(kCopySource), copied(kCopiedAll));
        EXPECT_EQ(contents(kCaliDir), all);
    });
}

TEST(LocalCopy, takesEveryEntryWhoseNameBeginsWithTheSerial) {
    inQuietWorld([] {
        const Files alike = {{"Cali-14080045", "1"},
                             {"Cali-140800456.xml", "2"},
                             {"Kennlinie-14080045 old copy.prn", "3"},
                             {"Cali-14080045-18-T18 HT-0-250.dat", "4"}};
        lay(kCopySource, alike);
        lay(kCopySource,
            {{"cali-14080045.xml", ""}, {"xCali-14080045.xml", ""}, {"Kennlinie-1408004", ""}});
        fs::create_directory(kCopySource + "/Cali-14080045-folder");  // cp copies no folder
        EXPECT_EQ(copyFrom(kCopySource), copied(kCopiedLess));
        EXPECT_EQ(contents(kCaliDir), alike);
    });
}

TEST(LocalCopy, followsNoLinksToFoldersButCopiesWhatLinksToFilesHold) {
    inQuietWorld([] {
        lay("/usr/share/elsewhere", cameraFiles());
        fs::create_directory(kCopySource);
        fs::create_directory_symlink("/usr/share/elsewhere", kCopySource + "/folder");
        fs::create_symlink("/usr/share/elsewhere/" + kFirstData, kCopySource + "/" + kFirstData);
        EXPECT_EQ(copyFrom(kCopySource), copied(kCopiedLess));
        EXPECT_EQ(contents(kCaliDir), (Files{{kFirstData, "data at 27 Hz\n"}}));
        EXPECT_FALSE(fs::is_symlink(std::string(kCaliDir) + "/" + kFirstData));
    });
}

TEST(LocalCopy, splitsASourceAtItsBlanks) {
    inQuietWorld([] {
        lay("/usr/share/my disk", cameraFiles());
        lay("/usr/share/my", {{kFirstData, "of one half"}});
        lay("/usr/share/libthermika/disk", {{kFirstCurve, "of the other"}});
        recordProgram("find");
        EXPECT_EQ(
            copyFrom("/usr/share/my disk", [] { fs::current_path("/usr/share/libthermika"); }),
            copied(kCopiedLess, "/usr/share/my disk"));
        EXPECT_EQ(callsOf("find").at(0).at(0), "/usr/share/my");
        EXPECT_EQ(callsOf("find").at(0).at(1), "disk");
        EXPECT_EQ(contents(kCaliDir),
                  (Files{{kFirstData, "of one half"}, {kFirstCurve, "of the other"}}));
    });
}

TEST(LocalCopy, letsTheShellExpandThePatternsInTheWorkingDirectory) {
    inQuietWorld([] {
        lay(kCopySource, cameraFiles());
        lay("/usr/share/here", {{kDescriptionName, ""}});
        recordProgram("find");
        EXPECT_EQ(copyFrom(kCopySource, [] { fs::current_path("/usr/share/here"); }),
                  copied(kCopiedLess));
        EXPECT_EQ(callsOf("find").at(0).at(2), kDescriptionName);
        EXPECT_EQ(contents(kCaliDir), (Files{{kDescriptionName, cameraFiles().at(kDescriptionName)},
                                             {kFirstCurve, cameraFiles().at(kFirstCurve)},
                                             {kLastCurve, cameraFiles().at(kLastCurve)}}));
    });
}

TEST(LocalCopy, saysNothingOfASourceThatIsNotThere) {
    inQuietWorld(
        [] { EXPECT_EQ(copyFrom("/no/such/folder"), copied(kCopiedLess, "/no/such/folder")); });
}

TEST(LocalCopy, saysNothingOfFilesThatItMayNotReadOrWrite) {
    inQuietWorld([] {
        lay(kCopySource, cameraFiles());
        ASSERT_EQ(chmod((kCopySource + "/" + kFirstData).c_str(), 0), 0);
        installFiles({{kLastData, "not to be touched"}});
        ASSERT_EQ(chmod((std::string(kCaliDir) + "/" + kLastData).c_str(), 0444), 0);
        EXPECT_EQ(copyFrom(kCopySource), copied(kCopiedLess));
        Files expected = cameraFiles();
        expected.erase(kFirstData);
        expected[kLastData] = "not to be touched";
        EXPECT_EQ(contents(kCaliDir), expected);
    });
}

TEST(LocalCopy, leavesEachFileInPlaceOfTheLastWhenTheDirectoryIsMissing) {
    inQuietWorld([] {
        // cp takes the missing directory's name for a file's.
        lay(kCopySource, {{kFirstData, "data"}});
        fs::remove(kCaliDir);
        EXPECT_EQ(copyFrom(kCopySource), copied(kCopiedLess));
        EXPECT_EQ(readFile(kCaliDir), "data");
    });
}

TEST(LocalCopy, createsAMissingDirectoryOnlyWhenItLooksForTheFiles) {
    inQuietWorld([] {
        lay(kCopySource, {});
        fs::remove(kCaliDir);
        EXPECT_EQ(copyFrom(kCopySource), copied(kCopiedLess));
        EXPECT_TRUE(fs::is_directory(kCaliDir));
    });
}

TEST(LocalCopy, answersFalseWithoutFindAndCp) {
    inQuietWorld([] {
        lay(kCopySource, cameraFiles());
        EXPECT_EQ(copyFrom(kCopySource, DownloadSandbox::hideAllPrograms), copied(kCopiedLess));
        EXPECT_EQ(contents(kCaliDir), Files());
    });
}

TEST(LocalCopy, answersFalseUnlookedWhenThereIsNoDescriptorForThePipe) {
    inQuietWorld([] {
        installFiles(cameraFiles());
        lay(kCopySource, cameraFiles());
        EXPECT_EQ(copyFrom(kCopySource, forbidNewDescriptors), copied(kCopiedLess));
    });
}

TEST(LocalCopy, answersFalseUnlookedWhenNoProcessCanBeStarted) {
    inQuietWorld([] {
        installFiles(cameraFiles());
        EXPECT_EQ(copyFrom(kCopySource, forbidNewProcesses), copied(kCopiedLess));
    });
}

TEST(LocalCopy, printsTheCommandBeforeItRuns) {
    inQuietWorld([] {
        recordProgram("find", "echo find >&2");
        const RunResult result = copyFrom(kCopySource, [] {
            std::printf("before\n");
            dup2(STDOUT_FILENO, STDERR_FILENO);
        });
        // The command's own error output goes nowhere, the stand-in's with it.
        EXPECT_EQ(result.out, "before\n" + copyCommand(kCopySource) + "\n");
        recordProgram("find", "stat -c %s /usr/share/out >/usr/share/seen");
        copyFrom(kCopySource, [] {
            if (std::freopen("/usr/share/out", "w", stdout) == nullptr) _exit(kCopiedAll);
            std::printf("before\n");
        });
        EXPECT_EQ(readFile("/usr/share/seen"),
                  std::to_string(("before\n" + copyCommand(kCopySource) + "\n").size()) + "\n");
    });
}

// The shell expands the command's patterns in the working directory.
TEST(LocalCopy, isTriedWhereNoFileIsNamedLikeACamerasFiles) {
    inQuietWorld([] { EXPECT_TRUE(fs::is_empty(fs::current_path())); });
}

TEST(LocalCopy, waitsForTheCommand) {
    inQuietWorld([] {
        lay(kCopySource, cameraFiles());
        recordProgram("find", "sleep 0.3; exec /usr/bin/find \"$@\"");
        EXPECT_EQ(copyFrom(kCopySource), copied(kCopiedAll));
    });
}

TEST(LocalCopy, writesTheSerialInPlainDigits) {
    inQuietWorld([] {
        lay(kCopySource, {{"Cali-0.xml", ""}, {"Cali-4294967295.xml", ""}});
        EXPECT_EQ(copyFrom(kCopySource, {}, 0),
                  (RunResult{copyCommand(kCopySource, kCaliDir, "0") + "\n", "", kCopiedLess}));
        EXPECT_EQ(
            copyFrom(kCopySource, {}, 4294967295UL),
            (RunResult{copyCommand(kCopySource, kCaliDir, "4294967295") + "\n", "", kCopiedLess}));
        EXPECT_EQ(contents(kCaliDir), (Files{{"Cali-0.xml", ""}, {"Cali-4294967295.xml", ""}}));
    });
}

TEST(LocalCopy, passesTheCalibrationDirectoryOnUnquoted) {
    inQuietWorld([] {
        lay(kCopySource, {{kFirstData, "data"}});
        lay("/usr/share/my", {});
        fs::create_directory("/usr/share/dir");
        recordProgram("cp");
        const RunResult result = copyFrom(kCopySource, [] {
            dax::IRCalibrationManager::getInstance()->setCalibrationDir(
                "/usr/share/my /usr/share/dir");
        });
        EXPECT_EQ(result.out, copyCommand(kCopySource, "/usr/share/my /usr/share/dir") + "\n");
        EXPECT_EQ(callsOf("cp"), (std::vector<Texts>{{kCopySource + "/" + kFirstData,
                                                      "/usr/share/my", "/usr/share/dir"}}));
    });
}

}  // namespace
