// The exact texts that reach the shell, and what running one answers.
#include "sdk/camera/ShellCommands.h"

#include <fcntl.h>
#include <unistd.h>

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <string>

#include <gtest/gtest.h>

#include "support/DownloadSandbox.h"
#include "support/Sandbox.h"
#include "support/TestFiles.h"

namespace {

using dax::quotedFileAddress;
using dax::runCommand;
using thermika_test::RunResult;

TEST(ShellCommands, fetchesTheLinksDocumentFromTheHostThisWasBuiltFor) {
    EXPECT_EQ(dax::fetchLinksCommand("/tmp/downloadlinks.xml"),
              "wget http://" THERMIKA_DOWNLOAD_HOST "/downloadlinks.xml -O /tmp/downloadlinks.xml");
    EXPECT_EQ(dax::fetchLinksCommand("a b;c"),
              "wget http://" THERMIKA_DOWNLOAD_HOST "/downloadlinks.xml -O a b;c");
}

TEST(ShellCommands, addressesACamerasFileByItsSerialBetweenDoubleQuotes) {
    EXPECT_EQ(quotedFileAddress("http://server", "14080045", "Cali-14080045.xml"),
              "\"http://server/14/1408/Califiles SN14080045/Cali-14080045.xml\"");
    EXPECT_EQ(quotedFileAddress("B", "12345678", "Kennlinie-12345678-33-M20-100-27.prn"),
              "\"B/12/1234/Califiles SN12345678/Kennlinie-12345678-33-M20-100-27.prn\"");
}

TEST(ShellCommands, takesWhatAShortSerialHas) {
    EXPECT_EQ(quotedFileAddress("B", "", "f"), "\"B///Califiles SN/f\"");
    EXPECT_EQ(quotedFileAddress("B", "1", "f"), "\"B/1/1/Califiles SN1/f\"");
    EXPECT_EQ(quotedFileAddress("B", "12", "f"), "\"B/12/12/Califiles SN12/f\"");
    EXPECT_EQ(quotedFileAddress("B", "123", "f"), "\"B/12/123/Califiles SN123/f\"");
    EXPECT_EQ(quotedFileAddress("B", "1234", "f"), "\"B/12/1234/Califiles SN1234/f\"");
    EXPECT_EQ(quotedFileAddress("B", "12345", "f"), "\"B/12/1234/Califiles SN12345/f\"");
}

TEST(ShellCommands, passesAddressesOnAsTheyStand) {
    EXPECT_EQ(quotedFileAddress("", "12345678", ""), "\"/12/1234/Califiles SN12345678/\"");
    EXPECT_EQ(quotedFileAddress(" http://server/ ", "1", "a b"),
              "\" http://server/ /1/1/Califiles SN1/a b\"");
    EXPECT_EQ(quotedFileAddress("$(id)`id`\\\"\n", "1", "$x"),
              "\"$(id)`id`\\\"\n/1/1/Califiles SN1/$x\"");
}

TEST(ShellCommands, fetchesAFileIntoTheDirectoryWithoutQuotes) {
    EXPECT_EQ(dax::fetchFileCommand("\"address\"", "/usr/share/libthermika/cali", "file.prn"),
              "wget \"address\" -O /usr/share/libthermika/cali/file.prn");
    EXPECT_EQ(dax::fetchFileCommand("\"a\"", "my dir/", "my file"),
              "wget \"a\" -O my dir//my file");
    EXPECT_EQ(dax::fetchFileCommand("", "", ""), "wget  -O /");
}

TEST(ShellCommands, copiesTheFilesOfACameraFromATree) {
    EXPECT_EQ(dax::copyFilesCommand("/tmp", "14080045", "/usr/share/libthermika/cali"),
              R"(find /tmp -name Cali-14080045* -exec cp "{}" /usr/share/libthermika/cali \; )"
              R"(-o -name Kennlinie-14080045* -exec cp "{}" /usr/share/libthermika/cali \; )"
              R"(2> /dev/null)");
}

TEST(ShellCommands, passesSourceAndTargetOnAsTheyStand) {
    EXPECT_EQ(dax::copyFilesCommand("my disk/", "0", "; id"),
              R"(find my disk/ -name Cali-0* -exec cp "{}" ; id \; )"
              R"(-o -name Kennlinie-0* -exec cp "{}" ; id \; 2> /dev/null)");
    EXPECT_EQ(dax::copyFilesCommand("", "", ""),
              R"(find  -name Cali-* -exec cp "{}"  \; -o -name Kennlinie-* -exec cp "{}"  \; )"
              R"(2> /dev/null)");
}

TEST(ShellCommands, countsTheLinesOfTheDefaultRoutes) {
    EXPECT_EQ(dax::countDefaultRoutesCommand(), "/sbin/route -n | grep -c '^0\\.0\\.0\\.0'");
}

/// What a process writes that runs `action` and ends; its status is 1 for true.
RunResult ask(bool (*action)()) {
    return thermika_test::runInProcess([action] { return action() ? 1 : 0; });
}

TEST(ShellCommands, takesACommandForStartedWhateverItAnswers) {
    EXPECT_EQ(ask([] { return runCommand("true"); }), (RunResult{"", "", 1}));
    EXPECT_EQ(ask([] { return runCommand("exit 255"); }), (RunResult{"", "", 1}));
    EXPECT_EQ(ask([] { return runCommand("kill -9 $$"); }), (RunResult{"", "", 1}));
    EXPECT_EQ(ask([] { return runCommand("exec 2>/dev/null; /no/such/program"); }),
              (RunResult{"", "", 1}));
}

TEST(ShellCommands, waitsForTheCommandAndSharesTheOutputsWithIt) {
    EXPECT_EQ(ask([] {
                  std::printf("before\n");
                  const bool isStarted = runCommand("sleep 0.1; echo command; echo error >&2");
                  std::printf("after\n");
                  return isStarted;
              }),
              (RunResult{"before\ncommand\nafter\n", "error\n", 1}));
}

TEST(ShellCommands, failsWhenTheCommandCannotBeWaitedFor) {
    // As in programs that do not want to hear of their children.
    EXPECT_EQ(ask([] {
                  std::signal(SIGCHLD, SIG_IGN);
                  return runCommand("echo command");
              }),
              (RunResult{"command\n", "", 0}));
}

TEST(ShellCommands, takesTheSystemsWordForWhetherAProcessCouldBeStarted) {
    // C libraries before glibc 2.41 answer as if a shell had run and found no command.
    const RunResult system = ask([] {
        thermika_test::forbidNewProcesses();
        return std::system("echo command") != -1;
    });
    EXPECT_EQ(system.out, "");
    EXPECT_EQ(ask([] {
                  thermika_test::forbidNewProcesses();
                  return runCommand("echo command");
              }),
              system);
}

TEST(ShellCommands, givesClosedStandardDescriptorsToNoFileOfTheCommands) {
    const thermika_test::TempDir dir;
    const std::string places =
        "a=$(readlink /proc/$$/fd/0); b=$(readlink /proc/$$/fd/1); c=$(readlink /proc/$$/fd/2); "
        "echo $a $b $c >>" +
        (dir / "places");
    const RunResult result = thermika_test::runInProcess([&places] {
        for (const int fd : {0, 1, 2}) close(fd);
        const bool isRun = runCommand(places) && dax::readCommand(places, 10);
        for (const int fd : {0, 1, 2})
            if (fcntl(fd, F_GETFD) != -1) return 2;  // closed again
        return isRun ? 1 : 0;
    });
    EXPECT_EQ(result, (RunResult{"", "", 1}));
    const std::string lines = thermika_test::readFile(dir / "places");
    EXPECT_EQ(lines.substr(0, lines.find('\n')), "/dev/null /dev/null /dev/null");
    const std::string piped = lines.substr(lines.find('\n') + 1);
    EXPECT_EQ(piped.substr(0, 15), "/dev/null pipe:") << piped;
    EXPECT_EQ(piped.substr(piped.rfind(' ')), " /dev/null\n") << piped;
}

TEST(ShellCommands, leavesOpenStandardDescriptorsToTheCommand) {
    EXPECT_EQ(ask([] {
                  close(STDIN_FILENO);
                  return runCommand("cat; echo out; echo err >&2");
              }),
              (RunResult{"out\n", "err\n", 1}));
}

TEST(ShellCommands, readsTheFirstLineOfACommandUpToABound) {
    EXPECT_EQ(dax::readCommand("echo text", 100), "text\n");
    EXPECT_EQ(dax::readCommand("printf 'a\\0b'", 100), std::string("a\0b", 3));
    EXPECT_EQ(dax::readCommand("printf a; sleep 0.1; echo b", 100), "ab\n");
    EXPECT_EQ(dax::readCommand("echo a; sleep 0.1; echo b 2>/dev/null", 100), "a\n");
    EXPECT_EQ(dax::readCommand("echo; sleep 0.1; echo b", 100), "\nb\n");
    EXPECT_EQ(dax::readCommand("echo text", 3), "tex");
    EXPECT_EQ(dax::readCommand("echo text 2>/dev/null", 0), "");
    EXPECT_EQ(dax::readCommand("exit 3", 100), "");
}

TEST(ShellCommands, readsNothingWhenNoCommandCanBeStarted) {
    EXPECT_EQ(ask([] {
                  thermika_test::forbidNewDescriptors();
                  return dax::readCommand("echo text", 100).has_value();
              }),
              (RunResult{"", "", 0}));
}

}  // namespace
