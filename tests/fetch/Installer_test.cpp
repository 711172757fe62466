// What has arrived goes to the disk in threads of its own. This program's fsync() and renameat()
// stand in for the C library's and do the same, so that tests see who calls them, when and how.
#include "fetch/Installer.h"

#include <pthread.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <chrono>
#include <condition_variable>
#include <csignal>
#include <filesystem>
#include <functional>
#include <limits>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "fetch/FileName.h"
#include "fetch/support/FetchSandbox.h"

namespace {

std::function<int(const std::string&)> g_onSync;  // gets the path; not 0: the error that is given
std::function<void(const std::string&, const std::string&)> g_onRename;

}  // namespace

extern "C" int fsync(int fd) {
    if (g_onSync) {
        char path[4096] = "";
        if (readlink(("/proc/self/fd/" + std::to_string(fd)).c_str(), path, sizeof path - 1) < 0)
            return -1;
        if (const int error = g_onSync(path)) {
            errno = error;
            return -1;
        }
    }
    return static_cast<int>(syscall(SYS_fsync, fd));
}

extern "C" int renameat(int from, const char* oldName, int to, const char* newName) noexcept {
    if (g_onRename) g_onRename(oldName, newName);
    return static_cast<int>(syscall(SYS_renameat2, from, oldName, to, newName, 0));
}

namespace {

namespace fs = std::filesystem;
using namespace thermika_test;
using thermika::fetch::isPartName;
using thermika::fetch::Mirror;
using thermika::fetch::Request;

std::vector<std::string> addFiles(int count) {
    std::vector<std::string> names;
    for (int i = 0; i < count; ++i) {
        names.push_back(std::to_string(i) + ".dat");
        FetchSandbox::add(names.back(), "bytes");
    }
    return names;
}

TEST(Installer, namesAFileWhenItIsOnTheDiskAndWritesTheDirectoryLast) {
    inSandbox([] {
        const FetchSandbox world;
        const auto names = addFiles(20);
        std::mutex mutex;
        Texts onDisk;
        Texts named;
        std::string last;
        g_onSync = [&](const std::string& path) {
            const std::lock_guard lock(mutex);
            onDisk.push_back(fs::path(path).filename());
            last = path;
            return 0;
        };
        g_onRename = [&](const std::string& part, const std::string& name) {
            const std::lock_guard lock(mutex);
            EXPECT_TRUE(isPartName(part)) << part;
            EXPECT_EQ(std::count(onDisk.begin(), onDisk.end(), part), 1) << name;
            named.push_back(name);
        };
        EXPECT_TRUE(thermika::fetch::fetch(serverRequest(names)).isComplete());
        std::sort(named.begin(), named.end());
        auto expected = names;
        std::sort(expected.begin(), expected.end());
        EXPECT_EQ(named, expected);
        EXPECT_EQ(last, kFetched);
    });
}

TEST(Installer, replacesAnOldFileInOneStep) {
    inSandbox([] {
        const FetchSandbox world;
        fs::create_directories(kFetched);
        for (const std::string& name : addFiles(3))
            writeFile(std::string(kFetched) + "/" + name, "old");
        std::atomic<int> renamed{0};
        g_onRename = [&](const std::string&, const std::string& name) {
            EXPECT_EQ(readFile(std::string(kFetched) + "/" + name), "old");
            ++renamed;
        };
        Request request = serverRequest({"0.dat", "1.dat", "2.dat"});
        request.replacePresent = true;
        request.limits.jobs = 1;
        EXPECT_TRUE(thermika::fetch::fetch(request).isComplete());
        EXPECT_EQ(renamed, 3);
        EXPECT_EQ(readFile(std::string(kFetched) + "/0.dat"), "bytes");
    });
}

TEST(Installer, letsSixteenFilesWaitForTheDiskAtOnce) {
    inSandbox([] {
        const FetchSandbox world;
        const auto names = addFiles(20);
        std::mutex mutex;
        std::condition_variable changed;
        int inside = 0;
        int most = 0;
        g_onSync = [&](const std::string& path) {
            if (!isPartName(fs::path(path).filename().string())) return 0;
            std::unique_lock lock(mutex);
            most = std::max(most, ++inside);
            changed.notify_all();
            changed.wait_for(lock, std::chrono::seconds(5), [&] { return most >= 16; });
            --inside;
            return 0;
        };
        Request request = serverRequest(names);
        request.limits.jobs = 1;
        EXPECT_TRUE(thermika::fetch::fetch(request).isComplete());
        EXPECT_EQ(most, 16);
    });
}

TEST(Installer, runsNoSignalHandlersInItsThreads) {
    inSandbox([] {
        const FetchSandbox world;
        const auto names = addFiles(3);
        const auto caller = std::this_thread::get_id();
        std::mutex mutex;
        int seen = 0;
        g_onSync = [&](const std::string&) {
            const std::lock_guard lock(mutex);
            if (std::this_thread::get_id() == caller) return 0;
            sigset_t held;
            pthread_sigmask(SIG_SETMASK, nullptr, &held);
            for (const int signal : {SIGINT, SIGTERM, SIGHUP, SIGUSR1, SIGCHLD, SIGPIPE})
                EXPECT_EQ(sigismember(&held, signal), 1) << signal;
            ++seen;
            return 0;
        };
        EXPECT_TRUE(thermika::fetch::fetch(serverRequest(names)).isComplete());
        EXPECT_EQ(seen, 3);
        sigset_t held;
        pthread_sigmask(SIG_SETMASK, nullptr, &held);
        EXPECT_EQ(sigismember(&held, SIGTERM), 0);
    });
}

TEST(Installer, doesWithoutThreadsWhereThereAreNone) {
    inSandbox([] {
        const FetchSandbox world;
        const auto names = addFiles(20);
        pthread_attr_t noRoom;
        pthread_attr_init(&noRoom);
        // More than any machine's address space has in one piece.
        pthread_attr_setstacksize(&noRoom, std::numeric_limits<std::size_t>::max() / 4 * 3);
        ASSERT_EQ(pthread_setattr_default_np(&noRoom), 0);
        const auto caller = std::this_thread::get_id();
        g_onSync = [&](const std::string&) {
            EXPECT_EQ(std::this_thread::get_id(), caller);
            return 0;
        };
        // Looking up a host's name would take a thread as well.
        const Request request = requestFor(names, Mirror{"http://127.0.0.1/"}, kFetched);
        EXPECT_EQ(linesOf(thermika::fetch::fetch(request)).find("failed"), std::string::npos);
        EXPECT_EQ(contents(kFetched).size(), names.size());
    });
}

TEST(Installer, keepsTheOldFileWhereTheDiskTakesNoNewOne) {
    inSandbox([] {
        const FetchSandbox world;
        const auto names = addFiles(20);
        FetchSandbox::add("7.dat", "longer bytes");
        fs::create_directories(kFetched);
        writeFile(std::string(kFetched) + "/7.dat", "old");
        g_onSync = [](const std::string& path) {
            return path != kFetched && readFile(path) == "longer bytes" ? EIO : 0;
        };
        Request request = serverRequest(names);
        request.replacePresent = true;
        std::string expected;
        for (const std::string& name : names)
            expected +=
                name + (name == "7.dat" ? ": failed, cannot write to the disk: Input/output error\n"
                                        : ": fetched\n");
        EXPECT_EQ(linesOf(thermika::fetch::fetch(request)), expected);
        EXPECT_EQ(contents(kFetched).size(), names.size());
        EXPECT_EQ(contents(kFetched).at("7.dat"), "old");
    });
}

}  // namespace
