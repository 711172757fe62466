// Saturates where a plain conversion would be undefined.
#include "sdk/WholeNumber.h"

#include <cmath>
#include <limits>

namespace dax {

int wholeNumber(float value) {
    using Limits = std::numeric_limits<int>;
    constexpr float kPastLast = -static_cast<float>(Limits::min());
    if (value >= -kPastLast && value < kPastLast) return static_cast<int>(value);
    if (std::isnan(value)) return 0;
    return value < 0 ? Limits::min() : Limits::max();
}

}  // namespace dax
