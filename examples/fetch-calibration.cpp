// Completes a camera's calibration files, from the vendor's server or from a folder, and tells what
// was missing before and is missing afterwards. Uses the public headers only.
//
// usage: fetch-calibration missing  DIRECTORY SERIAL          only names what is missing
//        fetch-calibration download DIRECTORY SERIAL
//        fetch-calibration copy     DIRECTORY SERIAL SOURCE
#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <string>

#include "sdk/IRCalibrationManager.h"
#include "sdk/IRLogger.h"

namespace {

constexpr int kUsageError = 2;

/// A line for each file; "" when the set is complete.
std::string missingFiles(dax::IRCalibrationManager& manager, unsigned long serial) {
    const std::unique_ptr<char[]> list(manager.checkCalibration(serial));
    std::string lines = list ? list.get() : "";
    std::replace(lines.begin(), lines.end(), ';', '\n');
    return lines;
}

}  // namespace

int main(int argc, char** argv) {
    const std::string action = argc > 1 ? argv[1] : "";
    if (argc != (action == "copy" ? 5 : 4) ||
        (action != "missing" && action != "download" && action != "copy")) {
        std::fprintf(stderr,
                     "usage: fetch-calibration missing|download|copy DIRECTORY SERIAL [SOURCE]\n");
        return kUsageError;
    }
    dax::IRLogger::setVerbosity(dax::IRLOG_INFO, dax::IRLOG_OFF, nullptr);
    const unsigned long serial = std::strtoul(argv[3], nullptr, 10);
    auto* const manager = dax::IRCalibrationManager::getInstance();
    manager->setCalibrationDir(argv[2]);

    const std::string before = missingFiles(*manager, serial);
    if (action == "missing") {
        std::printf("%s", before.c_str());
        return before.empty() ? EXIT_SUCCESS : EXIT_FAILURE;
    }
    std::printf("missing before:\n%s", before.c_str());
    const bool answer = action == "copy" ? manager->copyCalibrationFromLocalRepo(serial, argv[4])
                                         : manager->downloadCalibration(serial);
    // The answer is no promise about every file: ask once more.
    const std::string after = missingFiles(*manager, serial);
    std::printf("answer: %s\nmissing afterwards:%s\n%s", answer ? "yes" : "no",
                after.empty() ? " nothing" : "", after.c_str());
    return after.empty() ? EXIT_SUCCESS : EXIT_FAILURE;
}
