// The check of one file, and the walk over all that a camera needs.
#include "sdk/FileCheck.h"

#include <sys/stat.h>

#include <cstddef>
#include <cstring>
#include <optional>
#include <string>
#include <string_view>

#include "imgproc/Cali.h"
#include "sdk/BoundedText.h"
#include "sdk/CaliDirectory.h"
#include "sdk/ExpectedFiles.h"
#include "sdk/FileRead.h"
#include "sdk/StringHelpers.h"

namespace dax {

namespace {

constexpr short kPathBytes = 260;  // the system's limit for names and paths
constexpr unsigned int kDescriptionNameBytes = 20;
constexpr const char* kNameEnd = ";";

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
    forEachFileStem(serial, [&](const char* stem, bool needsCurve) {
        recordFileIfMissing(directory, stem, formats.data, missing);
        if (needsCurve) recordFileIfMissing(directory, stem, formats.curve, missing);
    });
    if (missing.isEmpty()) return true;
    missing.end();
    return false;
}

void recordFileIfMissing(const char* directory, const char* name, const char* format,
                         MissingFileList& missing) {
    char fileName[kPathBytes];
    printName(fileName, sizeof fileName, format, name);
    char path[2 * kPathBytes + 1];
    // Deliberate: whatever separator a caller names, these names are followed by ";".
    if (!composeFilePath(path, directory, kPathBytes, fileName, "") || !isReadable(path))
        missing.add(fileName, kNameEnd);
}

bool composeFilePath(char* out, const char* directory, short length, const char* name,
                     const char* suffix) {
    if (length <= 0) return false;
    const auto bound = static_cast<std::size_t>(length);
    const std::size_t capacity = 2 * bound + 1;
    std::optional<std::string> fallback;
    std::string_view base = directory;
    if (base.empty()) {
        fallback = caliDirectory(directory, capacity);
        if (!fallback) return false;
        base = *fallback;
    } else if (base.size() >= bound) {
        return false;
    }
    mkdir(base.data(), 0777);
    const std::string_view cutName(name, strnlen(name, bound));
    const std::string_view cutSuffix(suffix, strnlen(suffix, bound));
    if (base.size() + 1 + cutName.size() + cutSuffix.size() >= capacity) return false;
    BoundedText(out, capacity).append(base).append("/").append(cutName).append(cutSuffix);
    return true;
}

}  // namespace dax
