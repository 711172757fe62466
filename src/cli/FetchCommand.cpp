// `thermika fetch`: brings the calibration directory up to date. The description comes first, as it
// says what else is needed.
#include <algorithm>
#include <cstdint>
#include <memory>
#include <string>
#include <utility>
#include <variant>
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

struct FetchOptions {
    std::string serial;
    std::string from;
    bool isAll = false;
    bool isDryRun = false;
    unsigned jobs = fetch::Limits{}.jobs;
    std::int64_t timeoutSeconds = fetch::Limits{}.idle.count();
    unsigned retries = fetch::Limits{}.retries;
    std::int64_t maxSeconds = fetch::Limits{}.total.count();
    std::uint64_t maxBytes = fetch::Limits{}.fileBytes;
    std::uint64_t maxTotalBytes = fetch::Limits{}.totalBytes;
    std::size_t maxFiles = fetch::Limits{}.files;
};

constexpr const char* kOtherSource = "another source: --from URL or FOLDER";

/// What it amounts to.
struct Result {
    std::string problem;      ///< why it ended early; "" when it did not
    std::string nextStep;     ///< what to do about that
    bool isWholeSet = false;  ///< the description is known, so all that is needed is in the list
    std::vector<fetch::FileReport> files;

    /// Or would be.
    bool isEveryFileThere() const;
    bool isComplete() const { return problem.empty() && isEveryFileThere(); }
    std::size_t count(fetch::Outcome outcome) const;
};

bool isThere(const fetch::FileReport& file) {
    return file.outcome == fetch::Outcome::kFetched || file.outcome == fetch::Outcome::kPresent ||
           file.outcome == fetch::Outcome::kPlanned;
}

bool isUntried(const fetch::FileReport& file) { return file.outcome == fetch::Outcome::kNotTried; }

bool Result::isEveryFileThere() const { return std::all_of(files.begin(), files.end(), isThere); }

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

std::string countText(std::size_t count, const char* what) {
    return std::to_string(count) + (count == 1 ? " file " : " files ") + what;
}

/// The first thing to find out when a source gives nothing; ends in "; ", or "" for a folder.
std::string questionFor(const FetchOptions& options) {
    if (std::holds_alternative<fetch::Folder>(sourceFrom(options.from))) return "";
    return "does it answer? thermika online" +
           (options.from.empty() ? "" : " --from " + options.from) + "; ";
}

/// One fetch, or its plan.
class Fetching {
public:
    Fetching(const Session& session, unsigned long serial, const FetchOptions& options)
        : m_session(session), m_serial(serial), m_options(options) {}

    Result run() {
        fetch::Request request = newRequest();
        if (m_options.isDryRun) {
            if (openDescription(m_session, m_serial).cali != nullptr) addNeeded(request.names);
            return resultOf(fetch::plan(request));
        }
        FetchProgress progress(m_session.output);
        request.progress = [&](const fetch::Progress& now) { progress.show(now); };
        bool isUsable = true;
        request.following = [&] {
            std::vector<std::string> names;
            isUsable = openDescription(m_session, m_serial).cali != nullptr;
            if (isUsable) addNeeded(names);
            return names;
        };
        Result result = resultOf(fetch::fetch(request));
        if (!isUsable) {
            result.problem = "what came as " + descriptionName(m_serial) +
                             " is no calibration description that lists optics";
            result.nextStep = kOtherSource;
        }
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
        request.limits.total = std::chrono::seconds(m_options.maxSeconds);
        request.limits.fileBytes = m_options.maxBytes;
        request.limits.totalBytes = m_options.maxTotalBytes;
        request.limits.files = m_options.maxFiles;
        request.cancel = m_cancellation.flag();
        return request;
    }

    /// What the description that was opened last calls for.
    void addNeeded(std::vector<std::string>& names) {
        const auto all = dax::expectedFiles(static_cast<int>(m_serial), {}, mostListed() + 1);
        m_isTooLong = all.size() > mostListed();
        m_isWholeSet = !m_isTooLong;
        if (m_isTooLong) return;
        for (const auto& each : all)
            if (each.kind != dax::FileKind::kDescription) names.push_back(each.name);
    }

    Result resultOf(fetch::Report report) const {
        const bool isLocal = report.isLocal;
        Result result{std::move(report.problem), "", m_isWholeSet, std::move(report.files)};
        result.nextStep = isLocal ? "another directory: --dir DIR; " : questionFor(m_options);
        result.nextStep += kOtherSource;
        const auto untried = std::find_if(result.files.begin(), result.files.end(), isUntried);
        const bool isCutShort = result.problem.empty() && untried != result.files.end();
        if (isCutShort)
            result.problem =
                countText(result.count(fetch::Outcome::kNotTried), "not tried: ") + untried->reason;
        // Or the time was over before anybody asked what the description calls for.
        if (isCutShort || (!m_isWholeSet && result.isEveryFileThere()))
            result.nextStep = "run it again to go on; more time: --max-time SECONDS";
        if (result.problem.empty() && (m_isTooLong || result.files.size() > m_options.maxFiles)) {
            const std::size_t most = m_isTooLong ? mostListed() : m_options.maxFiles;
            result.problem = "the description calls for more than " + std::to_string(most) +
                             (most == 1 ? " file" : " files");
            result.nextStep = "take more: --max-files N";
        }
        return result;
    }

    /// How long a description's list may be, in which names can come twice.
    std::size_t mostListed() const { return std::max(m_options.maxFiles, kMostFiles); }

    const Session& m_session;
    unsigned long m_serial;
    const FetchOptions& m_options;
    Cancellation m_cancellation;
    bool m_isWholeSet = false;
    bool m_isTooLong = false;  ///< what the description lists
};

Json textOrNull(const std::string& bytes) { return bytes.empty() ? Json() : jsonText(bytes); }

Json document(const Session& session, unsigned long serial, const FetchOptions& options,
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

/// What may help to get the files that are lacking.
std::string nextSteps(const FetchOptions& options, const Result& result) {
    const bool isServer = !std::holds_alternative<fetch::Folder>(sourceFrom(options.from));
    constexpr long kGood = 200;
    bool isUnanswered = false;
    bool isUnusable = false;
    for (const fetch::FileReport& file : result.files)
        if (file.outcome == fetch::Outcome::kFailed) {
            isUnusable = isUnusable || file.isLocal;
            isUnanswered = isUnanswered || (isServer && !file.isLocal && file.httpStatus != kGood);
        }
    std::string steps;
    if (isUnanswered) steps += questionFor(options);
    if (isUnusable)
        steps += "higher limits: --max-size, --max-total; another directory: --dir DIR; ";
    return steps + kOtherSource;
}

/// What is missing and why, and what to do.
void explain(const Session& session, const FetchOptions& options, const Result& result,
             bool isCancelled) {
    std::size_t lacking = 0;
    for (const fetch::FileReport& file : result.files) {
        if (isThere(file)) continue;
        ++lacking;
        if (isUntried(file)) continue;  // the problem says why
        Output::complain(file.name + ": " + file.reason);
    }
    if (isCancelled)
        return Output::complain("interrupted: " +
                                (lacking > 0
                                     ? countText(lacking, "missing")
                                     : "it is not known what else the description calls for") +
                                " (run it again to go on)");
    if (!result.problem.empty())
        Output::complain(result.problem + " (" + result.nextStep + ")");
    else
        Output::complain(countText(lacking, "could not be had") + " from " +
                         sourceText(options.from) + " for " + session.directory + " (" +
                         nextSteps(options, result) + ")");
}

Status runFetch(Session& session, const FetchOptions& options) {
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
    if (result.isComplete() && (result.isWholeSet || options.isDryRun)) return Status::kYes;
    explain(session, options, result, fetching.isCancelled());
    return Status::kFailed;
}

/// Ends the command when `option` was given a value that another option's bound keeps from its
/// effect.
void refuseAbove(const CLI::Option& option, std::uint64_t value, const std::string& bound,
                 std::uint64_t most) {
    if (option.count() == 0 || value <= most) return;
    throw Problem(Status::kUsage, option.get_name() + ": " + std::to_string(value) +
                                      " has no effect, as " + bound + " is " +
                                      std::to_string(most) + " (raise that as well)");
}

}  // namespace

Run addFetch(CLI::App& command) {
    const auto options = std::make_shared<FetchOptions>();
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
    const CLI::Option* const timeout =
        command
            .add_option("--timeout", options->timeoutSeconds,
                        "Give a transfer up after so many seconds without a byte")
            ->check(CLI::Range(1, 86400).description(""))
            ->type_name("SECONDS")
            ->capture_default_str();
    command.add_option("--max-time", options->maxSeconds, "Time of the whole run")
        ->check(CLI::Range(1, 365 * 86400).description(""))
        ->type_name("SECONDS")
        ->capture_default_str();
    command.add_option("--retries", options->retries, "More tries of a file, 0 to 100")
        ->check(CLI::Range(0, 100).description(""))
        ->type_name("N")
        ->capture_default_str();
    const CLI::Option* const maxSize =
        command.add_option("--max-size", options->maxBytes, "Largest size of a file")
            ->check(CLI::Range(std::int64_t{1}, INT64_MAX).description(""))
            ->type_name("BYTES")
            ->capture_default_str();
    command.add_option("--max-total", options->maxTotalBytes, "Largest size of all files together")
        ->check(CLI::Range(std::int64_t{1}, INT64_MAX).description(""))
        ->type_name("BYTES")
        ->capture_default_str();
    command.add_option("--max-files", options->maxFiles, "Largest number of files")
        ->check(CLI::Range(1, INT32_MAX).description(""))
        ->type_name("N")
        ->capture_default_str();
    command.footer("Example: thermika fetch --from /media/camera");
    return [options, timeout, maxSize](Session& session) {
        refuseAbove(*timeout, static_cast<std::uint64_t>(options->timeoutSeconds), "--max-time",
                    static_cast<std::uint64_t>(options->maxSeconds));
        refuseAbove(*maxSize, options->maxBytes, "--max-total", options->maxTotalBytes);
        return runFetch(session, *options);
    };
}

}  // namespace thermika::cli
