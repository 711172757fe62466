// Whether field of view and limits that a configuration document asks for are ones that the camera
// was calibrated for.
#pragma once

#include <vector>

#include "cli/ValidateDocument.h"
#include "cli/ValidateFinding.h"
#include "sdk/IRCalibrationManager.h"

namespace thermika::cli {

/// Whether the document chooses anything that has to be compared with the camera's optics.
bool choosesOptics(const ImagerSettings& settings);

/// `optics` as IRCalibrationManager::getAvailableOptics() lists them: limits without fractions, as
/// the document has them, and texts as the description has them. A document with an empty text, or
/// with none, means the optics of its field of view that has none, or any where each has one. One
/// that chooses nothing has no findings.
std::vector<Finding> checkChoice(const ImagerSettings& settings,
                                 const std::vector<dax::OpticsEntry>& optics);

}  // namespace thermika::cli
