// The manager's operations. The units they are composed of (devices, documents, lists) know nothing
// of the manager.
#include "sdk/IRCalibrationManager.h"

#include <algorithm>
#include <cerrno>
#include <clocale>
#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <memory>
#include <optional>
#include <string_view>

#include "imgproc/Cali.h"
#include "imgproc/internal/CaliView.h"
#include "sdk/SimpleXML.h"
#include "sdk/base/BuildConfig.h"
#include "sdk/base/PathLimits.h"
#include "sdk/base/Truncation.h"
#include "sdk/camera/AccessTest.h"
#include "sdk/camera/ConfigurationDocument.h"
#include "sdk/camera/DownloadLinks.h"
#include "sdk/camera/FileCheck.h"
#include "sdk/camera/ManagerLog.h"
#include "sdk/camera/SerialDiscovery.h"
#include "sdk/camera/ShellCommands.h"

namespace dax {

namespace {

constexpr int kDownloadPasses = 3;
constexpr const char* kLinksFile = "/tmp/downloadlinks.xml";

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

bool IRCalibrationManager::findSerial(unsigned long& serial) { return findCamera(serial); }

std::string IRCalibrationManager::generateConfiguration(unsigned long serial) {
    // Deliberate: never restored, so all formatting and parsing of the process from here on uses
    // the "C" conventions.
    std::setlocale(LC_NUMERIC, "C");

    ConfigurationDocument document;
    document.serial = serial;
    document.formatsDir = directoryText(m_formatsDir.get());
    document.calibrationDir = directoryText(m_calibrationDir.get());

    const std::string path =
        std::string(document.calibrationDir) + "/Cali-" + std::to_string(serial) + ".xml";
    SimpleXML description;
    if (description.open(path.c_str(), "CaliData")) {
        description.setNode();
        description.setNode("Temperature");
        description.setNode("Optics");
        description.setNode("OpticsDef");
        description.getInt("FOV", &document.fovDeg);

        description.setNode();
        description.setNode("Temperature");
        description.setNode("Optics");
        description.setNode("OpticsDef");
        description.setNode("TempRanges");
        description.setNode("TemperatureRange");
        description.getInt("TempLo", &document.minTempC);
        description.getInt("TempHi", &document.maxTempC);
        // Each getter has put LC_CTYPE's name back into LC_NUMERIC.
        std::setlocale(LC_NUMERIC, "C");
    }
    return document.text();
}

char* IRCalibrationManager::checkCalibration(unsigned long serial) {
    return missingFiles(serial).release();
}

/// The list of missing files; null when nothing is missing.
std::unique_ptr<char[]> IRCalibrationManager::missingFiles(unsigned long serial) {
    const std::string directory(directoryText(m_calibrationDir.get()));
    const auto camera = static_cast<int>(serial);
    if (findMissingFiles(directory.c_str(), camera).names.empty()) return nullptr;
    // Deliberate: looks twice, so files that come meanwhile are not listed, and a description that
    // cannot be loaded is logged twice.
    std::string names;
    for (const std::string& name : findMissingFiles(directory.c_str(), camera).names)
        names += name + ';';
    auto list = std::make_unique<char[]>(names.size() + 1);
    names.copy(list.get(), names.size());
    return list;
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
    const std::string directory(directoryText(m_calibrationDir.get()));
    if (const int reason = accessError(directory); reason != 0) {
        std::string message = "No writing permissions to " + directory;
        if (reason != EACCES)
            message = std::string("Something went wrong: ") + std::strerror(reason);
        logAsManager(kelvra::kLogError, __LINE__, message);
        return false;
    }
    // Deliberate: only after the access test, which serial 0 goes through as any other.
    if (serial == 0) {
        logAsManager(kelvra::kLogError, __LINE__, "No serial number specified.");
        return false;
    }
    // Deliberate: nothing is checked or said after the last pass, so true does not prove that every
    // file arrived.
    for (int pass = 0; pass < kDownloadPasses; ++pass) {
        const std::unique_ptr<char[]> missing = missingFiles(serial);
        if (!missing || missing[0] == '\0') {
            logAsManager(kelvra::kLogInfo, __LINE__, "All files installed.");
            return true;
        }
        if (!downloadTarget(missing.get(), std::to_string(serial), directory)) {
            logAsManager(kelvra::kLogInfo, __LINE__, "Download failed.");
            return false;
        }
    }
    return true;
}

// The interface is given: texts by value, a list that is only read by pointer.
// NOLINTBEGIN(performance-unnecessary-value-param,readability-non-const-parameter)
bool IRCalibrationManager::downloadTarget(char* targets, std::string serial,
                                          std::string targetDir) {
    // Deliberate: what the program answers is not looked at; a failed fetch shows when the document
    // is read.
    runCommand(fetchLinksCommand(kLinksFile));
    std::setlocale(LC_NUMERIC, "C");
    const std::optional<DownloadLinks> links = readDownloadLinks(kLinksFile);
    if (!links) {
        // Deliberate: the file stays where it is, for whoever wants to know what came.
        logAsManager(kelvra::kLogError, __LINE__, std::string("Error reading ") + kLinksFile);
        return false;
    }
    std::remove(kLinksFile);
    if (!links->hasLinks) {
        logAsManager(kelvra::kLogError, __LINE__,
                     std::string("Error parsing download links file: ") + kLinksFile);
        return false;
    }
    // Deliberate: one flag for all files. A file counts as fetched once its command was started,
    // and after the first such file the failures of later ones are not logged.
    bool hasStarted = false;
    for (std::string_view rest = targets == nullptr ? "" : targets; !rest.empty();) {
        const std::string_view name = rest.substr(0, rest.find(';'));
        rest.remove_prefix(std::min(name.size() + 1, rest.size()));
        std::string address;
        if (links->base) {
            address = quotedFileAddress(*links->base, serial, name);
            if (runCommand(fetchFileCommand(address, targetDir, name))) hasStarted = true;
        }
        if (!hasStarted) logAsManager(kelvra::kLogError, __LINE__, "Error downloading " + address);
    }
    return hasStarted;
}

bool IRCalibrationManager::copyCalibrationFromLocalRepo(unsigned long serial,
                                                        std::string sourceDir) {
    const std::string command =
        copyFilesCommand(sourceDir, std::to_string(serial), directoryText(m_calibrationDir.get()));
    std::printf("%s\n", command.c_str());
    std::fflush(stdout);
    std::FILE* const pipe = popen(command.c_str(), "r");
    if (pipe == nullptr) return false;
    pclose(pipe);
    const std::unique_ptr<char[]> missing = missingFiles(serial);
    return !missing || missing[0] == '\0';
}
// NOLINTEND(performance-unnecessary-value-param,readability-non-const-parameter)

bool IRCalibrationManager::isOnlineCalibrationRepoAccessible() {
    std::FILE* const pipe = popen(countDefaultRoutesCommand().c_str(), "r");
    if (pipe == nullptr) return false;
    unsigned int routes = 0;
    // NOLINTNEXTLINE(cert-err34-c): the count of a tool of ours; none of it means none
    if (std::fscanf(pipe, "%u", &routes) != 1) routes = 0;
    pclose(pipe);
    return routes != 0;
}

std::vector<OpticsEntry>* IRCalibrationManager::getAvailableOptics(unsigned long serial) {
    if (serial == 0) return m_availableOptics.get();
    ConfigCali* const cali = ConfigCali::getInstance();
    if (!cali->isLoaded(static_cast<int>(serial)))
        cali->load(std::string(directoryText(m_calibrationDir.get())).c_str(),
                   static_cast<int>(serial));

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
