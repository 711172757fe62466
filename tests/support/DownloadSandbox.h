// A private world for operations that start programs: name service, loopback, environment, /tmp and
// calibration directory are the test's own, and what the operation did is read off there. For use
// in a sandbox only.
#pragma once

#include <sys/types.h>

#include <functional>
#include <map>
#include <ostream>
#include <string>
#include <string_view>
#include <vector>

namespace thermika_test {

constexpr const char* kServedFolder = "/usr/share/world/served";
constexpr const char* kServerScript = "/usr/share/world/file-server.py";
constexpr const char* kCaliDir = "/usr/share/libthermika/cali";  // the manager's own default
constexpr const char* kLinksFile = "/tmp/downloadlinks.xml";

using Files = std::map<std::string, std::string>;  // bytes by name
using Texts = std::vector<std::string>;

/// While it lives: loopback is up, the download host is this machine, /tmp is empty, the
/// calibration directory and the working directory exist and are empty. The environment holds a
/// plain PATH and what keeps wget from the machine's own settings: it is quiet, tries twice and
/// does not pause between tries.
class DownloadSandbox {
public:
    DownloadSandbox();
    /// The former /tmp returns, for what is written at the process's end.
    ~DownloadSandbox();
    DownloadSandbox(const DownloadSandbox&) = delete;
    DownloadSandbox& operator=(const DownloadSandbox&) = delete;

    /// wget as it comes: with its reports on standard error.
    static void letWgetTalk();

    /// The programs that the shell finds are those in an empty folder.
    static void hideAllPrograms();
};

/// Mounts a file system of its own over `dir`; `options` are tmpfs's, like "size=8k".
void mountOver(const std::string& dir, const std::string& options);

/// Nothing below `dir` can be changed from here on.
void makeReadOnly(const std::string& dir);

/// No process can be started from here on.
void forbidNewProcesses();

/// No file can be opened from here on.
void forbidNewDescriptors();

/// What an operation answered, and all that went to standard error meanwhile: log lines (severities
/// 0 to 2) with "#" for seconds and line numbers, and the words of the programs it started.
struct Outcome {
    bool result = false;
    std::string log;
};

bool operator==(const Outcome& a, const Outcome& b);
std::ostream& operator<<(std::ostream& out, const Outcome& outcome);

Outcome outcomeOf(const std::function<bool()>& operation);

/// A log line of the manager.
std::string managerLine(const std::string& severity, const std::string& message);

/// Every file below `dir` by its path there, with its bytes; folders end in "/".
Files contents(const std::string& dir);

}  // namespace thermika_test
