// The camera that a command is about, and its calibration description.
#pragma once

#include <string>

#include <CLI/App.hpp>

#include "cli/Command.h"
#include "imgproc/Cali.h"

namespace thermika::cli {

/// Adds the argument SERIAL, which ends up in `text`.
void addSerialArgument(CLI::App& command, std::string& text);

/// The camera of that serial number. A Problem when it is none.
unsigned long chosenCamera(const Session& session, const std::string& serialText);

/// "Cali-<serial>.xml".
std::string descriptionName(unsigned long serial);

/// The description of the camera, loaded from the session's directory. A Problem, which tells why,
/// when there is none that can be used. Nothing is created.
ConfigCali& loadDescription(const Session& session, unsigned long serial);

}  // namespace thermika::cli
