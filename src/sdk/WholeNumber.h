// Turning temperatures into the whole numbers that file names and optics lists show.
#pragma once

namespace dax {

/// `value` without its fraction; the nearest int where no int holds it; 0 for NaN.
int wholeNumber(float value);

}  // namespace dax
