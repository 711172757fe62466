// `thermika completion`: the scripts that complete command lines, and the words that they ask for.
#include <algorithm>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include <nlohmann/json.hpp>

#include "cli/Camera.h"
#include "cli/Choice.h"
#include "cli/Commands.h"
#include "cli/CompletionModel.h"
#include "cli/Escape.h"

namespace thermika::cli {

namespace {

struct CompletionArguments {
    std::string what;
    std::string serialText;
    std::string optics;
};

std::string script(const std::string& shell, const CompletionModel& model) {
    if (shell == "bash") return bashCompletion(model);
    return shell == "zsh" ? zshCompletion(model) : fishCompletion(model);
}

/// The ranges of the optics, or of all when it is none of the description's.
std::vector<std::string> rangesOf(ConfigCali& cali, const std::string& optics) {
    const std::optional<OpticsChoice> wanted = parseOptics(optics);
    std::vector<std::string> words;
    for (const std::string& each : opticsChoices(cali)) {
        const OpticsChoice choice = parseOptics(each).value_or(OpticsChoice());
        if (wanted && (choice.fovDeg != wanted->fovDeg ||
                       (wanted->text && choice.text.value_or("") != *wanted->text)))
            continue;
        for (const std::string& range : rangeChoices(cali, choice.fovDeg, choice.text.value_or("")))
            if (std::find(words.begin(), words.end(), range) == words.end()) words.push_back(range);
    }
    return words;
}

std::vector<std::string> words(const Session& session, const CompletionArguments& arguments) {
    ConfigCali& cali = loadDescription(session, chosenCamera(arguments.serialText, "optics"));
    return arguments.what == "optics" ? opticsChoices(cali) : rangesOf(cali, arguments.optics);
}

/// A word that would change nothing.
void refuse(const std::string& word, const std::string& what) {
    if (!word.empty())
        throw Problem(Status::kUsage, "completion " + what + " has nothing to do with \"" + word +
                                          "\" (see: thermika completion --help)");
}

Status printWords(Session& session, const CompletionArguments& arguments) {
    Json list = Json::array();
    for (const std::string& word : words(session, arguments)) {
        // What cannot be shown as it stands cannot be typed either.
        if (!session.output.isJson && !isShownAsItIs(word)) continue;
        list.push_back(jsonText(word));
        if (!session.output.isJson) session.output.add(word + "\n");
    }
    Json whole;
    whole["what"] = arguments.what;
    whole["words"] = list;
    if (session.output.isJson) session.output.addDocument(whole);
    return list.empty() ? Status::kNo : Status::kYes;
}

Status runCompletion(Session& session, const CompletionArguments& arguments,
                     const CLI::App& program) {
    if (arguments.what != "ranges") refuse(arguments.optics, arguments.what);
    if (arguments.what == "optics" || arguments.what == "ranges")
        return printWords(session, arguments);
    refuse(arguments.serialText, arguments.what);
    const std::string text = script(arguments.what, completionModel(program));
    Json whole;
    whole["what"] = arguments.what;
    whole["script"] = text;
    if (session.output.isJson)
        session.output.addDocument(whole);
    else
        session.output.add(text);
    return Status::kYes;
}

}  // namespace

Run addCompletion(CLI::App& command) {
    const auto arguments = std::make_shared<CompletionArguments>();
    command
        .add_option("WHAT", arguments->what,
                    "bash, zsh or fish: the script for that shell; optics or ranges: the words "
                    "that the scripts ask for")
        ->required()
        ->check(CLI::IsMember({"bash", "zsh", "fish", "optics", "ranges"}).description(""))
        ->type_name("");
    addSerialArgument(command, arguments->serialText);
    command.add_option("OPTICS", arguments->optics, "With ranges: those of this optics")
        ->type_name("");
    command.footer("Example: thermika completion bash");
    const CLI::App* const program = command.get_parent();
    return [arguments, program](Session& session) {
        return runCompletion(session, *arguments, *program);
    };
}

}  // namespace thermika::cli
