// The download of a camera's missing files: its order of steps, its passes, what it says, and what
// it leaves. The server behaves here; see CalibrationDownloadServer_test.cpp for one that does not.
#include <sys/inotify.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <functional>
#include <string>
#include <utility>

#include <gtest/gtest.h>

#include "sdk/IRCalibrationManager.h"
#include "support/CameraSet.h"
#include "support/DownloadSandbox.h"
#include "support/FileServer.h"
#include "support/LateFiles.h"
#include "support/ProcessState.h"
#include "support/Recorder.h"
#include "support/Sandbox.h"
#include "support/TestFiles.h"

namespace {

namespace fs = std::filesystem;
using namespace thermika_test;

const std::string kNoSerial = managerLine("ERROR", "No serial number specified.");

/// The names of the files created (or emptied) and removed in `dir` during `operation`.
Texts changesDuring(const std::string& dir, const std::function<void()>& operation) {
    const int watch = inotify_init1(IN_CLOEXEC | IN_NONBLOCK);
    EXPECT_GE(inotify_add_watch(watch, dir.c_str(), IN_CREATE | IN_DELETE), 0);
    operation();
    alignas(inotify_event) char events[16384];
    const ssize_t got = read(watch, events, sizeof events);
    close(watch);
    Texts changes;
    for (const char* at = events; at < events + got;) {
        const auto* const event = reinterpret_cast<const inotify_event*>(at);
        changes.push_back(((event->mask & IN_CREATE) != 0 ? "+" : "-") + std::string(event->name));
        at += sizeof(inotify_event) + event->len;
    }
    return changes;
}

const Texts kAccessTest = {"+.thermika_access", "-.thermika_access"};

TEST(CalibrationDownload, fetchesTheDescriptionFirstAndThenWhatItCallsFor) {
    inSandbox([] {
        const DownloadSandbox world;
        FileServer server;
        serveFiles(server, cameraFiles());
        EXPECT_EQ(download(), (Outcome{true, kInstalled}));
        EXPECT_EQ(contents(kCaliDir), cameraFiles());
        EXPECT_EQ(contents("/tmp"), Files());
        EXPECT_EQ(FileServer::requests(),
                  (Texts{kLinksPath, onServer(kDescriptionName), kLinksPath, onServer(kFirstData),
                         onServer(kFirstCurve), onServer(kLastData), onServer(kLastCurve)}));
    });
}

TEST(CalibrationDownload, fetchesNothingButWhatIsMissing) {
    inSandbox([] {
        const DownloadSandbox world;
        FileServer server;
        serveFiles(server, cameraFiles());
        Files present = cameraFiles();
        present.erase(kFirstCurve);
        present[kFirstData] = "older than the server's";
        installFiles(present);
        EXPECT_EQ(download(), (Outcome{true, kInstalled}));
        present[kFirstCurve] = "curve at 27 Hz\n";
        EXPECT_EQ(contents(kCaliDir), present);
        EXPECT_EQ(FileServer::requests(), (Texts{kLinksPath, onServer(kFirstCurve)}));
    });
}

TEST(CalibrationDownload, runsNoCommandWhenAllFilesArePresent) {
    inSandbox([] {
        const DownloadSandbox world;
        installFiles(cameraFiles());
        recordShell();
        Texts changes = changesDuring(kCaliDir, [] {
            EXPECT_EQ(download(), (Outcome{true, kInstalled}));
        });
        EXPECT_EQ(changes, kAccessTest);
        EXPECT_EQ(shellTexts(), Texts());
        EXPECT_EQ(contents(kCaliDir), cameraFiles());
    });
}

TEST(CalibrationDownload, testsForAccessBeforeItRefusesSerialZero) {
    inSandbox([] {
        const DownloadSandbox world;
        recordShell();
        Texts changes = changesDuring(kCaliDir, [] {
            EXPECT_EQ(download(0), (Outcome{false, kNoSerial}));
        });
        EXPECT_EQ(changes, kAccessTest);
        EXPECT_EQ(shellTexts(), Texts());
        EXPECT_EQ(contents(kCaliDir), Files());
    });
}

TEST(CalibrationDownload, tellsOnlyThatAccessIsMissingWhenTheSerialIsZeroToo) {
    inSandbox([] {
        const DownloadSandbox world;
        ASSERT_EQ(chmod(kCaliDir, 0555), 0);
        EXPECT_EQ(download(0), (Outcome{false, managerLine("ERROR", "No writing permissions to " +
                                                                        std::string(kCaliDir))}));
    });
}

TEST(CalibrationDownload, testsForAccessOnceHoweverManyPassesItMakes) {
    inSandbox([] {
        const DownloadSandbox world;
        FileServer server;
        serveFiles(server, cameraFiles());
        Texts changes = changesDuring(kCaliDir, [] { download(); });
        EXPECT_EQ(std::count(changes.begin(), changes.end(), kAccessTest[0]), 1);
        EXPECT_EQ(changes.front(), kAccessTest[0]);
        EXPECT_EQ(changes.at(1), kAccessTest[1]);
    });
}

/// `dir` cannot be used; nothing is fetched and nothing left, and the log says `message`.
void expectRefusal(const std::string& dir, const std::string& message) {
    recordShell();
    dax::IRCalibrationManager::getInstance()->setCalibrationDir(dir.c_str());
    EXPECT_EQ(download(), (Outcome{false, managerLine("ERROR", message)}));
    EXPECT_EQ(shellTexts(), Texts());
    EXPECT_EQ(contents("/tmp"), Files());
}

TEST(CalibrationDownload, namesADirectoryThatItMayNotWrite) {
    inSandbox([] {
        const DownloadSandbox world;
        ASSERT_EQ(chmod(kCaliDir, 0555), 0);
        expectRefusal(kCaliDir, "No writing permissions to /usr/share/libthermika/cali");
        EXPECT_EQ(contents(kCaliDir), Files());
    });
}

TEST(CalibrationDownload, namesADirectoryBehindAForbiddenOneAsItWasGiven) {
    inSandbox([] {
        const DownloadSandbox world;
        ASSERT_EQ(chmod("/usr/share/libthermika", 0), 0);
        expectRefusal("/usr/share//libthermika/cali/",
                      "No writing permissions to /usr/share//libthermika/cali/");
    });
}

TEST(CalibrationDownload, tellsThatTheFileSystemIsReadOnly) {
    inSandbox([] {
        const DownloadSandbox world;
        makeReadOnly(kCaliDir);
        expectRefusal(kCaliDir, "Something went wrong: Read-only file system");
    });
}

TEST(CalibrationDownload, createsNoDirectory) {
    inSandbox([] {
        const DownloadSandbox world;
        fs::remove(kCaliDir);
        expectRefusal(kCaliDir, "Something went wrong: No such file or directory");
        EXPECT_FALSE(fs::exists(kCaliDir));
    });
}

TEST(CalibrationDownload, tellsThatTheDirectoryIsAFile) {
    inSandbox([] {
        const DownloadSandbox world;
        fs::remove(kCaliDir);
        writeFile(kCaliDir, "a file");
        expectRefusal(kCaliDir, "Something went wrong: Not a directory");
    });
}

TEST(CalibrationDownload, tellsThatNoFileFitsAnyMore) {
    inSandbox([] {
        const DownloadSandbox world;
        mountOver(kCaliDir, "nr_inodes=1");
        expectRefusal(kCaliDir, "Something went wrong: No space left on device");
    });
}

TEST(CalibrationDownload, readsADirectoryThatFillsItsArrayToTheEnd) {
    inSandbox([] {
        const DownloadSandbox world;
        const std::string dir = "/usr/share/" + std::string(248, 'd');
        ASSERT_EQ(dir.size(), 260U - 1);
        fs::create_directory(dir);
        dax::IRCalibrationManager::getInstance()->setCalibrationDir(dir.c_str());
        EXPECT_EQ(download(0), (Outcome{false, kNoSerial}));
        ASSERT_EQ(chmod(dir.c_str(), 0555), 0);
        // 260 characters leave the array without a terminator.
        dax::IRCalibrationManager::getInstance()->setCalibrationDir((dir + "/").c_str());
        EXPECT_EQ(download(0),
                  (Outcome{false, managerLine("ERROR", "No writing permissions to " + dir + "/")}));
    });
}

TEST(CalibrationDownload, replacesAForeignAccessTestFileAndRemovesIt) {
    inSandbox([] {
        const DownloadSandbox world;
        installFiles(cameraFiles());
        installFiles({{".thermika_access", "somebody's text"}});
        EXPECT_EQ(download(), (Outcome{true, kInstalled}));
        EXPECT_EQ(contents(kCaliDir), cameraFiles());
    });
}

TEST(CalibrationDownload, answersTrueWithoutAWordAfterThreePassesThatBringNothing) {
    inSandbox([] {
        const DownloadSandbox world;
        FileServer server;
        server.add(kLinksPath, linksDocument());
        recordProgram("wget");
        EXPECT_EQ(download(), (Outcome{true, ""}));
        // What wget leaves of a description that the server does not have is an empty file, which
        // cannot be loaded.
        EXPECT_EQ(contents(kCaliDir), (Files{{kDescriptionName, ""}}));
        EXPECT_EQ(contents("/tmp"), Files());
        EXPECT_EQ(callsOf("wget").size(), 6U);
        const std::string path = onServer(kDescriptionName);
        EXPECT_EQ(FileServer::requests(),
                  (Texts{kLinksPath, path, kLinksPath, path, kLinksPath, path}));
    });
}

TEST(CalibrationDownload, runsNoCommandWhenTheFilesAppearBetweenTheTwoLooksAtTheList) {
    inSandbox([] {
        const DownloadSandbox world;
        recordShell();
        EXPECT_TRUE(answerWhenFilesAppear(
            [] { return dax::IRCalibrationManager::getInstance()->downloadCalibration(kCamera); }));
        EXPECT_EQ(shellTexts(), Texts());
        EXPECT_EQ(contents(kCaliDir), cameraFiles());
    });
}

// The list was as long as the first look had counted: its last name was cut, and what the server
// answered to that name lay in the directory afterwards.
TEST(CalibrationDownload, fetchesWholeNamesWhenMoreIsMissingAtTheSecondLookAtTheList) {
    inSandbox([] {
        const DownloadSandbox world;
        FileServer server;
        serveFiles(server, cameraFiles());
        EXPECT_TRUE(thermika_test::answerWhenFilesAppear(
            [] { return dax::IRCalibrationManager::getInstance()->downloadCalibration(kCamera); },
            {{kDescriptionName, thermika_test::cameraDescription()}}));
        EXPECT_EQ(contents(kCaliDir), cameraFiles());
        EXPECT_EQ(FileServer::requests().at(1), onServer(kFirstData));
    });
}

TEST(CalibrationDownload, makesNoCheckAfterTheThirdPass) {
    inSandbox([] {
        const DownloadSandbox world;
        FileServer server;
        serveFiles(server, cameraFiles());
        // Comes with the third pass only: all is there then, but nobody looks.
        recordProgram("wget",
                      "case \"$*\" in *Kennlinie*80.prn*) echo >>/tmp/tries\n"
                      "[ $(wc -l </tmp/tries) -ge 2 ] || exit 0;; esac\nexec /usr/bin/wget \"$@\"");
        EXPECT_EQ(download(), (Outcome{true, ""}));
        EXPECT_EQ(contents(kCaliDir), cameraFiles());
    });
}

TEST(CalibrationDownload, endsWithTheFirstPassThatFails) {
    inSandbox([] {
        const DownloadSandbox world;
        FileServer server;
        server.add(kLinksPath, linksDocument(""));
        EXPECT_EQ(download(), (Outcome{false, managerLine("ERROR", "Error downloading ") +
                                                  managerLine("INFO", "Download failed.")}));
        EXPECT_EQ(FileServer::requests(), (Texts{kLinksPath}));
        EXPECT_EQ(contents(kCaliDir), Files());
        EXPECT_EQ(contents("/tmp"), Files());
    });
}

TEST(CalibrationDownload, writesTheSerialInPlainDigitsWhateverTheLocale) {
    inSandbox([] {
        const DownloadSandbox world;
        FileServer server;
        server.add(kLinksPath, linksDocument());
        const ScopedLocale locale({{LC_ALL, kDecimalCommaLocale}});
        EXPECT_TRUE(download(7).result);
        EXPECT_EQ(FileServer::requests().at(1), "/7/7/Califiles SN7/Cali-7.xml");
    });
}

TEST(CalibrationDownload, neverCompletesASetWhoseFileNamesHaveBlanks) {
    inSandbox([] {
        // Names reach the shell unquoted: what stands behind the blank is an address of its own.
        const DownloadSandbox world;
        FileServer server;
        const std::string described = cameraDescription("T18 HT");
        serveFiles(server, {{kDescriptionName, described},
                            {"Cali-14080045-33-T18 HT-M20-100-80.dat", "data"},
                            {"Kennlinie-14080045-33-T18 HT-M20-100-80.prn", "curve"}});
        // Newer versions of wget say something of that address, quiet as they are told to be.
        EXPECT_TRUE(download().result);
        EXPECT_EQ(contents(kCaliDir), (Files{{kDescriptionName, described},
                                             {"Cali-14080045-33-T18", "data"},
                                             {"Kennlinie-14080045-33-T18", "curve"}}));
    });
}

}  // namespace
