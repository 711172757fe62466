// One question, without retries.
#include "cli/Server.h"

#include <sys/stat.h>

#include <cerrno>
#include <chrono>
#include <cstdio>
#include <variant>

#include <nlohmann/json.hpp>

#include "cli/Command.h"
#include "cli/Source.h"

namespace thermika::cli {

namespace {

double inMilliseconds(std::chrono::microseconds duration) {
    return static_cast<double>(duration.count()) / 1000;
}

std::string delayText(std::chrono::microseconds duration) {
    char text[32];
    std::snprintf(text, sizeof text, "%.1f ms", inMilliseconds(duration));
    return text;
}

/// A folder that is there but cannot be read is neither good nor bad; one that is not there is bad.
bool isKnownOf(const fetch::Source& source, const fetch::ProbeReport& report) {
    if (report.answers) return true;
    const auto* const folder = std::get_if<fetch::Folder>(&source);
    if (folder == nullptr) return !report.address.empty();
    struct stat status {};
    if (stat(folder->path.c_str(), &status) == 0) return !S_ISDIR(status.st_mode);
    return errno == ENOENT || errno == ENOTDIR;
}

}  // namespace

ServerAnswer askServer(const std::string& from, unsigned seconds) {
    const Cancellation cancellation;
    fetch::Request request;
    request.source = sourceFrom(from);
    request.limits.idle = std::chrono::seconds(seconds);
    request.limits.total = std::chrono::seconds(2 * seconds);
    request.cancel = cancellation.flag();
    ServerAnswer answer{fetch::probe(request)};
    answer.isKnown = isKnownOf(request.source, answer.report);
    if (!answer.isGood() && cancellation.isRequested())
        throw Problem(Status::kFailed, "interrupted: it is not known whether " + sourceText(from) +
                                           " answers (run it again)");
    return answer;
}

std::string answerText(const ServerAnswer& answer) {
    const fetch::ProbeReport& report = answer.report;
    const std::string& address = report.address;
    if (address.empty()) return report.reason;  // nobody could be asked
    if (!report.answers) return address + " does not answer: " + report.reason;
    std::string text = address + " answers";
    if (report.httpStatus != 0)
        text += " after " + delayText(report.answered) + " (connected after " +
                delayText(report.connected) + ", HTTP status " + std::to_string(report.httpStatus) +
                ")";
    if (!report.base.empty()) text += "; the files are below " + report.base;
    if (!report.reason.empty()) text += ", but not as it should: " + report.reason;
    return text;
}

Json answerDocument(const ServerAnswer& answer) {
    const fetch::ProbeReport& report = answer.report;
    const auto textOrNull = [](const std::string& bytes) {
        return bytes.empty() ? Json() : jsonText(bytes);
    };
    Json whole;
    whole["address"] = jsonText(report.address);
    whole["answers"] = report.answers;
    whole["usable"] = answer.isGood();
    whole["reason"] = textOrNull(report.reason);
    whole["base"] = textOrNull(report.base);
    whole["httpStatus"] = report.httpStatus == 0 ? Json() : Json(report.httpStatus);
    const bool isMeasured = report.httpStatus != 0;  // of a folder nothing is
    whole["connectedMs"] = isMeasured ? Json(inMilliseconds(report.connected)) : Json();
    whole["answeredMs"] = isMeasured ? Json(inMilliseconds(report.answered)) : Json();
    return whole;
}

}  // namespace thermika::cli
