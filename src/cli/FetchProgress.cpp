// The line is drawn over itself: carriage return, text, and the rest of the line cleared.
#include "cli/FetchProgress.h"

#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <string_view>

#include "cli/WriteAll.h"

namespace thermika::cli {

namespace {

using std::chrono::milliseconds;

constexpr milliseconds kBetweenDraws{100};
constexpr milliseconds kSteadyAfter{1000};  // earlier, rate and time left would jump about
constexpr std::size_t kUsualColumns = 80;
constexpr const char* kClear = "\r\033[K";

std::size_t columns() {
    winsize size{};
    ioctl(STDERR_FILENO, TIOCGWINSZ, &size);
    return size.ws_col > 0 ? size.ws_col : kUsualColumns;
}

std::string durationText(std::chrono::seconds duration) {
    char text[32];
    const auto seconds = duration.count();
    std::snprintf(text, sizeof text, "%ld:%02ld", static_cast<long>(seconds / 60),
                  static_cast<long>(seconds % 60));
    return text;
}

std::string fileLine(const fetch::FileReport& file) {
    switch (file.outcome) {
        case fetch::Outcome::kFetched:
            return "fetched " + file.name + " (" + bytesText(file.bytes) + ")";
        case fetch::Outcome::kPresent:
        case fetch::Outcome::kPlanned:
        case fetch::Outcome::kNotTried:
            return "";
        default:  // the end names it again, with what to do
            return "no " + file.name + ": " + file.reason;
    }
}

}  // namespace

std::string bytesText(std::uint64_t bytes) {
    if (bytes < 1024) return std::to_string(bytes) + " B";
    constexpr const char* kUnits[] = {"KiB", "MiB", "GiB", "TiB"};
    double amount = static_cast<double>(bytes) / 1024;
    std::size_t unit = 0;
    while (amount >= 1023.95 && unit < 3) {
        amount /= 1024;
        ++unit;
    }
    char text[32];
    std::snprintf(text, sizeof text, "%.1f %s", amount, kUnits[unit]);
    return text;
}

std::string progressLine(const fetch::Progress& progress, milliseconds elapsed,
                         std::size_t columns) {
    std::string line = std::to_string(progress.filesDone) + " of " +
                       std::to_string(progress.files) + " files, " + bytesText(progress.bytes);
    if (elapsed >= kSteadyAfter) {
        const double seconds = static_cast<double>(elapsed.count()) / 1000;
        const double rate = static_cast<double>(progress.bytes) / seconds;
        line += ", " + bytesText(static_cast<std::uint64_t>(rate)) + "/s";
        if (progress.filesDone > 0) {
            const double left = seconds / static_cast<double>(progress.filesDone) *
                                static_cast<double>(progress.files - progress.filesDone);
            line += ", " + durationText(std::chrono::seconds(static_cast<long>(left))) + " left";
        }
    }
    return line.substr(0, columns);
}

FetchProgress::FetchProgress(const Output& output)
    : m_output(output), m_isTerminal(Output::isCapableTerminal(STDERR_FILENO)) {}

FetchProgress::~FetchProgress() {
    if (m_isLineShown) writeAll(STDERR_FILENO, kClear);
}

void FetchProgress::show(const fetch::Progress& progress) {
    if (m_output.isQuiet) return;
    if (!m_isTerminal) {
        const std::string line = progress.ended == nullptr ? "" : fileLine(*progress.ended);
        if (!line.empty()) m_output.note(line);
        return;
    }
    const auto now = Clock::now();
    if (m_isLineShown && now - m_lastDrawn < kBetweenDraws) return;
    m_lastDrawn = now;
    m_isLineShown = true;
    const auto elapsed = std::chrono::duration_cast<milliseconds>(now - m_begin);
    // The last column stays free: a terminal would go on in the next line.
    writeAll(STDERR_FILENO, "\r" + progressLine(progress, elapsed, columns() - 1) + "\033[K");
}

}  // namespace thermika::cli
