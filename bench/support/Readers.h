// One way to load a calibration description per library, each with the fastest settings and the
// accessors of its own that still give every value. A missing element leaves its field as it is.
#pragma once

#include "support/Camera.h"

namespace bench {

struct Reader {
    const char* name;
    /// Loads the file so that its values could be read next; false when that fails.
    bool (*open)(const char* file);
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
