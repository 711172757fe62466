// The companion's entry point: makes the process fit to run in any surroundings, then runs the
// command line.
#include <fcntl.h>
#include <unistd.h>

#include <csignal>
#include <cstdlib>
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

/// Whoever sets these would decide which servers are trusted, or read along. libcurl, OpenSSL and
/// the C library's name look-up ask for them, and none can be told not to.
void disregardSettingsOfLibraries() {
    for (const char* const name :
         {"SSLKEYLOGFILE", "SSL_CERT_DIR", "SSL_CERT_FILE", "OPENSSL_CONF", "OPENSSL_CONF_INCLUDE",
          "OPENSSL_ENGINES", "OPENSSL_MODULES", "HOSTALIASES", "LOCALDOMAIN", "RES_OPTIONS"})
        unsetenv(name);
}

}  // namespace

int main(int argc, char** argv) {
    fillStandardDescriptors();
    disregardSettingsOfLibraries();
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
