// `thermika fetch`: brings the calibration directory up to date. The description comes first, as it
// says what else is needed.
#include <cstdint>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include <CLI/App.hpp>
#include <nlohmann/json.hpp>

#include "cli/Camera.h"
#include "cli/Commands.h"
#include "cli/Escape.h"
#include "cli/FetchProgress.h"
#include "cli/Source.h"
#include "fetch/Fetch.h"

namespace thermika::cli {

namespace {

struct Options {
    std::string serial;
    std::string from;
    bool isAll = false;
    bool isDryRun = false;
    unsigned jobs = fetch::Limits{}.jobs;
    std::int64_t timeoutSeconds = fetch::Limits{}.idle.count();
    unsigned retries = fetch::Limits{}.retries;
    std::uint64_t maxBytes = fetch::Limits{}.fileBytes;
};

/// What it amounts to.
struct Result {
    std::string problem;      ///< why it ended early; "" when it did not
    bool isWholeSet = false;  ///< the description is known, so all that is needed is in the list
    std::vector<fetch::FileReport> files;

    bool isComplete() const;
    std::size_t count(fetch::Outcome outcome) const;
};

bool isThere(const fetch::FileReport& file) {
    return file.outcome == fetch::Outcome::kFetched || file.outcome == fetch::Outcome::kPresent ||
           file.outcome == fetch::Outcome::kPlanned;
}

bool Result::isComplete() const {
    return problem.empty() && std::all_of(files.begin(), files.end(), isThere);
}

std::size_t Result::count(fetch::Outcome outcome) const {
    return static_cast<std::size_t>(
        std::count_if(files.begin(), files.end(),
                      [outcome](const auto& each) { return each.outcome == outcome; }));
}

const char* outcomeWord(fetch::Outcome outcome) {
    switch (outcome) {
        case fetch::Outcome::kFetched:
            return "fetched";
        case fetch::Outcome::kPresent:
            return "present";
        case fetch::Outcome::kPlanned:
            return "planned";
        case fetch::Outcome::kRefused:
            return "refused";
        case fetch::Outcome::kMissing:
            return "missing";
        case fetch::Outcome::kFailed:
            return "failed";
        case fetch::Outcome::kNotTried:
            break;
    }
    return "not-tried";
}

/// One fetch, or its plan.
class Fetching {
public:
    Fetching(const Session& session, unsigned long serial, const Options& options)
        : m_session(session), m_serial(serial), m_options(options) {}

    Result run() {
        fetch::Request request = newRequest();
        if (m_options.isDryRun) {
            if (openDescription(m_session, m_serial).cali != nullptr) addNeeded(request.names);
            return resultOf(fetch::plan(request));
        }
        FetchProgress progress(m_session.output);
        request.progress = [&](const fetch::Progress& now) { progress.show(now); };
        std::string problem;
        request.following = [&] {
            std::vector<std::string> names;
            problem = openDescription(m_session, m_serial).problem;
            if (problem.empty()) addNeeded(names);
            return names;
        };
        Result result = resultOf(fetch::fetch(request));
        if (result.problem.empty()) result.problem = problem;
        return result;
    }

    bool isCancelled() const { return m_cancellation.isRequested(); }

private:
    fetch::Request newRequest() const {
        fetch::Request request;
        request.serial = std::to_string(m_serial);
        request.names = {descriptionName(m_serial)};
        request.source = sourceFrom(m_options.from);
        request.directory = m_session.directory;
        // One that is there but cannot be used is fetched again, as one that is missing. One that
        // is replaced anyway is not opened: it would count as loaded afterwards.
        request.replacePresent =
            m_options.isAll || openDescription(m_session, m_serial).cali == nullptr;
        request.replaceFollowing = m_options.isAll;
        request.limits.jobs = m_options.jobs;
        request.limits.idle = std::chrono::seconds(m_options.timeoutSeconds);
        request.limits.retries = m_options.retries;
        request.limits.fileBytes = m_options.maxBytes;
        request.cancel = m_cancellation.flag();
        return request;
    }

    /// What the description that was opened last calls for.
    void addNeeded(std::vector<std::string>& names) {
        m_isWholeSet = true;
        for (const auto& each : dax::expectedFiles(static_cast<int>(m_serial)))
            if (each.kind != dax::FileKind::kDescription) names.push_back(each.name);
    }

    Result resultOf(fetch::Report report) const {
        return {std::move(report.problem), m_isWholeSet, std::move(report.files)};
    }

    const Session& m_session;
    unsigned long m_serial;
    const Options& m_options;
    Cancellation m_cancellation;
    bool m_isWholeSet = false;
};

Json textOrNull(const std::string& bytes) { return bytes.empty() ? Json() : jsonText(bytes); }

Json document(const Session& session, unsigned long serial, const Options& options,
              const Result& result) {
    Json list = Json::array();
    for (const fetch::FileReport& file : result.files) {
        Json each;
        each["name"] = jsonText(file.name);
        each["outcome"] = outcomeWord(file.outcome);
        each["reason"] = textOrNull(file.reason);
        each["source"] = textOrNull(file.source);
        each["destination"] = textOrNull(file.destination);
        each["httpStatus"] = file.httpStatus == 0 ? Json() : Json(file.httpStatus);
        each["bytes"] = file.bytes;
        each["tries"] = file.tries;
        list.push_back(each);
    }
    Json whole;
    whole["serial"] = serial;
    whole["directory"] = jsonText(session.directory);
    whole["from"] = textOrNull(options.from);
    whole["dryRun"] = options.isDryRun;
    whole["complete"] = result.isComplete() && result.isWholeSet;
    whole["problem"] = textOrNull(result.problem);
    whole["files"] = list;
    return whole;
}

std::string planText(const Result& result) {
    std::string text;
    for (const fetch::FileReport& file : result.files)
        if (file.outcome == fetch::Outcome::kPlanned)
            text += shown(file.source) + " -> " + shown(file.destination) + "\n";
    return text;
}

std::string countText(std::size_t count, const char* what) {
    return std::to_string(count) + (count == 1 ? " file " : " files ") + what;
}

/// What is missing and why, and what to do.
void explain(const Session& session, const Options& options, const Result& result,
             bool isCancelled) {
    std::size_t lacking = 0;
    for (const fetch::FileReport& file : result.files) {
        if (isThere(file)) continue;
        ++lacking;
        if (file.outcome == fetch::Outcome::kNotTried) continue;  // the problem says why
        Output::complain(shown(file.name) + ": " + shown(file.reason));
    }
    if (isCancelled)
        return Output::complain("interrupted: " + countText(lacking, "missing") +
                                " (run it again to go on)");
    if (!result.problem.empty())
        Output::complain(shown(result.problem) +
                         " (another directory: --dir DIR; another source: --from URL or FOLDER)");
    if (lacking > 0)
        Output::complain(countText(lacking, "could not be had") + " from " +
                         sourceText(options.from) + " for " + shown(session.directory) +
                         " (is it reachable? thermika online; another source: --from)");
}

Status run(Session& session, const Options& options) {
    const unsigned long serial = chosenCamera(options.serial, "fetch");
    Fetching fetching(session, serial, options);
    const Result result = fetching.run();
    Output& output = session.output;
    if (output.isJson)
        output.addDocument(document(session, serial, options, result));
    else if (options.isDryRun)
        output.add(planText(result));
    else
        output.add(countText(result.count(fetch::Outcome::kFetched), "fetched, ") +
                   std::to_string(result.count(fetch::Outcome::kPresent)) + " there already\n");
    if (options.isDryRun && result.isComplete() && !result.isWholeSet)
        output.note("what else is needed is known once the description is there");
    explain(session, options, result, fetching.isCancelled());
    return result.isComplete() ? Status::kYes : Status::kFailed;
}

}  // namespace

Run addFetch(CLI::App& command) {
    const auto options = std::make_shared<Options>();
    addSerialArgument(command, options->serial);
    command
        .add_option("--from", options->from,
                    "Fetch from a mirror of the vendor's server or from a folder")
        ->type_name("URL|FOLDER");
    command.add_flag("--all", options->isAll, "Fetch also what is there already");
    command.add_flag("--dry-run", options->isDryRun,
                     "Print source and destination of each file and touch nothing");
    command.add_option("--jobs", options->jobs, "Transfers at a time, 1 to 64")
        ->check(CLI::Range(1, 64).description(""))
        ->type_name("N")
        ->capture_default_str();
    command
        .add_option("--timeout", options->timeoutSeconds,
                    "Give a transfer up after so many seconds without a byte")
        ->check(CLI::Range(1, 86400).description(""))
        ->type_name("SECONDS")
        ->capture_default_str();
    command.add_option("--retries", options->retries, "More tries of a file, 0 to 100")
        ->check(CLI::Range(0, 100).description(""))
        ->type_name("N")
        ->capture_default_str();
    command.add_option("--max-size", options->maxBytes, "Largest size of a file")
        ->check(CLI::Range(std::int64_t{1}, INT64_MAX).description(""))
        ->type_name("BYTES")
        ->capture_default_str();
    command.footer("Example: thermika fetch --from /media/camera");
    return [options](Session& session) { return run(session, *options); };
}

}  // namespace thermika::cli
