// One sentence for each state of a device.
#include "cli/Attached.h"

#include <algorithm>
#include <cstring>

namespace thermika::cli {

namespace {

std::string place(const dax::AttachedDevice& device) { return "at " + device.entry; }

std::string quoted(const std::string& bytes) { return "\"" + bytes + "\""; }

/// How a camera is named beside others.
std::string deviceName(const dax::AttachedDevice& device) {
    return device.state == dax::DeviceState::kCamera
               ? std::to_string(device.serial)
               : "one " + place(device) + " whose serial number cannot be used";
}

}  // namespace

dax::BusListing attachedDevices() {
    dax::BusListing bus = dax::listDevices();
    std::sort(bus.devices.begin(), bus.devices.end(), [](const auto& left, const auto& right) {
        return strverscmp(left.entry.c_str(), right.entry.c_str()) < 0;
    });
    return bus;
}

std::string busProblem(const dax::BusListing& bus) {
    return std::string("cannot read ") + dax::kUsbDevicesDir + ": " + std::strerror(bus.reason) +
           " (does this machine have USB, and does a container see it?)";
}

std::string sentenceAbout(const dax::AttachedDevice& device) {
    switch (device.state) {
        case dax::DeviceState::kSerialUnreadable:
            return "the camera " + place(device) +
                   " cannot be read: its serial number: " + std::strerror(device.reason) +
                   " (unplug it and plug it in again; may you read " + dax::kUsbDevicesDir + "/" +
                   device.entry + "/serial?)";
        case dax::DeviceState::kSerialUnusable:
            return "the camera " + place(device) +
                   " has no usable serial number: " + quoted(device.serialText) +
                   " is none of 8 digits (look at the camera's label and name that number)";
        case dax::DeviceState::kNoCamera:
            return "the device " + place(device) + ", " + quoted(device.productText) + " (" +
                   device.vendor + ":" + device.product +
                   "), is of the camera's maker but no such camera (nothing to do)";
        case dax::DeviceState::kCamera:
            break;
    }
    return "the camera " + std::to_string(device.serial) + " is attached " + place(device);
}

std::string noCameraSentence() {
    return "no camera is attached (plug one in, wait a second; thermika doctor shows more)";
}

unsigned long onlyAttachedCamera(const std::string& command) {
    const dax::BusListing bus = attachedDevices();
    if (bus.reason != 0) throw Problem(Status::kFailed, busProblem(bus));

    std::vector<const dax::AttachedDevice*> cameras;
    for (const dax::AttachedDevice& each : bus.devices)
        if (each.state != dax::DeviceState::kNoCamera) cameras.push_back(&each);
    const std::string byName = "name one: thermika " + command + " SERIAL";
    if (cameras.empty())
        throw Problem(Status::kNo, "no camera is attached (plug one in, or " + byName + ")");
    if (cameras.size() == 1) {
        if (cameras[0]->state == dax::DeviceState::kCamera) return cameras[0]->serial;
        throw Problem(Status::kFailed, sentenceAbout(*cameras[0]));
    }
    std::string others;
    for (std::size_t i = 1; i < cameras.size(); ++i)
        others.append(i == 1 ? "" : ", ").append(deviceName(*cameras[i]));
    throw Problem(Status::kUsage, "more than one camera is attached: " + deviceName(*cameras[0]) +
                                      "; also attached: " + others + " (" + byName + ")");
}

}  // namespace thermika::cli
