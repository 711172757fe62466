// The commands of the companion, each in the source of its name. A new one is declared here and
// gets a row in CommandLine.cpp.
#pragma once

#include <CLI/App.hpp>

#include "cli/Command.h"

namespace thermika::cli {

// Each adds the command's own options and arguments to `command`, with an example as its footer,
// and returns what runs it once they were read.

Run addCameras(CLI::App& command);
Run addCompletion(CLI::App& command);
Run addConfig(CLI::App& command);
Run addDoctor(CLI::App& command);
Run addFetch(CLI::App& command);
Run addFiles(CLI::App& command);
Run addOnline(CLI::App& command);
Run addOptics(CLI::App& command);
Run addValidate(CLI::App& command);

}  // namespace thermika::cli
