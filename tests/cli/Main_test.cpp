// The companion in surroundings that are not fit for it.
#include <fcntl.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "fetch/support/FetchSandbox.h"
#include "support/BuildPaths.h"
#include "support/CameraSet.h"
#include "support/Companion.h"
#include "support/DownloadSandbox.h"

namespace {

using thermika_test::cameraFiles;
using thermika_test::FetchSandbox;
using thermika_test::inSandbox;
using thermika_test::runCompanion;
using thermika_test::RunResult;
using thermika_test::TempDir;
using thermika_test::Tls;
using thermika_test::writeFile;

// A file that is opened under one of the three numbers would get what is written to it.
TEST(Main, doesNotTakeAFileForAClosedStandardStream) {
    const TempDir medium;
    const TempDir folder;
    for (const auto& [name, bytes] : cameraFiles()) writeFile(medium / name, bytes);
    const RunResult result = runCompanion(
        {"fetch", "14080045", "-v", "--from", medium.path(), "--dir", folder.path()}, [] {
            for (const int descriptor : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO})
                close(descriptor);
        });
    EXPECT_EQ(result.status, 3);  // the result could not be written
    EXPECT_EQ(thermika_test::contents(folder.path()), cameraFiles());
    // With standard output, the rest is no reason to fail.
    EXPECT_EQ(runCompanion({"files", "14080045", "-v", "--missing", "--dir", folder.path()},
                           [] {
                               close(STDIN_FILENO);
                               close(STDERR_FILENO);
                           }),
              (RunResult{"", "", 0}));
}

TEST(Main, findsEachClosedStandardStreamEmpty) {
    for (const int descriptor : {STDIN_FILENO, STDERR_FILENO}) {
        const std::string path = "/proc/self/fd/" + std::to_string(descriptor);
        EXPECT_EQ(runCompanion({"validate", path}, [descriptor] { close(descriptor); }),
                  (RunResult{path + ":1: there is no document; begin with the one that thermika "
                                    "config prints\n",
                             "", 1}));
    }
}

TEST(Main, reportsAReaderThatHasGoneAway) {
    const RunResult result = runCompanion({"--version"}, [] {
        int ends[2];
        if (pipe(ends) != 0) _exit(9);
        close(ends[0]);
        dup2(ends[1], STDOUT_FILENO);
    });
    EXPECT_EQ(result, (RunResult{"",
                                 "thermika: cannot write to standard output: Broken pipe (is it "
                                 "full or closed?)\n",
                                 3}));
}

// Before the certificate is looked at, the handshake has shown which settings are in force.
TEST(Main, disregardsWhatTheEnvironmentTellsItsLibraries) {
    inSandbox([] {
        const FetchSandbox world(Tls::kGood);
        const std::string settings = "/usr/share/world/openssl.cnf";
        const std::string keys = "/usr/share/world/keys";
        // As OpenSSL reads it, it may do nothing that TLS needs.
        writeFile(settings,
                  "openssl_conf = a\n[a]\nproviders = b\n[b]\nbase = c\n[c]\nactivate = 1\n");
        const std::string address = std::string("https://") + THERMIKA_DOWNLOAD_HOST;
        const RunResult result = runCompanion({"online", "--from", address}, [&] {
            setenv("OPENSSL_CONF", settings.c_str(), 1);
            setenv("SSLKEYLOGFILE", keys.c_str(), 1);
        });
        EXPECT_EQ(result.status, 1);
        EXPECT_NE(result.err.find("unable to get local issuer certificate"), std::string::npos)
            << result;
        EXPECT_FALSE(std::filesystem::exists(keys));
    });
}

}  // namespace
