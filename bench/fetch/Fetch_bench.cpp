// One fetching of a camera's files, by the fetch library or by the manager's own download: the
// program that Fetch_bench.py measures.
//
// usage: thermika-bench-fetch library|manager|names|one DIRECTORY [LINKS_ADDRESS [JOBS]]
//   library  the description, then what it calls for, as the companion does
//   manager  IRCalibrationManager::downloadCalibration()
//   names    prints what the description in DIRECTORY calls for
//   one      the file "large.dat" alone; prints the peak of memory in kB
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

bool fetchNames(const std::vector<std::string>& names, const std::string& directory,
                const std::vector<std::string>& arguments) {
    thermika::fetch::Request request;
    request.serial = std::to_string(kSerial);
    request.names = names;
    request.directory = directory;
    request.source = thermika::fetch::VendorServer{arguments.at(2)};
    if (arguments.size() > 3) request.limits.jobs = static_cast<unsigned>(std::stoul(arguments[3]));
    const thermika::fetch::Report report = thermika::fetch::fetch(request);
    if (report.isComplete()) return true;
    std::cerr << report.problem << '\n';
    for (const auto& file : report.files)
        if (!file.reason.empty()) std::cerr << file.name << ": " << file.reason << '\n';
    return false;
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
    if (what == "library")
        return fetchNames({"Cali-14080045.xml"}, directory, arguments) &&
               fetchNames(expectedNames(directory), directory, arguments);
    if (what == "one") {
        const bool isFetched = fetchNames({"large.dat"}, directory, arguments);
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
    return arguments.size() >= 2 && carryOut(arguments) ? EXIT_SUCCESS : EXIT_FAILURE;
}
