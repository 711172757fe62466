// Reading numbers written in their plainest form, which every locale reads alike, without the C
// library's scanners. Anything else is left to those. Floats are exact in the rounding mode to
// nearest, which is every program's unless it changes it.
#pragma once

#include <optional>
#include <string_view>

namespace dax {

/// The value of a decimal number of at most nine digits after optional blanks and a sign: converted
/// to the type of "%i", "%ld" or "%hu", exactly what scanning `text` with it gives. Nothing when
/// `text` begins in any other way, as one with a digit or a letter behind a leading 0 does.
std::optional<int> plainInteger(std::string_view text);

/// The value of a decimal number without exponent after optional blanks and a minus sign, exactly
/// as scanning `text` with "%f" gives it where the decimal point is ".". Nothing when `text` begins
/// in any other way, when something other than a blank follows the number, and when a float cannot
/// hold it.
std::optional<float> plainFloat(std::string_view text);

}  // namespace dax
