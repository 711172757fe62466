// A camera in a calibration directory of its own, with as many calibration files as wanted.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "support/TemporaryFolder.h"

namespace bench {

/// How much a camera's description lists.
struct CameraSize {
    int optics;
    int rangesPerOptics;
    int ratesPerRange;
};

class CameraFiles {
public:
    /// Writes the description alone and sets the one manager to the directory. Two cameras that
    /// live at once need different serial numbers.
    CameraFiles(int serial, CameraSize size);

    int serial() const { return m_serial; }
    const std::string& directory() const { return m_folder.path(); }

    /// Makes the manager and the calibration data turn to this camera, whatever they held.
    void use() const;

    /// The paths of all calibration files that are missing now, in the order of the list.
    std::vector<std::string> missingPaths() const;

private:
    TemporaryFolder m_folder;
    int m_serial;
};

}  // namespace bench
