// What the log sink writes to standard error meanwhile, without what differs from run to run.
#pragma once

#include <cstddef>
#include <string>

#include "sdk/Logger.h"
#include "support/TestFiles.h"

namespace thermika_test {

/// `log` with every "[file:line] @ seconds:" cut down to "[file] ".
inline std::string withoutLineAndTime(const std::string& log) {
    std::string text;
    std::size_t at = 0;
    for (;;) {
        const std::size_t mark = log.find("] @ ", at);
        const std::size_t colon = mark == std::string::npos ? mark : log.rfind(':', mark);
        const std::size_t past = mark == std::string::npos ? mark : log.find("s :", mark);
        if (colon == std::string::npos || past == std::string::npos || colon < at)
            return text + log.substr(at);
        text.append(log, at, colon - at).append("] ");
        at = past + 3;
    }
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
