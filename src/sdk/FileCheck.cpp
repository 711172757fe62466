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
#include "sdk/PathLimits.h"
#include "sdk/StringHelpers.h"

namespace dax {

namespace {

constexpr unsigned int kDescriptionNameBytes = 20;
constexpr const char* kNameEnd = ";";

/// What a composed path may take, with its terminator; `bound` limits the directory and the name.
constexpr std::size_t composedBytes(std::size_t bound) { return 2 * bound + 1; }

/// Writes the directory and "/" into the composedBytes() of `out` and creates the directory. How
/// many characters that are; nothing, and `out` untouched, when it is too long or unknown or when
/// there is no room for the `following` characters.
std::optional<std::size_t> composeDirectory(char* out, const char* directory, std::size_t bound,
                                            std::size_t following) {
    std::optional<std::string> fallback;
    std::string_view base = directory;
    if (base.empty()) {
        fallback = caliDirectory(directory, composedBytes(bound));
        if (!fallback) return std::nullopt;
        base = *fallback;
    } else if (base.size() >= bound) {
        return std::nullopt;
    }
    mkdir(base.data(), kDirectoryMode);
    if (base.size() + 1 + following >= composedBytes(bound)) return std::nullopt;
    std::memcpy(out, base.data(), base.size());
    out[base.size()] = '/';
    return base.size() + 1;
}

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
    char path[composedBytes(kPathBytes) + kPathBytes];
    const std::optional<std::size_t> before = composeDirectory(path, directory, kPathBytes, 0);
    char* const fileName = path + before.value_or(0);
    const std::size_t length = printName(fileName, kPathBytes, format, name);
    const bool isPath = before && *before + length < composedBytes(kPathBytes);
    // Deliberate: whatever separator a caller names, these names are followed by ";".
    if (!isPath || !isReadable(path)) missing.add({fileName, length}, kNameEnd);
}

bool composeFilePath(char* out, const char* directory, short length, const char* name,
                     const char* suffix) {
    if (length <= 0) return false;
    const auto bound = static_cast<std::size_t>(length);
    const std::string_view cutName(name, strnlen(name, bound));
    const std::string_view cutSuffix(suffix, strnlen(suffix, bound));
    const std::optional<std::size_t> before =
        composeDirectory(out, directory, bound, cutName.size() + cutSuffix.size());
    if (!before) return false;
    BoundedText(out + *before, composedBytes(bound) - *before).append(cutName).append(cutSuffix);
    return true;
}

}  // namespace dax
