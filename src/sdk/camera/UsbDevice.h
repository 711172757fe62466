// One entry of the kernel's USB device directory, read through the attribute files behind it. Knows
// nothing of the walk over the directory.
#pragma once

#include <string>

namespace dax {

class UsbDevice {
public:
    /// `name` is an entry of the working directory.
    explicit UsbDevice(const char* name);

    /// False, with `errno` set, when the entry cannot be looked at: mostly it is gone. To be called
    /// before the questions below.
    bool readStatus();

    /// Whether the entry is a symbolic link, as every device of the kernel's tree is, and vendor
    /// and product are those of the camera's USB interface.
    bool isCamera();

    /// The serial number's text as the device gives it, "" when reading it fails; valid until the
    /// next call. Null when there is none that can be opened.
    const std::string* readSerial();

private:
    bool readAttribute(const char* attribute);

    std::string m_name;
    std::string m_line;
    bool m_isLink = false;
};

}  // namespace dax
