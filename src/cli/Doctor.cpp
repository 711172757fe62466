// `thermika doctor`: one screen about everything that a camera needs, to be pasted into a bug
// report.
#include <grp.h>
#include <pwd.h>
#include <sys/stat.h>
#include <sys/statvfs.h>
#include <sys/utsname.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include <nlohmann/json.hpp>

#include "cli/Attached.h"
#include "cli/Camera.h"
#include "cli/Commands.h"
#include "cli/Escape.h"
#include "cli/FetchProgress.h"
#include "cli/Server.h"
#include "cli/Table.h"
#include "cli/Version.h"
#include "sdk/base/BuildConfig.h"

namespace thermika::cli {

namespace {

constexpr unsigned kServerSeconds = 5;
constexpr std::uint64_t kScarceBytes = std::uint64_t{64} << 20;  // less does not hold a large set

enum class Verdict { kOk, kWarn, kFail };

/// One line of the screen, with outside bytes as they are.
struct Check {
    Verdict verdict;
    std::string subject;
    std::string text;
};

const char* verdictWord(Verdict verdict) {
    switch (verdict) {
        case Verdict::kOk:
            return "OK";
        case Verdict::kWarn:
            return "WARN";
        case Verdict::kFail:
            break;
    }
    return "FAIL";
}

Style styleOf(Verdict verdict) {
    switch (verdict) {
        case Verdict::kOk:
            return Style::kGood;
        case Verdict::kWarn:
            return Style::kDoubtful;
        case Verdict::kFail:
            break;
    }
    return Style::kBad;
}

Check versionCheck() {
    utsname system{};
    uname(&system);
    return {Verdict::kOk, "version",
            std::string(kVersion) + ", " + kBuildText + ", on " + system.sysname + " " +
                system.release + " " + system.machine};
}

std::string ownerText(const struct stat& status) {
    const passwd* const user = getpwuid(status.st_uid);
    const group* const team = getgrgid(status.st_gid);
    return (user != nullptr ? user->pw_name : std::to_string(status.st_uid)) + ":" +
           (team != nullptr ? team->gr_name : std::to_string(status.st_gid));
}

std::string modeText(const struct stat& status) {
    std::array<char, 16> text{};
    std::snprintf(text.data(), text.size(), "%04o", static_cast<unsigned>(status.st_mode & 07777U));
    return text.data();
}

/// `whenAbsent` and `whenUnusable`: what to do then. Without `isWritten`, reading it will do.
Check directoryCheck(const std::string& subject, const std::string& directory,
                     const std::string& whenAbsent, const std::string& whenUnusable,
                     bool isWritten) {
    struct stat status {};
    if (stat(directory.c_str(), &status) != 0) {
        const int reason = errno;
        if (reason == ENOENT)
            return {Verdict::kWarn, subject, directory + " does not exist (" + whenAbsent + ")"};
        return {Verdict::kFail, subject,
                directory + ": " + std::strerror(reason) + " (" + whenUnusable + ")"};
    }
    if (!S_ISDIR(status.st_mode))
        return {Verdict::kFail, subject, directory + " is no directory (" + whenUnusable + ")"};
    std::string text = directory + ", owner " + ownerText(status) + ", mode " + modeText(status);
    struct statvfs space {};
    std::uint64_t freeBytes = UINT64_MAX;
    if (statvfs(directory.c_str(), &space) == 0) {
        freeBytes = std::uint64_t{space.f_bavail} * space.f_frsize;
        text += ", " + bytesText(freeBytes) + " free";
    }
    if (access(directory.c_str(), R_OK | X_OK) != 0)
        return {Verdict::kFail, subject, text + ", not readable (is it yours?)"};
    if (!isWritten) return {Verdict::kOk, subject, text};
    if (access(directory.c_str(), W_OK) != 0)
        return {Verdict::kWarn, subject,
                text + ", not writable (to fetch, become its owner or choose another: --dir)"};
    if (freeBytes < kScarceBytes)
        return {Verdict::kWarn, subject, text + ", hardly any space left (make room)"};
    return {Verdict::kOk, subject, text};
}

void addBusChecks(const dax::BusListing& bus, std::vector<Check>& checks) {
    if (bus.reason != 0) {
        checks.push_back({Verdict::kFail, "bus", busProblem(bus)});
        return;
    }
    checks.push_back({Verdict::kOk, "bus", std::string(dax::kUsbDevicesDir) + " can be read"});
    bool isAnyCamera = false;
    for (const dax::AttachedDevice& device : bus.devices) {
        const bool isCamera = device.state == dax::DeviceState::kCamera;
        const bool isOther = device.state == dax::DeviceState::kNoCamera;
        isAnyCamera = isAnyCamera || !isOther;
        checks.push_back({isCamera || isOther ? Verdict::kOk : Verdict::kFail,
                          isOther ? "device" : "camera", sentenceAbout(device)});
    }
    if (!isAnyCamera)
        checks.push_back(
            {Verdict::kWarn, "camera",
             "no camera is attached (plug one in, or name one: thermika doctor SERIAL)"});
}

void addFileChecks(const Session& session, unsigned long serial, std::vector<Check>& checks) {
    const CameraFiles files = lookAtFiles(session, serial);
    const std::string number = std::to_string(serial);
    if (files.description.cali == nullptr) {
        checks.push_back({Verdict::kFail, "description", files.description.problem});
        return;
    }
    checks.push_back({Verdict::kOk, "description",
                      pathOf(session, descriptionName(serial)) + ", " +
                          bytesText(files.description.file.bytes) + ", " +
                          std::to_string(files.description.cali->getOpticsCount()) + " optics"});
    std::string text = "of camera " + number + ": " + filesText(files);
    if (!files.isComplete()) text += " (fetch them: thermika fetch " + number + ")";
    checks.push_back({files.isComplete() ? Verdict::kOk : Verdict::kFail, "files", text});
}

Check serverCheck() {
    const ServerAnswer answer = askServer("", kServerSeconds);
    if (answer.isGood()) return {Verdict::kOk, "server", answerText(answer)};
    return {Verdict::kWarn, "server",
            answerText(answer) +
                " (is there a network? a mirror or a folder will do: thermika "
                "fetch --from)"};
}

/// The cameras whose files are looked at.
std::vector<unsigned long> camerasMeant(const std::string& serialText, const dax::BusListing& bus) {
    std::vector<unsigned long> serials;
    if (!serialText.empty()) {
        serials.push_back(chosenCamera(serialText, "doctor"));
        return serials;
    }
    for (const dax::AttachedDevice& device : bus.devices)
        if (device.state == dax::DeviceState::kCamera) serials.push_back(device.serial);
    return serials;
}

Json document(const Session& session, const std::vector<Check>& checks, bool isHealthy) {
    Json list = Json::array();
    for (const Check& check : checks) {
        Json each;
        each["verdict"] = verdictWord(check.verdict);
        each["subject"] = check.subject;
        each["text"] = jsonText(check.text);
        list.push_back(each);
    }
    Json whole;
    whole["version"] = kVersion;
    whole["directory"] = jsonText(session.directory);
    whole["healthy"] = isHealthy;
    whole["checks"] = list;
    return whole;
}

Status runDoctor(Session& session, const std::string& serialText) {
    const dax::BusListing bus = attachedDevices();
    const auto serials = camerasMeant(serialText, bus);
    std::vector<Check> checks;
    checks.push_back(versionCheck());
    checks.push_back(directoryCheck("directory", session.directory, "thermika fetch creates it",
                                    "choose another: --dir", true));
    checks.push_back(directoryCheck("formats", dax::kDefaultFormatsDir,
                                    "the program that shows the camera's images brings it",
                                    "make it a directory that can be read", false));
    addBusChecks(bus, checks);
    for (const unsigned long serial : serials) addFileChecks(session, serial, checks);
    checks.push_back(serverCheck());

    const bool isHealthy = std::none_of(checks.begin(), checks.end(), [](const Check& check) {
        return check.verdict == Verdict::kFail;
    });
    Output& output = session.output;
    if (output.isJson) {
        output.addDocument(document(session, checks, isHealthy));
    } else {
        Table table({{"STATE"}, {"SUBJECT"}, {"FINDING"}});
        for (const Check& check : checks)
            table.add({{verdictWord(check.verdict), styleOf(check.verdict)},
                       {check.subject},
                       {shown(check.text)}});
        output.add(table.text(output, terminalColumns()));
    }
    return isHealthy ? Status::kYes : Status::kNo;
}

}  // namespace

Run addDoctor(CLI::App& command) {
    const auto serial = std::make_shared<std::string>();
    addSerialArgument(command, *serial, "every attached camera");
    command.footer("Example: thermika doctor");
    return [serial](Session& session) { return runDoctor(session, *serial); };
}

}  // namespace thermika::cli
