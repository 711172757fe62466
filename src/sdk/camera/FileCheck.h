// Which of a camera's calibration files a directory lacks. Knows nothing of the manager.
#pragma once

#include "sdk/camera/MissingFileList.h"

namespace dax {

/// The formats of the files' names; filled with the serial number and, the others, with what
/// ConfigCali::caliFilenameString() gives.
struct FileFormats {
    const char* description = "Cali-%i.xml";
    const char* data = "Cali-%s.dat";
    const char* curve = "Kennlinie-%s.prn";
    const char* separator = ";";  ///< after the description's name
};

/// Records every file of the camera that is not in `directory`; when its description cannot be
/// loaded, that one alone. True when nothing is missing. An empty directory is "Imager" below the
/// working directory, here and below. Process: as ConfigCali::load(); creates the directory, one
/// level.
bool recordMissingFiles(const char* directory, int serial, const FileFormats& formats,
                        MissingFileList& missing);

/// Records the file that `format` names after `name`, and ";", when `directory` has none that can
/// be opened for reading. Process: creates the directory, one level.
void recordFileIfMissing(const char* directory, const char* name, const char* format,
                         MissingFileList& missing);

/// As IRCalibrationManager::createConfigFilepath() says.
bool composeFilePath(char* out, const char* directory, short length, const char* name,
                     const char* suffix);

}  // namespace dax
