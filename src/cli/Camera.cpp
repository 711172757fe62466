// What the library would do on its way (create the directory, end the process for a long path) is
// ruled out before it is asked.
#include "cli/Camera.h"

#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <cstring>

#include "cli/Escape.h"
#include "sdk/base/PathLimits.h"

namespace thermika::cli {

namespace {

constexpr std::size_t kSerialDigits = 8;

bool isDigit(char byte) { return byte >= '0' && byte <= '9'; }

/// Why the description at `path` cannot be read; 0 when it can be tried.
int descriptionError(const std::string& path) {
    struct stat status {};
    if (stat(path.c_str(), &status) != 0) return errno;
    return 0;
}

std::string fetchCommand(unsigned long serial) {
    return "thermika fetch " + std::to_string(serial);
}

}  // namespace

void addSerialArgument(CLI::App& command, std::string& text) {
    command.add_option("SERIAL", text, "Serial number of the camera, 8 digits")->type_name("");
}

unsigned long chosenCamera(const Session& /*session*/, const std::string& serialText) {
    const bool isNumber = serialText.size() == kSerialDigits && serialText.front() != '0' &&
                          std::all_of(serialText.begin(), serialText.end(), isDigit);
    if (!isNumber)
        throw Problem(Status::kUsage, "\"" + shown(serialText) +
                                          "\" is no serial number: it has 8 digits and does not "
                                          "begin with 0 (see: thermika cameras)");
    return std::stoul(serialText);
}

std::string descriptionName(unsigned long serial) {
    return "Cali-" + std::to_string(serial) + ".xml";
}

ConfigCali& loadDescription(const Session& session, unsigned long serial) {
    const std::string path = session.directory + "/" + descriptionName(serial);
    if (path.size() >= dax::kPathBytes)
        throw Problem(Status::kFailed, "cannot read " + shown(path) +
                                           ": the path is too long (choose a directory with a "
                                           "shorter name: --dir)");
    if (const int reason = descriptionError(path); reason != 0)
        throw Problem(Status::kFailed, "cannot read " + shown(path) + ": " + std::strerror(reason) +
                                           " (fetch it: " + fetchCommand(serial) + ")");
    ConfigCali& cali = *ConfigCali::getInstance();
    if (cali.load(session.directory.c_str(), static_cast<int>(serial)) != 0)
        throw Problem(Status::kFailed, shown(path) +
                                           " is no calibration description that can be read "
                                           "(remove it and fetch it again: " +
                                           fetchCommand(serial) + ")");
    return cali;
}

}  // namespace thermika::cli
