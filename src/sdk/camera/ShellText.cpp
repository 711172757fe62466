// What is plain, character by character, without a locale. Compiled with and without
// THERMIKA_REFUSE_SHELL_TEXT, which decides whether anything is refused.
#include "sdk/camera/ShellText.h"

#include <algorithm>
#include <cstddef>

namespace dax {

namespace {

#ifdef THERMIKA_REFUSE_SHELL_TEXT
constexpr bool kRefuses = true;
#else
constexpr bool kRefuses = false;
#endif

bool isDigit(char c) { return c >= '0' && c <= '9'; }

bool isPlain(char c, std::string_view others) {
    return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || isDigit(c) ||
           others.find(c) != std::string_view::npos;
}

bool isPlain(std::string_view text, std::string_view others) {
    return std::all_of(text.begin(), text.end(), [others](char c) { return isPlain(c, others); });
}

bool cutPrefix(std::string_view& text, std::string_view prefix) {
    if (text.substr(0, prefix.size()) != prefix) return false;
    text.remove_prefix(prefix.size());
    return true;
}

bool cutEnding(std::string_view& text, std::string_view ending) {
    if (text.size() < ending.size() || text.substr(text.size() - ending.size()) != ending)
        return false;
    text.remove_suffix(ending.size());
    return true;
}

/// Takes the characters for which `belongs` holds from the beginning; how many they were.
template <typename Belongs>
std::size_t cutRun(std::string_view& text, Belongs belongs) {
    const auto end = std::find_if_not(text.begin(), text.end(), belongs);
    const auto count = static_cast<std::size_t>(end - text.begin());
    text.remove_prefix(count);
    return count;
}

bool isPlainBase(std::string_view base) {
    if (!cutPrefix(base, "http://") && !cutPrefix(base, "https://")) return false;
    if (cutRun(base, [](char c) { return isPlain(c, ".-"); }) == 0) return false;
    if (cutPrefix(base, ":") && cutRun(base, isDigit) == 0) return false;
    return base.empty() || (base.front() == '/' && isPlain(base, "._~%/-"));
}

bool isPlainName(std::string_view name, std::string_view serial) {
    if (serial.empty() || !std::all_of(serial.begin(), serial.end(), isDigit)) return false;
    if (!cutPrefix(name, "Cali-") && !cutPrefix(name, "Kennlinie-")) return false;
    if (!cutPrefix(name, serial)) return false;
    if (!cutEnding(name, ".xml") && !cutEnding(name, ".dat") && !cutEnding(name, ".prn"))
        return false;
    return isPlain(name, "._+-");
}

bool isPlainDirectory(std::string_view dir) {
    return isPlain(dir, "._/+@%:-") && dir.substr(0, 1) != "-";
}

}  // namespace

bool mayReachShellAsBase(std::string_view base) { return !kRefuses || isPlainBase(base); }

bool mayReachShellAsName(std::string_view name, std::string_view serial) {
    return !kRefuses || isPlainName(name, serial);
}

bool mayReachShellAsDirectory(std::string_view dir) { return !kRefuses || isPlainDirectory(dir); }

}  // namespace dax
