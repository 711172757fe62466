// Help and version are answered while the command line is read; all else by the command's Run.
#include "cli/CommandLine.h"

#include <algorithm>
#include <cstddef>
#include <exception>
#include <filesystem>
#include <iterator>
#include <new>
#include <sstream>
#include <string>
#include <string_view>
#include <system_error>

#include <CLI/Config.hpp>
#include <CLI/Formatter.hpp>
#include <nlohmann/json.hpp>

#include "cli/Commands.h"
#include "cli/LogStream.h"
#include "cli/Version.h"
#include "sdk/base/BuildConfig.h"
#include "sdk/base/PathLimits.h"

namespace thermika::cli {

namespace {

struct CommandRow {
    const char* name;
    const char* description;
    Run (*add)(CLI::App& command);
};

constexpr CommandRow kCommands[] = {
    {"cameras", "List the attached cameras and the state of their files", addCameras},
    {"optics", "List a camera's optics, their temperature ranges and frame rates", addOptics},
    {"files", "List the calibration files that a camera needs and their state", addFiles},
    {"fetch", "Bring a camera's calibration files up to date", addFetch},
    {"config", "Print a camera's configuration document", addConfig},
    {"validate", "Say what is wrong with a configuration document", addValidate},
    {"online", "Tell whether the server with the calibration files answers", addOnline},
    {"doctor", "Check everything that a camera needs, for a bug report", addDoctor},
    {"completion", "Print the completion script for a shell", addCompletion},
};

Color colorOf(const std::string& word) {
    if (word == "auto") return Color::kAuto;
    if (word == "always") return Color::kAlways;
    if (word == "never") return Color::kNever;
    throw CLI::ValidationError("--color", "\"" + word + "\" is not auto, always or never");
}

void addSharedOptions(CommandLine& line) {
    CLI::App& app = line.app;
    Output& output = line.session.output;
    app.set_help_flag("-h,--help", "Print this help and exit");
    app.set_version_flag("--version", kVersionText, "Print the version and exit");
    app.add_option("--dir", line.session.directory, "Directory of the calibration files")
        ->envname("THERMIKA_CALIBRATION_DIR")
        ->type_name("DIR")
        ->default_str(dax::kDefaultCalibrationDir);
    app.add_flag("--json", output.isJson, "Print one JSON document");
    app.add_flag("-q,--quiet", output.isQuiet, "Print results and errors only");
    app.add_flag("-v,--verbose", output.isVerbose, "Print the library's log on standard error");
    app.add_option_function<std::string>(
           "--color", [&output](const std::string& word) { output.color = colorOf(word); },
           "Colour the output: auto, always or never")
        ->type_name("WHEN");
    app.footer("Example: thermika cameras");
}

/// An empty value is a script's variable that was never set, not a wish to do without.
void refuseEmptyValues(CLI::App& command) {
    const auto wrong = [](std::string& value) {
        return value.empty() ? std::string("the value is empty") : std::string();
    };
    for (CLI::Option* const option : command.get_options())
        if (option->get_items_expected_max() > 0) option->check(CLI::Validator(wrong, ""));
}

/// Which help an error message points at.
std::string helpCommand(const CLI::App& app) {
    const auto used = app.get_subcommands();
    return used.empty() ? "thermika --help" : "thermika " + used.front()->get_name() + " --help";
}

/// Whether the option --json stands anywhere in the command line.
bool isJsonWanted(int argc, char** argv) {
    char** const end = std::find(argv, argv + argc, std::string_view("--"));
    return std::find(argv, end, std::string_view("--json")) != end;
}

/// The status of a command line that is answered without a command.
Status answer(CommandLine& line, const CLI::ParseError& error) {
    if (error.get_exit_code() == static_cast<int>(CLI::ExitCodes::Success)) {
        std::ostringstream text;
        line.app.exit(error, text, text);
        line.session.output.add(text.str());
        line.session.output.deliver();
        return Status::kYes;
    }
    throw Problem(Status::kUsage,
                  std::string(error.what()) + " (see: " + helpCommand(line.app) + ")");
}

constexpr std::size_t kLongestDirectory = dax::kPathBytes - std::size("/Cali-12345678.xml");

std::string absoluteDirectory(const std::string& given) {
    namespace fs = std::filesystem;
    if (given.empty())
        throw Problem(Status::kUsage,
                      "--dir: the calibration directory has an empty name (name one, or leave "
                      "the option out)");
    std::error_code error;
    const fs::path path = fs::absolute(given, error);
    if (error)
        throw Problem(Status::kFailed,
                      "--dir: cannot find the directory \"" + given + "\": " + error.message() +
                          " (change to a directory that exists, or name an absolute one)");
    // Behind a link, ".." is not where the text says; the kernel finds it.
    const bool isPlain = std::find(path.begin(), path.end(), "..") == path.end();
    std::string absolute = isPlain ? path.lexically_normal() : path;
    while (absolute.size() > 1 && absolute.back() == '/') absolute.pop_back();
    if (absolute.size() > kLongestDirectory)
        throw Problem(Status::kUsage, "--dir: the directory's path has more than " +
                                          std::to_string(kLongestDirectory) +
                                          " bytes (choose a shorter one)");
    return absolute;
}

Status runChosen(CommandLine& line) {
    Session& session = line.session;
    session.directory = absoluteDirectory(session.directory);
    configureLog(session.output.isVerbose);
    for (const auto& [command, run] : line.commands) {
        if (!command->parsed()) continue;
        const Status status = run(session);
        session.output.deliver();
        return status;
    }
    throw Problem(Status::kUsage, "no command is given (see: thermika --help)");
}

/// A program gets its document even so, unless it is standard output that fails.
void deliverError(Output& output, const Problem& problem) {
    Json document;
    document["error"] = jsonText(problem.what());
    document["status"] = static_cast<int>(problem.status());
    output.discard();
    output.addDocument(document);
    try {
        output.deliver();
    } catch (const Problem&) {
        output.discard();  // said already
    }
}

}  // namespace

std::unique_ptr<CommandLine> makeCommandLine() {
    auto line = std::make_unique<CommandLine>();
    line->session.directory = dax::kDefaultCalibrationDir;
    line->app.option_defaults()->multi_option_policy(CLI::MultiOptionPolicy::TakeLast);
    addSharedOptions(*line);
    line->app.require_subcommand(0, 1);
    for (const CommandRow& row : kCommands) {
        CLI::App* const command = line->app.add_subcommand(row.name, row.description);
        command->fallthrough();
        line->commands.emplace_back(command, row.add(*command));
        // The completion scripts pass on what was typed so far, which may be nothing.
        if (row.add != addCompletion) refuseEmptyValues(*command);
        command->footer("For options of all commands see: thermika --help\n\n" +
                        command->get_footer());
    }
    return line;
}

Status runCommandLine(int argc, char** argv) {
    const auto line = makeCommandLine();
    Output& output = line->session.output;
    const auto end = [&output](const Problem& problem) {
        Output::complain(problem.what());
        if (output.isJson) deliverError(output, problem);
        return problem.status();
    };
    try {
        try {
            line->app.parse(argc, argv);
        } catch (const CLI::ParseError& error) {
            // What stands behind the mistake was not read.
            output.isJson = output.isJson || isJsonWanted(argc, argv);
            return answer(*line, error);
        }
        return runChosen(*line);
    } catch (const Problem& problem) {
        return end(problem);
    } catch (const std::bad_alloc&) {
        throw;
    } catch (const std::exception& unexpected) {
        return end(Problem(Status::kFailed, unexpected.what()));
    }
}

}  // namespace thermika::cli
