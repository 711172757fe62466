// What the log sink writes to standard error meanwhile, without what differs from run to run.
#pragma once

#include <cstddef>
#include <string>

#include "sdk/Logger.h"
#include "support/TestFiles.h"

namespace thermika_test {

/// `log` with every "[file:line] @ seconds:" cut down to "[file] ". What only begins like one, in a
/// message, stays.
inline std::string withoutLineAndTime(const std::string& log) {
    constexpr const char* kDigits = "0123456789";
    std::string text;
    std::size_t at = 0;
    for (std::size_t mark = log.find("] @ "); mark != std::string::npos;
         mark = log.find("] @ ", mark + 1)) {
        const std::size_t colon = log.find_last_not_of(kDigits, mark - 1);
        const std::size_t past = log.find_first_not_of("0123456789.e+-", mark + 4);
        const bool isOne = mark > 0 && colon != std::string::npos && colon >= at &&
                           log[colon] == ':' && colon + 1 < mark && past != std::string::npos &&
                           log.compare(past, 3, "s :") == 0;
        if (!isOne) continue;
        text.append(log, at, colon - at).append("] ");
        at = past + 3;
    }
    return text + log.substr(at);
}

/// While it lives, the logger writes every severity to standard error, which is kept here; the
/// logger is released at the end.
class LogCapture {
public:
    LogCapture() {
        kelvra::Logger::releaseInstance();
        kelvra::Logger::getInstance()->configure("", kelvra::Logger::LOGGER_CONSOLE, 0, 3);
    }
    ~LogCapture() { kelvra::Logger::releaseInstance(); }
    LogCapture(const LogCapture&) = delete;
    LogCapture& operator=(const LogCapture&) = delete;

    /// As it stands.
    std::string text() { return m_captured.text(); }

    std::string lines() { return withoutLineAndTime(m_captured.text()); }

private:
    StderrCapture m_captured;
};

}  // namespace thermika_test
