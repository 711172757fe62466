// The cameras on the bus, as sentences and for commands that are not told which one is meant.
#pragma once

#include <string>
#include <vector>

#include "cli/Command.h"
#include "sdk/camera/SerialDiscovery.h"

namespace thermika::cli {

/// All devices of the camera's vendor, by bus and port.
dax::BusListing attachedDevices();

/// Why the bus cannot be read and what to do; "" when it can.
std::string busProblem(const dax::BusListing& bus);

/// What is wrong with a device that is no camera with a usable serial number, and what to do.
std::string sentenceAbout(const dax::AttachedDevice& device);

/// That nothing is there that could be asked, and what to do.
std::string noCameraSentence();

/// The serial number of the only camera that is attached. A Problem when there is none, when a
/// second one is attached, or when that cannot be found out. `command` is named in it.
unsigned long onlyAttachedCamera(const std::string& command);

}  // namespace thermika::cli
