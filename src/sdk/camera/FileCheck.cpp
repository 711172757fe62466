// The check of one file, and the walk over all that a camera needs.
#include "sdk/camera/FileCheck.h"

#include <sys/stat.h>

#include <cstddef>
#include <cstring>
#include <optional>
#include <string>
#include <string_view>

#include "imgproc/Cali.h"
#include "sdk/StringHelpers.h"
#include "sdk/base/BoundedText.h"
#include "sdk/base/CaliDirectory.h"
#include "sdk/base/FileRead.h"
#include "sdk/base/PathLimits.h"
#include "sdk/camera/ExpectedFiles.h"

namespace dax {

namespace {

constexpr unsigned int kDescriptionNameBytes = 20;
constexpr const char* kNameEnd = ";";

/// What a composed path may take, with its terminator; `bound` limits the directory and the name.
constexpr std::size_t composedBytes(std::size_t bound) { return 2 * bound + 1; }

/// The directory that is meant; nothing when it is too long or unknown.
std::optional<std::string> usedDirectory(const char* directory, std::size_t bound) {
    const std::string_view given = directory;
    if (given.empty()) return caliDirectory(directory, composedBytes(bound));
    if (given.size() >= bound) return std::nullopt;
    return std::string(given);
}

/// The files of one directory, each under a path of which only the name is composed anew.
class FilesOfDirectory {
public:
    explicit FilesOfDirectory(const char* directory)
        : m_directory(usedDirectory(directory, kPathBytes)) {
        if (m_directory) m_path = *m_directory + '/';
        m_before = m_path.size();
        m_path.resize(m_before + kPathBytes);
    }

    void recordIfMissing(const char* name, const char* format, MissingFileList& missing) {
        char* const fileName = m_path.data() + m_before;
        const std::size_t length = printName(fileName, kPathBytes, format, name);
        // Deliberate: whatever separator a caller names, these names are followed by ";".
        if (!isThere(length)) missing.add({fileName, length}, kNameEnd);
    }

private:
    bool isThere(std::size_t nameLength) const {
        if (!m_directory) return false;
        mkdir(m_directory->c_str(), kDirectoryMode);
        return m_before + nameLength < composedBytes(kPathBytes) && isReadable(m_path.c_str());
    }

    std::optional<std::string> m_directory;
    std::string m_path;        ///< with room for every name
    std::size_t m_before = 0;  ///< characters before the name
};

}  // namespace

bool recordMissingFiles(const char* directory, int serial, const FileFormats& formats,
                        MissingFileList& missing) {
    ConfigCali* const cali = ConfigCali::getInstance();
    if (!cali->isLoaded(serial) && cali->load(directory, serial) != 0) {
        char name[kDescriptionNameBytes];
        tsnprintf(name, sizeof name, formats.description, serial);
        missing.addDescription(name, formats.separator);
        return false;
    }
    FilesOfDirectory files(directory);
    forEachFileStem(serial, [&](const char* stem, bool needsCurve) {
        files.recordIfMissing(stem, formats.data, missing);
        if (needsCurve) files.recordIfMissing(stem, formats.curve, missing);
    });
    if (missing.isEmpty()) return true;
    missing.end();
    return false;
}

void recordFileIfMissing(const char* directory, const char* name, const char* format,
                         MissingFileList& missing) {
    FilesOfDirectory(directory).recordIfMissing(name, format, missing);
}

bool composeFilePath(char* out, const char* directory, short length, const char* name,
                     const char* suffix) {
    if (length <= 0) return false;
    const auto bound = static_cast<std::size_t>(length);
    const std::optional<std::string> base = usedDirectory(directory, bound);
    if (!base) return false;
    mkdir(base->c_str(), kDirectoryMode);
    const std::string_view cutName(name, strnlen(name, bound));
    const std::string_view cutSuffix(suffix, strnlen(suffix, bound));
    const std::size_t characters = base->size() + 1 + cutName.size() + cutSuffix.size();
    if (characters >= composedBytes(bound)) return false;
    BoundedText(out, composedBytes(bound))
        .append(*base)
        .append('/')
        .append(cutName)
        .append(cutSuffix);
    return true;
}

}  // namespace dax
