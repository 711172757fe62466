// One operation of the library, twice, for tools/faults: a system call of the first one fails, the
// second one runs unhindered in the same process. What came of them goes to a report.
//
// usage: thermika-library-use missing|optics|route|download REPORT
//        thermika-library-use copy REPORT SOURCE
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <memory>
#include <new>
#include <string>

#include "sdk/IRCalibrationManager.h"
#include "sdk/IRLogger.h"

namespace {

constexpr unsigned long kCamera = 14080045;
constexpr int kUsageError = 2;

std::string missing() {
    const std::unique_ptr<char[]> list(
        dax::IRCalibrationManager::getInstance()->checkCalibration(kCamera));
    return list ? list.get() : "nothing";
}

std::string optics() {
    std::string all;
    for (const auto& entry : *dax::IRCalibrationManager::getInstance()->getAvailableOptics(kCamera))
        all += std::to_string(entry.fov) + " " + entry.text + " " +
               std::to_string(entry.tempRanges.size()) + ";";
    return all.empty() ? "nothing" : all;
}

std::string answerOf(const std::string& operation, const std::string& source) {
    auto* const manager = dax::IRCalibrationManager::getInstance();
    try {
        if (operation == "missing") return missing();
        if (operation == "optics") return optics();
        bool answer = false;
        if (operation == "route") answer = manager->isOnlineCalibrationRepoAccessible();
        if (operation == "download") answer = manager->downloadCalibration(kCamera);
        if (operation == "copy") answer = manager->copyCalibrationFromLocalRepo(kCamera, source);
        return answer ? "yes" : "no";
    } catch (const std::bad_alloc&) {
        return "out of memory";
    }
}

/// Also for programs that the operation could not wait for.
void waitForPrograms() {
    while (wait(nullptr) > 0 || errno == EINTR) continue;
}

void reportFiles(std::ofstream& report) {
    for (const auto& dir :
         {std::string(dax::IRCalibrationManager::getInstance()->getCalibrationDir()),
          std::string("/tmp")})
        for (const auto& entry : std::filesystem::directory_iterator(dir))
            report << "file " << entry.path().string() << " " << entry.file_size() << "\n";
}

}  // namespace

int main(int argc, char** argv) {
    if (argc < 3) return kUsageError;
    const std::string operation = argv[1];
    const std::string source = argc > 3 ? argv[3] : "";
    dax::IRLogger::setVerbosity(dax::IRLOG_INFO, dax::IRLOG_OFF, nullptr);

    // Only system calls between these two calls are made to fail.
    getppid();
    std::string answer = answerOf(operation, source);
    getppid();

    waitForPrograms();
    std::ofstream report(argv[2]);
    report << "answer " << answer << "\n";
    reportFiles(report);
    answer = answerOf(operation, source);
    waitForPrograms();
    report << "answer " << answer << "\n";
    reportFiles(report);
    return report.flush() ? EXIT_SUCCESS : EXIT_FAILURE;
}
