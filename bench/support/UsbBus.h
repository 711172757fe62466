// A bus of USB devices as the kernel shows it: links below /sys/bus/usb/devices to folders with the
// devices' attributes, and to interfaces, which have none.
#pragma once

#include <cstddef>
#include <string>

namespace bench {

constexpr const char* kUsbDevicesDir = "/sys/bus/usb/devices";
constexpr unsigned long kCameraSerial = 14080045;

/// Gives the process a mount namespace of its own with an empty /sys. False, with a message, when
/// that cannot be had.
bool mountEmptySys();

/// Needs mountEmptySys(); any failure ends the process with a message. Stays until the process
/// ends.
class UsbBus {
public:
    /// `devices` foreign devices with `interfaces` interfaces each.
    UsbBus(std::size_t devices, std::size_t interfaces);

    /// Makes this the bus that /sys shows; the device listed last is a camera then, or a foreign
    /// device as the others.
    void plugIn(bool isLastACamera) const;

private:
    std::string m_root;
    std::string m_lastDevice;
};

}  // namespace bench
