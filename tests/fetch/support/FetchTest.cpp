// Requests that do not wait longer than a test needs.
#include "fetch/support/FetchTest.h"

#include <sys/inotify.h>
#include <unistd.h>

#include <chrono>
#include <utility>

#include <gtest/gtest.h>

namespace thermika_test {

thermika::fetch::Request requestFor(const std::vector<std::string>& names,
                                    thermika::fetch::Source source, const std::string& directory) {
    thermika::fetch::Request request;
    request.serial = "14080045";
    request.names = names;
    request.source = std::move(source);
    request.directory = directory;
    request.limits.firstPause = std::chrono::milliseconds(1);
    request.limits.total = std::chrono::seconds(50);
    return request;
}

std::string wordFor(thermika::fetch::Outcome outcome) {
    using thermika::fetch::Outcome;
    switch (outcome) {
        case Outcome::kFetched:
            return "fetched";
        case Outcome::kPresent:
            return "present";
        case Outcome::kPlanned:
            return "planned";
        case Outcome::kRefused:
            return "refused";
        case Outcome::kMissing:
            return "missing";
        case Outcome::kFailed:
            return "failed";
        case Outcome::kNotTried:
            return "not tried";
    }
    return "no outcome";
}

std::string linesOf(const thermika::fetch::Report& report) {
    std::string lines;
    if (!report.problem.empty()) lines = "problem: " + report.problem + "\n";
    for (const thermika::fetch::FileReport& file : report.files) {
        lines += file.name + ": " + wordFor(file.outcome);
        lines += file.reason.empty() ? "\n" : ", " + file.reason + "\n";
    }
    return lines;
}

OpenWatch::OpenWatch(const std::string& path) : m_events(inotify_init1(IN_NONBLOCK | IN_CLOEXEC)) {
    EXPECT_NE(inotify_add_watch(m_events, path.c_str(), IN_OPEN), -1) << path;
}

OpenWatch::~OpenWatch() { close(m_events); }

bool OpenWatch::wasOpened() const {
    char events[1024];
    return read(m_events, events, sizeof events) > 0;
}

}  // namespace thermika_test
