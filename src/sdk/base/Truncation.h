// Cuts temperatures to the whole numbers that file names and lists of optics show.
#pragma once

#include <limits>

namespace dax {

/// `value` without its fraction; the nearest int where no int holds it, where a plain conversion
/// would be undefined; 0 for NaN.
inline int truncateToInt(float value) {
    using Limits = std::numeric_limits<int>;
    constexpr float kPastLast = -static_cast<float>(Limits::min());
    if (value >= -kPastLast && value < kPastLast) return static_cast<int>(value);
    if (value < 0) return Limits::min();
    return value > 0 ? Limits::max() : 0;
}

}  // namespace dax
