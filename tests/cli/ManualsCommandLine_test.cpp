// The synopses in the manuals, and what thermika(1) tells of defaults and limits, against the
// command line itself.
#include <algorithm>
#include <set>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "cli/Camera.h"
#include "cli/CommandLine.h"
#include "support/ManualText.h"
#include "support/Matches.h"

namespace {

using thermika_test::manual;
using thermika_test::partOf;
using thermika_test::wordsOf;

/// The options in lines of a synopsis or a list, each with its value: "--jobsN", "-oFILE".
std::set<std::string> optionsWithValues(const std::vector<std::string>& lines) {
    const std::set<std::string> ignored = {".Op", ".It", "Op", "Ar", "Ns", ","};
    std::set<std::string> options;
    for (const std::string& line : lines) {
        if (line.compare(0, 7, ".Op Fl ") != 0 && line.compare(0, 7, ".It Fl ") != 0) continue;
        std::string option;
        for (const std::string& word : wordsOf(line)) {
            if (word == "Fl" && !option.empty()) options.insert(option);
            if (word == "Fl")
                option = "-";
            else if (ignored.count(word) == 0)
                option += word;
        }
        options.insert(option);
    }
    return options;
}

TEST(ManualsCommandLine, showEachCommandsOptionsAndArgumentsInTheSynopsis) {
    const auto line = thermika::cli::makeCommandLine();
    const std::string text = manual("thermika.1");
    std::string synopsis;
    for (const std::string& each : partOf(text, ".Sh SYNOPSIS", {".Sh "})) synopsis += each + "\n";
    for (const auto& [command, run] : line->commands) {
        const std::string name = command->get_name();
        const auto part = partOf(synopsis, ".Cm " + name, {".Nm"});
        std::set<std::string> options;
        std::set<std::string> arguments;
        for (const CLI::Option* const option : command->get_options()) {
            if (option == command->get_help_ptr()) continue;
            const std::string begin = option->get_required() ? ".Ar " : ".Op Ar ";
            if (option->get_positional()) arguments.insert(begin + option->get_name(true));
            if (option->get_positional()) continue;
            std::string value = option->get_type_name();
            value.erase(std::min(value.find(':'), value.size()));
            for (const char left : {'[', ',', ']'})
                value.erase(std::remove(value.begin(), value.end(), left), value.end());
            if (option->get_items_expected_max() == 0) value.clear();
            options.insert((option->get_snames().empty() ? "--" + option->get_lnames().at(0)
                                                         : "-" + option->get_snames().at(0)) +
                           value);
        }
        EXPECT_EQ(optionsWithValues(part), options) << name;
        // Deliberate: what only the completion scripts ask for is not shown.
        if (name == "completion") arguments = {".Cm bash | zsh | fish"};
        std::set<std::string> shown;
        for (const std::string& each : part)
            if (each.compare(0, 7, ".Op Fl ") != 0) shown.insert(each);
        EXPECT_EQ(shown, arguments) << name;
    }
    const std::string tool = manual("thermika-genconfig.1");
    const std::set<std::string> options = optionsWithValues(partOf(tool, ".Sh SYNOPSIS", {".Sh "}));
    EXPECT_EQ(options.size(), 2U);
    EXPECT_EQ(options, optionsWithValues(partOf(tool, ".Sh DESCRIPTION", {".Sh "})));
}

/// Whether the command line takes this value of an option of `thermika fetch`.
bool isTaken(const std::string& option, const std::string& value) {
    const auto line = thermika::cli::makeCommandLine();
    try {
        line->app.parse("fetch " + option + " " + value);
        return true;
    } catch (const CLI::ValidationError&) {
        return false;
    }
}

TEST(ManualsCommandLine, giveTheDefaultsAndLimitsOfFetch) {
    const auto line = thermika::cli::makeCommandLine();
    const std::string text = manual("thermika.1");
    std::size_t count = 0;
    for (const CLI::Option* const option : line->app.get_subcommand("fetch")->get_options()) {
        if (option->get_default_str().empty()) continue;
        ++count;
        const std::string name = option->get_name();
        const std::string value = option->get_default_str();
        std::string entry = " ";
        for (const std::string& each : partOf(text, ".It Fl " + name.substr(1), {".It ", ".El"}))
            entry += each + " ";
        const auto told = thermika_test::matchesIn(
            entry, R"re( (\d+)(?: \((\d+) ([MG])iB\))? unless told otherwise)re");
        ASSERT_EQ(told.size(), 1U) << name << entry;
        EXPECT_EQ(told[0][1], value) << name;
        if (!told[0][2].empty()) {
            EXPECT_EQ(std::stoull(told[0][2]) << (told[0][3] == "M" ? 20U : 30U),
                      std::stoull(value));
        }
        const auto limits =
            thermika_test::matchesIn(entry, R"re( (?:(\d+) to )?(\d+)(?=[;]| at most))re");
        EXPECT_EQ(limits.empty(), isTaken(name, "2147483647")) << name;
        for (const auto& limit : limits) {
            const long long most = std::stoll(limit[2]);
            EXPECT_TRUE(isTaken(name, limit[2])) << name;
            EXPECT_FALSE(isTaken(name, std::to_string(most + 1))) << name;
            if (limit[1].empty()) continue;
            EXPECT_TRUE(isTaken(name, limit[1])) << name;
            EXPECT_FALSE(isTaken(name, std::to_string(std::stoll(limit[1]) - 1))) << name;
            EXPECT_NE(option->get_description().find(limit[1] + " to " + limit[2]),
                      std::string::npos)
                << name;
        }
    }
    EXPECT_EQ(count, 7U);
    const auto most = thermika_test::matchesIn(text, R"re(lists more than (\d+)\b)re");
    EXPECT_EQ(most.size(), 2U);
    for (const auto& each : most) EXPECT_EQ(each[1], std::to_string(thermika::cli::kMostFiles));
}

}  // namespace
