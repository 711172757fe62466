// Values of float that are not finite.
#pragma once

#include <limits>

namespace thermika_test {

constexpr float kInfinity = std::numeric_limits<float>::infinity();
constexpr float kNaN = std::numeric_limits<float>::quiet_NaN();

}  // namespace thermika_test
