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
    /// Whether field of view, limits and optics text take effect; as a mere suggestion they stand
    /// inside a comment.
    bool isChosen = false;
    std::string_view opticsText;  ///< of a choice; a suggestion has none

    /// 33 lines, each ended by a line feed; 31 where a choice takes effect. Directories and optics
    /// text are written as they stand, XML's special characters included.
    std::string text() const;
};

}  // namespace dax
