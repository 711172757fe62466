// Which calibration files a camera needs, by the description that the calibration data holds. Knows
// nothing of where they should lie.
#pragma once

#include <functional>

namespace dax {

/// Hands the stem that ConfigCali::caliFilenameString() makes for every combination of optics,
/// temperature range and frame rate to `take`, in the description's order; `needsCurve` tells
/// whether the combination needs a characteristic-curve file beside its data file. The stem dies
/// with the call.
void forEachFileStem(int serial,
                     const std::function<void(const char* stem, bool needsCurve)>& take);

}  // namespace dax
