// What Fetch_bench.py needs of the libraries.
//
// usage: thermika-bench-fetch manager|names|one DIRECTORY
//   manager  brings a camera's files by IRCalibrationManager::downloadCalibration()
//   names    prints what the description in DIRECTORY calls for
//   one      fetches the file "large.dat" with the fetch library; prints the peak of memory in kB
#include <cstdlib>
#include <fstream>
#include <iostream>
#include <string>
#include <vector>

#include "fetch/Fetch.h"
#include "imgproc/Cali.h"
#include "sdk/IRCalibrationManager.h"
#include "sdk/IRLogger.h"
#include "sdk/camera/FileCheck.h"

namespace {

constexpr int kSerial = 14080045;

std::vector<std::string> expectedNames(const std::string& directory) {
    if (ConfigCali::getInstance()->load(directory.c_str(), kSerial) != 0) return {};
    std::vector<std::string> names;
    for (const dax::ExpectedFile& file : dax::expectedFiles(kSerial)) names.push_back(file.name);
    return names;
}

bool fetchLargeFile(const std::string& directory) {
    thermika::fetch::Request request;
    request.serial = std::to_string(kSerial);
    request.names = {"large.dat"};
    request.directory = directory;
    const thermika::fetch::Report report = thermika::fetch::fetch(request);
    if (!report.isComplete()) std::cerr << report.problem << report.files.at(0).reason << '\n';
    return report.isComplete();
}

/// Of this program alone: getrusage() also counts what its parent had before it was started.
long peakKilobytes() {
    std::ifstream status("/proc/self/status");
    for (std::string word; status >> word;)
        if (word == "VmHWM:") {
            long peak = 0;
            status >> peak;
            return peak;
        }
    return 0;
}

bool carryOut(const std::vector<std::string>& arguments) {
    const std::string& what = arguments.at(0);
    const std::string& directory = arguments.at(1);
    if (what == "names") {
        for (const std::string& name : expectedNames(directory)) std::cout << name << '\n';
        return true;
    }
    if (what == "one") {
        const bool isFetched = fetchLargeFile(directory);
        std::cout << peakKilobytes() << '\n';
        return isFetched;
    }
    if (what != "manager") return false;
    auto* const manager = dax::IRCalibrationManager::getInstance();
    manager->setCalibrationDir(directory.c_str());
    return manager->downloadCalibration(kSerial);
}

}  // namespace

int main(int argc, char** argv) {
    dax::IRLogger::setVerbosity(dax::IRLOG_OFF, dax::IRLOG_OFF, nullptr);
    const std::vector<std::string> arguments(argv + 1, argv + argc);
    return arguments.size() == 2 && carryOut(arguments) ? EXIT_SUCCESS : EXIT_FAILURE;
}
