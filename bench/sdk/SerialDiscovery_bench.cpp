// Looking for the camera on the bus, against plain C functions: one makes every call that the walk
// consists of, the other gives a device up as soon as its vendor is another. The bus is a tree in a
// private namespace, mounted over /sys.
//
// With "--walk ours|plain DEVICES INTERFACES" the program makes one such walk and nothing else, so
// that bench/sdk/SerialDiscovery_calls.sh can count its system calls.
#include <benchmark/benchmark.h>
#include <dirent.h>
#include <errno.h>
#include <fcntl.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/stat.h>
#include <unistd.h>

#include <memory>
#include <string>
#include <vector>

#include "sdk/IRCalibrationManager.h"
#include "sdk/IRLogger.h"
#include "support/UsbBus.h"

namespace {

constexpr std::size_t kDeviceCounts[] = {10, 100, 1000, 10000};
constexpr std::size_t kInterfacesPerDevice = 2;

int openAttribute(const char* name, const char* attribute) {
    char path[NAME_MAX + 32];
    snprintf(path, sizeof path, "%s/%s", name, attribute);
    return open(path, O_RDONLY | O_CLOEXEC);
}

/// Reads the first line and closes the file.
void readLine(int file, char* line, size_t bytes) {
    const ssize_t got = read(file, line, bytes - 1);
    close(file);
    line[got < 0 ? 0 : got] = '\0';
    line[strcspn(line, "\n")] = '\0';
}

bool isCamera(const char* name) {
    const int vendorFile = openAttribute(name, "idVendor");
    if (vendorFile < 0) return false;
    const int productFile = openAttribute(name, "idProduct");
    if (productFile < 0) {
        close(vendorFile);
        return false;
    }
    char vendor[256];
    char product[256];
    readLine(vendorFile, vendor, sizeof vendor);
    readLine(productFile, product, sizeof product);
    return strcmp(vendor, "0403") == 0 && strcmp(product, "de37") == 0;
}

bool isCameraInFewestCalls(const char* name) {
    char line[256];
    const int vendorFile = openAttribute(name, "idVendor");
    if (vendorFile < 0) return false;
    readLine(vendorFile, line, sizeof line);
    if (strcmp(line, "0403") != 0) return false;
    const int productFile = openAttribute(name, "idProduct");
    if (productFile < 0) return false;
    readLine(productFile, line, sizeof line);
    return strcmp(line, "de37") == 0;
}

template <bool (*kIsCamera)(const char*)>
unsigned long findPlainly() {
    if (chdir(bench::kUsbDevicesDir) != 0) return 0;
    DIR* const directory = opendir(bench::kUsbDevicesDir);
    if (directory == nullptr) return 0;
    unsigned long serial = 0;
    while (const dirent* const entry = readdir(directory)) {
        if (strcmp(entry->d_name, ".") == 0 || strcmp(entry->d_name, "..") == 0) continue;
        struct stat status;
        if (lstat(entry->d_name, &status) != 0 || !S_ISLNK(status.st_mode)) continue;
        if (!kIsCamera(entry->d_name)) continue;
        const int serialFile = openAttribute(entry->d_name, "serial");
        if (serialFile < 0) continue;
        char text[256];
        readLine(serialFile, text, sizeof text);
        serial = strtoul(text, nullptr, 10);
        if (serial != 0) break;
    }
    closedir(directory);
    errno = 0;
    return serial;
}

unsigned long findOurs() {
    unsigned long serial = 0;
    dax::IRCalibrationManager::getInstance()->findSerial(serial);
    return serial;
}

struct Walk {
    const char* name;
    unsigned long (*find)();
};

constexpr Walk kWalks[] = {
    {"findSerial", findOurs},
    {"plain", findPlainly<isCamera>},
    {"fewest-calls", findPlainly<isCameraInFewestCalls>},
};

void find(benchmark::State& state, const Walk& walk, const bench::UsbBus& bus, bool hasCamera) {
    bus.plugIn(hasCamera);
    const unsigned long expected = hasCamera ? bench::kCameraSerial : 0;
    for (auto _ : state) {
        if (walk.find() != expected) {
            state.SkipWithError("another serial number was found");
            break;
        }
    }
}

/// Whether all walks find the same.
bool findAlike(const bench::UsbBus& bus) {
    for (const bool hasCamera : {true, false}) {
        bus.plugIn(hasCamera);
        for (const Walk& walk : kWalks) {
            if (walk.find() == (hasCamera ? bench::kCameraSerial : 0)) continue;
            fprintf(stderr, "%s finds another serial number\n", walk.name);
            return false;
        }
    }
    return true;
}

int walkOnce(const char* which, unsigned long devices, unsigned long interfaces) {
    const bench::UsbBus bus(devices, interfaces);
    bus.plugIn(false);
    // To be seen in a trace: everything after it belongs to the walk.
    if (access("/walk-begins", F_OK) == 0) return 1;
    return kWalks[strcmp(which, "ours") == 0 ? 0 : 1].find() == 0 ? 0 : 1;
}

}  // namespace

int main(int argc, char** argv) {
    // As the tool has it.
    dax::IRLogger::setVerbosity(dax::IRLOG_INFO, dax::IRLOG_OFF, nullptr);
    if (!bench::mountEmptySys()) return 1;
    if (argc == 5 && strcmp(argv[1], "--walk") == 0)
        return walkOnce(argv[2], strtoul(argv[3], nullptr, 10), strtoul(argv[4], nullptr, 10));

    std::vector<std::unique_ptr<bench::UsbBus>> buses;
    for (const std::size_t devices : kDeviceCounts) {
        buses.push_back(std::make_unique<bench::UsbBus>(devices, kInterfacesPerDevice));
        const bench::UsbBus& bus = *buses.back();
        if (!findAlike(bus)) return 1;
        for (const bool hasCamera : {true, false}) {
            for (const Walk& walk : kWalks) {
                const std::string name = std::to_string(devices) +
                                         (hasCamera ? "/camera-last/" : "/no-camera/") + walk.name;
                benchmark::RegisterBenchmark(name.c_str(), [&walk, &bus, hasCamera](auto& state) {
                    find(state, walk, bus, hasCamera);
                });
            }
        }
    }
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
