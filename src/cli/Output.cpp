// Results are kept until the command is done, so that a failure half-way leaves no half document.
#include "cli/Output.h"

#include <sys/ioctl.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <charconv>
#include <cmath>
#include <cstdlib>
#include <cstring>

#include <nlohmann/json.hpp>

#include "cli/Command.h"
#include "cli/Escape.h"
#include "cli/WriteAll.h"

namespace thermika::cli {

namespace {

constexpr int kIndent = 2;
constexpr std::size_t kNumberChars = 64;  // more than any float's shortest form has

bool takesColors(Color color) {
    if (color != Color::kAuto) return color == Color::kAlways;
    const char* const noColor = std::getenv("NO_COLOR");
    if (noColor != nullptr && *noColor != '\0') return false;
    return Output::isCapableTerminal(STDOUT_FILENO);
}

const char* colorCode(Style style) {
    switch (style) {
        case Style::kHeading:
            return "\033[1m";
        case Style::kGood:
            return "\033[32m";
        case Style::kDoubtful:
            return "\033[33m";
        case Style::kBad:
            return "\033[31m";
        case Style::kPlain:
            break;
    }
    return "";
}

}  // namespace

bool Output::isCapableTerminal(int descriptor) {
    const char* const variable = std::getenv("TERM");
    const std::string_view name = variable != nullptr ? variable : "";
    return !name.empty() && name != "dumb" && isatty(descriptor) == 1;
}

void Output::addDocument(const Json& document) {
    m_results += document.dump(kIndent, ' ', true);
    m_results += '\n';
}

void Output::deliver() {
    if (!writeAll(STDOUT_FILENO, m_results))
        throw Problem(Status::kFailed, std::string("cannot write to standard output: ") +
                                           std::strerror(errno) + " (is it full or closed?)");
    m_results.clear();
}

void Output::note(std::string_view line) const {
    // Not through `stderr`, which escapes again.
    if (!isQuiet) writeAll(STDERR_FILENO, shown(line) + "\n");
}

void Output::complain(std::string_view message) {
    writeAll(STDERR_FILENO, "thermika: " + shown(message) + "\n");
}

void Output::complainOfMemory() { writeAll(STDERR_FILENO, "thermika: out of memory\n"); }

std::string Output::styled(Style style, std::string_view text) const {
    const std::string_view code = isJson || !takesColors(color) ? "" : colorCode(style);
    if (text.empty() || code.empty()) return std::string(text);
    return std::string(code).append(text).append("\033[0m");
}

std::size_t terminalColumns() {
    if (isatty(STDOUT_FILENO) != 1) return 0;
    winsize size{};
    ioctl(STDOUT_FILENO, TIOCGWINSZ, &size);
    return size.ws_col;
}

Json jsonText(std::string_view bytes) { return losslessUtf8(bytes); }

std::string numberText(float value) {
    std::array<char, kNumberChars> text{};
    const auto end = std::to_chars(text.begin(), text.end(), value, std::chars_format::fixed);
    return {text.begin(), end.ptr};
}

Json jsonNumber(float value) {
    if (!std::isfinite(value)) return nullptr;
    if (std::trunc(value) == value && std::fabs(value) < 1e9F)
        return static_cast<std::int64_t>(value);
    // The shortest text, read as a double: 0.1 stays 0.1.
    const std::string text = numberText(value);
    double number = 0.0;
    std::from_chars(text.data(), text.data() + text.size(), number);
    return number;
}

}  // namespace thermika::cli
