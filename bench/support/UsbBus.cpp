// See the header.
#include "support/UsbBus.h"

#include <dirent.h>
#include <fcntl.h>
#include <sched.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <string_view>

namespace bench {

namespace {

void require(bool isDone, const std::string& what) {
    if (isDone) return;
    std::perror(what.c_str());
    std::exit(1);
}

void makeFolder(const std::string& path) { require(mkdir(path.c_str(), 0755) == 0, path); }

void makeLink(const std::string& target, const std::string& path) {
    require(symlink(target.c_str(), path.c_str()) == 0, path);
}

void writeFile(const std::string& path, std::string_view text) {
    const int file = open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0644);
    require(file >= 0, path);
    const ssize_t size = write(file, text.data(), text.size());
    close(file);
    require(size == static_cast<ssize_t>(text.size()), path);
}

/// The device that stands last in the folder, in its own order.
std::string lastDevice(const std::string& folder) {
    DIR* const directory = opendir(folder.c_str());
    require(directory != nullptr, folder);
    std::string last;
    while (const dirent* const entry = readdir(directory)) {
        const std::string_view name = entry->d_name;
        if (name[0] != '.' && name.find(':') == std::string_view::npos) last = name;
    }
    closedir(directory);
    return last;
}

bool writesTo(const char* path, const std::string& text) {
    const int file = open(path, O_WRONLY | O_CLOEXEC);
    if (file < 0) return false;
    const ssize_t size = write(file, text.data(), text.size());
    close(file);
    return size == static_cast<ssize_t>(text.size());
}

/// Root of the machine needs no user namespace, and may not have one to itself.
bool enterNamespaces() {
    const std::string user = "0 " + std::to_string(geteuid()) + " 1";
    const std::string group = "0 " + std::to_string(getegid()) + " 1";
    if (unshare(CLONE_NEWUSER | CLONE_NEWNS) == 0)
        return writesTo("/proc/self/setgroups", "deny") && writesTo("/proc/self/uid_map", user) &&
               writesTo("/proc/self/gid_map", group);
    return unshare(CLONE_NEWNS) == 0;
}

}  // namespace

bool mountEmptySys() {
    if (enterNamespaces() && mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0 &&
        mount("tmpfs", "/sys", "tmpfs", 0, nullptr) == 0)
        return true;
    std::perror("cannot mount over /sys in a namespace (are user namespaces allowed?)");
    return false;
}

UsbBus::UsbBus(std::size_t devices, std::size_t interfaces)
    : m_root("/sys/bus-of-" + std::to_string(devices)) {
    const std::string links = m_root + "/bus/usb/devices";
    const std::string folders = m_root + "/devices";
    for (const char* const part : {"", "/bus", "/bus/usb", "/bus/usb/devices", "/devices"})
        makeFolder(m_root + part);
    makeFolder(folders + "/interface");
    writeFile(folders + "/interface/bInterfaceClass", "ff\n");
    for (std::size_t i = 0; i < devices; ++i) {
        const std::string name = "1-" + std::to_string(i + 1);
        makeFolder(folders + "/" + name);
        writeFile(folders + "/" + name + "/idVendor", "1d6b\n");
        writeFile(folders + "/" + name + "/idProduct", "0002\n");
        makeLink("../../../devices/" + name, links + "/" + name);
        for (std::size_t k = 0; k < interfaces; ++k)
            makeLink("../../../devices/interface", links + "/" + name + ":1." + std::to_string(k));
    }
    m_lastDevice = folders + "/" + lastDevice(links);
}

void UsbBus::plugIn(bool isLastACamera) const {
    unlink("/sys/bus");
    makeLink(m_root + "/bus", "/sys/bus");
    writeFile(m_lastDevice + "/idVendor", isLastACamera ? "0403\n" : "1d6b\n");
    writeFile(m_lastDevice + "/idProduct", isLastACamera ? "de37\n" : "0002\n");
    writeFile(m_lastDevice + "/serial", std::to_string(kCameraSerial) + "\n");
}

}  // namespace bench
