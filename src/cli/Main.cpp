// The companion's entry point: makes the process fit to run in any surroundings, then runs the
// command line.
#include <fcntl.h>
#include <unistd.h>

#include <csignal>
#include <exception>
#include <new>

#include "cli/CommandLine.h"
#include "cli/Output.h"

namespace {

/// A file that is opened later must not become one of the three. Writing to a closed one still
/// fails, since what stands in for it can only be read.
void fillStandardDescriptors() {
    int descriptor = open("/dev/null", O_RDONLY);
    while (descriptor >= 0 && descriptor <= 2) descriptor = open("/dev/null", O_RDONLY);
    if (descriptor > 2) close(descriptor);
}

}  // namespace

int main(int argc, char** argv) {
    fillStandardDescriptors();
    // A reader that goes away and a file that may not grow are failed writes with a message.
    std::signal(SIGPIPE, SIG_IGN);
    std::signal(SIGXFSZ, SIG_IGN);
    try {
        return static_cast<int>(thermika::cli::runCommandLine(argc, argv));
    } catch (const std::bad_alloc&) {
        thermika::cli::Output::complainOfMemory();
    } catch (const std::exception& unexpected) {
        thermika::cli::Output::complain(unexpected.what());
    }
    return static_cast<int>(thermika::cli::Status::kFailed);
}
