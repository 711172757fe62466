// The command-line tool: options, camera, document. Leaves everything else to the manager.
#include "app/Driver.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cctype>
#include <cerrno>
#include <csignal>
#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <new>
#include <string>

#include "sdk/IRCalibrationManager.h"
#include "sdk/IRLogger.h"
#include "sdk/base/BuildConfig.h"
#include "sdk/base/CaliDirectory.h"
#include "sdk/camera/SerialDiscovery.h"

namespace {

constexpr int kFailure = -1;  // the shell sees 255

struct Options {
    std::string formatsDir = dax::kDefaultFormatsDir;
    std::string calibrationDir = dax::kDefaultCalibrationDir;
    unsigned long serial = 0;
    bool isSerialGiven = false;
    bool isStopped = false;
};

int fail(const char* message, std::FILE* to) noexcept {
    std::fputs(message, to);
    return kFailure;
}

/// False when the run ends at once.
bool readSerial(const char* argument, Options& options) {
    if (argument[0] < '0' || argument[0] > '9') return true;
    const auto serial = static_cast<unsigned long>(std::strtol(argument, nullptr, 10));
    if (serial < dax::kLowestSerial || serial > dax::kHighestSerial) {
        fail("Serial number needs to have exactly 8 digits. Please check input parameter -d.\n",
             stderr);
        return false;
    }
    options.serial = serial;
    options.isSerialGiven = true;
    return true;
}

/// False when the run ends at once.
bool readOptions(int argc, char** argv, Options& options) {
    for (int option = 0; (option = getopt(argc, argv, "d:t:")) != -1;) {
        if (option == 'd') {
            if (!readSerial(optarg, options)) return false;
            continue;
        }
        // Deliberate: a source directory is accepted, and then ends the run with -1 before any
        // camera is looked for, just as an unknown option does. So nobody sees the copy.
        options.isStopped = true;
        if (option == 't' && std::isprint(static_cast<unsigned char>(optarg[0])) != 0)
            options.calibrationDir = optarg;
    }
    return !options.isStopped;
}

/// The exit status. Standard output has no buffer, so nothing is left to flush.
int deliver(const std::string& text) noexcept {
    if (std::fputs(text.c_str(), stdout) != EOF) return 0;
    const int reason = errno;
    std::fprintf(stderr,
                 "cannot write the configuration to standard output: %s (is it full or closed?)\n",
                 std::strerror(reason));
    return kFailure;
}

int run(int argc, char** argv) {
    const std::string logFile = std::string(argc > 0 ? argv[0] : "") + ".log";
    // Deliberate: a name, but no file: errors, warnings and information go to standard error alone.
    dax::IRLogger::setVerbosity(dax::IRLOG_INFO, dax::IRLOG_OFF, logFile.c_str());

    Options options;
    if (!readOptions(argc, argv, options)) return kFailure;

    dax::IRCalibrationManager* const manager = dax::IRCalibrationManager::getInstance();
    if (!options.isSerialGiven && !manager->findSerial(options.serial)) {
        // Deliberate: on standard output, unlike the message about a serial number given wrongly.
        return fail("Valid serial number cannot be determined. Is device attached?\n", stdout);
    }
    // GCOVR_EXCL_BR_START: the directory that comes so far is the built-in one, without a slash.
    if (!options.calibrationDir.empty() && options.calibrationDir.back() == '/')
        options.calibrationDir.pop_back();  // GCOVR_EXCL_LINE
    // GCOVR_EXCL_BR_STOP
    manager->setCalibrationDir(options.calibrationDir.c_str());
    manager->setFormatsDir(options.formatsDir.c_str());
    return deliver(manager->generateConfiguration(options.serial) + '\n');
}

}  // namespace

void printUsage(char* program) {
    std::printf("Usage: %s {-d} [-t]\n", program);
    std::printf(" -d: find specific device\n");
    std::printf(" -t: specify source directory with calibration files (optional)\n\n");
    std::printf("  examples\n");
    std::printf("  --------\n");
    std::printf("   $ %s\n", program);
    std::printf("   $ %s -d14080045\n", program);
    std::printf("   $ %s -d14080045 -t /tmp\n", program);
}

namespace dax {

// Deliberate: getcwd() is told twice the length plus one, so callers must provide that much. A
// negative length becomes a size that no buffer has; getcwd() then writes what the directory needs.
char* getFolderPath(char* buffer, short length) {
    return getcwd(buffer, static_cast<std::size_t>(length * 2 + 1));
}

int mkDir(const char* path) { return mkdir(path, kDirectoryMode); }

}  // namespace dax

int main(int argc, char** argv) {
    // A reader that goes away and a file that may not grow (ulimit -f) are failed writes with a
    // message, not a silent death.
    std::signal(SIGPIPE, SIG_IGN);
    std::signal(SIGXFSZ, SIG_IGN);
    // There is one text to write: a buffer would only be filled and emptied.
    std::setvbuf(stdout, nullptr, _IONBF, 0);
    try {
        return run(argc, argv);
    } catch (const std::bad_alloc&) {
        return fail("out of memory\n", stderr);
    }
}
