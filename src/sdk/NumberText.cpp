// Declines whatever a scanner might read differently in some locale.
#include "sdk/NumberText.h"

#include <charconv>
#include <cstddef>
#include <system_error>

namespace dax {

namespace {

constexpr std::size_t kMaxDigits = 9;  // whatever the digits are, an int holds them

bool isDigit(char c) { return c >= '0' && c <= '9'; }

// The bytes that are white space in every locale.
bool isBlank(char c) { return c == ' ' || (c >= '\t' && c <= '\r'); }

bool isLetter(char c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z'); }

void skipBlanks(std::string_view& text) {
    while (!text.empty() && isBlank(text.front())) text.remove_prefix(1);
}

}  // namespace

std::optional<int> plainInteger(std::string_view text) {
    skipBlanks(text);
    bool isNegative = false;
    if (!text.empty() && (text.front() == '-' || text.front() == '+')) {
        isNegative = text.front() == '-';
        text.remove_prefix(1);
    }
    int value = 0;
    std::size_t digits = 0;
    while (digits < text.size() && isDigit(text[digits])) {
        if (digits == kMaxDigits) return std::nullopt;
        value = value * 10 + (text[digits] - '0');
        ++digits;
    }
    if (digits == 0) return std::nullopt;
    // A leading zero may announce another base.
    if (text.front() == '0' && (digits > 1 || (text.size() > 1 && isLetter(text[1]))))
        return std::nullopt;
    return isNegative ? -value : value;
}

std::optional<float> plainFloat(std::string_view text) {
    skipBlanks(text);
    const char* const end = text.data() + text.size();
    const std::size_t sign = !text.empty() && text.front() == '-' ? 1 : 0;
    if (text.size() <= sign || !isDigit(text[sign])) return std::nullopt;  // infinities, "nan", "."
    float value = 0;
    const auto [stop, error] = std::from_chars(text.data(), end, value, std::chars_format::fixed);
    if (error != std::errc() || (stop != end && !isBlank(*stop))) return std::nullopt;
    return value;
}

}  // namespace dax
