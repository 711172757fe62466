// The manuals in docs/man against the programs, their help texts, the headers and the schema.
#include <algorithm>
#include <cctype>
#include <filesystem>
#include <regex>
#include <set>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "cli/CommandLine.h"
#include "cli/CompletionModel.h"
#include "cli/ValidateSchema.h"
#include "support/BuildPaths.h"
#include "support/Companion.h"
#include "support/ManualText.h"
#include "support/Matches.h"
#include "support/Sandbox.h"
#include "support/TestFiles.h"

namespace {

namespace fs = std::filesystem;
using thermika::cli::CompletionCommand;
using thermika::cli::CompletionOption;
using thermika_test::linesOf;
using thermika_test::manual;
using thermika_test::partOf;
using thermika_test::readFile;
using thermika_test::run;
using thermika_test::runCompanion;
using thermika_test::RunResult;
using thermika_test::wordsOf;

using Words = std::set<std::string>;

const std::string kSources = THERMIKA_SOURCES;

/// The options that a list entry is about: ".It Fl q , -quiet" is about -q and --quiet.
Words optionsOfEntry(const std::string& line) {
    Words options;
    for (const std::string& word : wordsOf(line.substr(std::string(".It Fl ").size()))) {
        if (word == "Ar") break;
        if (word != ",") options.insert("-" + word);
    }
    return options;
}

/// The options that a manual of one command describes.
Words optionsIn(const std::vector<std::string>& lines) {
    Words options;
    for (const std::string& line : lines)
        if (line.compare(0, 7, ".It Fl ") == 0) options.merge(optionsOfEntry(line));
    return options;
}

Words namesOf(const std::vector<CompletionOption>& options) {
    Words names;
    for (const CompletionOption& option : options)
        names.insert(option.names.begin(), option.names.end());
    return names;
}

/// What stands first in the lines of a help text's list: its entries, each of them by all names.
Words entriesOfHelp(const std::string& help, const std::string& title) {
    Words entries;
    for (const std::string& line : partOf(help, title, {"Options:", "Subcommands:", "Example:"})) {
        if (line.size() < 3 || line.compare(0, 2, "  ") != 0 || line[2] == ' ') continue;
        std::string names = wordsOf(line).at(0);
        std::replace(names.begin(), names.end(), ',', ' ');
        for (const std::string& name : wordsOf(names)) entries.insert(name);
    }
    return entries;
}

Words statusesIn(const std::string& text) {
    Words statuses;
    for (const std::string& line : partOf(text, ".Sh EXIT STATUS", {".Sh "}))
        if (line.compare(0, 4, ".It ") == 0) statuses.insert(line.substr(4));
    return statuses;
}

/// Every word that follows `macro` at the beginning of a line or as a word of it.
Words afterMacro(const std::string& text, const std::string& macro) {
    Words found;
    for (const std::string& line : linesOf(text)) {
        const std::vector<std::string> words = wordsOf(line);
        for (std::size_t i = 0; i + 1 < words.size(); ++i)
            if (words[i] == macro || words[i] == "." + macro) found.insert(words[i + 1]);
    }
    return found;
}

TEST(Manuals, passMandocsLint) {
    std::size_t count = 0;
    for (const auto& entry : fs::directory_iterator(kSources + "/docs/man")) {
        EXPECT_EQ(run("mandoc", {"mandoc", "-T", "lint", "-W", "warning", entry.path()}),
                  (RunResult{"", "", 0}));
        ++count;
    }
    EXPECT_EQ(count, 4U);
}

TEST(Manuals, nameTheCompanionsCommandsAndOptionsAsItsHelpDoes) {
    const auto line = thermika::cli::makeCommandLine();
    const auto model = thermika::cli::completionModel(line->app);
    const std::string text = manual("thermika.1");
    const Words shared = optionsIn(partOf(text, ".Sh DESCRIPTION", {".Sh "}));
    EXPECT_EQ(shared, namesOf(model.shared.options));
    const std::string help = runCompanion({"--help"}).out;
    EXPECT_EQ(entriesOfHelp(help, "Options:"), shared);
    Words commands;
    for (const CompletionCommand& command : model.commands) {
        commands.insert(command.name);
        const auto part = partOf(text, ".It Cm " + command.name, {".It Cm ", ".Sh "});
        EXPECT_FALSE(part.empty()) << command.name;
        Words options = optionsIn(part);
        EXPECT_EQ(options, namesOf(command.options)) << command.name;
        options.insert({"-h", "--help"});
        EXPECT_EQ(entriesOfHelp(runCompanion({command.name, "--help"}).out, "Options:"), options)
            << command.name;
    }
    EXPECT_EQ(entriesOfHelp(help, "Subcommands:"), commands);
    Words described;
    for (const std::string& each : partOf(text, ".Sh COMMANDS", {".Sh "}))
        if (each.compare(0, 7, ".It Cm ") == 0) described.insert(wordsOf(each).at(2));
    EXPECT_EQ(described, commands);
}

TEST(Manuals, nameTheStatuses) {
    Words statuses;
    for (const auto& status : thermika_test::matchesIn(readFile(kSources + "/src/cli/Command.h"),
                                                       R"re(\n    k\w+ = (\d+), +///<)re"))
        statuses.insert(status[1]);
    EXPECT_EQ(statuses.size(), 4U);
    EXPECT_EQ(statusesIn(manual("thermika.1")), statuses);
    EXPECT_EQ(statusesIn(manual("thermika-genconfig.1")), (Words{"0", "255"}));
    EXPECT_EQ(run(THERMIKA_TOOL, {"genconfig", "-d1"}).status, 255);
    EXPECT_EQ(run(THERMIKA_TOOL, {"genconfig", "-d14080045"}).status, 0);
}

TEST(Manuals, haveStatusesThatTheCompanionAnswers) {
    const std::string folder = "--dir=" + kSources;
    EXPECT_EQ(runCompanion({"--version"}).status, 0);
    EXPECT_EQ(runCompanion({"files", "14080045", folder}).status, 1);
    EXPECT_EQ(runCompanion({"files", "--nonsense"}).status, 2);
    EXPECT_EQ(runCompanion({"validate", kSources + "/no such document"}).status, 3);
}

/// The variables that our code asks for.
Words variablesIn(const fs::path& folder) {
    Words names;
    for (const auto& entry : fs::recursive_directory_iterator(folder)) {
        const std::string source = entry.is_regular_file() ? readFile(entry.path()) : "";
        for (const auto& asked :
             thermika_test::matchesIn(source, R"re((?:getenv|envname)\("([^"]+)"\))re"))
            names.insert(asked[1]);
    }
    return names;
}

TEST(Manuals, nameTheEnvironmentThatTheCompanionHeeds) {
    Words named;
    for (const std::string& line : partOf(manual("thermika.1"), ".Sh ENVIRONMENT", {".Sh "}))
        if (line.compare(0, 7, ".It Ev ") == 0)
            for (const std::string& word : wordsOf(line.substr(7)))
                if (word != ",") named.insert(word);
    Words heeded;
    const std::string source = readFile(kSources + "/src/cli/Main.cpp");
    const std::size_t list = source.find("kHeeded[] = {");
    ASSERT_NE(list, std::string::npos);
    for (const auto& name : thermika_test::matchesIn(
             source.substr(list, source.find("};", list) - list), "\"([^\"]+)\""))
        heeded.insert(name[1]);
    EXPECT_EQ(named, heeded);
    for (const char* const folder : {"/src/cli", "/src/fetch", "/src/sdk", "/src/imgproc"})
        for (const std::string& asked : variablesIn(kSources + folder))
            EXPECT_EQ(heeded.count(asked), 1U) << asked;
}

TEST(Manuals, nameTheToolsOptionsAsItsUsageTextAndItsCompletionDo) {
    const std::string driver = readFile(kSources + "/src/app/Driver.cpp");
    ASSERT_NE(driver.find("getopt(argc, argv, \"d:t:\")"), std::string::npos);
    const Words options = {"-d", "-t"};
    EXPECT_EQ(optionsIn(linesOf(manual("thermika-genconfig.1"))), options);
    for (const std::string& option : options)
        EXPECT_NE(driver.find("printf(\" " + option + ": "), std::string::npos);
    for (const char* const shell : {"bash", "zsh"})
        EXPECT_NE(runCompanion({"completion", shell}).out.find("'words:-d -t'"), std::string::npos);
    const std::string fish = runCompanion({"completion", "fish"}).out;
    for (const std::string& option : options)
        EXPECT_NE(fish.find("complete -c thermika-genconfig -s " + option.substr(1) + " "),
                  std::string::npos);
}

TEST(Manuals, describeEveryElementOfADescription) {
    const Words described = afterMacro(manual("thermika-files.5"), "Sy");
    const std::string reader = readFile(kSources + "/src/imgproc/internal/CaliReader.cpp");
    std::size_t count = 0;
    for (std::size_t at = reader.find("\""); at != std::string::npos; at = reader.find("\"", at)) {
        const std::size_t end = reader.find('"', ++at);
        const std::string name = reader.substr(at, end - at);
        at = end + 1;
        if (name.empty() || name[0] < 'A' || name[0] > 'Z') continue;
        EXPECT_EQ(described.count(name), 1U) << name;
        ++count;
    }
    EXPECT_GE(count, 45U);
}

/// How the manual describes the element that becomes the member `name`, of `type`.
std::string entryOf(const std::string& reader, const std::string& type, const std::string& name,
                    std::string value) {
    if (type == "bool") return name + " : No truth, default " + value;
    const bool isWhole = reader.find("readInteger(document, \"" + name + "\"") != std::string::npos;
    value.erase(std::remove(value.begin(), value.end(), 'F'), value.end());
    if (isWhole && type == "double") return name + " : No whole number, default 0";
    if (type.find("16") != std::string::npos)
        return name + " : No whole number, 16 bits, default " + value;
    if (type.find("32") != std::string::npos)
        return name + " : No whole number, 32 bits, default " + value;
    return name + " : No number, default " + value;
}

TEST(Manuals, giveTheDefaultOfEveryElementOfADescription) {
    const std::string reader = readFile(kSources + "/src/imgproc/internal/CaliReader.cpp");
    // What is no member's initial value.
    Words expected = {"Text : No text, default none",
                      "TempRanges : No ranges, default three",
                      "TempLoExt : No number, default TempLo",
                      "TempHiExt : No number, default TempHi",
                      "Framerates : No frame rates, default none",
                      "TableParams : No parameters, default none",
                      "Normalize : No truth, default 0"};
    for (const auto& member :
         thermika_test::matchesIn(readFile(kSources + "/src/imgproc/Cali.h"),
                                  R"re(\n    (?:std::)?(\w+) ([A-Z]\w+) = ([^;]+);)re")) {
        const std::string& name = member[2];
        if (reader.find('"' + name + '"') == std::string::npos || name == "Normalize" ||
            name == "TempLoExt" || name == "TempHiExt")
            continue;
        expected.insert(entryOf(reader, member[1], name, member[3]));
    }
    EXPECT_GE(expected.size(), 45U);
    Words described;
    for (const std::string& line :
         partOf(manual("thermika-files.5"), ".Sh CALIBRATION DESCRIPTION", {".Sh "}))
        if (line.compare(0, 7, ".It Sy ") == 0) described.insert(line.substr(7));
    EXPECT_EQ(described, expected);
}

TEST(Manuals, describeEveryElementOfTheConfigurationDocumentAndItsDefault) {
    std::string text;
    for (const std::string& line :
         partOf(manual("thermika-files.5"), ".Sh CONFIGURATION DOCUMENT", {".Sh "}))
        text += line + "\n";
    const std::string schema(thermika::cli::imagerSchemaText());
    std::size_t entries = 0;
    for (std::size_t at = 0; (at = text.find(".It Sy ", at)) != std::string::npos; ++at) ++entries;
    EXPECT_EQ(entries, thermika::cli::ImagerSchema::instance().elements().size() - 1);
    for (const auto& element : thermika::cli::ImagerSchema::instance().elements()) {
        if (element.parent.empty()) continue;
        const std::size_t at = schema.find("name=\"" + element.name + "\"");
        const std::string tag = schema.substr(at, schema.find('>', at) - at);
        const std::string before = "default=\"";
        const std::size_t from = tag.find(before);
        std::string entry = ".It Sy " + element.name;
        if (from != std::string::npos) {
            const std::size_t begin = from + before.size();
            const std::string value = tag.substr(begin, tag.find('"', begin) - begin);
            entry += " : No default " + (value.empty() ? "empty" : value);
        }
        if (element.isRequired) entry += " Pq required";
        std::string words = element.words;
        words[0] = static_cast<char>(std::toupper(static_cast<unsigned char>(words[0])));
        words = std::regex_replace(words, std::regex(" -(?=[0-9])"), " \\-");
        entry += "\n" + words + (element.isContainer ? ", in:" : ".");
        EXPECT_NE(text.find(entry + "\n"), std::string::npos) << entry;
    }
}

TEST(Manuals, nameThePublicHeadersAndOperations) {
    const std::string text = manual("libthermika.3");
    std::string headers;
    for (const std::string folder : {"sdk", "imgproc"})
        for (const auto& entry : fs::directory_iterator(kSources + ("/src/" + folder))) {
            if (entry.path().extension() != ".h") continue;
            headers += readFile(entry.path());
            EXPECT_NE(text.find(".In " + folder + "/" + entry.path().filename().string() + "\n"),
                      std::string::npos)
                << entry.path();
        }
    EXPECT_NE(text.find(".In sdk/Version.h\n"), std::string::npos);
    const Words named = afterMacro(text, "Fn");
    EXPECT_GE(named.size(), 40U);
    for (const std::string& name : named) {
        const std::size_t colon = name.rfind(':');
        const std::string member = colon == std::string::npos ? name : name.substr(colon + 1);
        EXPECT_NE(headers.find(member + "("), std::string::npos) << name;
    }
    // The operations of the two big classes, one a line at the depth of members.
    for (const std::string header : {"sdk/IRCalibrationManager.h", "imgproc/Cali.h"})
        for (const std::string& line : linesOf(readFile(kSources + "/src/" + header))) {
            if (line.find("private:") != std::string::npos) break;
            const std::size_t open = line.find('(');
            if (line.compare(0, 4, "    ") != 0 || line.find("//") != std::string::npos ||
                open == std::string::npos)
                continue;
            const std::size_t begin = line.find_last_of(" *~", open) + 1;
            const std::string name = line.substr(begin, open - begin);
            if (name.empty() || name[0] < 'a' || name[0] > 'z' || name == "operator=") continue;
            EXPECT_EQ(named.count(name), 1U) << name;
        }
}

}  // namespace
