// See the header.
#include "support/LocalCopy.h"

#include <filesystem>

#include "sdk/IRCalibrationManager.h"
#include "support/TestFiles.h"

namespace thermika_test {

namespace fs = std::filesystem;

void inQuietWorld(const std::function<void()>& body) {
    inSandbox([&body] {
        const DownloadSandbox world;
        outcomeOf([&body] {
            body();
            return true;
        });
    });
}

void lay(const std::string& dir, const Files& files) {
    fs::create_directories(dir);
    for (const auto& [name, bytes] : files) writeFile((fs::path(dir) / name).string(), bytes);
}

std::string copyCommand(const std::string& source, const std::string& dir,
                        const std::string& serial) {
    return "find " + source + " -name Cali-" + serial + "* -exec cp \"{}\" " + dir +
           " \\; -o -name Kennlinie-" + serial + "* -exec cp \"{}\" " + dir + " \\; 2> /dev/null";
}

RunResult copyInProcess(const std::function<bool()>& operation) {
    return runInProcess([&operation] { return operation() ? kCopiedAll : kCopiedLess; });
}

RunResult copyFrom(const std::string& source, const std::function<void()>& prepare,
                   unsigned long serial) {
    return copyInProcess([&] {
        if (prepare) prepare();
        return dax::IRCalibrationManager::getInstance()->copyCalibrationFromLocalRepo(serial,
                                                                                      source);
    });
}

RunResult copied(int status, const std::string& source) {
    return {copyCommand(source) + "\n", "", status};
}

}  // namespace thermika_test
