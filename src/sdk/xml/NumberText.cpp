// Reads plain decimal numbers digit by digit. Declines whatever a scanner of the C library might
// read differently in some locale.
#include "sdk/xml/NumberText.h"

#include <cfloat>
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

/// The value of a text that is nothing but a decimal number of a few digits. Its digits and the
/// power of ten below them are floats without a rest, so one division rounds as the scanner does.
std::optional<float> shortFloat(std::string_view text) {
    constexpr float kPowersOfTen[] = {1.0F, 1e1F, 1e2F, 1e3F, 1e4F, 1e5F, 1e6F, 1e7F};
    constexpr std::size_t kMostDigits = 7;                    // of which a float holds every number
    if constexpr (FLT_EVAL_METHOD != 0) return std::nullopt;  // would be rounded twice
    const bool isNegative = !text.empty() && text.front() == '-';
    if (isNegative) text.remove_prefix(1);
    if (text.empty() || text.size() > kMostDigits || !isDigit(text.front())) return std::nullopt;
    int digits = 0;
    std::size_t places = 0;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (isDigit(text[i]))
            digits = digits * 10 + (text[i] - '0');
        else if (text[i] == '.' && places == 0)
            places = text.size() - i - 1;
        else
            return std::nullopt;
    }
    const float value = static_cast<float>(digits) / kPowersOfTen[places];
    return isNegative ? -value : value;
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
    if (const auto value = shortFloat(text)) return value;
    const char* const end = text.data() + text.size();
    const std::size_t sign = !text.empty() && text.front() == '-' ? 1 : 0;
    if (text.size() <= sign || !isDigit(text[sign])) return std::nullopt;  // infinities, "nan", "."
    float value = 0;
    const auto [stop, error] = std::from_chars(text.data(), end, value, std::chars_format::fixed);
    if (error != std::errc() || (stop != end && !isBlank(*stop))) return std::nullopt;
    return value;
}

}  // namespace dax
