// The companion's entry point: makes the process fit to run in any surroundings, then runs the
// command line.
#include <fcntl.h>
#include <unistd.h>

#include <csignal>
#include <cstdlib>
#include <new>
#include <string>
#include <utility>
#include <vector>

#include "cli/CommandLine.h"
#include "cli/Output.h"

namespace {

/// A file that is opened later must not become one of the three. Writing to a closed one still
/// fails, since what stands in for it can only be read.
void fillStandardDescriptors() {
    unsigned descriptor = 0;  // a failure is a large one
    do descriptor = static_cast<unsigned>(open("/dev/null", O_RDONLY));
    while (descriptor <= STDERR_FILENO);
    close(static_cast<int>(descriptor));
}

/// All that the environment may decide; the manual lists the same.
constexpr const char* kHeeded[] = {"THERMIKA_CALIBRATION_DIR",
                                   "NO_COLOR",
                                   "TERM",
                                   "LC_ALL",
                                   "LC_CTYPE",
                                   "LANG",
                                   "http_proxy",
                                   "https_proxy",
                                   "HTTPS_PROXY",
                                   "all_proxy",
                                   "ALL_PROXY",
                                   "no_proxy",
                                   "NO_PROXY",
                                   "TZ"};

/// libcurl, OpenSSL and the look-up of names ask for more, such as which authorities to trust and
/// where to write keys, and cannot be told not to.
void disregardOtherVariables() {
    std::vector<std::pair<const char*, std::string>> heeded;
    for (const char* const name : kHeeded)
        if (const char* const value = std::getenv(name)) heeded.emplace_back(name, value);
    clearenv();
    for (const auto& [name, value] : heeded) setenv(name, value.c_str(), 1);
}

}  // namespace

int main(int argc, char** argv) {
    fillStandardDescriptors();
    // A reader that goes away and a file that may not grow are failed writes with a message.
    std::signal(SIGPIPE, SIG_IGN);
    std::signal(SIGXFSZ, SIG_IGN);
    try {
        disregardOtherVariables();
        return static_cast<int>(thermika::cli::runCommandLine(argc, argv));
    } catch (const std::bad_alloc&) {
        thermika::cli::Output::complainOfMemory();
    }
    return static_cast<int>(thermika::cli::Status::kFailed);
}
