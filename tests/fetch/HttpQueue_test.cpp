// Servers that cannot be reached, pauses between tries, proxies, cancelling, and what a call keeps
// of the process. This program's connect() stands in for the C library's and does the same, so that
// a test can have single connections refused.
#include "fetch/HttpQueue.h"

#include <dirent.h>
#include <fcntl.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <cerrno>
#include <chrono>
#include <clocale>
#include <csignal>
#include <cstdlib>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "fetch/support/FetchSandbox.h"
#include "support/SilentServer.h"

namespace {

std::atomic<int> refusalsLeft{0};  // of connections that are tried next

}  // namespace

extern "C" int connect(int fd, const sockaddr* address, socklen_t bytes) {
    if (address->sa_family == AF_INET && refusalsLeft > 0) {
        --refusalsLeft;
        errno = ECONNREFUSED;
        return -1;
    }
    return static_cast<int>(syscall(SYS_connect, fd, address, bytes));
}

namespace {

using namespace thermika_test;
using thermika::fetch::Mirror;
using thermika::fetch::Progress;
using thermika::fetch::Report;
using thermika::fetch::Request;
using Clock = std::chrono::steady_clock;

std::vector<std::string> names(int count) {
    std::vector<std::string> all;
    for (int i = 0; i < count; ++i) all.push_back(std::to_string(i) + ".dat");
    return all;
}

TEST(HttpQueue, serverThatCannotBeReachedFailsAllFilesAtOnce) {
    inSandbox([] {
        const DownloadSandbox world;
        const Request request = requestFor(names(1000), Mirror{serverAddress("")}, kFetched);
        const Report report = thermika::fetch::fetch(request);
        unsigned tries = 0;
        for (const auto& file : report.files) {
            EXPECT_EQ(wordFor(file.outcome), "failed");
            EXPECT_NE(file.reason.find("connect to server"), std::string::npos);
            tries += file.tries;
        }
        EXPECT_LE(tries, 16U);
        EXPECT_EQ(contents(kFetched), Files());
    });
}

// All files that were not begun yet were given up with it.
TEST(HttpQueue, refusalOfOneConnectionConcernsNoOtherFileWhereAnotherIsAnswered) {
    inSandbox([] {
        const FetchSandbox world;
        Files expected;
        for (const std::string& name : names(20)) {
            expected[name] = "bytes";
            FetchSandbox::add(name, "bytes");
        }
        refusalsLeft = 1;
        Request request = requestFor(names(20), Mirror{serverAddress("")}, kFetched);
        request.limits.retries = 0;
        request.limits.jobs = 2;
        const Report report = thermika::fetch::fetch(request);
        EXPECT_EQ(refusalsLeft, 0);
        for (const auto& file : report.files)  // whichever connected first
            if (wordFor(file.outcome) == "failed") expected.erase(file.name);
        EXPECT_EQ(expected.size(), 19U);
        EXPECT_EQ(contents(kFetched), expected);
    });
}

TEST(HttpQueue, hostWithoutAnAddressIsNamed) {
    inSandbox([] {
        const DownloadSandbox world;
        const Request request = requestFor({"a.dat"}, Mirror{"http://none.example"}, kFetched);
        EXPECT_EQ(linesOf(thermika::fetch::fetch(request)),
                  "a.dat: failed, the transfer failed: Could not resolve host: none.example\n");
        EXPECT_EQ(contents(kFetched), Files());
    });
}

/// Its queue of connections is full: whoever connects now waits in vain.
class FullServer {
public:
    FullServer() {
        for (int& client : m_clients) {
            client = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
            EXPECT_TRUE(connect(client, m_server.address(), sizeof(sockaddr_in)) == 0 ||
                        errno == EINPROGRESS);
        }
    }
    ~FullServer() {
        for (const int client : m_clients) close(client);
    }
    FullServer(const FullServer&) = delete;
    FullServer& operator=(const FullServer&) = delete;

private:
    SilentServer m_server{80, 0};
    int m_clients[4] = {};
};

TEST(HttpQueue, serverThatNeverConnectsFailsAllFilesAfterOneTimeLimit) {
    inSandbox([] {
        const DownloadSandbox world;
        const FullServer server;
        Request request = requestFor(names(1000), Mirror{serverAddress("")}, kFetched);
        request.limits.idle = std::chrono::seconds(1);
        request.limits.retries = 1;
        const Report report = thermika::fetch::fetch(request);
        unsigned tries = 0;
        for (const auto& file : report.files) {
            EXPECT_EQ(wordFor(file.outcome), "failed");
            // libcurl has three ways to say it.
            EXPECT_TRUE(file.reason.find("imeout") != std::string::npos ||
                        file.reason.find("timed out") != std::string::npos)
                << file.reason;
            tries += file.tries;
        }
        EXPECT_LE(tries, 16U);
    });
}

TEST(HttpQueue, pausesDoubleFromTryToTry) {
    inSandbox([] {
        const FetchSandbox world;
        FetchSandbox::setFileFault("a.dat", "status", "500");
        Request request = serverRequest({"a.dat"});
        request.limits.firstPause = std::chrono::milliseconds(100);
        const auto start = Clock::now();
        const Report report = thermika::fetch::fetch(request);
        const auto took = Clock::now() - start;
        EXPECT_EQ(report.files[0].tries, 4U);
        EXPECT_GE(took, std::chrono::milliseconds(700));  // 100 + 200 + 400
    });
}

TEST(HttpQueue, fileThatWaitsForAnotherTryHoldsUpNoOther) {
    inSandbox([] {
        const FetchSandbox world;
        FetchSandbox::add("good.dat", "good");
        FetchSandbox::setFileFault("bad.dat", "status", "500");
        Texts ended;
        Request request = serverRequest({"bad.dat", "good.dat"});
        request.limits.jobs = 1;
        request.limits.firstPause = std::chrono::milliseconds(200);
        request.progress = [&ended](const Progress& progress) {
            if (progress.ended != nullptr) ended.push_back(progress.ended->name);
        };
        thermika::fetch::fetch(request);
        EXPECT_EQ(ended, (Texts{"good.dat", "bad.dat"}));
    });
}

TEST(HttpQueue, proxyVariablesAreHonoured) {
    for (const char* const variable : {"http_proxy", "all_proxy", "ALL_PROXY"})
        inSandbox([variable] {
            const FetchSandbox world;
            // Asked for a whole address, the server looks below "http:", where nothing is.
            setenv(variable, ("http://" THERMIKA_DOWNLOAD_HOST ":80"), 1);
            EXPECT_EQ(
                thermika::fetch::fetch(serverRequest({"a.dat"})).problem,
                "cannot get " + serverAddress(kLinksPath) + ": the server does not have it (404)");
            EXPECT_EQ(FetchSandbox::requests(), Texts{serverAddress(kLinksPath)});
            EXPECT_EQ(contents(kFetched), Files());
            FetchSandbox::add("a.dat", "bytes");
            FetchSandbox::add("b.dat", "bytes");
            setenv("no_proxy", THERMIKA_DOWNLOAD_HOST, 1);
            EXPECT_EQ(fetchLines({"a.dat"}), "a.dat: fetched\n");
            unsetenv("no_proxy");
            setenv("NO_PROXY", THERMIKA_DOWNLOAD_HOST, 1);
            EXPECT_EQ(fetchLines({"b.dat"}), "b.dat: fetched\n");
            EXPECT_EQ(contents(kFetched), (Files{{"a.dat", "bytes"}, {"b.dat", "bytes"}}));
        });
}

TEST(HttpQueue, proxyVariablesForSecureServersAreHonoured) {
    for (const char* const variable : {"https_proxy", "HTTPS_PROXY", "all_proxy", "ALL_PROXY"})
        inSandbox([variable] {
            const FetchSandbox world;
            Request request = requestFor(
                {"a.dat"}, Mirror{std::string("https://") + THERMIKA_DOWNLOAD_HOST}, kFetched);
            request.limits.retries = 0;
            const auto reason = [&request] {
                return thermika::fetch::fetch(request).files.at(0).reason;
            };
            EXPECT_EQ(reason().find("CONNECT"), std::string::npos) << reason();
            setenv(variable, ("http://" THERMIKA_DOWNLOAD_HOST ":80"), 1);
            // The server knows no CONNECT.
            EXPECT_NE(reason().find("CONNECT"), std::string::npos) << reason();
            EXPECT_EQ(contents(kFetched), Files());
        });
}

TEST(HttpQueue, passwordsAndTheProxyVariableOfWebServersAreNotRead) {
    inSandbox([] {
        const FetchSandbox world;
        FetchSandbox::add("a.dat", "bytes");
        const std::string home = "/usr/share/world/home";
        mkdir(home.c_str(), 0755);
        setenv("HOME", home.c_str(), 1);
        writeFile(home + "/.netrc", "default login user password word\n");
        setenv("HTTP_PROXY", "http://127.0.0.1:9/none", 1);
        EXPECT_EQ(fetchLines({"a.dat"}), "a.dat: fetched\n");
        EXPECT_EQ(contents(kFetched), (Files{{"a.dat", "bytes"}}));
    });
}

TEST(HttpQueue, cancelEndsTheCallSoonAndLeavesNothingHalf) {
    inSandbox([] {
        const FetchSandbox world;
        FetchSandbox::add("good.dat", "good");
        for (const char* const name : {"a.dat", "b.dat"}) {
            FetchSandbox::add(name, std::string(100000, 'x'));
            FetchSandbox::setFileFault(name, "stall");
        }
        std::atomic<bool> cancel{false};
        Request request = serverRequest({"good.dat", "a.dat", "b.dat"});
        request.cancel = &cancel;
        // When one file is there and half of each other one.
        std::atomic<bool> isTime{false};
        request.progress = [&isTime](const Progress& progress) {
            isTime = progress.filesDone == 1 && progress.bytes == 100004;
        };
        std::thread other([&] {
            while (!isTime) std::this_thread::sleep_for(std::chrono::milliseconds(10));
            cancel = true;
        });
        const auto start = Clock::now();
        EXPECT_EQ(linesOf(thermika::fetch::fetch(request)),
                  "good.dat: fetched\na.dat: not tried, cancelled\nb.dat: not tried, cancelled\n");
        EXPECT_LE(Clock::now() - start, std::chrono::seconds(15));
        other.join();
        EXPECT_EQ(contents(kFetched), (Files{{"good.dat", "good"}}));
    });
}

TEST(HttpQueue, cancelEndsAPauseAndTheWaitForTheLinksDocument) {
    for (const char* const fault : {"silent", "status"})
        inSandbox([fault] {
            const FetchSandbox world;
            FetchSandbox::setFault(kLinksPath, fault, "500");
            std::atomic<bool> cancel{false};
            Request request = serverRequest({"a.dat"});
            request.limits.firstPause = std::chrono::seconds(30);
            request.cancel = &cancel;
            std::thread other([&cancel] {
                std::this_thread::sleep_for(std::chrono::milliseconds(300));
                cancel = true;
            });
            const auto start = Clock::now();
            EXPECT_EQ(linesOf(thermika::fetch::fetch(request)), "a.dat: not tried, cancelled\n");
            EXPECT_LE(Clock::now() - start, std::chrono::seconds(15));
            other.join();
        });
}

TEST(HttpQueue, keepsLocaleDirectoryAndSignalsFreeOfTraces) {
    inSandbox([] {
        const FetchSandbox world;
        FetchSandbox::add("a.dat", "bytes");
        ASSERT_NE(std::setlocale(LC_ALL, "de_DE.UTF-8"), nullptr);
        const std::string locale = std::setlocale(LC_ALL, nullptr);
        std::array<struct sigaction, 32> before{};
        for (int signal = 1; signal < 32; ++signal)
            sigaction(signal, nullptr, &before[static_cast<std::size_t>(signal)]);
        sigset_t maskBefore;
        pthread_sigmask(SIG_SETMASK, nullptr, &maskBefore);
        char cwd[4096];
        ASSERT_NE(getcwd(cwd, sizeof cwd), nullptr);
        const std::string directory = cwd;
        EXPECT_EQ(fetchLines({"a.dat"}), "a.dat: fetched\n");
        EXPECT_EQ(std::setlocale(LC_ALL, nullptr), locale);
        EXPECT_EQ(getcwd(cwd, sizeof cwd), directory);
        sigset_t maskAfter;
        pthread_sigmask(SIG_SETMASK, nullptr, &maskAfter);
        for (int signal = 1; signal < 32; ++signal) {
            struct sigaction after {};
            sigaction(signal, nullptr, &after);
            EXPECT_EQ(after.sa_handler, before[static_cast<std::size_t>(signal)].sa_handler);
            EXPECT_EQ(sigismember(&maskAfter, signal), sigismember(&maskBefore, signal));
        }
    });
}

TEST(HttpQueue, holdsSigpipeBackWhileItTalksToAServer) {
    inSandbox([] {
        const FetchSandbox world;
        FetchSandbox::add("a.dat", "bytes");
        Request request = serverRequest({"a.dat"});
        bool isHeld = false;
        request.progress = [&isHeld](const Progress& progress) {
            sigset_t held;
            pthread_sigmask(SIG_SETMASK, nullptr, &held);
            // Its outcome comes from where the transfers are looked after.
            if (progress.ended == nullptr) isHeld = isHeld || sigismember(&held, SIGPIPE) == 1;
        };
        FetchSandbox::setFileFault("a.dat", "stall", "", 1);
        request.limits.idle = std::chrono::seconds(1);
        EXPECT_TRUE(thermika::fetch::fetch(request).isComplete());
        EXPECT_TRUE(isHeld);
    });
}

TEST(HttpQueue, printsNothing) {
    inSandbox([] {
        const FetchSandbox world;
        const RunResult result = runInProcess([] {
            thermika::fetch::fetch(serverRequest({"a.dat", "\033[31m"}));
            return 0;
        });
        EXPECT_EQ(result, (RunResult{"", "", 0}));
    });
}

/// Sockets and files beyond the standard ones that a program started now would inherit.
Texts inheritable() {
    Texts found;
    DIR* const entries = opendir("/proc/self/fd");
    while (const dirent* const entry = readdir(entries)) {
        const int fd = std::atoi(entry->d_name);
        if (fd <= STDERR_FILENO || (fcntl(fd, F_GETFD) & FD_CLOEXEC) != 0) continue;
        char target[256] = {};
        if (readlinkat(dirfd(entries), entry->d_name, target, sizeof target - 1) > 0)
            found.push_back(std::string(entry->d_name) + " " + target);
    }
    closedir(entries);
    return found;
}

TEST(HttpQueue, descriptorsAreNotInherited) {
    inSandbox([] {
        const FetchSandbox world;
        FetchSandbox::add("a.dat", std::string(100000, 'x'));
        FetchSandbox::setFileFault("a.dat", "stall");
        const Texts before = inheritable();
        Texts during;
        unsigned samples = 0;
        Request request = serverRequest({"a.dat"});
        request.limits.idle = std::chrono::seconds(1);
        request.limits.retries = 0;
        request.progress = [&](const Progress& progress) {
            if (progress.bytes == 0 || progress.ended != nullptr) return;
            during = inheritable();
            ++samples;
        };
        thermika::fetch::fetch(request);
        EXPECT_GE(samples, 1U);
        EXPECT_EQ(during, before);
    });
}

TEST(HttpQueue, callsInSeveralThreadsServeOneDirectory) {
    inSandbox([] {
        const FetchSandbox world;
        Files expected;
        for (const std::string& name : names(40)) {
            expected[name] = "bytes of " + name;
            FetchSandbox::add(name, expected[name]);
        }
        std::vector<std::thread> threads;
        std::atomic<int> complete{0};
        for (int i = 0; i < 4; ++i)
            threads.emplace_back([&complete] {
                complete += thermika::fetch::fetch(serverRequest(names(40))).isComplete() ? 1 : 0;
            });
        for (std::thread& thread : threads) thread.join();
        EXPECT_EQ(complete, 4);
        EXPECT_EQ(contents(kFetched), expected);
    });
}

}  // namespace
