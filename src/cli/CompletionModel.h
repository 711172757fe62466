// The command line as completion scripts need it: names, and what each value may be completed to.
// Taken from the command line's own definition. Knows no shell.
#pragma once

#include <string>
#include <vector>

#include <CLI/App.hpp>

namespace thermika::cli {

/// What a value is completed to, in the words that the scripts use: "none", "files", "folders",
/// "serials", "optics", "ranges" or "words:A B C". Throws std::logic_error for a value that nobody
/// has thought of: the tests complete every one.
std::string completionOf(const std::string& valueName);

struct CompletionOption {
    std::vector<std::string> names;  ///< "-q", "--quiet"
    std::string value;               ///< completionOf() its value; "" for a flag
    std::string description;
};

struct CompletionCommand {
    std::string name;  ///< "" for what all commands share
    std::string description;
    std::vector<CompletionOption> options;
    std::vector<std::string> arguments;  ///< completionOf() each
};

struct CompletionModel {
    CompletionCommand shared;
    std::vector<CompletionCommand> commands;
};

CompletionModel completionModel(const CLI::App& app);

/// What bash and zsh ask the model, as functions that both understand: _thermika_value (COMMAND,
/// OPTION), _thermika_options (COMMAND) and _thermika_argument (COMMAND, INDEX).
std::string shellTables(const CompletionModel& model);

// The whole script for thermika and thermika-genconfig, one for each shell.
std::string bashCompletion(const CompletionModel& model);
std::string zshCompletion(const CompletionModel& model);
std::string fishCompletion(const CompletionModel& model);

}  // namespace thermika::cli
