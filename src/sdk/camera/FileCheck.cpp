// The list of expected files, the look at each of them, and the lists of missing ones as callers of
// the given interface hold them.
#include "sdk/camera/FileCheck.h"

#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <cstring>
#include <limits>
#include <optional>
#include <utility>

#include "imgproc/internal/CaliView.h"
#include "sdk/StringHelpers.h"
#include "sdk/base/CaliDirectory.h"
#include "sdk/base/FileRead.h"
#include "sdk/base/PathLimits.h"

namespace dax {

namespace {

constexpr std::size_t kDescriptionNameBytes = 20;
// Deliberate: whatever separator a caller names, names but the description's are followed by this.
constexpr std::string_view kNameEnd = ";";

/// What `format` makes of the value, cut to one character less than `kBytes`.
template <std::size_t kBytes, typename Value>
std::string nameOf(const char* format, Value value) {
    char name[kBytes];
    tsnprintf(name, kBytes, format, value);
    return name;
}

/// The paths of the files in one directory.
class FilePath {
public:
    /// The directory's and each name's characters behind `bound` do not count. An empty directory
    /// is "Imager" below the working directory.
    FilePath(const char* directory, std::size_t bound) {
        const std::string cut(directory, strnlen(directory, bound));
        const std::optional<std::string> used = caliDirectory(cut.c_str(), 2 * bound + 1, bound);
        m_isCut = cut.size() == bound;
        m_hasDirectory = used.has_value();
        if (m_hasDirectory) m_path = *used;
        m_directoryChars = m_path.size();
    }

    /// False when the directory is empty and there is no working directory, or its path has more
    /// than twice the bound's characters.
    bool hasDirectory() const { return m_hasDirectory; }

    /// Also creates the directory, one level, when it is missing.
    const std::string& of(std::string_view name, std::string_view suffix = {}) {
        m_path.resize(m_directoryChars);
        mkdir(m_path.c_str(), kDirectoryMode);
        return m_path.append(1, '/').append(name).append(suffix);
    }

    /// Whether there is a file of this name that can be opened for reading, which a directory that
    /// was cut never has.
    bool isReadable(std::string_view name) {
        return m_hasDirectory && !m_isCut && dax::isReadable(of(name).c_str());
    }

private:
    std::string m_path;
    std::size_t m_directoryChars = 0;
    bool m_hasDirectory = false;
    bool m_isCut = false;
};

std::size_t boundOf(int size) { return static_cast<std::size_t>(std::max(size, 0)); }

/// Stops at the largest int.
void addBytes(int& size, std::size_t bytes) {
    const std::size_t room = std::numeric_limits<int>::max() - boundOf(size);
    size += static_cast<int>(std::min(bytes, room));
}

char* append(char* end, std::string_view piece, std::size_t bound) {
    return std::copy_n(piece.data(), std::min(piece.size(), bound), end);
}

/// Where the list ends now.
// Deliberate: each name is bounded by the whole size, not by the room that is left, as a separator
// is below, so only a buffer that holds the whole list may be handed in.
char* appendName(char* end, std::string_view name, std::size_t bound) {
    end = append(append(end, name, bound), kNameEnd, bound);
    *end = '\0';
    return end;
}

}  // namespace

std::vector<ExpectedFile> expectedFiles(int serial, const FileFormats& formats, std::size_t most) {
    std::vector<ExpectedFile> files;
    files.push_back({nameOf<kDescriptionNameBytes>(formats.description, serial)});
    ConfigCali* const cali = ConfigCali::getInstance();
    char stem[kPathBytes];
    CaliView view(*cali);
    for (std::size_t i = 0; i < view.opticsCount(); ++i) {
        OPTICS optics = view.keyAt(i);
        // Deliberate: the flag is that of the optics at this position, its ranges are those of the
        // first optics with the same field of view and text.
        const auto position = static_cast<int>(i);
        const bool needsCurve = !cali->isSamplePointCali(position);
        const std::vector<TemperatureRange>& ranges = view.rangesByKeyOf(i);
        for (std::size_t j = 0; j < ranges.size(); ++j) {
            Range range{ranges[j].TempLo, ranges[j].TempHi};
            const int rates = cali->getFramerateCount(&optics, &range);
            for (int f = 0; f < std::max(rates, 1); ++f) {
                if (files.size() >= most) return files;
                const unsigned short rate = cali->getFramerate(&optics, &range, f);  // 0: none
                ConfigCali::caliFilenameString(serial, optics.fov, optics.text, &range, rate, stem,
                                               kPathBytes);
                const auto index = static_cast<int>(j);
                files.push_back({nameOf<kPathBytes>(formats.data, stem), FileKind::kData, position,
                                 index, rate});
                if (needsCurve)
                    files.push_back({nameOf<kPathBytes>(formats.curve, stem), FileKind::kCurve,
                                     position, index, rate});
            }
        }
    }
    return files;
}

FileStatus fileStatus(const std::string& path) {
    FileStatus result;
    struct stat status {};
    if (stat(path.c_str(), &status) != 0) {
        result.reason = errno;
        const bool isMissing = result.reason == ENOENT || result.reason == ENOTDIR;
        result.state = isMissing ? FileState::kMissing : FileState::kUnreadable;
        if (isMissing) result.reason = 0;
    } else if (!S_ISREG(status.st_mode)) {
        result.state = FileState::kNotRegular;
    } else if (!isReadable(path.c_str())) {
        result.reason = errno;
        result.state = FileState::kUnreadable;
    } else {
        result.bytes = static_cast<std::uint64_t>(status.st_size);
        result.state = result.bytes == 0 ? FileState::kEmpty : FileState::kPresent;
    }
    return result;
}

MissingFiles findMissingFiles(const char* directory, int serial, const FileFormats& formats) {
    ConfigCali* const cali = ConfigCali::getInstance();
    if (!cali->isLoaded(serial) && cali->load(directory, serial) != 0)
        return {{nameOf<kDescriptionNameBytes>(formats.description, serial)}, true};
    MissingFiles missing;
    FilePath files(directory, kPathBytes);
    for (ExpectedFile& file : expectedFiles(serial, formats))
        // Deliberate: a description that is loaded is not looked for, wherever it came from.
        if (file.kind != FileKind::kDescription && !files.isReadable(file.name))
            missing.names.push_back(std::move(file.name));
    return missing;
}

std::optional<std::string> listMissingFiles(const std::string& directory, unsigned long serial) {
    const auto camera = static_cast<int>(serial);
    if (findMissingFiles(directory.c_str(), camera).names.empty()) return std::nullopt;
    // Deliberate: looks twice, so files that come meanwhile are not listed, and a description that
    // cannot be loaded is logged twice.
    std::string names;
    for (const std::string& name : findMissingFiles(directory.c_str(), camera).names)
        names.append(name).append(kNameEnd);
    return names;
}

int listBytes(const MissingFiles& missing) {
    int bytes = 0;
    for (const std::string& name : missing.names) addBytes(bytes, name.size() + 1);
    // Deliberate: a missing description is counted without the terminator of its list, and one
    // without a name not at all.
    if (missing.isDescription) return missing.names.front().empty() ? 0 : bytes;
    if (bytes != 0) addBytes(bytes, 1);
    return bytes;
}

void writeList(const MissingFiles& missing, const char* separator, char* list, int size) {
    const std::size_t bound = boundOf(size);
    if (missing.isDescription) {
        std::memset(list, '\0', bound);
        char* const end = append(list, missing.names.front(), bound);
        *append(end, separator, bound) = '\0';
        return;
    }
    *list = '\0';
    for (const std::string& name : missing.names) list = appendName(list, name, bound);
}

void recordFileIfMissing(const char* directory, const char* stem, const char* format, char* list,
                         int* size) {
    const std::string name = nameOf<kPathBytes>(format, stem);
    if (FilePath(directory, kPathBytes).isReadable(name)) return;
    if (list == nullptr)
        addBytes(*size, name.size() + 1);
    else
        appendName(list + std::strlen(list), name, boundOf(*size));
}

bool composeFilePath(char* out, const char* directory, short length, const char* name,
                     const char* suffix) {
    if (length <= 0) return false;
    const auto bound = static_cast<std::size_t>(length);
    FilePath path(directory, bound);
    if (!path.hasDirectory()) return false;
    const std::string& composed =
        path.of({name, strnlen(name, bound)}, {suffix, strnlen(suffix, bound)});
    std::memcpy(out, composed.c_str(), composed.size() + 1);
    return true;
}

}  // namespace dax
