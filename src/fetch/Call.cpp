// What comes before the first byte of a source, and after the last one.
#include "fetch/Call.h"

#include <algorithm>
#include <utility>

#include "fetch/FileName.h"

namespace thermika::fetch {

namespace {

constexpr std::chrono::milliseconds kTellEvery{100};
constexpr std::size_t kMaxSerialDigits = 20;  // of 64 bits

bool isSerial(const std::string& text) {
    return !text.empty() && text.size() <= kMaxSerialDigits &&
           text.find_first_not_of("0123456789") == std::string::npos;
}

std::string leftOutText(std::size_t most, std::size_t leftOut) {
    std::string text = "more than " + std::to_string(most) +
                       (most == 1 ? " file is asked for" : " files are asked for");
    if (leftOut > 1) {
        const std::size_t others = leftOut - 1;
        text += ", so this one and " + std::to_string(others) +
                (others == 1 ? " other name is" : " other names are") + " left out";
    }
    return text;
}

}  // namespace

Limits bounded(Limits limits) {
    constexpr unsigned kMostJobs = 64;
    constexpr unsigned kMostRetries = 100;
    constexpr std::chrono::seconds kLongest{std::chrono::hours(24 * 365)};
    limits.jobs = std::clamp(limits.jobs, 1U, kMostJobs);
    limits.retries = std::min(limits.retries, kMostRetries);
    limits.firstPause = std::clamp<std::chrono::milliseconds>(
        limits.firstPause, std::chrono::milliseconds(0), kLongest);
    limits.idle = std::clamp(limits.idle, std::chrono::seconds(1), kLongest);
    limits.total = std::clamp(limits.total, std::chrono::seconds(0), kLongest);
    limits.fileBytes = std::min<std::uint64_t>(limits.fileBytes, INT64_MAX);
    return limits;
}

Call::Call(const Request& request, bool isPlan)
    : m_request(request),
      m_limits(bounded(request.limits)),
      m_isPlan(isPlan),
      m_stop(m_limits.total, request.cancel),
      m_destination(request.directory),
      m_allowance{m_limits.fileBytes, m_limits.totalBytes} {
    addFiles(request.names);
}

void Call::addFiles(const std::vector<std::string>& names) {
    const std::string* firstLeftOut = nullptr;
    std::size_t leftOut = 0;
    for (const std::string& name : names) {
        if (!m_names.insert(name).second) continue;
        if (m_report.files.size() >= limits().files) {
            if (leftOut++ == 0) firstLeftOut = &name;
            continue;
        }
        add(name, nameRefusal(name));
    }
    if (leftOut > 0) add(*firstLeftOut, leftOutText(limits().files, leftOut));
    m_progress.files = m_report.files.size();
}

void Call::add(const std::string& name, const std::string& refusal) {
    FileReport file;
    file.name = name;
    file.reason = refusal;
    if (refusal.empty()) {
        file.destination = m_destination.pathOf(name);
        ++m_open;
    } else {
        file.outcome = Outcome::kRefused;
    }
    m_report.files.push_back(std::move(file));
}

bool Call::prepare() {
    if (!isSerial(m_request.serial))
        setProblem("the serial number \"" + m_request.serial + "\" is not 1 to 20 decimal digits");
    else if (m_request.directory.empty())
        setProblem("no destination directory is given");
    if (hasProblem()) return false;

    if (m_destination.openExisting() && !m_isPlan) m_destination.removeLeftovers();
    return begin(m_request.replacePresent);
}

bool Call::follow() {
    if (!mayFollow() || !m_report.isComplete()) return false;
    if (m_stop.isDue()) {  // no file is left that could carry the reason
        setProblem(m_stop.reason());
        return false;
    }
    m_hasFollowed = true;
    addFiles(m_request.following());
    return begin(m_request.replaceFollowing);
}

bool Call::begin(bool replacePresent) {
    for (; m_begun < m_report.files.size(); ++m_begun)
        if (m_report.files[m_begun].outcome == Outcome::kRefused) {
            ++m_progress.filesDone;
            tell(&m_report.files[m_begun]);
        }
    if (!replacePresent) settlePresent();
    if (m_open == 0 || m_stop.isDue()) return false;
    if (m_isPlan || m_isWritable) return true;
    setProblem(m_destination.openForWriting());
    m_isWritable = !hasProblem();
    m_report.isLocal = hasProblem();
    return m_isWritable;
}

void Call::settlePresent() {
    for (FileReport* const file : wanted())
        if (const auto bytes = m_destination.presentBytes(file->name)) {
            file->bytes = *bytes;
            end(*file, Outcome::kPresent);
        }
}

std::vector<FileReport*> Call::wanted() {
    std::vector<FileReport*> open;
    for (FileReport& file : m_report.files)
        if (file.outcome == Outcome::kNotTried) open.push_back(&file);
    return open;
}

void Call::end(FileReport& file, Outcome outcome, const std::string& reason) {
    file.outcome = outcome;
    file.reason = reason;
    m_hasInstalled = m_hasInstalled || outcome == Outcome::kFetched;
    --m_open;
    ++m_progress.filesDone;
    tell(&file);
}

void Call::tick() {
    if (Stop::Clock::now() - m_lastTold >= kTellEvery) tell(nullptr);
}

void Call::tell(const FileReport* ended) {
    m_lastTold = Stop::Clock::now();
    if (m_isPlan || !m_request.progress) return;
    m_progress.ended = ended;
    m_request.progress(m_progress);
}

Report Call::finish() {
    const std::string reason = hasProblem() ? m_report.problem : m_stop.reason();
    for (FileReport* const file : wanted()) file->reason = reason;
    const std::string lost = m_hasInstalled ? m_destination.sync() : "";
    if (!lost.empty()) {
        setProblem(lost);
        m_report.isLocal = true;
    }
    return std::move(m_report);
}

bool Report::isComplete() const {
    return problem.empty() && std::all_of(files.begin(), files.end(), [](const FileReport& file) {
               return file.outcome == Outcome::kFetched || file.outcome == Outcome::kPresent ||
                      file.outcome == Outcome::kPlanned;
           });
}

}  // namespace thermika::fetch
