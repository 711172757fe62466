// The download of a camera's calibration files from the vendor's server, by wget. Knows nothing of
// the manager.
#pragma once

#include <string>
#include <string_view>

namespace dax {

/// Does what IRCalibrationManager::downloadCalibration() says, for this calibration directory.
bool downloadMissingFiles(const std::string& directory, unsigned long serial);

/// Does what IRCalibrationManager::downloadTarget() says.
bool fetchFiles(std::string_view targets, const std::string& serial, const std::string& targetDir);

}  // namespace dax
