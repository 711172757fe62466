// Runs the real companion `thermika`. In a sandbox or outside.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "support/Sandbox.h"

namespace thermika_test {

inline RunResult runCompanion(std::vector<std::string> arguments,
                              const std::function<void()>& prepare = {}) {
    arguments.insert(arguments.begin(), "thermika");
    return run(THERMIKA_COMPANION, arguments, prepare);
}

}  // namespace thermika_test
