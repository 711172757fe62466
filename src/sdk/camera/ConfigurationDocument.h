// The text of a camera's configuration document: fixed lines with six values filled in. Knows
// nothing of where the values come from.
#pragma once

#include <string>
#include <string_view>

namespace dax {

struct ConfigurationDocument {
    unsigned long serial = 0;
    std::string_view formatsDir;
    std::string_view calibrationDir;
    int fovDeg = 0;
    int minTempC = -20;
    int maxTempC = 100;

    /// 33 lines, each ended by a line feed. The directories are written as they stand, XML's
    /// special characters included.
    std::string text() const;
};

}  // namespace dax
