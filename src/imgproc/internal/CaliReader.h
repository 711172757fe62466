// Reads the two parts of a calibration description out of an opened document. Knows nothing of the
// object that keeps them.
#pragma once

#include <vector>

#include "imgproc/Cali.h"
#include "sdk/SimpleXML.h"

namespace dax {

// Both start from the document's top and leave the cursor somewhere in it.
// Process: LC_NUMERIC bears the name of LC_CTYPE once a value was found.

/// Reads the scalar parameters in the document's first "Main", in the whole document where there is
/// none, into `section`; what is not there stays.
void readMainSection(SimpleXML& document, MainSection& section);

/// The optics that follow one another in the first "Optics" of the first "Temperature", or in what
/// encloses it where one is missing.
std::vector<OpticsDef> readOptics(SimpleXML& document);

}  // namespace dax
