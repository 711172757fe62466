// Whatever interrupts a call: whole old files, whole new files, and nothing that the next call does
// not remove. Also calls in several processes, many files and large ones.
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <csignal>
#include <filesystem>
#include <functional>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "fetch/FileName.h"
#include "fetch/support/FetchSandbox.h"
#include "support/Moments.h"

namespace {

namespace fs = std::filesystem;
using namespace thermika_test;
using thermika::fetch::Folder;
using thermika::fetch::Report;
using thermika::fetch::Request;

/// Ten files of different length, old ones in the destination and new ones on the server.
struct ReplacementWorld {
    FetchSandbox server;
    std::vector<std::string> names;
    Files oldFiles;
    Files newFiles;

    ReplacementWorld() {
        fs::create_directories(kFetched);
        for (int i = 0; i < 10; ++i) {
            const std::string name = std::to_string(i) + ".dat";
            names.push_back(name);
            oldFiles[name] = std::string(1000, 'o');
            newFiles[name] = std::string(static_cast<std::size_t>(20000 * (i + 1)), 'n');
            FetchSandbox::add(name, newFiles[name]);
        }
        restore();
    }
    void restore() const {
        for (const auto& entry : fs::directory_iterator(kFetched)) fs::remove(entry.path());
        for (const auto& [name, bytes] : oldFiles) writeFile(path(name), bytes);
    }
    static std::string path(const std::string& name) { return std::string(kFetched) + "/" + name; }

    Request request() const {
        Request request = serverRequest(names);
        request.replacePresent = true;
        return request;
    }

    /// How many files are new; fails where one is neither old nor new, or has no business there.
    std::size_t countNew(bool mayHaveParts) const {
        std::size_t count = 0;
        for (const auto& [name, bytes] : contents(kFetched)) {
            if (mayHaveParts && thermika::fetch::isPartName(name)) continue;
            const auto known = newFiles.find(name);
            if (known == newFiles.end()) {
                ADD_FAILURE() << name << " is left over";
            } else if (bytes == known->second) {
                ++count;
            } else {
                EXPECT_EQ(bytes, oldFiles.at(name)) << name << " is half";
            }
        }
        EXPECT_GE(contents(kFetched).size(), names.size());
        return count;
    }
};

pid_t start(const std::function<void()>& body) {
    const pid_t child = fork();
    if (child != 0) return child;
    body();
    _exit(0);
}

std::chrono::steady_clock::duration timeOf(const std::function<void()>& body) {
    const auto begin = std::chrono::steady_clock::now();
    body();
    return std::chrono::steady_clock::now() - begin;
}

class AtAnyMoment : public testing::TestWithParam<unsigned> {};
INSTANTIATE_TEST_SUITE_P(Interruption, AtAnyMoment, testing::Range(0U, kRounds));

TEST_P(AtAnyMoment, killLeavesWholeFilesAndTheNextCallCleansUp) {
    inSandbox([] {
        const ReplacementWorld world;
        const auto fetch = [&] { thermika::fetch::fetch(world.request()); };
        const auto whole = timeOf([&] { waitpid(start(fetch), nullptr, 0); });
        EXPECT_EQ(world.countNew(false), world.names.size());
        interruptAtMoments(whole, GetParam(), [&](auto moment) {
            world.restore();
            const pid_t child = start(fetch);
            std::this_thread::sleep_for(moment);
            kill(child, SIGKILL);
            waitpid(child, nullptr, 0);
            const std::size_t count = world.countNew(true);
            if (contents(kFetched) == world.oldFiles) return Came::kTooEarly;
            return count < world.names.size() ? Came::kInTime : Came::kTooLate;
        });
        EXPECT_TRUE(thermika::fetch::fetch(world.request()).isComplete());
        EXPECT_EQ(contents(kFetched), world.newFiles);
    });
}

std::atomic<bool> interruptedBySignal{false};

TEST_P(AtAnyMoment, cancelBySignalLeavesWholeFilesOnly) {
    inSandbox([] {
        const ReplacementWorld world;
        const auto fetch = [&] {
            struct sigaction action {};
            action.sa_handler = [](int) { interruptedBySignal = true; };  // calls are interrupted
            sigaction(SIGTERM, &action, nullptr);
            Request request = world.request();
            request.cancel = &interruptedBySignal;
            const Report report = thermika::fetch::fetch(request);
            for (const auto& file : report.files)
                if (wordFor(file.outcome) != "fetched" && file.reason != "cancelled") _exit(1);
        };
        const auto whole = timeOf([&] { waitpid(start(fetch), nullptr, 0); });
        interruptAtMoments(whole, GetParam(), [&](auto moment) {
            world.restore();
            const pid_t child = start(fetch);
            std::this_thread::sleep_for(moment);
            kill(child, SIGTERM);
            int status = 0;
            waitpid(child, &status, 0);
            if (world.countNew(false) == world.names.size()) return Came::kTooLate;
            if (status == 0) return Came::kInTime;
            EXPECT_EQ(status, SIGTERM);  // its handler was not set yet
            return Came::kTooEarly;
        });
    });
}

TEST(Interruption, callsInSeveralProcessesAllSucceed) {
    inSandbox([] {
        const ReplacementWorld world;
        std::vector<pid_t> children;
        for (int i = 0; i < 4; ++i)
            children.push_back(start([&] {
                for (int turn = 0; turn < 5; ++turn)
                    if (!thermika::fetch::fetch(world.request()).isComplete()) _exit(1);
            }));
        for (const pid_t child : children) {
            int status = -1;
            waitpid(child, &status, 0);
            EXPECT_EQ(status, 0);
        }
        EXPECT_EQ(contents(kFetched), world.newFiles);
    });
}

TEST(Interruption, fullDiskKeepsOldFilesAndNoHalfOnes) {
    inSandbox([] {
        FetchSandbox world;
        fs::create_directories(kFetched);
        mountOver(kFetched, "size=300k");
        Files expected;
        std::vector<std::string> names;
        for (int i = 0; i < 8; ++i) {
            names.push_back(std::to_string(i) + ".dat");
            expected[names.back()] = "old";
            writeFile(ReplacementWorld::path(names.back()), "old");
            FetchSandbox::add(names.back(), std::string(100000, 'n'));
        }
        Request request = serverRequest(names);
        request.replacePresent = true;
        request.limits.jobs = 1;
        const Report report = thermika::fetch::fetch(request);
        EXPECT_FALSE(report.isComplete());
        for (const auto& file : report.files) {
            if (wordFor(file.outcome) == "fetched") {
                expected[file.name] = std::string(100000, 'n');
            } else {
                EXPECT_EQ(file.reason, "cannot write: No space left on device");
            }
        }
        EXPECT_EQ(contents(kFetched), expected);
    });
}

TEST(Interruption, fiveThousandFilesArriveFromAServerAndFromAFolder) {
    inSandbox([] {
        const FetchSandbox world;
        std::vector<std::string> names;
        Files expected;
        for (int i = 0; i < 5000; ++i) {
            names.push_back("Cali-14080045-" + std::to_string(i) + ".dat");
            expected[names.back()] = std::to_string(i);
            FetchSandbox::add(names.back(), expected[names.back()]);
        }
        EXPECT_TRUE(thermika::fetch::fetch(serverRequest(names)).isComplete());
        EXPECT_EQ(contents(kFetched), expected);
        EXPECT_LE(FetchSandbox::connections(), 4U);
        fs::remove_all(kFetched);
        const Request request = requestFor(names, Folder{"/usr/share/world/hostile"}, kFetched);
        EXPECT_TRUE(thermika::fetch::fetch(request).isComplete());
        EXPECT_EQ(contents(kFetched), expected);
    });
}

long peakKilobytes() {
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    return usage.ru_maxrss;
}

TEST(Interruption, memoryStaysFlatWhateverTheSizeOfAFile) {
    inSandbox([] {
        const FetchSandbox world;
        FetchSandbox::add("small.dat", std::string(std::size_t{1} << 20, 'x'));
        FetchSandbox::add("large.dat", std::string(std::size_t{60} << 20, 'x'));
        for (const bool fromFolder : {false, true}) {
            const RunResult result = runInProcess([fromFolder] {
                const auto fetch = [fromFolder](const std::string& name) {
                    Request request = serverRequest({name});
                    request.replacePresent = true;
                    if (fromFolder) request.source = Folder{"/usr/share/world/hostile"};
                    return thermika::fetch::fetch(request).isComplete();
                };
                // What this process had before does not count: it grows by what is needed more.
                if (!fetch("small.dat")) return 1;
                const long before = peakKilobytes();
                if (!fetch("large.dat")) return 2;
                return peakKilobytes() - before < 4096 ? 0 : 3;
            });
            EXPECT_EQ(result.status, 0);
        }
    });
}

}  // namespace
