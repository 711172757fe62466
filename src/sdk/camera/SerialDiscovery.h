// Which cameras hang on the USB bus: what makes a device a camera, the search for one serial number
// and the list of all that are attached. Knows nothing of calibration files.
#pragma once

#include <string>
#include <vector>

namespace dax {

constexpr const char* kUsbDevicesDir = "/sys/bus/usb/devices";

// A serial number has exactly 8 decimal digits.
constexpr unsigned long kLowestSerial = 10000000;
constexpr unsigned long kHighestSerial = 99999999;

enum class DeviceState {
    kCamera,            ///< a camera with a serial number of 8 digits
    kSerialUnreadable,  ///< a camera whose serial number cannot be read
    kSerialUnusable,    ///< a camera whose serial number is none of 8 digits
    kNoCamera,          ///< another device of the camera's vendor
};

/// A device of the camera's vendor. The texts are the first lines of its attribute files as the
/// device gives them, "" where there is none: escape them before a person sees them.
struct AttachedDevice {
    std::string entry;        ///< name in the bus directory, such as "1-1.2"
    std::string vendor;       ///< "idVendor"
    std::string product;      ///< "idProduct"
    std::string productText;  ///< "product"
    std::string serialText;   ///< "serial"
    DeviceState state = DeviceState::kNoCamera;
    unsigned long serial = 0;  ///< in the state kCamera
    int reason = 0;            ///< error number, in the state kSerialUnreadable
};

struct BusListing {
    std::vector<AttachedDevice> devices;  ///< in the order of the directory
    int reason = 0;  ///< error number when the directory could not be opened or read to its end
};

/// All devices of the camera's vendor. Logs nothing; leaves the working directory alone.
BusListing listDevices(const char* busDirectory = kUsbDevicesDir);

/// Does what IRCalibrationManager::findSerial() says.
bool findCamera(unsigned long& serial);

}  // namespace dax
