// See the header.
#include "support/UsbTree.h"

#include <dirent.h>
#include <sys/stat.h>

#include <cerrno>
#include <cstddef>
#include <filesystem>
#include <memory>
#include <string_view>
#include <system_error>

#include "support/TestFiles.h"

namespace thermika_test {

namespace {

namespace fs = std::filesystem;

constexpr const char* kController = "devices/platform/vhci_hcd.0";  // below /sys

/// "devices/platform/vhci_hcd.0/usb17/17-1/17-1.2" for the device "17-1.2", below /sys.
std::string deviceFolder(const std::string& name) {
    std::string folder = kController;
    if (name.rfind("usb", 0) == 0) return folder + "/" + name;
    folder += "/usb" + name.substr(0, name.find('-'));
    for (std::size_t dot = name.find('.'); dot != std::string::npos; dot = name.find('.', dot + 1))
        folder += "/" + name.substr(0, dot);
    return folder + "/" + name;
}

void writeAttribute(const std::string& path, const std::string& bytes) {
    writeFile(path, bytes);
    fs::permissions(path, fs::perms(0444));
}

/// The folder `below` /sys, and the bus's link to it.
void addEntry(const std::string& below) {
    fs::create_directories("/sys/" + below);
    fs::create_symlink("../../../" + below, kUsbDevicesDir / fs::path(below).filename());
}

void addInterface(const std::string& deviceBelow, const std::string& name) {
    addEntry(deviceBelow + "/" + name);
    writeAttribute("/sys/" + deviceBelow + "/" + name + "/bInterfaceNumber", "00\n");
}

void writeIdentity(const std::string& name, const UsbDevice& device) {
    writeAttribute(UsbTree::attributePath(name, "idVendor"), device.vendor + "\n");
    writeAttribute(UsbTree::attributePath(name, "idProduct"), device.product + "\n");
    if (device.serial)
        writeAttribute(UsbTree::attributePath(name, "serial"), *device.serial + "\n");
}

}  // namespace

UsbTree::UsbTree() { fs::create_directories(kUsbDevicesDir); }

void UsbTree::addRootHub(int bus, const std::string& serial) {
    const std::string number = std::to_string(bus);
    const std::string below = deviceFolder("usb" + number);
    addEntry(below);
    writeIdentity("usb" + number, {"1d6b", bus % 2 == 1 ? "0002" : "0003", serial});
    addInterface(below, number + "-0:1.0");
}

void UsbTree::addDevice(const std::string& name, const UsbDevice& device) {
    const std::string below = deviceFolder(name);
    addEntry(below);
    writeIdentity(name, device);
    addInterface(below, name + ":1.0");
}

void UsbTree::addCamera(const std::string& name, const std::string& serial) {
    addDevice(name, {"0403", "de37", serial});
}

void UsbTree::setAttribute(const std::string& device, const std::string& attribute,
                           const std::string& bytes) {
    removeAttribute(device, attribute);
    writeAttribute(attributePath(device, attribute), bytes);
}

void UsbTree::removeAttribute(const std::string& device, const std::string& attribute) {
    fs::remove(attributePath(device, attribute));
}

std::string UsbTree::attributePath(const std::string& device, const std::string& attribute) {
    return "/sys/" + deviceFolder(device) + "/" + attribute;
}

std::vector<std::string> UsbTree::listed() {
    const std::unique_ptr<DIR, int (*)(DIR*)> folder(opendir(kUsbDevicesDir), closedir);
    if (!folder) throw std::system_error(errno, std::generic_category(), kUsbDevicesDir);
    std::vector<std::string> names;
    while (const dirent* const entry = readdir(folder.get())) {
        const std::string_view name = entry->d_name;
        if (name != "." && name != "..") names.emplace_back(name);
    }
    return names;
}

}  // namespace thermika_test
