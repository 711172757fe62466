// The configuration document with a choice in force.
#pragma once

#include <string>

#include "imgproc/Cali.h"

namespace thermika::cli {

/// Whose document it is, and what was typed of the choice, as choose() takes it.
struct ChoiceRequest {
    unsigned long serial = 0;
    std::string directory;  ///< of the calibration files
    std::string optics;
    std::string range;
};

/// The document, which `thermika validate` accepts. A Problem as choose() says, or where the
/// description has something that the document's schema does not allow.
std::string chosenDocument(ConfigCali& cali, const ChoiceRequest& request);

}  // namespace thermika::cli
