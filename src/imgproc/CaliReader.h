// Reads the two parts of a calibration description out of an opened document. Knows nothing of the
// object that keeps them.
#pragma once

#include <vector>

#include "imgproc/Cali.h"
#include "sdk/SimpleXML.h"

/// Reads the scalar parameters that the document has into `section`; the others stay.
void readMainSection(dax::SimpleXML& document, MainSection& section);

/// All optics of the document, in its order.
std::vector<OpticsDef> readOptics(dax::SimpleXML& document);
