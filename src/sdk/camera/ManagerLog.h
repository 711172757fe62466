// Log lines of the manager's operations: they all bear the manager's name, wherever their message
// is made.
#pragma once

#include <string>

#include "sdk/Logger.h"

namespace dax {

inline void logAsManager(unsigned int severity, int line, const std::string& message) {
    kelvra::Logger::getInstance()->print(severity, "IRCalibrationManager", line, message);
}

}  // namespace dax
