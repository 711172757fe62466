// Three passes over what is missing; in each, the document that names the server's address and then
// one command a file.
#include "sdk/camera/Download.h"

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <clocale>
#include <cstdio>
#include <cstring>
#include <optional>

#include "sdk/camera/DownloadLinks.h"
#include "sdk/camera/FileCheck.h"
#include "sdk/camera/ManagerLog.h"
#include "sdk/camera/ShellCommands.h"
#include "sdk/camera/ShellText.h"
#include "sdk/camera/WriteAccess.h"

namespace dax {

namespace {

constexpr int kPasses = 3;
constexpr const char* kLinksFile = "/tmp/downloadlinks.xml";

/// Whether `path` is a file that somebody else may have left for us to read, or a link or pipe to
/// lead us elsewhere. A directory is neither: it can be neither read nor written as a file.
bool mayBeStrangers(const char* path) {
    struct stat status {};
    if (lstat(path, &status) != 0 || S_ISDIR(status.st_mode)) return false;
    const bool isOurs = status.st_uid == geteuid() || status.st_uid == getuid();
    return !S_ISREG(status.st_mode) || status.st_nlink > 1 || !isOurs;
}

/// The server's links document; nothing when it cannot be had.
std::optional<DownloadLinks> fetchLinks() {
    if (mayBeStrangers(kLinksFile)) return std::nullopt;
    // Deliberate: what the program answers is not looked at; a failed fetch shows when the document
    // is read.
    runCommand(fetchLinksCommand(kLinksFile));
    if (mayBeStrangers(kLinksFile)) return std::nullopt;
    return readDownloadLinks(kLinksFile);
}

}  // namespace

bool downloadMissingFiles(const std::string& directory, unsigned long serial) {
    if (const int reason = writeAccessError(directory); reason != 0) {
        std::string message = "No writing permissions to " + directory;
        if (reason != EACCES)
            message = std::string("Something went wrong: ") + std::strerror(reason);
        logAsManager(kelvra::kLogError, __LINE__, message);
        return false;
    }
    // Deliberate: only after the test for access, which serial 0 goes through as any other.
    if (serial == 0) {
        logAsManager(kelvra::kLogError, __LINE__, "No serial number specified.");
        return false;
    }
    // Deliberate: nothing is checked or said after the last pass, so true does not prove that every
    // file arrived.
    for (int pass = 0; pass < kPasses; ++pass) {
        const std::optional<std::string> missing = listMissingFiles(directory, serial);
        if (!missing || missing->empty()) {
            logAsManager(kelvra::kLogInfo, __LINE__, "All files installed.");
            return true;
        }
        if (!fetchFiles(*missing, std::to_string(serial), directory)) {
            logAsManager(kelvra::kLogInfo, __LINE__, "Download failed.");
            return false;
        }
    }
    return true;
}

bool fetchFiles(std::string_view targets, const std::string& serial, const std::string& targetDir) {
    // Deliberate: never restored. The reader of the links document sets it as well, but a
    // stranger's document is not read.
    std::setlocale(LC_NUMERIC, "C");
    const std::optional<DownloadLinks> links = fetchLinks();
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
    while (!targets.empty()) {
        const std::string_view name = targets.substr(0, targets.find(';'));
        targets.remove_prefix(std::min(name.size() + 1, targets.size()));
        const bool isRefused = links->base && (!mayReachShellAsBase(*links->base) ||
                                               !mayReachShellAsName(name, serial) ||
                                               !mayReachShellAsDirectory(targetDir));
        std::string address;
        if (links->base && !isRefused) {
            address = quotedFileAddress(*links->base, serial, name);
            if (runCommand(fetchFileCommand(address, targetDir, name))) hasStarted = true;
        }
        if (isRefused || !hasStarted)
            logAsManager(kelvra::kLogError, __LINE__, "Error downloading " + address);
    }
    return hasStarted;
}

}  // namespace dax
