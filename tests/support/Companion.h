// Runs the real companion `thermika`. In a sandbox or outside.
#pragma once

#include <fcntl.h>
#include <unistd.h>

#include <functional>
#include <string>
#include <vector>

#include "support/Sandbox.h"

namespace thermika_test {

/// Open since before any sandbox: the build may lie below /tmp, which some sandboxes hide.
inline const int kCompanionFile = open(THERMIKA_COMPANION, O_PATH | O_CLOEXEC);

inline RunResult runCompanion(std::vector<std::string> arguments,
                              const std::function<void()>& prepare = {}) {
    arguments.insert(arguments.begin(), "thermika");
    // Its own name where it can be had: valgrind starts nothing by a descriptor.
    const bool isHidden = access(THERMIKA_COMPANION, X_OK) != 0;
    const std::string descriptor = "/proc/self/fd/" + std::to_string(kCompanionFile);
    return run(isHidden ? descriptor : THERMIKA_COMPANION, arguments, prepare);
}

}  // namespace thermika_test
