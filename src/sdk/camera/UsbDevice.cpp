// Which attributes make a camera, and in which order they are asked for: the vendor sorts out most
// devices with one file.
#include "sdk/camera/UsbDevice.h"

#include <sys/stat.h>

#include "sdk/base/FileRead.h"

namespace dax {

namespace {

constexpr const char* kCameraVendor = "0403";
constexpr const char* kCameraProduct = "de37";

}  // namespace

UsbDevice::UsbDevice(const char* name) : m_name(name) {}

bool UsbDevice::readStatus() {
    struct stat status {};
    if (lstat(m_name.c_str(), &status) != 0) return false;
    m_isLink = S_ISLNK(status.st_mode);
    return true;
}

bool UsbDevice::isCamera() {
    return m_isLink && readAttribute("/idVendor") && m_line == kCameraVendor &&
           readAttribute("/idProduct") && m_line == kCameraProduct;
}

const std::string* UsbDevice::readSerial() { return readAttribute("/serial") ? &m_line : nullptr; }

bool UsbDevice::readAttribute(const char* attribute) {
    return readFirstLine((m_name + attribute).c_str(), m_line);
}

}  // namespace dax
