// Runs the real tool in a sandbox, and the fixed texts that it writes.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "support/BuildPaths.h"
#include "support/LogText.h"
#include "support/Sandbox.h"

namespace thermika_test {

// Where the tool looks for the description of the camera that the tests attach.
constexpr const char* kToolFolder = "/usr/share/libthermika/cali";
constexpr const char* kToolDescription = "/usr/share/libthermika/cali/Cali-14080045.xml";

constexpr int kToolFailure = 255;
constexpr const char* kEightDigitsNeeded =
    "Serial number needs to have exactly 8 digits. Please check input parameter -d.\n";
constexpr const char* kNoCamera = "Valid serial number cannot be determined. Is device attached?\n";
constexpr const char* kNoBus =
    "ERROR [IRCalibrationManager:390] @ #s :Query directory /sys/bus/usb/devices could not be "
    "opened: No such file or directory\n";

/// The tool under the name "genconfig", log lines without their seconds.
inline RunResult runTool(std::vector<std::string> arguments,
                         const std::function<void()>& prepare = {}) {
    arguments.insert(arguments.begin(), "genconfig");
    RunResult result = run(THERMIKA_TOOL, arguments, prepare);
    result.err = withoutSeconds(result.err);
    return result;
}

}  // namespace thermika_test
