// The names of values stand in the help texts; each has one completion.
#include "cli/CompletionModel.h"

#include <stdexcept>

namespace thermika::cli {

namespace {

struct ValueRow {
    const char* name;
    const char* completion;
};

constexpr ValueRow kValues[] = {
    {"BYTES", "none"},
    {"DIR", "folders"},
    {"FILE", "files"},
    {"FOV[,TEXT]", "optics"},
    {"MIN..MAX", "ranges"},
    {"N", "none"},
    {"OPTICS", "optics"},
    {"SECONDS", "none"},
    {"SERIAL", "serials"},
    {"URL|FOLDER", "folders"},
    {"WHAT", "words:bash zsh fish"},
    {"WHEN", "words:auto always never"},
};

CompletionCommand readCommand(const CLI::App& app) {
    CompletionCommand command{app.get_name(), app.get_description(), {}, {}};
    for (const CLI::Option* const option : app.get_options()) {
        if (option->get_positional()) {
            command.arguments.push_back(completionOf(option->get_name(true)));
            continue;
        }
        if (option == app.get_help_ptr() && app.get_parent() != nullptr) continue;  // shared
        CompletionOption& read = command.options.emplace_back();
        for (const std::string& name : option->get_snames()) read.names.push_back("-" + name);
        for (const std::string& name : option->get_lnames()) read.names.push_back("--" + name);
        // What it is checked for stands behind a colon.
        const std::string value = option->get_type_name();
        if (option->get_items_expected_max() > 0)
            read.value = completionOf(value.substr(0, value.find(':')));
        read.description = option->get_description();
    }
    return command;
}

}  // namespace

std::string completionOf(const std::string& valueName) {
    for (const ValueRow& row : kValues)
        if (valueName == row.name) return row.completion;
    throw std::logic_error("no completion is known for the value " + valueName);
}

CompletionModel completionModel(const CLI::App& app) {
    CompletionModel model;
    model.shared = readCommand(app);
    model.shared.name.clear();
    for (const CLI::App* const command : app.get_subcommands([](const CLI::App*) { return true; }))
        model.commands.push_back(readCommand(*command));
    return model;
}

}  // namespace thermika::cli
