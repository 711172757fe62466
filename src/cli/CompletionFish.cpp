// Completion for fish, which quotes what it inserts.
#include <string>
#include <string_view>

#include "cli/CompletionModel.h"

namespace thermika::cli {

namespace {

constexpr const char* kBeginning =
    R"sh(# Completion of thermika and thermika-genconfig for fish, by "thermika completion fish".

# What is typed so far: command, serial number, optics, directory, number of arguments; a line each.
function __thermika_typed
    set -l command ''
    set -l serial ''
    set -l optics ''
    set -l dir ''
    set -l count 0
    set -l option ''
    for word in (commandline -opc)[2..-1]
        set -l value ''
        if test -n "$option"
            set value $word
        else if string match -q -- '--*=*' $word
            set option (string replace -r '=.*' '' -- $word)
            set value (string replace -r '^[^=]*=' '' -- $word)
        else if contains -- $word $__thermika_valued
            set option $word
            continue
        else if string match -q -- '-*' $word
            continue
        else if test -z "$command"
            set command $word
            continue
        else
            set count (math $count + 1)
            string match -qr '^[1-9][0-9]{7}$' -- $word; and set serial $word
            continue
        end
        switch $option
            case --dir
                set dir $value
            case --optics
                set optics $value
        end
        set option ''
    end
    printf '%s\n' "$command" "$serial" "$optics" "$dir" $count
end

# Whether the command is $argv[1], with $argv[2] arguments where a number is given.
function __thermika_is
    set -l typed (__thermika_typed)
    test "$typed[1]" = "$argv[1]"; or return 1
    test (count $argv) -lt 2; or test "$typed[5]" = "$argv[2]"
end

function __thermika_serials
    thermika cameras --serials 2>/dev/null
end

function __thermika_optics
    set -l typed (__thermika_typed)
    set -l dir
    test -n "$typed[4]"; and set dir --dir $typed[4]
    thermika $dir completion optics "$typed[2]" 2>/dev/null
end

function __thermika_ranges
    set -l typed (__thermika_typed)
    set -l dir
    test -n "$typed[4]"; and set dir --dir $typed[4]
    thermika $dir completion ranges "$typed[2]" "$typed[3]" 2>/dev/null
end

complete -c thermika-genconfig -f
complete -c thermika-genconfig -s d -x -a '(__thermika_serials)' -d 'Serial number of the camera'
complete -c thermika-genconfig -s t -x -a '(__fish_complete_directories)' -d 'Ends the run'

complete -c thermika -f
)sh";

std::string inFishQuotes(std::string_view text) {
    std::string out = "'";
    for (const char each : text) {
        if (each == '\'' || each == '\\') out += '\\';
        out += each;
    }
    return out + "'";
}

/// How fish is told what a value or an argument is completed to.
std::string offer(const std::string& completion) {
    constexpr std::string_view kWords = "words:";
    if (completion == "none") return " -x";
    if (completion == "files") return " -r -F";
    if (completion == "folders") return " -x -a '(__fish_complete_directories)'";
    if (completion.compare(0, kWords.size(), kWords) == 0)
        return " -x -a " + inFishQuotes(completion.substr(kWords.size()));
    return " -x -a '(__thermika_" + completion + ")'";
}

void addOptions(std::string& script, const CompletionCommand& command) {
    for (const CompletionOption& option : command.options) {
        script += "complete -c thermika";
        if (!command.name.empty()) script += " -n '__thermika_is " + command.name + "'";
        for (const std::string& name : option.names)
            script += name[1] == '-' ? " -l " + name.substr(2) : " -s " + name.substr(1);
        if (!option.value.empty()) script += offer(option.value);
        script += " -d " + inFishQuotes(option.description) + "\n";
    }
}

std::string valuedOptions(const CompletionModel& model) {
    std::string names;
    const auto add = [&names](const CompletionCommand& command) {
        for (const CompletionOption& option : command.options)
            if (!option.value.empty())
                for (const std::string& name : option.names) names += " " + name;
    };
    add(model.shared);
    for (const CompletionCommand& command : model.commands) add(command);
    return names;
}

}  // namespace

std::string fishCompletion(const CompletionModel& model) {
    std::string script = kBeginning + ("set -g __thermika_valued" + valuedOptions(model) + "\n");
    addOptions(script, model.shared);
    for (const CompletionCommand& command : model.commands) {
        script += "complete -c thermika -n '__thermika_is \"\"' -a " + command.name + " -d " +
                  inFishQuotes(command.description) + "\n";
        addOptions(script, command);
        for (std::size_t i = 0; i < command.arguments.size(); ++i)
            script += "complete -c thermika -n '__thermika_is " + command.name + " " +
                      std::to_string(i) + "'" + offer(command.arguments[i]) + "\n";
    }
    return script;
}

}  // namespace thermika::cli
