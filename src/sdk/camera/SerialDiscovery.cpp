// The search and the list look at every entry through the same functions. Entries are looked up
// relative to a directory that the caller names: the search uses the working directory.
#include "sdk/camera/SerialDiscovery.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <optional>
#include <string_view>
#include <utility>

#include "sdk/base/FileRead.h"
#include "sdk/camera/ManagerLog.h"

namespace dax {

namespace {

constexpr const char* kCameraVendor = "0403";
constexpr const char* kCameraProduct = "de37";

// Shown in log lines, whose readers look for them; they name messages, not places in this file.
constexpr int kLineQuery = 379;
constexpr int kLineCannotEnter = 390;
constexpr int kLineCannotOpen = 399;
constexpr int kLineEntryStatus = 416;
constexpr int kLineFound = 450;

struct DirectoryCloser {
    void operator()(DIR* directory) const { closedir(directory); }
};
using OpenDirectory = std::unique_ptr<DIR, DirectoryCloser>;

/// The next entry but "." and ".."; null at the end, and, with `errno` set, when reading fails.
const char* nextEntry(const OpenDirectory& directory) {
    errno = 0;
    while (const dirent* const listed = readdir(directory.get())) {
        const std::string_view name = listed->d_name;
        if (name != "." && name != "..") return listed->d_name;
    }
    return nullptr;
}

/// Whether the entry is a symbolic link, as every device of the kernel's tree is. Nothing, with
/// `errno` set, when it cannot be looked at: mostly it is gone.
std::optional<bool> isLink(int directory, const char* entry) {
    struct stat status {};
    if (fstatat(directory, entry, &status, AT_SYMLINK_NOFOLLOW) != 0) return std::nullopt;
    return S_ISLNK(status.st_mode);
}

bool readAttribute(int directory, const AttachedDevice& device, const char* name,
                   std::string& text) {
    return readFirstLine(directory, (device.entry + name).c_str(), text);
}

bool isOfCamerasVendor(int directory, AttachedDevice& device) {
    return readAttribute(directory, device, "/idVendor", device.vendor) &&
           device.vendor == kCameraVendor;
}

bool hasCamerasProduct(int directory, AttachedDevice& device) {
    return readAttribute(directory, device, "/idProduct", device.product) &&
           device.product == kCameraProduct;
}

bool readSerial(int directory, AttachedDevice& device) {
    return readAttribute(directory, device, "/serial", device.serialText);
}

unsigned long serialNumber(const AttachedDevice& device) {
    return std::strtoul(device.serialText.c_str(), nullptr, 10);
}

void readState(int directory, AttachedDevice& device) {
    if (!hasCamerasProduct(directory, device)) {
        device.state = DeviceState::kNoCamera;
    } else if (!readSerial(directory, device)) {
        device.reason = errno;
        device.state = DeviceState::kSerialUnreadable;
    } else if (const unsigned long number = serialNumber(device);
               number < kLowestSerial || number > kHighestSerial) {
        device.state = DeviceState::kSerialUnusable;
    } else {
        device.serial = number;
        device.state = DeviceState::kCamera;
    }
}

bool failed(int line, const char* message) {
    const char* const reason = std::strerror(errno);
    logAsManager(kelvra::kLogError, line, std::string(message) + reason);
    errno = 0;
    return false;
}

}  // namespace

BusListing listDevices(const char* busDirectory) {
    BusListing listing;
    const OpenDirectory directory(opendir(busDirectory));
    if (!directory) {
        listing.reason = errno;
        return listing;
    }
    const int bus = dirfd(directory.get());
    while (const char* const entry = nextEntry(directory)) {
        AttachedDevice device;
        device.entry = entry;
        if (!isLink(bus, entry).value_or(false) || !isOfCamerasVendor(bus, device)) continue;
        readState(bus, device);
        readAttribute(bus, device, "/product", device.productText);
        listing.devices.push_back(std::move(device));
    }
    listing.reason = errno;
    return listing;
}

bool findCamera(unsigned long& serial) {
    logAsManager(kelvra::kLogDebug, kLineQuery, "Query directory /sys/bus/usb/devices");
    // Deliberate: the working directory stays in the device tree, so every later relative path of
    // the process is resolved there.
    if (chdir(kUsbDevicesDir) != 0)
        return failed(kLineCannotEnter,
                      "Query directory /sys/bus/usb/devices could not be opened: ");
    OpenDirectory directory(opendir(kUsbDevicesDir));
    if (!directory) return failed(kLineCannotOpen, "Failed to open usb device directory: ");

    const unsigned long wanted = serial;
    serial = 0;
    while (const char* const entry = nextEntry(directory)) {
        AttachedDevice device;
        device.entry = entry;
        const std::optional<bool> isDevice = isLink(AT_FDCWD, entry);
        if (!isDevice) {
            const int reason = errno;
            logAsManager(kelvra::kLogDebug, kLineEntryStatus,
                         std::string("errno: ") + std::strerror(reason) + " " + entry);
            continue;
        }
        if (!*isDevice || !isOfCamerasVendor(AT_FDCWD, device) ||
            !hasCamerasProduct(AT_FDCWD, device) || !readSerial(AT_FDCWD, device))
            continue;
        logAsManager(kelvra::kLogDebug, kLineFound,
                     "Found device with serial " + device.serialText);
        const unsigned long number = serialNumber(device);
        if (wanted != 0 ? number == wanted : number != 0) {
            serial = number;
            break;
        }
    }
    directory.reset();
    errno = 0;
    return serial != 0;
}

}  // namespace dax
