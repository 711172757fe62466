// What the log sink writes to standard error meanwhile, as tests compare it: without what no test
// can know.
#pragma once

#include <cstddef>
#include <sstream>
#include <string>
#include <string_view>
#include <vector>

#include "sdk/Logger.h"
#include "support/TestFiles.h"

namespace thermika_test {

/// `text` with "#" for each run of `characters` that stands right after `before` and is followed by
/// `after`.
inline std::string withoutNumbers(std::string text, std::string_view before,
                                  std::string_view characters, std::string_view after) {
    for (std::size_t at = text.find(before); at != std::string::npos; at = text.find(before, at)) {
        at += before.size();
        const std::size_t end = text.find_first_not_of(characters, at);
        if (end != std::string::npos && end != at && text.compare(end, after.size(), after) == 0)
            text.replace(at, end - at, "#");
    }
    return text;
}

/// `text` with "#" for the seconds since the logger's creation, in each log line.
inline std::string withoutSeconds(const std::string& text) {
    return withoutNumbers(text, "] @ ", "0123456789.e-+", "s :");
}

/// The same, and with "#" for the line numbers in the log lines of the source file `file`.
inline std::string withoutSecondsAndLines(const std::string& text, const std::string& file) {
    return withoutNumbers(withoutSeconds(text), " [" + file + ":", "0123456789", "] @ #s :");
}

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

/// While it lives, the log sink writes every severity to standard error, which is kept here.
/// Afterwards it is a fresh one without configuration.
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

    /// The same, without their line feeds.
    std::vector<std::string> all() {
        std::vector<std::string> found;
        std::istringstream text(lines());
        for (std::string line; std::getline(text, line);) found.push_back(line);
        return found;
    }

private:
    StderrCapture m_captured;
};

}  // namespace thermika_test
