// What all commands share: help, version, options before and after the command, statuses.
#include "cli/CommandLine.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <functional>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "support/CaliDescriptions.h"
#include "support/Companion.h"

namespace {

using thermika_test::runCompanion;
using thermika_test::RunResult;
using thermika_test::TempDir;

TEST(CommandLine, printsItsVersion) {
    EXPECT_EQ(runCompanion({"--version"}), (RunResult{"thermika " THERMIKA_VERSION "\n", "", 0}));
    EXPECT_EQ(runCompanion({"optics", "--version"}), runCompanion({"--version"}));
}

TEST(CommandLine, helpsOnEveryLevelWithOneExampleEach) {
    const auto line = thermika::cli::makeCommandLine();
    ASSERT_FALSE(line->commands.empty());
    const RunResult whole = runCompanion({"--help"});
    EXPECT_EQ(whole.status, 0);
    EXPECT_NE(whole.out.find("Example: thermika "), std::string::npos) << whole;
    for (const auto& [command, run] : line->commands) {
        const std::string name = command->get_name();
        EXPECT_NE(whole.out.find("\n  " + name + " "), std::string::npos) << whole;
        const RunResult help = runCompanion({name, "--help"});
        EXPECT_EQ(help.status, 0);
        EXPECT_EQ(help.err, "");
        EXPECT_NE(help.out.find("Example: thermika " + name), std::string::npos) << help;
        EXPECT_NE(help.out.find("thermika --help"), std::string::npos) << help;
        // Nothing but names, words for values and defaults: no types, no tables of the parser's.
        EXPECT_EQ((whole.out + help.out).find_first_of("{}"), std::string::npos) << help;
        EXPECT_EQ(help.out.find(":INT"), std::string::npos) << help;
    }
}

TEST(CommandLine, endsWith2AndPointsAtTheHelp) {
    EXPECT_EQ(runCompanion({}),
              (RunResult{"", "thermika: no command is given (see: thermika --help)\n", 2}));
    EXPECT_EQ(runCompanion({"optics", "--nonsense"}),
              (RunResult{"",
                         "thermika: The following argument was not expected: --nonsense (see: "
                         "thermika optics --help)\n",
                         2}));
    EXPECT_EQ(runCompanion({"\033[31m"}),
              (RunResult{"",
                         "thermika: The following argument was not expected: \\x1B[31m (see: "
                         "thermika --help)\n",
                         2}));
    EXPECT_EQ(runCompanion({"optics", "1408\033[31m"}),
              (RunResult{"",
                         "thermika: \"1408\\x1B[31m\" is no serial number: it has 8 digits and "
                         "does not begin with 0 (see: thermika cameras)\n",
                         2}));
}

/// A directory with a description.
class WithDescription : public testing::Test {
protected:
    WithDescription() {
        thermika_test::writeDescription(m_folder, 14080045,
                                        thermika_test::opticsList(thermika_test::opticsElement(
                                            33, "", thermika_test::rangeElement("-20", "100"))));
    }

    TempDir m_folder;
};

using CommandLineDirectory = WithDescription;

TEST_F(CommandLineDirectory, standsBeforeOrAfterTheCommandOrInTheEnvironment) {
    const RunResult expected = runCompanion({"--dir", m_folder.path(), "optics", "14080045"});
    EXPECT_EQ(expected.status, 0) << expected;
    EXPECT_EQ(runCompanion({"optics", "14080045", "--dir", m_folder.path() + "/"}), expected);
    EXPECT_EQ(runCompanion({"optics", "--dir=" + m_folder.path(), "14080045"}), expected);
    EXPECT_EQ(runCompanion({"optics", "14080045"},
                           [&] { setenv("THERMIKA_CALIBRATION_DIR", m_folder.path().c_str(), 1); }),
              expected);
}

// So that a script's arguments win over those of an alias.
TEST_F(CommandLineDirectory, isTheLastOneThatWasGiven) {
    EXPECT_EQ(
        runCompanion({"--dir", "/none", "optics", "14080045", "--dir", m_folder.path()}).status, 0);
    EXPECT_EQ(runCompanion({"config", "14080045", "--dir", m_folder.path(), "--optics", "1",
                            "--optics", "33"})
                  .status,
              0);
}

TEST_F(CommandLineDirectory, isRefusedWhereTheLibraryCouldNotUseIt) {
    EXPECT_EQ(runCompanion({"--dir", "", "optics", "14080045"}),
              (RunResult{"",
                         "thermika: --dir: the calibration directory has an empty name (name one, "
                         "or leave the option out)\n",
                         2}));
    const RunResult result =
        runCompanion({"--dir", "/" + std::string(300, 'd'), "files", "14080045"});
    EXPECT_EQ(result.status, 2);
    EXPECT_EQ(result.err,
              "thermika: --dir: the directory's path has more than 241 bytes (choose a shorter "
              "one)\n");
    EXPECT_EQ(runCompanion({"--dir", "/" + std::string(240, 'd'), "files", "14080045"}).status, 1);
    EXPECT_EQ(runCompanion({"--dir", "/" + std::string(241, 'd'), "files", "14080045"}).status, 2);
}

TEST_F(CommandLineDirectory, mayBeTheRoot) {
    const RunResult result = runCompanion({"--dir", "///", "optics", "14080045"});
    EXPECT_NE(result.err.find("/Cali-14080045.xml is missing "), std::string::npos) << result;
}

// What the text says without the link is another directory.
TEST_F(CommandLineDirectory, behindALinkIsWhereTheLinkLeads) {
    const TempDir other;
    std::filesystem::create_directory(m_folder / "below");
    std::filesystem::create_symlink(m_folder / "below", other / "link");
    const RunResult expected = runCompanion({"--dir", m_folder.path(), "optics", "14080045"});
    EXPECT_EQ(runCompanion({"--dir", other / "link/..", "optics", "14080045"}), expected);
    EXPECT_EQ(runCompanion({"--dir", other / "link/../", "optics", "14080045"}), expected);
    EXPECT_EQ(runCompanion({"--dir", ".//.", "optics", "14080045"},
                           [&] {
                               if (chdir(m_folder.path().c_str()) != 0) _exit(9);
                           }),
              expected);
}

TEST_F(CommandLineDirectory, isFromTheRootWhereTheWorkingDirectoryIsGone) {
    const std::string gone = m_folder / "gone";
    const auto leave = [&gone] {
        if (mkdir(gone.c_str(), 0700) != 0 || chdir(gone.c_str()) != 0 || rmdir(gone.c_str()) != 0)
            _exit(9);
    };
    EXPECT_EQ(runCompanion({"--dir", "rel", "optics", "14080045"}, leave),
              (RunResult{"",
                         "thermika: --dir: cannot find the directory \"rel\": No such file or "
                         "directory (change to a directory that exists, or name an absolute one)\n",
                         3}));
    EXPECT_EQ(runCompanion({"--dir", m_folder.path(), "optics", "14080045"}, leave).status, 0);
}

using CommandLineLocale = WithDescription;

TEST_F(CommandLineLocale, decidesOnCharactersNotOnNumbers) {
    thermika_test::writeDescription(
        m_folder, 14080046,
        thermika_test::opticsList(thermika_test::opticsElement(
            33, "33\xC2\xB0", thermika_test::rangeElement("-20.5", "100"))));
    const auto in = [&](const char* locale) {
        return runCompanion({"--dir", m_folder.path(), "optics", "14080046"},
                            [locale] { setenv("LC_ALL", locale, 1); });
    };
    const RunResult plain = in("C");
    EXPECT_NE(plain.out.find("33\\xC2\\xB0"), std::string::npos) << plain;
    EXPECT_NE(plain.out.find("-20.5..100"), std::string::npos) << plain;
    const RunResult utf8 = in("C.UTF-8");
    EXPECT_NE(utf8.out.find("33\xC2\xB0  "), std::string::npos) << utf8;
    EXPECT_EQ(in("de_DE.UTF-8"), utf8);
    EXPECT_EQ(in("de_DE.ISO-8859-1"), plain);
    EXPECT_EQ(in("none.example"), plain);
}

using CommandLineLog = WithDescription;

TEST_F(CommandLineLog, isOnStandardErrorOnlyWhenAskedFor) {
    const std::vector<std::string> command = {"--dir", m_folder.path(), "optics", "14080045"};
    const RunResult silent = runCompanion(command);
    EXPECT_EQ(silent.err, "");
    auto verbose = command;
    verbose.emplace_back("-v");
    const RunResult result = runCompanion(verbose);
    EXPECT_EQ(result.out, silent.out);
    EXPECT_EQ(result.err.find("DEBUG [Cali:"), 0U) << result;
}

TEST(CommandLine, refusesAnotherWordForColors) {
    EXPECT_EQ(runCompanion({"--color", "sometimes", "cameras"}),
              (RunResult{"",
                         "thermika: --color: \"sometimes\" is not auto, always or never (see: "
                         "thermika cameras --help)\n",
                         2}));
}

// A script's variable that was never set would choose the attached camera, standard output or the
// vendor's server.
TEST(CommandLine, refusesEmptyValues) {
    const std::vector<std::vector<std::string>> lines = {{"config", "-o", ""},
                                                         {"config", "--optics="},
                                                         {"config", "--range", ""},
                                                         {"fetch", "--from="},
                                                         {"online", "--from", ""},
                                                         {"fetch", "--jobs", ""},
                                                         {"validate", "", "140800"},
                                                         {"files", ""},
                                                         {"doctor", ""}};
    for (const std::vector<std::string>& line : lines) {
        const RunResult result = runCompanion(line);
        EXPECT_EQ(result.status, 2) << line[0] << ' ' << line[1] << result;
        EXPECT_EQ(result.out, "");
    }
    EXPECT_EQ(runCompanion({"config", "-o", ""}).err,
              "thermika: --output: the value is empty (see: thermika config --help)\n");
}

using CommandLineOutput = WithDescription;

TEST_F(CommandLineOutput, isReportedWhenItCannotBeWritten) {
    const auto to = [&](const std::function<void()>& prepare) {
        return runCompanion({"--dir", m_folder.path(), "optics", "14080045"}, prepare);
    };
    const auto expected = [](const std::string& reason) {
        return RunResult{
            "",
            "thermika: cannot write to standard output: " + reason + " (is it full or closed?)\n",
            3};
    };
    EXPECT_EQ(to([] { close(STDOUT_FILENO); }), expected("Bad file descriptor"));
    EXPECT_EQ(to([] { dup2(open("/dev/full", O_WRONLY), STDOUT_FILENO); }),
              expected("No space left on device"));
}

}  // namespace
