// The commands that fetch files: what the shell and wget receive to the byte, when a command counts
// as started, and what shares the process's outputs with them.
#include <sys/stat.h>
#include <unistd.h>

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "sdk/IRCalibrationManager.h"
#include "support/DownloadSandbox.h"
#include "support/FileServer.h"
#include "support/Recorder.h"
#include "support/Sandbox.h"
#include "support/TestFiles.h"

namespace {

using namespace thermika_test;

bool tryToFetch(std::string targets, const std::string& dir = kCaliDir) {
    return dax::IRCalibrationManager::downloadTarget(targets.data(), kCameraSerial, dir);
}

std::string quotedAddress(const std::string& name) {
    return "\"" + serverAddress(serverPath(kCameraSerial, name)) + "\"";
}

std::string errorDownloading(const std::string& name) {
    return managerLine("ERROR", "Error downloading " + quotedAddress(name));
}

/// A links document that wget's stand-in leaves in the named place, whatever it is asked for.
std::string leaveLinks(const std::string& base) {
    writeFile("/usr/share/world/links.xml", linksDocument("<string>" + base + "</string>\n"));
    return "case $3 in /tmp/*) cat /usr/share/world/links.xml >$3;; esac";
}

TEST(DownloadTargetStart, givesTheShellAndWgetExactlyThis) {
    inSandbox([] {
        const DownloadSandbox world;
        FileServer server;
        server.add(kLinksPath, linksDocument());
        recordShell();
        recordProgram("wget");
        EXPECT_EQ(outcomeOf([] { return tryToFetch("Kennlinie-14080045.prn;Cali-14080045.xml;"); }),
                  (Outcome{true, ""}));
        EXPECT_EQ(shellTexts(), (Texts{"wget http://" THERMIKA_DOWNLOAD_HOST
                                       "/downloadlinks.xml -O /tmp/downloadlinks.xml",
                                       "wget \"http://" THERMIKA_DOWNLOAD_HOST
                                       "/14/1408/Califiles SN14080045/Kennlinie-14080045.prn\" -O "
                                       "/usr/share/libthermika/cali/Kennlinie-14080045.prn",
                                       "wget \"http://" THERMIKA_DOWNLOAD_HOST
                                       "/14/1408/Califiles SN14080045/Cali-14080045.xml\" -O "
                                       "/usr/share/libthermika/cali/Cali-14080045.xml"}));
        EXPECT_EQ(callsOf("wget"),
                  (std::vector<Texts>{{"http://" THERMIKA_DOWNLOAD_HOST "/downloadlinks.xml", "-O",
                                       "/tmp/downloadlinks.xml"},
                                      {"http://" THERMIKA_DOWNLOAD_HOST
                                       "/14/1408/Califiles SN14080045/Kennlinie-14080045.prn",
                                       "-O", "/usr/share/libthermika/cali/Kennlinie-14080045.prn"},
                                      {"http://" THERMIKA_DOWNLOAD_HOST
                                       "/14/1408/Califiles SN14080045/Cali-14080045.xml",
                                       "-O", "/usr/share/libthermika/cali/Cali-14080045.xml"}}));
    });
}

TEST(DownloadTargetStart, passesTheDirectoryAndTheNamesOnUnquoted) {
    inSandbox([] {
        const DownloadSandbox world;
        recordProgram("wget", leaveLinks("B"));
        EXPECT_TRUE(tryToFetch("a b;", "/my dir"));
        EXPECT_EQ(callsOf("wget").at(1),
                  (Texts{"B/14/1408/Califiles SN14080045/a b", "-O", "/my", "dir/a", "b"}));
    });
}

TEST(DownloadTargetStart, letsTheShellReadTheBaseBetweenDoubleQuotes) {
    inSandbox([] {
        const DownloadSandbox world;
        setenv("NAME", "value", 1);
        recordProgram("wget", leaveLinks("a  b $NAME `echo c`"));
        EXPECT_TRUE(tryToFetch("f;"));
        EXPECT_EQ(callsOf("wget").at(1).at(0), "a  b value c/14/1408/Califiles SN14080045/f");
    });
}

TEST(DownloadTargetStart, takesAnEmptyBaseForABase) {
    inSandbox([] {
        const DownloadSandbox world;
        recordProgram("wget", leaveLinks(""));
        EXPECT_EQ(outcomeOf([] { return tryToFetch("f;"); }), (Outcome{true, ""}));
        EXPECT_EQ(callsOf("wget").at(1).at(0), "/14/1408/Califiles SN14080045/f");
    });
}

TEST(DownloadTargetStart, countsAFileAsFetchedWhateverItsCommandAnswers) {
    inSandbox([] {
        const DownloadSandbox world;
        recordProgram("wget", leaveLinks("B") + "; exit 8");
        EXPECT_EQ(outcomeOf([] { return tryToFetch("a;b;"); }), (Outcome{true, ""}));
        EXPECT_EQ(callsOf("wget").size(), 3U);
        EXPECT_EQ(contents(kCaliDir), Files());
    });
}

TEST(DownloadTargetStart, logsEveryAddressWhileNoCommandCanBeWaitedFor) {
    inSandbox([] {
        const DownloadSandbox world;
        FileServer server;
        server.add(kLinksPath, linksDocument());
        server.add(serverPath(kCameraSerial, "b.dat"), "came all the same");
        // As in programs that do not want to hear of their children.
        std::signal(SIGCHLD, SIG_IGN);
        const Outcome outcome = outcomeOf([] { return tryToFetch("a.dat;b.dat;"); });
        std::signal(SIGCHLD, SIG_DFL);
        EXPECT_EQ(outcome, (Outcome{false, errorDownloading("a.dat") + errorDownloading("b.dat")}));
        EXPECT_EQ(contents(kCaliDir), (Files{{"a.dat", ""}, {"b.dat", "came all the same"}}));
        EXPECT_EQ(contents("/tmp"), Files());
    });
}

/// wget as it is, but from its `from`-th call on the process that called for it does not (or does
/// again, when `isHeard`) hear of its end. Call 1 fetches the links document. The call goes on when
/// the switch was seen to be made: what the process ignores has changed.
void switchHearing(int from, bool isHeard) {
    const auto handler = isHeard ? +[](int) { std::signal(SIGCHLD, SIG_DFL); }
                                 : +[](int) { std::signal(SIGCHLD, SIG_IGN); };
    std::signal(SIGUSR1, handler);
    const std::string process = std::to_string(getpid());
    const std::string ignored = "ignored() { grep SigIgn /proc/" + process + "/status; }\n";
    recordProgram("wget", "echo >>/usr/share/world/turns\n[ $(wc -l </usr/share/world/turns) != " +
                              std::to_string(from) + " ] && exec /usr/bin/wget \"$@\"\n" + ignored +
                              "before=$(ignored)\nkill -USR1 " + process +
                              "\nwhile [ \"$(ignored)\" = \"$before\" ]; do :; done\n" +
                              "exec /usr/bin/wget \"$@\"");
}

TEST(DownloadTargetStart, saysNothingOfAFailureAfterTheFirstStart) {
    inSandbox([] {
        const DownloadSandbox world;
        FileServer server;
        server.add(kLinksPath, linksDocument());
        switchHearing(3, false);
        EXPECT_EQ(outcomeOf([] { return tryToFetch("a.dat;b.dat;c.dat;"); }), (Outcome{true, ""}));
        EXPECT_EQ(callsOf("wget").size(), 4U);
        std::signal(SIGCHLD, SIG_DFL);
    });
}

TEST(DownloadTargetStart, succeedsWithALaterFileThoughTheFirstFailed) {
    inSandbox([] {
        const DownloadSandbox world;
        FileServer server;
        server.add(kLinksPath, linksDocument());
        switchHearing(3, true);
        std::signal(SIGCHLD, SIG_IGN);
        EXPECT_EQ(outcomeOf([] { return tryToFetch("a.dat;b.dat;c.dat;"); }),
                  (Outcome{true, errorDownloading("a.dat")}));
        EXPECT_EQ(callsOf("wget").size(), 4U);
    });
}

TEST(DownloadTargetStart, readsALinksDocumentThoughItsCommandCouldNotBeWaitedFor) {
    inSandbox([] {
        const DownloadSandbox world;
        FileServer server;
        server.add(kLinksPath, linksDocument());
        switchHearing(2, true);
        std::signal(SIGCHLD, SIG_IGN);
        EXPECT_EQ(outcomeOf([] { return tryToFetch("a.dat;"); }), (Outcome{true, ""}));
    });
}

TEST(DownloadTargetStart, readsWhatLiesThereWhenNoProcessCanBeStarted) {
    inSandbox([] {
        const DownloadSandbox world;
        writeFile(kLinksFile, linksDocument());
        // C libraries before glibc 2.41 answer as if a shell had run and found no command.
        const RunResult result = runInProcess([] {
            forbidNewProcesses();
            const bool isStarted = std::system("true") != -1;
            const Outcome outcome = outcomeOf([] { return tryToFetch("a.dat;"); });
            EXPECT_EQ(outcome, (Outcome{isStarted, isStarted ? "" : errorDownloading("a.dat")}));
            return testing::Test::HasFailure() ? 1 : 0;
        });
        EXPECT_EQ(result, (RunResult{"", "", 0}));
        EXPECT_EQ(contents("/tmp"), Files());
        EXPECT_EQ(contents(kCaliDir), Files());
    });
}

TEST(DownloadTargetStart, flushesStandardOutputBeforeEveryCommand) {
    inSandbox([] {
        const DownloadSandbox world;
        recordProgram("wget", "echo wget\n" + leaveLinks("B"));
        const RunResult result = runInProcess([] {
            std::printf("before\n");
            tryToFetch("f;");
            std::printf("after\n");
            return 0;
        });
        EXPECT_EQ(result, (RunResult{"before\nwget\nwget\nafter\n", "", 0}));
    });
}

TEST(DownloadTargetStart, leavesWgetItsOwnWords) {
    inSandbox([] {
        const DownloadSandbox world;
        DownloadSandbox::letWgetTalk();
        FileServer server;
        server.add(kLinksPath, linksDocument());
        server.add(serverPath(kCameraSerial, "a.dat"), "text");
        const Outcome outcome = outcomeOf([] { return tryToFetch("a.dat;b.dat;"); });
        EXPECT_TRUE(outcome.result);
        for (const char* const words :
             {"'/tmp/downloadlinks.xml' saved", "'/usr/share/libthermika/cali/a.dat' saved [4/4]",
              "ERROR 404: "})
            EXPECT_NE(outcome.log.find(words), std::string::npos) << words << " in " << outcome;
    });
}

}  // namespace
