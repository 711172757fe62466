// What the log sink writes to standard error while a test runs, taken apart.
#pragma once

#include <string>
#include <vector>

#include "support/TestFiles.h"

namespace thermika_test {

/// While it lives, lines of every severity go to standard error and are kept here. Afterwards the
/// log sink is a fresh one without configuration.
class LogLines {
public:
    LogLines();
    ~LogLines();
    LogLines(const LogLines&) = delete;
    LogLines& operator=(const LogLines&) = delete;

    /// The lines so far, without number of the source line and time: "DEBUG [Cali] message". Throws
    /// when a line has another form.
    std::vector<std::string> all();

private:
    StderrCapture m_captured;
};

}  // namespace thermika_test
