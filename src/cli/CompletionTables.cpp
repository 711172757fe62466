// The model as functions for bash and zsh.
#include <cstddef>
#include <string>

#include "cli/CompletionModel.h"

namespace thermika::cli {

namespace {

std::string joined(const std::string& all, const std::string& between, const std::string& more) {
    return all.empty() ? more : all + between + more;
}

std::string optionNames(const CompletionCommand& command) {
    std::string names;
    for (const CompletionOption& option : command.options)
        for (const std::string& name : option.names) names = joined(names, " ", name);
    return names;
}

void addValues(std::string& script, const CompletionCommand& command) {
    const std::string where = command.name.empty() ? "*" : command.name;
    for (const CompletionOption& option : command.options) {
        if (option.value.empty()) continue;
        std::string pattern;
        for (const std::string& name : option.names)
            pattern = joined(pattern, " | ", std::string(where).append(":").append(name));
        script += "    " + pattern + ") echo '" + option.value + "' ;;\n";
    }
}

}  // namespace

std::string shellTables(const CompletionModel& model) {
    std::string values;
    std::string options;
    std::string arguments;
    std::string commands;
    addValues(values, model.shared);
    for (const CompletionCommand& command : model.commands) {
        addValues(values, command);
        options += "    " + command.name + ") echo '" + optionNames(command) + "' ;;\n";
        commands = joined(commands, " ", command.name);
        for (std::size_t i = 0; i < command.arguments.size(); ++i)
            arguments += "    " + command.name + ":" + std::to_string(i) + ") echo '" +
                         command.arguments[i] + "' ;;\n";
    }
    return "_thermika_value() {\n    case $1:$2 in\n" + values +
           "    esac\n}\n\n_thermika_options() {\n    echo '" + optionNames(model.shared) +
           "'\n    case $1 in\n" + options +
           "    esac\n}\n\n_thermika_argument() {\n    case $1:$2 in\n    :0) echo 'words:" +
           commands + "' ;;\n" + arguments + "    esac\n}\n";
}

}  // namespace thermika::cli
