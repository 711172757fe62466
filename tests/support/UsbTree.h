// The kernel's view of the USB bus for tests: lays out /sys/bus/usb/devices as a real system shows
// it. For use in a sandbox only, where /sys is the test's own.
#pragma once

#include <optional>
#include <string>
#include <vector>

namespace thermika_test {

constexpr const char* kUsbDevicesDir = "/sys/bus/usb/devices";

struct UsbDevice {
    std::string vendor;
    std::string product;
    std::optional<std::string> serial;  ///< most devices have none, and then no such file either
};

/// A device is a folder below its hub's, named by its bus and ports ("1-1", "17-1.2"); the bus's
/// folder holds links to every device and to every interface of it. Attribute files are read-only
/// texts with one line feed at their end. Every failure throws.
class UsbTree {
public:
    /// A bus without devices.
    UsbTree();

    /// The hub that stands for the controller of bus number `bus`: odd ones are slow, even fast.
    void addRootHub(int bus, const std::string& serial = "0000:00:14.0");

    /// `name` may also carry a camera's identifiers; see addCamera().
    void addDevice(const std::string& name, const UsbDevice& device);

    void addCamera(const std::string& name, const std::string& serial);

    /// Replaces an attribute file by one that holds `bytes` as they stand.
    static void setAttribute(const std::string& device, const std::string& attribute,
                             const std::string& bytes);

    /// Removes an attribute file; anything may be put there then.
    static void removeAttribute(const std::string& device, const std::string& attribute);

    /// Where an attribute of a device lies, without a link on the way.
    static std::string attributePath(const std::string& device, const std::string& attribute);

    /// The names in the bus's folder in the order in which the system lists them.
    static std::vector<std::string> listed();
};

}  // namespace thermika_test
