// Which calibration files a camera needs, and which of them a directory lacks. Knows nothing of the
// manager.
#pragma once

#include <cstddef>
#include <cstdint>
#include <limits>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace dax {

enum class FileKind { kDescription, kData, kCurve };

struct ExpectedFile {
    std::string name;  ///< without a directory; taken from the description, so check before use
    FileKind kind = FileKind::kDescription;
    // What a data file or a characteristic-curve file is for; -1 for the description.
    int opticsIndex = -1;  ///< position in the description
    int rangeIndex = -1;   ///< position in the ranges of the first optics of the same key
    int framerate = -1;    ///< 0 for a file of all frame rates
};

/// printf's formats of the file names: for the serial number, and for what
/// ConfigCali::caliFilenameString() gives. Names are cut to 19 and to 259 characters.
struct FileFormats {
    const char* description = "Cali-%i.xml";
    const char* data = "Cali-%s.dat";
    const char* curve = "Kennlinie-%s.prn";
};

/// All files of the camera by the description that ConfigCali holds: the description, then data and
/// curve file of each optics, range and frame rate in the description's order. The same name can
/// come twice, as two ranges can have the same whole bounds: some kilobytes of description can call
/// for millions. Ends once there are `most`, or one more.
std::vector<ExpectedFile> expectedFiles(int serial, const FileFormats& formats = {},
                                        std::size_t most = std::numeric_limits<std::size_t>::max());

enum class FileState { kPresent, kMissing, kEmpty, kNotRegular, kUnreadable };

struct FileStatus {
    FileState state = FileState::kMissing;
    std::uint64_t bytes = 0;  ///< in the state kPresent
    int reason = 0;           ///< error number, in the state kUnreadable
};

/// What lies at `path`; links are followed. Opens regular files alone.
FileStatus fileStatus(const std::string& path);

struct MissingFiles {
    std::vector<std::string> names;
    bool isDescription = false;  ///< it could not be loaded, and its name is the only one
};

/// The expected files that cannot be opened for reading in `directory`; an empty one is "Imager"
/// below the working directory, one of 260 characters or more holds no file.
/// Process: loads the camera's description unless it is loaded (see ConfigCali::load(), which ends
/// the process for a path of more than 259 characters); creates the directory, one level.
MissingFiles findMissingFiles(const char* directory, int serial, const FileFormats& formats = {});

/// The names with ";" after each; nothing when none is missing, "" when the last files came while
/// this looked. Process: as above.
std::optional<std::string> listMissingFiles(const std::string& directory, unsigned long serial);

/// The bytes that IRCalibrationManager::checkCaliFiles() tells for this list, 0 when nothing is
/// missing.
int listBytes(const MissingFiles& missing);

/// Writes the list to `list` as IRCalibrationManager::checkCaliFiles() says.
void writeList(const MissingFiles& missing, const char* separator, char* list, int size);

/// Does what dax::_checkCaliFilesHelper() says.
void recordFileIfMissing(const char* directory, const char* stem, const char* format, char* list,
                         int* size);

/// Does what IRCalibrationManager::createConfigFilepath() says.
bool composeFilePath(char* out, const char* directory, short length, const char* name,
                     const char* suffix);

}  // namespace dax
