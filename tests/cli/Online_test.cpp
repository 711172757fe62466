// `thermika online`: whether the server really answers.
#include <signal.h>
#include <sys/mount.h>
#include <unistd.h>

#include <filesystem>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "fetch/support/FetchSandbox.h"
#include "support/Companion.h"
#include "support/DownloadSandbox.h"
#include "support/FileServer.h"
#include "support/Matches.h"
#include "support/SilentServer.h"

namespace {

using thermika_test::DownloadSandbox;
using thermika_test::FetchSandbox;
using thermika_test::FileServer;
using thermika_test::inSandbox;
using thermika_test::runCompanion;
using thermika_test::RunResult;
using thermika_test::SilentServer;
using thermika_test::Tls;

TEST(Online, tellsHowFastTheServerAnswers) {
    inSandbox([] {
        const DownloadSandbox sandbox;
        FileServer server;
        server.add(thermika_test::kLinksPath, thermika_test::linksDocument());
        const RunResult result = runCompanion({"online"});
        EXPECT_EQ(result.status, 0) << result;
        EXPECT_EQ(result.err, "");
        EXPECT_EQ(thermika_test::matchesIn(
                      result.out,
                      "^http://.* answers after [0-9.]+ ms \\(connected after [0-9.]+ ms,"
                      " HTTP status 200\\); the files are below http://.*\n$")
                      .size(),
                  1U)
            << result;
    });
}

TEST(Online, saysThatTheServerHasNoLinks) {
    inSandbox([] {
        const DownloadSandbox sandbox;
        const FileServer server;
        const RunResult result = runCompanion({"online"});
        EXPECT_EQ(result.status, 1);
        EXPECT_EQ(result.out, "");
        EXPECT_EQ(thermika_test::matchesIn(
                      result.err,
                      "^http://.* answers after [0-9.]+ ms \\(connected after [0-9.]+ ms, "
                      "HTTP status 404\\), but not as it should: .*404.*\n$")
                      .size(),
                  1U)
            << result;
    });
}

TEST(Online, saysWhyNobodyAnswers) {
    inSandbox([] {
        const DownloadSandbox sandbox;
        const RunResult result = runCompanion({"online"});
        EXPECT_EQ(result.status, 1);
        EXPECT_NE(result.err.find(" does not answer: "), std::string::npos) << result;
        EXPECT_NE(result.err.find(" (another server or a folder: --from)\n"), std::string::npos)
            << result;
        EXPECT_EQ(runCompanion({"online", "-q"}), (RunResult{"", "", 1}));
    });
}

// An answer that nobody waited for is neither yes nor no.
TEST(Online, tellsNothingWhenItIsInterrupted) {
    inSandbox([] {
        const DownloadSandbox sandbox;
        const SilentServer silent(8080);
        const auto interruptWhenConnected = [&silent] {
            const pid_t companion = getpid();
            if (fork() != 0) return;
            silent.awaitConnection();
            kill(companion, SIGINT);
            _exit(0);
        };
        EXPECT_EQ(
            runCompanion({"online", "--from", "http://127.0.0.1:8080/"}, interruptWhenConnected),
            (RunResult{"",
                       "thermika: interrupted: it is not known whether "
                       "http://127.0.0.1:8080/ answers (run it again)\n",
                       3}));
    });
}

// What was typed is wrong, so that no server is to blame.
TEST(Online, refusesAnAddressThatCannotBeAsked) {
    for (const char* const address : {"ftp://x", "http://me@localhost/", "://"}) {
        const RunResult result = runCompanion({"online", "--from", address});
        EXPECT_EQ(result.status, 2) << result;
        EXPECT_EQ(result.err.find("thermika: the address \"" + std::string(address) +
                                  "\" cannot be used: "),
                  0U)
            << result;
    }
}

TEST(Online, looksAtAFolder) {
    inSandbox([] {
        EXPECT_EQ(runCompanion({"online", "--from", "/usr"}).status, 0);
        EXPECT_EQ(runCompanion({"online", "--from", "/none"}).status, 1);
        EXPECT_EQ(runCompanion({"online", "--from", "/etc/passwd"}).status, 1);
        EXPECT_EQ(runCompanion({"online", "--from", "/etc/passwd/none"}).status, 1);
    });
}

TEST(Online, cannotTellOfAFolderThatMayNotBeRead) {
    inSandbox([] {
        std::filesystem::create_directories("/usr/share/closed/inner");
        std::filesystem::permissions("/usr/share/closed", std::filesystem::perms::none);
        for (const char* const folder : {"/usr/share/closed", "/usr/share/closed/inner"}) {
            const RunResult result = runCompanion({"online", "--from", folder});
            EXPECT_EQ(result.status, 3) << result;
            EXPECT_EQ(result.out, "");
            EXPECT_NE(result.err.find("Permission denied"), std::string::npos) << result;
        }
    });
}

TEST(Online, trustsTheAuthoritiesThatTheSystemTrusts) {
    inSandbox([] {
        const FetchSandbox world(Tls::kGood);
        FetchSandbox::add("a.dat", "bytes");
        const std::string address = std::string("https://") + THERMIKA_DOWNLOAD_HOST;
        const std::vector<std::string> command = {"online", "--from", address};
        EXPECT_EQ(runCompanion(command).status, 1);
        ASSERT_EQ(mount(FetchSandbox::caFile().c_str(), "/etc/ssl/certs/ca-certificates.crt",
                        nullptr, MS_BIND, nullptr),
                  0);
        const RunResult trusted = runCompanion(command);
        EXPECT_EQ(trusted.status, 0) << trusted;
        EXPECT_EQ(trusted.out.rfind(address + "/ answers after ", 0), 0U) << trusted;
    });
}

}  // namespace
