// Files out of a tree of folders: where they are found, what is not taken, and what the destination
// holds afterwards.
#include "fetch/FolderSource.h"

#include <fcntl.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iostream>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "fetch/support/FetchTest.h"
#include "support/DownloadSandbox.h"
#include "support/Sandbox.h"
#include "support/TestFiles.h"

namespace {

std::function<void()> g_onStat;  // once, after a source's size was asked for

}  // namespace

// Stands in for the C library's and does the same, unless a test wants something to happen then.
extern "C" int fstat(int fd, struct stat* status) noexcept {
    const int result = fstatat(fd, "", status, AT_EMPTY_PATH);
    const bool isSource = result == 0 && S_ISREG(status->st_mode) && status->st_size > 0;
    if (const auto onStat = isSource ? std::exchange(g_onStat, nullptr) : nullptr) onStat();
    return result;
}

namespace {

namespace fs = std::filesystem;
using namespace thermika_test;
using thermika::fetch::Folder;
using thermika::fetch::Progress;
using thermika::fetch::Report;
using thermika::fetch::Request;

/// A folder to fetch from and one to fetch into.
struct FolderWorld {
    TempDir home;
    std::string source = home / "medium";
    std::string destination = home / "cali";

    FolderWorld() { fs::create_directories(source); }

    void add(const std::string& path, const std::string& bytes) const {
        fs::create_directories(fs::path(source + "/" + path).parent_path());
        writeFile(source + "/" + path, bytes);
    }
    Request request(const std::vector<std::string>& names) const {
        return requestFor(names, Folder{source}, destination);
    }
    Report fetch(const std::vector<std::string>& names) const {
        return thermika::fetch::fetch(request(names));
    }
};

TEST(FolderSource, findsFilesAtAnyDepth) {
    const FolderWorld world;
    world.add("a.dat", "top");
    world.add("x/y/z/b.dat", "below");
    const Report report = world.fetch({"a.dat", "b.dat"});
    EXPECT_EQ(linesOf(report), "a.dat: fetched\nb.dat: fetched\n");
    EXPECT_TRUE(report.isComplete());
    EXPECT_EQ(contents(world.destination), (Files{{"a.dat", "top"}, {"b.dat", "below"}}));
    EXPECT_EQ(report.files[1].source, world.source + "/x/y/z/b.dat");
    EXPECT_EQ(report.files[1].destination, world.destination + "/b.dat");
    EXPECT_EQ(report.files[1].bytes, 5U);
}

TEST(FolderSource, findsAFileDeeperThanAnyPathAndDescriptorLimit) {
    const FolderWorld world;
    int folder = open(world.source.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    const std::string name(100, 'd');
    for (int depth = 0; depth < 1100; ++depth) {
        ASSERT_EQ(mkdirat(folder, name.c_str(), 0755), 0);
        const int next = openat(folder, name.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
        close(folder);
        folder = next;
    }
    const int file = openat(folder, "a.dat", O_WRONLY | O_CREAT | O_CLOEXEC, 0644);
    ASSERT_EQ(write(file, "deep", 4), 4);
    close(file);
    close(folder);
    EXPECT_EQ(linesOf(world.fetch({"a.dat"})), "a.dat: fetched\n");
    EXPECT_EQ(contents(world.destination), (Files{{"a.dat", "deep"}}));
    // What removes trees by their paths cannot remove this one.
    EXPECT_EQ(run("rm", {"rm", "-rf", world.source}).status, 0);
}

TEST(FolderSource, takesTheFirstOfSeveralFilesWithOneName) {
    const FolderWorld world;
    world.add("b/a.dat", "second");
    world.add("a/z/a.dat", "first");
    EXPECT_EQ(linesOf(world.fetch({"a.dat"})), "a.dat: fetched\n");
    EXPECT_EQ(contents(world.destination), (Files{{"a.dat", "first"}}));
}

TEST(FolderSource, passesOverFilesThatCannotBeUsed) {
    const FolderWorld world;
    world.add("a/a.dat", "");
    world.add("b/a.dat", "good");
    EXPECT_EQ(linesOf(world.fetch({"a.dat"})), "a.dat: fetched\n");
    EXPECT_EQ(contents(world.destination), (Files{{"a.dat", "good"}}));
}

TEST(FolderSource, tellsWhyTheFirstOfSeveralFilesThatCannotBeUsedIsNot) {
    const FolderWorld world;
    world.add("a/a.dat", "");
    fs::create_directories(world.source + "/b/a.dat");
    fs::create_directories(world.source + "/c");
    fs::create_symlink("../a/a.dat", world.source + "/c/a.dat");
    const Report report = world.fetch({"a.dat"});
    EXPECT_EQ(linesOf(report), "a.dat: failed, it is empty\n");
    EXPECT_EQ(report.files[0].source, world.source + "/a/a.dat");
}

TEST(FolderSource, mayBeNamedWithASlashAtItsEnd) {
    const FolderWorld world;
    world.add("x/a.dat", "bytes");
    const Report report = thermika::fetch::fetch(
        requestFor({"a.dat"}, Folder{world.source + "/"}, world.destination));
    EXPECT_EQ(linesOf(report), "a.dat: fetched\n");
    EXPECT_EQ(report.files[0].source, world.source + "/x/a.dat");
}

TEST(FolderSource, followsNoLinksAndOpensNoFifos) {
    const FolderWorld world;
    writeFile(world.home / "secret", "not the medium's");
    fs::create_directories(world.home / "elsewhere");
    writeFile(world.home / "elsewhere/behind.dat", "not the medium's");
    fs::create_symlink("../secret", world.source + "/link.dat");
    fs::create_symlink("../elsewhere", world.source + "/folder");
    ASSERT_EQ(mkfifo((world.source + "/fifo.dat").c_str(), 0644), 0);
    const OpenWatch fifo(world.source + "/fifo.dat");
    const Report report = world.fetch({"link.dat", "behind.dat", "fifo.dat"});
    EXPECT_EQ(linesOf(report),
              "link.dat: failed, it is a link\n"
              "behind.dat: missing, it is in no folder below " +
                  world.source + "\nfifo.dat: failed, it is no regular file\n");
    EXPECT_FALSE(report.isComplete());
    EXPECT_FALSE(fifo.wasOpened());
    EXPECT_EQ(contents(world.destination), Files());
}

TEST(FolderSource, doesNotEnterAFolderThatHasBecomeALink) {
    const FolderWorld world;
    world.add("a.dat", "bytes");
    world.add("sub/b.dat", "bytes");
    Request request = world.request({"a.dat", "b.dat"});
    request.progress = [&world](const Progress& progress) {
        // The root's entries are known by now, and "sub" was a folder.
        if (progress.ended == nullptr || progress.ended->name != "a.dat") return;
        fs::rename(world.source + "/sub", world.home / "elsewhere");
        fs::create_symlink(world.home / "elsewhere", world.source + "/sub");
    };
    EXPECT_EQ(linesOf(thermika::fetch::fetch(request)),
              "a.dat: fetched\nb.dat: missing, it is in no folder below " + world.source +
                  ", but 1 could not be read (" + world.source + "/sub/: Not a directory)\n");
}

TEST(FolderSource, mayItselfBeALink) {
    const FolderWorld world;
    world.add("a.dat", "bytes");
    fs::create_symlink("medium", world.home / "link");
    const Request request = requestFor({"a.dat"}, Folder{world.home / "link"}, world.destination);
    EXPECT_EQ(linesOf(thermika::fetch::fetch(request)), "a.dat: fetched\n");
}

TEST(FolderSource, takesNoMoreThanAFileMayHave) {
    const FolderWorld world;
    world.add("fits.dat", std::string(1000, 'x'));
    world.add("large.dat", std::string(1001, 'x'));
    Request request = world.request({"fits.dat", "large.dat"});
    request.limits.fileBytes = 1000;
    const Report report = thermika::fetch::fetch(request);
    EXPECT_EQ(linesOf(report),
              "fits.dat: fetched\nlarge.dat: failed, it is larger than 1000 bytes\n");
    EXPECT_EQ(report.files[1].tries, 0U);  // its size was enough
    EXPECT_EQ(contents(world.destination), (Files{{"fits.dat", std::string(1000, 'x')}}));
}

TEST(FolderSource, takesNoFileThatSomebodyIsWriting) {
    const FolderWorld world;
    world.add("a.dat", "bytes");
    g_onStat = [&world] { std::ofstream(world.source + "/a.dat", std::ios::app) << "more"; };
    EXPECT_EQ(linesOf(world.fetch({"a.dat"})),
              "a.dat: failed, it has 9 bytes instead of 5 (is somebody writing it?)\n");
    EXPECT_EQ(contents(world.destination), Files());
}

TEST(FolderSource, takesNoMoreThanAllFilesMayHave) {
    const FolderWorld world;
    world.add("a.dat", std::string(600, 'x'));
    world.add("b.dat", std::string(600, 'x'));
    world.add("c.dat", std::string(400, 'x'));
    Request request = world.request({"a.dat", "b.dat", "c.dat"});
    request.limits.totalBytes = 1000;
    EXPECT_EQ(linesOf(thermika::fetch::fetch(request)),
              "a.dat: fetched\nb.dat: failed, with it, all files together would have more bytes "
              "than allowed\nc.dat: fetched\n");
    EXPECT_EQ(contents(world.destination),
              (Files{{"a.dat", std::string(600, 'x')}, {"c.dat", std::string(400, 'x')}}));
}

TEST(FolderSource, tellsWhichFolderCouldNotBeRead) {
    inSandbox([] {
        const FolderWorld world;
        world.add("closed/a.dat", "bytes");
        ASSERT_EQ(chmod((world.source + "/closed").c_str(), 0), 0);
        const auto lines = [&world](const std::string& count) {
            return "a.dat: missing, it is in no folder below " + world.source + ", but " + count +
                   " could not be read (" + world.source + "/closed/: Permission denied)\n";
        };
        EXPECT_EQ(linesOf(world.fetch({"a.dat"})), lines("1"));
        world.add("closed too/a.dat", "bytes");
        ASSERT_EQ(chmod((world.source + "/closed too").c_str(), 0), 0);
        EXPECT_EQ(linesOf(world.fetch({"a.dat"})), lines("2"));
        for (const char* const name : {"/closed", "/closed too"})
            ASSERT_EQ(chmod((world.source + name).c_str(), 0755), 0);
    });
}

// With no descriptor left to list a folder, the reason was "Bad file descriptor": closing the one
// that had not been opened overwrote what the system had answered.
TEST(FolderSource, tellsOfMissingDescriptorsAsSuch) {
    const FolderWorld world;
    world.add("a.dat", "bytes");
    std::string reasons;
    bool isComplete = false;
    for (rlim_t limit = 3; !isComplete; ++limit) {
        const RunResult result = runInProcess([&] {
            const rlimit few{limit, limit};
            setrlimit(RLIMIT_NOFILE, &few);
            const Report report = world.fetch({"a.dat"});
            std::cout << linesOf(report);
            return report.isComplete() ? 0 : 1;
        });
        ASSERT_LE(result.status, 1);
        isComplete = result.status == 0;
        reasons += result.out;
    }
    EXPECT_EQ(reasons.find("Bad file descriptor"), std::string::npos) << reasons;
    EXPECT_NE(reasons.find("Too many open files"), std::string::npos) << reasons;
}

TEST(FolderSource, thatIsNotThereIsTheProblemOfAllFiles) {
    const FolderWorld world;
    const Request request = requestFor({"a.dat"}, Folder{world.home / "none"}, world.destination);
    const std::string problem =
        "cannot read the folder " + (world.home / "none") + ": No such file or directory";
    EXPECT_EQ(linesOf(thermika::fetch::fetch(request)),
              "problem: " + problem + "\na.dat: not tried, " + problem + "\n");
}

TEST(FolderSource, planTellsTheSameAndTouchesNothing) {
    const FolderWorld world;
    world.add("x/a.dat", "bytes");
    world.add("empty.dat", "");
    const Report plan = thermika::fetch::plan(world.request({"a.dat", "empty.dat", "none.dat"}));
    EXPECT_EQ(linesOf(plan),
              "a.dat: planned\nempty.dat: failed, it is empty\nnone.dat: missing, "
              "it is in no folder below " +
                  world.source + "\n");
    EXPECT_EQ(plan.files[0].source, world.source + "/x/a.dat");
    EXPECT_EQ(plan.files[0].destination, world.destination + "/a.dat");
    EXPECT_EQ(plan.files[0].bytes, 5U);
    EXPECT_FALSE(fs::exists(world.destination));
}

TEST(FolderSource, probeTellsWhetherItCanBeRead) {
    const FolderWorld world;
    const auto there = thermika::fetch::probe(world.request({}));
    EXPECT_TRUE(there.answers);
    EXPECT_EQ(there.address, world.source);
    const auto gone = thermika::fetch::probe(requestFor({}, Folder{world.home / "none"}, ""));
    EXPECT_FALSE(gone.answers);
    EXPECT_EQ(gone.reason,
              "cannot read the folder " + (world.home / "none") + ": No such file or directory");
}

TEST(FolderSource, tellsOfEachFileAsItEnds) {
    const FolderWorld world;
    world.add("a.dat", "bytes");
    std::vector<std::string> told;
    Request request = world.request({"a.dat", "../x", "b.dat"});
    request.progress = [&told](const Progress& progress) {
        EXPECT_EQ(progress.files, 3U);
        if (progress.ended != nullptr)
            told.push_back(std::to_string(progress.filesDone) + " " + progress.ended->name + " " +
                           wordFor(progress.ended->outcome));
    };
    thermika::fetch::fetch(request);
    EXPECT_EQ(told,
              (std::vector<std::string>{"1 ../x refused", "2 a.dat fetched", "3 b.dat missing"}));
}

TEST(FolderSource, callThatIsCancelledLeavesWholeFilesOnly) {
    const FolderWorld world;
    for (const char* const name : {"a.dat", "b.dat", "c.dat"}) world.add(name, "bytes");
    std::atomic<bool> cancel{false};
    Request request = world.request({"a.dat", "b.dat", "c.dat"});
    request.cancel = &cancel;
    request.progress = [&cancel](const Progress& progress) { cancel = progress.filesDone == 2; };
    const Report report = thermika::fetch::fetch(request);
    EXPECT_EQ(linesOf(report), "a.dat: fetched\nb.dat: fetched\nc.dat: not tried, cancelled\n");
    EXPECT_FALSE(report.isComplete());
    EXPECT_EQ(contents(world.destination), (Files{{"a.dat", "bytes"}, {"b.dat", "bytes"}}));
}

TEST(FolderSource, whatProgressThrowsComesOutAndLeavesWholeFilesOnly) {
    const FolderWorld world;
    for (const char* const name : {"a.dat", "b.dat"}) world.add(name, "bytes");
    Request request = world.request({"a.dat", "b.dat"});
    request.progress = [](const Progress& progress) {
        if (progress.ended != nullptr) throw std::string("mine");
    };
    EXPECT_THROW(thermika::fetch::fetch(request), std::string);
    EXPECT_EQ(contents(world.destination), (Files{{"a.dat", "bytes"}}));
}

}  // namespace
