// The completion scripts in real shells: every command and option of the command line's definition,
// and words that come from the bus and from a description.
#include <sys/mount.h>

#include <cstdlib>
#include <filesystem>
#include <functional>
#include <iterator>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include "cli/CommandLine.h"
#include "cli/CompletionModel.h"
#include "support/BuildPaths.h"
#include "support/CaliDescriptions.h"
#include "support/Companion.h"
#include "support/Sandbox.h"
#include "support/TestFiles.h"
#include "support/UsbTree.h"

namespace {

namespace fs = std::filesystem;
using nlohmann::json;
using thermika::cli::CompletionCommand;
using thermika::cli::CompletionModel;
using thermika::cli::CompletionOption;
using thermika_test::run;
using thermika_test::runCompanion;
using thermika_test::RunResult;
using thermika_test::TempDir;
using thermika_test::writeFile;

CompletionModel model() {
    const auto line = thermika::cli::makeCommandLine();
    return thermika::cli::completionModel(line->app);
}

std::set<std::string> optionsOf(const CompletionCommand& command, const CompletionCommand& shared) {
    std::set<std::string> names;
    for (const auto* const each : {&command, &shared})
        for (const CompletionOption& option : each->options)
            names.insert(option.names.begin(), option.names.end());
    return names;
}

std::set<std::string> distinctWords(const std::string& text) {
    std::istringstream in(text);
    std::set<std::string> words;
    for (std::string word; in >> word;) words.insert(word);
    return words;
}

/// The programs as a shell finds them.
void putProgramsOnPath() {
    const std::string folders = fs::path(THERMIKA_COMPANION).parent_path().string() + ":" +
                                fs::path(THERMIKA_TOOL).parent_path().string();
    setenv("PATH", (folders + ":" + std::getenv("PATH")).c_str(), 1);
    setenv("TERM", "xterm", 1);
}

struct Typed {
    std::string line;   ///< without the tab key at its end
    std::string words;  ///< what the shell makes of it, a blank between
};

/// Types all into one shell.
void expectCompleted(const std::string& shell, const std::vector<Typed>& all) {
    std::vector<std::string> arguments = {"python3", THERMIKA_TEST_SUPPORT "/complete.py", shell};
    std::string expected;
    for (const Typed& typed : all) {
        arguments.push_back(typed.line);
        expected += typed.words + "\n\n";
    }
    EXPECT_EQ(run("python3", arguments), (RunResult{expected, "", 0}));
}

/// What fish offers for a typed line, a word a line, without descriptions.
std::string offeredByFish(const std::string& typed) {
    const RunResult result =
        run("fish", {"fish", "--no-config", "-c",
                     "thermika completion fish | source; complete -C '" + typed + "'"});
    EXPECT_EQ(result.status, 0) << result;
    std::istringstream in(result.out);
    std::string words;
    for (std::string line; std::getline(in, line);) words += line.substr(0, line.find('\t')) + "\n";
    return words;
}

/// Runs `body` where two cameras are attached, one of them with a description.
void withCameras(const std::function<void()>& body) {
    thermika_test::inSandbox([&] {
        ASSERT_EQ(umount("/usr/share"), 0);  // shells have functions of theirs there
        thermika_test::UsbTree tree;
        tree.addRootHub(1);
        tree.addCamera("1-1", "14080045");
        tree.addCamera("1-2", "25080046");
        setenv("THERMIKA_CALIBRATION_DIR", THERMIKA_EXAMPLES, 1);
        putProgramsOnPath();
        body();
    });
}

TEST(Completion, namesEveryCommandAndOptionInBashAndZsh) {
    putProgramsOnPath();
    const CompletionModel expected = model();
    ASSERT_GE(expected.commands.size(), 9U);
    for (const std::string shell : {"bash", "zsh"}) {
        const std::string begin = shell == "zsh"
                                      ? "compdef() { :; }; source <(thermika completion zsh); "
                                      : "source <(thermika completion bash); ";
        std::set<std::string> commands;
        for (const CompletionCommand& command : expected.commands) {
            commands.insert(command.name);
            EXPECT_EQ(
                distinctWords(
                    run(shell, {shell, "-c", begin + "_thermika_options " + command.name}).out),
                optionsOf(command, expected.shared))
                << shell;
        }
        const std::string words = run(shell, {shell, "-c", begin + "_thermika_argument '' 0"}).out;
        ASSERT_EQ(words.substr(0, 6), "words:");
        EXPECT_EQ(distinctWords(words.substr(6)), commands) << shell;
    }
}

TEST(Completion, namesEveryCommandAndOptionInFish) {
    putProgramsOnPath();
    const CompletionModel expected = model();
    std::set<std::string> commands;
    for (const CompletionCommand& command : expected.commands) {
        commands.insert(command.name);
        std::set<std::string> offered =
            distinctWords(offeredByFish("thermika " + command.name + " -"));
        offered.merge(distinctWords(offeredByFish("thermika " + command.name + " --")));
        EXPECT_EQ(offered, optionsOf(command, expected.shared)) << command.name;
    }
    EXPECT_EQ(distinctWords(offeredByFish("thermika ")), commands);
}

TEST(Completion, scriptsHaveNoSyntaxErrors) {
    for (const char* const shell : {"bash", "zsh", "fish"}) {
        const TempDir folder;
        const std::string file = folder / "script";
        const RunResult script = runCompanion({"completion", shell});
        EXPECT_EQ(script.status, 0);
        writeFile(file, script.out);
        EXPECT_EQ(run(shell, {shell, "-n", file}), (RunResult{"", "", 0}));
    }
}

class CompletionTyped : public testing::TestWithParam<const char*> {};

TEST_P(CompletionTyped, endsInTheWordsThatWereMeant) {
    const char* const shell = GetParam();
    withCameras([shell] {
        const TempDir folder;
        writeFile(folder / "camera one.xml", "");
        expectCompleted(
            shell, {{"thermika fet", "thermika\nfetch"},
                    {"thermika fetch --dry", "thermika\nfetch\n--dry-run"},
                    {"thermika --color al", "thermika\n--color\nalways"},
                    {"thermika files 2", "thermika\nfiles\n25080046"},
                    {"thermika config 14080045 --optics 1",
                     "thermika\nconfig\n14080045\n--optics\n18,T18 HT"},
                    {"thermika config 14080045 --optics 33 --range 4",
                     "thermika\nconfig\n14080045\n--optics\n33\n--range\n450..1500"},
                    {"thermika validate " + folder.path() + "/cam",
                     "thermika\nvalidate\n" + folder.path() + "/camera one.xml"},
                    {"thermika validate camera.xml 2", "thermika\nvalidate\ncamera.xml\n25080046"},
                    {"thermika completion z", "thermika\ncompletion\nzsh"},
                    {"thermika-genconfig -d 1", "thermika-genconfig\n-d\n14080045"}});
    });
}

// Bash breaks words at such characters.
TEST_P(CompletionTyped, takesTextsWithColonsAndSignsOfEquality) {
    const char* const shell = GetParam();
    withCameras([shell] {
        const TempDir folder;
        thermika_test::writeDescription(
            folder, 25080046,
            thermika_test::opticsList(thermika_test::opticsElement(
                                          33, "a:b=c", thermika_test::rangeElement("-20", "100")) +
                                      thermika_test::opticsElement(
                                          33, "a:d", thermika_test::rangeElement("450", "1500"))));
        const std::string begin = "thermika --dir=" + folder.path() + " config 25080046 ";
        const std::string words = "thermika\n--dir=" + folder.path() + "\nconfig\n25080046\n";
        expectCompleted(
            shell,
            {{begin + "--optics 33,a:b", words + "--optics\n33,a:b=c"},
             {begin + "--optics 33,a:d --range ", words + "--optics\n33,a:d\n--range\n450..1500"},
             {begin + "--optics=33,a:b", words + "--optics=33,a:b=c"},
             {begin + "--optics=33,a:d --range=", words + "--optics=33,a:d\n--range=450..1500"}});
    });
}

// As it stands in the command line: the shell has not expanded it yet.
TEST_P(CompletionTyped, asksTheProgramThatWasTyped) {
    const char* const shell = GetParam();
    withCameras([shell] {
        const TempDir home;
        setenv("HOME", home.path().c_str(), 1);
        fs::create_symlink(THERMIKA_COMPANION, home / "thermika");
        expectCompleted(shell,
                        {{"~/thermika files 2", home / "thermika" + "\nfiles\n25080046"},
                         {"$HOME/thermika files 2", home / "thermika" + "\nfiles\n25080046"}});
    });
}

// The texts below are a description's, which a stranger may have written.
TEST_P(CompletionTyped, neverRunsOrExpandsWhatADescriptionSays) {
    const char* const shell = GetParam();
    withCameras([shell] {
        const TempDir folder;
        const std::string trap = folder / "trap";
        std::string optics;
        const std::string texts[] = {"$(touch " + trap + ")", "`touch " + trap + "`",
                                     "; touch " + trap, "\033[31m"};
        for (std::size_t i = 0; i < std::size(texts); ++i)
            optics += thermika_test::opticsElement(10 * (static_cast<int>(i) + 1), texts[i], "");
        thermika_test::writeDescription(folder, 25080046, thermika_test::opticsList(optics));
        const std::string begin = "thermika --dir " + folder.path() + " config 25080046 --optics ";
        const std::string words =
            "thermika\n--dir\n" + folder.path() + "\nconfig\n25080046\n--optics\n";
        expectCompleted(shell, {{begin + "1", words + "10," + texts[0]},
                                {begin + "2", words + "20," + texts[1]},
                                {begin + "3", words + "30," + texts[2]},
                                {begin + "4", words + "4"}});
        EXPECT_FALSE(fs::exists(trap));
    });
}

INSTANTIATE_TEST_SUITE_P(Shells, CompletionTyped, testing::Values("bash", "zsh"),
                         [](const auto& each) { return std::string(each.param); });

TEST(Completion, completesInFish) {
    withCameras([] {
        EXPECT_EQ(offeredByFish("thermika fet"), "fetch\n");
        EXPECT_EQ(offeredByFish("thermika --color al"), "always\n");
        EXPECT_EQ(offeredByFish("thermika files "), "14080045\n25080046\n");
        EXPECT_EQ(offeredByFish("thermika validate camera.xml "), "14080045\n25080046\n");
        EXPECT_EQ(offeredByFish("thermika config 14080045 --optics "), "18,T18 HT\n33\n53,O53\n");
        EXPECT_EQ(offeredByFish("thermika config 14080045 --optics 33 --range 4"), "450..1500\n");
        EXPECT_EQ(offeredByFish("thermika-genconfig -d 2"), "25080046\n");
    });
}

TEST(Completion, listsTheWordsThatScriptsAskFor) {
    const auto words = [](std::vector<std::string> arguments) {
        arguments.insert(arguments.begin(), {"--dir", THERMIKA_EXAMPLES, "completion"});
        return runCompanion(arguments);
    };
    EXPECT_EQ(words({"optics", "14080045"}), (RunResult{"33\n53,O53\n18,T18 HT\n", "", 0}));
    EXPECT_EQ(words({"ranges", "14080046", "60"}), (RunResult{"0..250\n", "", 0}));
    EXPECT_EQ(words({"ranges", "14080046"}), (RunResult{"0..250\n", "", 0}));
    EXPECT_EQ(words({"ranges", "14080046", "61"}), (RunResult{"", "", 1}));
    EXPECT_EQ(words({"ranges", "14080047"}).status, 3);
    EXPECT_EQ(words({"csh"}).status, 2);
    EXPECT_EQ(json::parse(words({"--json", "optics", "14080046"}).out),
              json({{"what", "optics"}, {"words", {"60"}}}));
    EXPECT_EQ(json::parse(words({"--json", "fish"}).out).at("script"), words({"fish"}).out);
}

// A terminal without UTF-8 may take a byte of a character for a control.
TEST(Completion, leavesOutWhatTheLocaleCannotShowButNotFromDocuments) {
    const TempDir folder;
    thermika_test::writeDescription(
        folder, 25080046,
        thermika_test::opticsList(thermika_test::opticsElement(10, "\xC3\x9B", "") +
                                  thermika_test::opticsElement(20, "\x9B", "") +
                                  thermika_test::opticsElement(30, "", "") +
                                  thermika_test::opticsElement(40, "back\\slash", "")));
    const auto in = [&](const char* locale, std::vector<std::string> more = {}) {
        more.insert(more.begin(), {"--dir", folder.path(), "completion", "optics", "25080046"});
        return runCompanion(more, [locale] { setenv("LC_ALL", locale, 1); });
    };
    EXPECT_EQ(in("C"), (RunResult{"30\n40,back\\slash\n", "", 0}));
    EXPECT_EQ(in("C.UTF-8"), (RunResult{"10,\xC3\x9B\n30\n40,back\\slash\n", "", 0}));
    const RunResult document = in("C", {"--json"});
    EXPECT_EQ(json::parse(document.out).at("words"),
              json({"10,\xC3\x9B", "20,\xF4\x8F\xBA\x9B", "30", "40,back\\slash"}));
    EXPECT_EQ(in("C.UTF-8", {"--json"}), document);
}

TEST(Completion, refusesWordsThatWouldChangeNothing) {
    EXPECT_EQ(runCompanion({"completion", "bash", "nonsense"}),
              (RunResult{"",
                         "thermika: completion bash has nothing to do with \"nonsense\" (see: "
                         "thermika completion --help)\n",
                         2}));
    EXPECT_EQ(runCompanion({"completion", "optics", "14080045", "33"}).status, 2);
}

TEST(Completion, offersTheRangesOfTheOpticsThatWasTyped) {
    const TempDir folder;
    const std::string cold = thermika_test::rangeElement("-20", "100");
    const std::string hot = thermika_test::rangeElement("450", "1500");
    thermika_test::writeDescription(
        folder, 14080045,
        thermika_test::opticsList(thermika_test::opticsElement(33, "A", cold) +
                                  thermika_test::opticsElement(33, "B", cold + hot) +
                                  thermika_test::opticsElement(60, "", hot)));
    const auto ranges = [&](const std::string& optics) {
        return runCompanion({"--dir", folder.path(), "completion", "ranges", "14080045", optics})
            .out;
    };
    EXPECT_EQ(ranges("33,A"), "-20..100\n");
    EXPECT_EQ(ranges("33,B"), "-20..100\n450..1500\n");
    EXPECT_EQ(ranges("33"), "-20..100\n450..1500\n");
    EXPECT_EQ(ranges("60"), "450..1500\n");
    EXPECT_EQ(ranges("wide"), "-20..100\n450..1500\n");
}

TEST(CompletionModel, describesOptionsInFishsOwnQuotes) {
    thermika::cli::CompletionModel model;
    model.shared.options.push_back({{"-x"}, "", "the camera's \\ and so on"});
    EXPECT_NE(thermika::cli::fishCompletion(model).find(
                  "complete -c thermika -s x -d 'the camera\\'s \\\\ and so on'\n"),
              std::string::npos);
}

TEST(CompletionModel, refusesAValueThatNobodyThoughtOf) {
    EXPECT_THROW(thermika::cli::completionOf("COLOUR"), std::logic_error);
}

}  // namespace
