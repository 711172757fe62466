// What all commands of the companion share: the options that stand before or after each of them,
// the statuses that they answer with, and how one ends early. A command is a function declared in
// Commands.h with a source of its own.
#pragma once

#include <functional>
#include <stdexcept>
#include <string>

#include "cli/Output.h"

namespace thermika::cli {

/// The exit status of every command.
enum class Status : int {
    kYes = 0,     ///< yes, or done
    kNo = 1,      ///< the answer is no: something is missing, no camera, findings
    kUsage = 2,   ///< another command line is needed; the message says which
    kFailed = 3,  ///< it could not be found out or done; the reason is on standard error
};

/// Ends a command. The message names the thing, the reason and the next step, with outside bytes as
/// they are.
class Problem : public std::runtime_error {
public:
    Problem(Status status, const std::string& message)
        : std::runtime_error(message), m_status(status) {}

    Status status() const { return m_status; }

private:
    Status m_status;
};

/// One run of the program.
struct Session {
    /// Of the calibration files: absolute, without a "/" at its end, and short enough for the
    /// library, which ends the process for others.
    std::string directory;
    Output output;
};

/// Runs a command whose options were read. Results go to the session's output; what ends it early
/// is a Problem.
using Run = std::function<Status(Session&)>;

}  // namespace thermika::cli
