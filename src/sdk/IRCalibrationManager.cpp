// The manager's operations. The units they are composed of (devices, documents, lists) know nothing
// of the manager.
#include "sdk/IRCalibrationManager.h"

#include <algorithm>
#include <clocale>
#include <cstddef>
#include <cstdio>
#include <cstring>
#include <functional>
#include <memory>
#include <new>
#include <optional>
#include <string_view>

#include "imgproc/Cali.h"
#include "imgproc/internal/CaliView.h"
#include "sdk/SimpleXML.h"
#include "sdk/base/BuildConfig.h"
#include "sdk/base/PathLimits.h"
#include "sdk/base/Truncation.h"
#include "sdk/camera/ConfigurationDocument.h"
#include "sdk/camera/Download.h"
#include "sdk/camera/FileCheck.h"
#include "sdk/camera/SerialDiscovery.h"
#include "sdk/camera/ShellCommands.h"
#include "sdk/camera/ShellText.h"

namespace dax {

namespace {

constexpr std::size_t kMostCountBytes = 4096;  // of the answer that begins with a number

/// How many bytes at `text` may be read for a directory; fewer where it lies in `array`, which
/// callers may read and which need not be terminated.
std::size_t readableBytes(const char* text, const char* array) {
    const std::less<> isBefore;
    const bool isInside = !isBefore(text, array) && isBefore(text, array + kPathBytes);
    return isInside ? static_cast<std::size_t>(array + kPathBytes - text) : kPathBytes;
}

// Deliberate: a directory that is too long is cut and then not terminated, so callers keep theirs
// below 260 characters.
void storeDirectory(char* array, const char* dir, std::size_t readable) {
    const std::size_t length = strnlen(dir, readable);
    std::memmove(array, dir, length);
    std::memset(array + length, 0, kPathBytes - length);
}

std::unique_ptr<char[]> makeDirectoryArray(const char* dir) {
    auto array = std::make_unique<char[]>(kPathBytes);
    storeDirectory(array.get(), dir, kPathBytes);
    return array;
}

/// The text of a directory array; one that was filled to its end has no terminator.
std::string_view directoryText(const char* array) { return {array, strnlen(array, kPathBytes)}; }

/// The document with the first field of view and the first range of the camera's description.
ConfigurationDocument withSuggestion(ConfigurationDocument document) {
    const std::string path =
        std::string(document.calibrationDir) + "/Cali-" + std::to_string(document.serial) + ".xml";
    SimpleXML description;
    if (!description.open(path.c_str(), "CaliData")) return document;
    const auto enterFirstOptics = [&description] {
        description.setNode();
        description.setNode("Temperature");
        description.setNode("Optics");
        description.setNode("OpticsDef");
    };
    enterFirstOptics();
    description.getInt("FOV", &document.fovDeg);
    enterFirstOptics();
    description.setNode("TempRanges");
    description.setNode("TemperatureRange");
    description.getInt("TempLo", &document.minTempC);
    description.getInt("TempHi", &document.maxTempC);
    return document;
}

}  // namespace

IRCalibrationManager* IRCalibrationManager::_this = nullptr;

IRCalibrationManager* IRCalibrationManager::getInstance() {
    if (_this == nullptr) _this = std::make_unique<IRCalibrationManager>().release();
    return _this;
}

// The list is made and released before the arrays that are declared before it.
IRCalibrationManager::IRCalibrationManager() {
    m_availableOptics = std::make_unique<std::vector<OpticsEntry>>();
    m_calibrationDir = makeDirectoryArray(kDefaultCalibrationDir);
    m_formatsDir = makeDirectoryArray(kDefaultFormatsDir);
}

IRCalibrationManager::~IRCalibrationManager() {
    m_availableOptics.reset();
    m_calibrationDir.reset();
    m_formatsDir.reset();
    _this = nullptr;
}

char* IRCalibrationManager::getCalibrationDir() { return m_calibrationDir.get(); }

char* IRCalibrationManager::getFormatsDir() { return m_formatsDir.get(); }

void IRCalibrationManager::setCalibrationDir(const char* dir) {
    if (dir != nullptr) storeDirectory(m_calibrationDir.get(), dir, readable(dir));
}

void IRCalibrationManager::setFormatsDir(const char* dir) {
    if (dir != nullptr) storeDirectory(m_formatsDir.get(), dir, readable(dir));
}

/// How many bytes of `dir` may be read, also where it lies in one of the directory arrays.
std::size_t IRCalibrationManager::readable(const char* dir) const {
    return std::min(readableBytes(dir, m_calibrationDir.get()),
                    readableBytes(dir, m_formatsDir.get()));
}

std::string IRCalibrationManager::calibrationDir() const {
    return std::string(directoryText(m_calibrationDir.get()));
}

bool IRCalibrationManager::findSerial(unsigned long& serial) { return findCamera(serial); }

std::string IRCalibrationManager::generateConfiguration(unsigned long serial) {
    ConfigurationDocument document;
    document.serial = serial;
    document.formatsDir = directoryText(m_formatsDir.get());
    document.calibrationDir = directoryText(m_calibrationDir.get());
    try {
        document = withSuggestion(document);
    } catch (const std::bad_alloc&) {
        // A description that memory cannot hold counts as unreadable: the defaults stay.
    }
    // Deliberate: never restored, so all formatting and parsing of the process from here on uses
    // the "C" conventions. The reader has set it as well, but each of its getters puts LC_CTYPE's
    // name back.
    std::setlocale(LC_NUMERIC, "C");
    return document.text();
}

char* IRCalibrationManager::checkCalibration(unsigned long serial) {
    const std::optional<std::string> names = listMissingFiles(calibrationDir(), serial);
    if (!names) return nullptr;
    auto list = std::make_unique<char[]>(names->size() + 1);
    names->copy(list.get(), names->size());
    return list.release();
}

bool IRCalibrationManager::checkCaliFiles(const char* directory, int serial, char* missing,
                                          int* size, const char* xmlFormat, const char* datFormat,
                                          const char* prnFormat, const char* separator) {
    if (missing != nullptr)
        missing[0] = '\0';
    else
        *size = 0;
    const MissingFiles found =
        findMissingFiles(directory, serial, {xmlFormat, datFormat, prnFormat});
    if (missing == nullptr) {
        *size = listBytes(found);
        return found.names.empty();
    }
    writeList(found, separator, missing, *size);
    return !found.isDescription && missing[0] == '\0';
}

bool IRCalibrationManager::createConfigFilepath(char* out, const char* directory, short length,
                                                const char* name, const char* suffix) {
    return composeFilePath(out, directory, length, name, suffix);
}

bool IRCalibrationManager::downloadCalibration(unsigned long serial) {
    return downloadMissingFiles(calibrationDir(), serial);
}

// The interface is given: texts by value, a list that is only read by pointer.
// NOLINTBEGIN(performance-unnecessary-value-param,readability-non-const-parameter)
bool IRCalibrationManager::downloadTarget(char* targets, std::string serial,
                                          std::string targetDir) {
    return fetchFiles(targets == nullptr ? "" : targets, serial, targetDir);
}

bool IRCalibrationManager::copyCalibrationFromLocalRepo(unsigned long serial,
                                                        std::string sourceDir) {
    const std::string directory = calibrationDir();
    if (!mayReachShellAsDirectory(sourceDir) || !mayReachShellAsDirectory(directory)) return false;
    const std::string command = copyFilesCommand(sourceDir, std::to_string(serial), directory);
    std::printf("%s\n", command.c_str());
    std::fflush(stdout);
    if (!readCommand(command, 0)) return false;
    return listMissingFiles(directory, serial).value_or("").empty();
}
// NOLINTEND(performance-unnecessary-value-param,readability-non-const-parameter)

bool IRCalibrationManager::isOnlineCalibrationRepoAccessible() {
    const std::optional<std::string> count =
        readCommand(countDefaultRoutesCommand(), kMostCountBytes);
    unsigned int routes = 0;
    // NOLINTNEXTLINE(cert-err34-c): the count of a tool of ours; none of it means none
    return count && std::sscanf(count->c_str(), "%u", &routes) == 1 && routes != 0;
}

std::vector<OpticsEntry>* IRCalibrationManager::getAvailableOptics(unsigned long serial) {
    if (serial == 0) return m_availableOptics.get();
    ConfigCali* const cali = ConfigCali::getInstance();
    if (!cali->isLoaded(static_cast<int>(serial)))
        cali->load(calibrationDir().c_str(), static_cast<int>(serial));

    CaliView view(*cali);
    // The built-in description stands in for none that was ever there.
    const std::size_t count = view.hasEverLoaded() ? view.opticsCount() : 0;
    // Uses the room that the list has; when memory ends meanwhile, the list is empty.
    std::vector<OpticsEntry> rebuilt = std::move(*m_availableOptics);
    rebuilt.resize(count);
    for (std::size_t i = 0; i < count; ++i) {
        const OPTICS key = view.keyAt(i);
        OpticsEntry& entry = rebuilt[i];
        entry.fov = key.fov;
        entry.text = key.text == nullptr ? "" : key.text;
        // Deliberate: looked up by key, so optics that share field of view and text all show the
        // ranges of the first of them.
        const std::vector<TemperatureRange>& ranges = view.rangesByKeyOf(i);
        entry.tempRanges.resize(ranges.size());
        for (std::size_t j = 0; j < ranges.size(); ++j)
            entry.tempRanges[j] = {truncateToInt(ranges[j].TempLo),
                                   truncateToInt(ranges[j].TempHi)};
    }
    *m_availableOptics = std::move(rebuilt);
    return m_availableOptics.get();
}

void _checkCaliFilesHelper(const char* directory, char* name, const char* format, char* missing,
                           int* size) {
    IRCalibrationManager::getInstance();  // exists afterwards
    recordFileIfMissing(directory, name, format, missing, size);
}

}  // namespace dax
