// Log lines as tests compare them: without what no test can know.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

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

}  // namespace thermika_test
