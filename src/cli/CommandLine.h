// The command line's definition and its run: options that all commands share, the commands, help,
// version, statuses.
#pragma once

#include <memory>
#include <utility>
#include <vector>

#include <CLI/App.hpp>

#include "cli/Command.h"

namespace thermika::cli {

/// What the command line may hold, and where what it holds is stored.
struct CommandLine {
    CLI::App app{"Calibration toolkit for infrared cameras", "thermika"};
    Session session;
    std::vector<std::pair<CLI::App*, Run>> commands;
};

std::unique_ptr<CommandLine> makeCommandLine();

/// Reads the command line and runs its command. Everything is said; what is left is the status.
Status runCommandLine(int argc, char** argv);

}  // namespace thermika::cli
