// One way to load a calibration description per library, with the settings and the accessors that
// its documentation recommends for speed. A missing element leaves its field as it is.
#pragma once

#include "support/Camera.h"

namespace bench {

struct Reader {
    const char* name;
    /// Loads the file and stores every value in `camera`, which is fresh; false when that fails.
    bool (*read)(const char* file, Camera& camera);
};

extern const Reader kSimpleXml;
extern const Reader kRapidxml;
extern const Reader kPugixml;
extern const Reader kExpat;
extern const Reader kLibxml2;
extern const Reader kTinyxml2;

}  // namespace bench
