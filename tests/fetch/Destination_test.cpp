// The destination: what is there already, what is put in place of what, modes, leftovers, and what
// is said when nothing can be written. A folder is the source, as any would do.
#include "fetch/Destination.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <filesystem>
#include <functional>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "fetch/support/FetchTest.h"
#include "support/DownloadSandbox.h"
#include "support/Sandbox.h"
#include "support/TestFiles.h"

namespace {

std::function<void()> g_whenDirectoryIsMade;

}  // namespace

/// In place of the system's, so that a test can act right after a directory was made.
extern "C" int mkdirat(int parent, const char* path, mode_t mode) {
    const auto result = static_cast<int>(syscall(SYS_mkdirat, parent, path, mode));
    if (result == 0 && g_whenDirectoryIsMade) g_whenDirectoryIsMade();
    return result;
}

namespace {

namespace fs = std::filesystem;
using namespace thermika_test;
using thermika::fetch::Folder;
using thermika::fetch::Progress;
using thermika::fetch::Report;
using thermika::fetch::Request;

const std::string kPart = ".thermika-fetch-0123456789abcdef.part";

/// A folder with a.dat and b.dat to fetch from, and a path to fetch to.
struct DestinationWorld {
    TempDir home;
    std::string source = home / "medium";
    std::string destination = home / "cali";

    DestinationWorld() {
        fs::create_directories(source);
        writeFile(source + "/a.dat", "new a");
        writeFile(source + "/b.dat", "new b");
    }
    Request request() const { return requestFor({"a.dat", "b.dat"}, Folder{source}, destination); }
    Report fetch() const { return thermika::fetch::fetch(request()); }
    std::string inDestination(const std::string& name) const { return destination + "/" + name; }
};

mode_t modeOf(const std::string& path) {
    struct stat status {};
    EXPECT_EQ(lstat(path.c_str(), &status), 0) << path;
    return status.st_mode & 07777;
}

constexpr const char* kBothFetched = "a.dat: fetched\nb.dat: fetched\n";
const Files kBothFiles = {{"a.dat", "new a"}, {"b.dat", "new b"}};

TEST(Destination, keepsWhatIsThereAndFetchesTheRest) {
    const DestinationWorld world;
    fs::create_directories(world.destination);
    writeFile(world.inDestination("a.dat"), "old");
    const Report report = world.fetch();
    EXPECT_EQ(linesOf(report), "a.dat: present\nb.dat: fetched\n");
    EXPECT_EQ(report.files[0].bytes, 3U);
    EXPECT_EQ(contents(world.destination), (Files{{"a.dat", "old"}, {"b.dat", "new b"}}));
}

TEST(Destination, replacesWhatIsThereWhenAsked) {
    const DestinationWorld world;
    fs::create_directories(world.destination);
    writeFile(world.inDestination("a.dat"), "old and longer than the new one");
    Request request = world.request();
    request.replacePresent = true;
    EXPECT_EQ(linesOf(thermika::fetch::fetch(request)), kBothFetched);
    EXPECT_EQ(contents(world.destination), kBothFiles);
}

TEST(Destination, replacesAnEmptyFile) {
    const DestinationWorld world;
    fs::create_directories(world.destination);
    writeFile(world.inDestination("a.dat"), "");
    EXPECT_EQ(linesOf(world.fetch()), kBothFetched);
    EXPECT_EQ(contents(world.destination), kBothFiles);
}

TEST(Destination, replacesALinkAndAFifoWithoutFollowingOrOpeningThem) {
    const DestinationWorld world;
    fs::create_directories(world.destination);
    writeFile(world.home / "elsewhere", "untouched");
    fs::create_symlink("../elsewhere", world.inDestination("a.dat"));
    ASSERT_EQ(mkfifo(world.inDestination("b.dat").c_str(), 0644), 0);
    EXPECT_EQ(linesOf(world.fetch()), kBothFetched);
    EXPECT_TRUE(fs::is_regular_file(fs::symlink_status(world.inDestination("a.dat"))));
    EXPECT_TRUE(fs::is_regular_file(fs::symlink_status(world.inDestination("b.dat"))));
    EXPECT_EQ(contents(world.destination), kBothFiles);
    EXPECT_EQ(readFile(world.home / "elsewhere"), "untouched");
}

TEST(Destination, leavesAFolderUnderAFinalNameAlone) {
    const DestinationWorld world;
    fs::create_directories(world.inDestination("a.dat"));
    EXPECT_EQ(linesOf(world.fetch()),
              "a.dat: failed, cannot rename: Is a directory\nb.dat: fetched\n");
    EXPECT_EQ(contents(world.destination), (Files{{"a.dat/", ""}, {"b.dat", "new b"}}));
}

TEST(Destination, isCreatedWithItsParentsForEveryUserWhateverTheUmask) {
    const DestinationWorld world;
    const mode_t former = umask(077);
    Request request = world.request();
    request.directory = world.home / "x/y//z/";
    const Report report = thermika::fetch::fetch(request);
    umask(former);
    EXPECT_EQ(linesOf(report), kBothFetched);
    EXPECT_EQ(report.files[0].destination, world.home / "x/y//z/a.dat");
    for (const char* const folder : {"x", "x/y", "x/y/z"})
        EXPECT_EQ(modeOf(world.home / folder), 0755U) << folder;
    EXPECT_EQ(modeOf(world.home / "x/y/z/a.dat"), 0644U);
}

// Somebody who may write to the parent puts a link in the place of what was just made: it was
// followed, and what it leads to got mode 0755.
TEST(Destination, followsNoLinkWhereItMadeADirectory) {
    const DestinationWorld world;
    const std::string elsewhere = world.home / "elsewhere";
    fs::create_directories(elsewhere);
    ASSERT_EQ(chmod(elsewhere.c_str(), 0700), 0);
    g_whenDirectoryIsMade = [&] {
        fs::remove(world.destination);
        fs::create_symlink("elsewhere", world.destination);
    };
    const Report report = world.fetch();
    g_whenDirectoryIsMade = nullptr;
    EXPECT_EQ(report.problem, "cannot create the directory " + world.destination +
                                  ": Not a directory (choose a directory that you may write to)");
    EXPECT_EQ(modeOf(elsewhere), 0700U);
    EXPECT_EQ(contents(elsewhere), Files());
}

TEST(Destination, mayLieBehindALink) {
    const DestinationWorld world;
    fs::create_directories(world.home / "elsewhere");
    fs::create_symlink("elsewhere", world.home / "link");
    Request request = world.request();
    request.directory = world.home / "link/cali";
    EXPECT_EQ(linesOf(thermika::fetch::fetch(request)), kBothFetched);
    EXPECT_EQ(contents(world.home / "elsewhere/cali"), kBothFiles);
}

TEST(Destination, isCreatedBelowADirectoryThatMayNotBeRead) {
    inSandbox([] {
        const DestinationWorld world;
        fs::create_directories(world.home / "closed/open");
        ASSERT_EQ(chmod((world.home / "closed").c_str(), 0111), 0);
        Request request = world.request();
        request.directory = world.home / "closed/open/cali";
        EXPECT_EQ(linesOf(thermika::fetch::fetch(request)), kBothFetched);
        ASSERT_EQ(chmod((world.home / "closed").c_str(), 0755), 0);
    });
}

TEST(Destination, mayAppearAfterItWasLookedFor) {
    const DestinationWorld world;
    Request request = world.request();
    request.names.emplace_back("../refused");
    request.progress = [&world](const Progress& progress) {
        if (progress.filesDone == 1) fs::create_directories(world.destination);
    };
    EXPECT_EQ(thermika::fetch::fetch(request).problem, "");
    EXPECT_EQ(contents(world.destination), kBothFiles);
}

TEST(Destination, mayAppearWhileItsParentIsMade) {
    const DestinationWorld world;
    Request request = world.request();
    request.directory = world.inDestination("sub");
    g_whenDirectoryIsMade = [&world] {
        g_whenDirectoryIsMade = nullptr;
        fs::create_directories(world.inDestination("sub"));
    };
    EXPECT_EQ(linesOf(thermika::fetch::fetch(request)), kBothFetched);
    EXPECT_EQ(contents(world.inDestination("sub")), kBothFiles);
}

TEST(Destination, countsFromTheWorkingDirectory) {
    const DestinationWorld world;
    EXPECT_EQ(runInProcess([&world] {
                  fs::current_path(world.home.path());
                  Request request = world.request();
                  request.directory = "x/cali";
                  return thermika::fetch::fetch(request).isComplete() ? 7 : 1;
              }).status,
              7);
    EXPECT_EQ(contents(world.home / "x/cali"), kBothFiles);
}

// Its entries cannot be looked at then, though their names can be read.
TEST(Destination, thatMayNotBeEnteredIsAProblem) {
    inSandbox([] {
        const DestinationWorld world;
        fs::create_directories(world.destination);
        ASSERT_EQ(chmod(world.destination.c_str(), 0600), 0);
        EXPECT_EQ(world.fetch().problem, "cannot write to the directory " + world.destination +
                                             ": cannot create a file: Permission denied (choose "
                                             "a directory that you may write to)");
        ASSERT_EQ(chmod(world.destination.c_str(), 0755), 0);
    });
}

TEST(Destination, keepsTheModeThatItHas) {
    const DestinationWorld world;
    fs::create_directories(world.destination);
    ASSERT_EQ(chmod(world.destination.c_str(), 0700), 0);
    EXPECT_EQ(linesOf(world.fetch()), kBothFetched);
    EXPECT_EQ(modeOf(world.destination), 0700U);
}

TEST(Destination, isNotCreatedWhenNothingMayBeFetched) {
    const DestinationWorld world;
    Request request = world.request();
    request.names = {"../a.dat"};
    EXPECT_EQ(linesOf(thermika::fetch::fetch(request)),
              "../a.dat: refused, the file name contains \"/\"\n");
    EXPECT_FALSE(fs::exists(world.destination));
}

TEST(Destination, thatCannotBeWrittenIsSaidBeforeAnythingIsRead) {
    inSandbox([] {
        const DestinationWorld world;
        fs::create_directories(world.destination);
        ASSERT_EQ(chmod(world.destination.c_str(), 0555), 0);
        Request request = world.request();
        request.source = Folder{"/no/such/folder"};  // would be the problem otherwise
        const std::string problem = "cannot write to the directory " + world.destination +
                                    ": cannot create a file: Permission denied (choose a "
                                    "directory that you may write to)";
        EXPECT_EQ(thermika::fetch::fetch(request).problem, problem);
        request.directory = world.inDestination("x/y");
        EXPECT_EQ(thermika::fetch::fetch(request).problem,
                  "cannot create the directory " + world.inDestination("x") +
                      ": Permission denied (choose a directory that you may write to)");
    });
}

TEST(Destination, thatIsAFileIsAProblem) {
    const DestinationWorld world;
    writeFile(world.destination, "a file");
    EXPECT_EQ(world.fetch().problem, "cannot open the directory " + world.destination +
                                         ": Not a directory (choose a directory that you may "
                                         "write to)");
    EXPECT_EQ(readFile(world.destination), "a file");
}

TEST(Destination, onAFullDiskKeepsOldFilesAndNoHalfOnes) {
    inSandbox([] {
        const DestinationWorld world;
        fs::create_directories(world.destination);
        mountOver(world.destination, "size=64k");
        writeFile(world.inDestination("a.dat"), "old");
        writeFile(world.source + "/a.dat", std::string(100000, 'x'));
        Request request = world.request();
        request.replacePresent = true;
        EXPECT_EQ(linesOf(thermika::fetch::fetch(request)),
                  "a.dat: failed, cannot write: No space left on device\nb.dat: fetched\n");
        EXPECT_EQ(contents(world.destination), (Files{{"a.dat", "old"}, {"b.dat", "new b"}}));
    });
}

TEST(Destination, losesPartFilesOfCallsThatWereKilled) {
    const DestinationWorld world;
    fs::create_directories(world.destination);
    writeFile(world.inDestination(kPart), "half");
    writeFile(world.inDestination(".thermika-fetch-notes"), "not a part file");
    fs::create_directories(world.inDestination(".thermika-fetch-folder.part"));
    fs::create_symlink("../elsewhere", world.inDestination(".thermika-fetch-link.part"));
    ASSERT_EQ(mkfifo(world.inDestination(".thermika-fetch-pipe.part").c_str(), 0600), 0);
    EXPECT_EQ(linesOf(world.fetch()), kBothFetched);
    EXPECT_FALSE(fs::exists(world.inDestination(kPart)));
    EXPECT_TRUE(fs::exists(world.inDestination(".thermika-fetch-notes")));
    EXPECT_TRUE(fs::exists(world.inDestination(".thermika-fetch-folder.part")));
    EXPECT_TRUE(fs::is_symlink(world.inDestination(".thermika-fetch-link.part")));
    EXPECT_TRUE(fs::is_fifo(world.inDestination(".thermika-fetch-pipe.part")));
}

// A FIFO's writer would go on, and write into nothing.
TEST(Destination, opensNothingButRegularFilesToFindLeftovers) {
    const DestinationWorld world;
    fs::create_directories(world.destination);
    ASSERT_EQ(mkfifo(world.inDestination(kPart).c_str(), 0644), 0);
    const OpenWatch fifo(world.inDestination(kPart));
    EXPECT_EQ(linesOf(world.fetch()), kBothFetched);
    EXPECT_FALSE(fifo.wasOpened());
    EXPECT_TRUE(fs::exists(world.inDestination(kPart)));
}

TEST(Destination, losesLeftoversAlsoWhenNothingIsToBeFetched) {
    const DestinationWorld world;
    EXPECT_EQ(linesOf(world.fetch()), kBothFetched);
    writeFile(world.inDestination(kPart), "half");
    EXPECT_EQ(linesOf(world.fetch()), "a.dat: present\nb.dat: present\n");
    EXPECT_EQ(contents(world.destination), kBothFiles);
}

TEST(Destination, keepsPartFilesThatAnotherCallHolds) {
    const DestinationWorld world;
    fs::create_directories(world.destination);
    writeFile(world.inDestination(kPart), "half");
    const int held = open(world.inDestination(kPart).c_str(), O_RDONLY | O_CLOEXEC);
    ASSERT_EQ(flock(held, LOCK_EX), 0);
    EXPECT_EQ(linesOf(world.fetch()), kBothFetched);
    EXPECT_EQ(readFile(world.inDestination(kPart)), "half");
    close(held);
}

TEST(Destination, isNotTouchedWhenTheRequestIsWrong) {
    const DestinationWorld world;
    Request request = world.request();
    for (const char* const serial : {"", "1408004x", "-1", "123456789012345678901", "14 08"}) {
        request.serial = serial;
        EXPECT_EQ(
            thermika::fetch::fetch(request).problem,
            "the serial number \"" + std::string(serial) + "\" is not 1 to 20 decimal digits");
    }
    request.serial = "14080045";
    request.directory = "";
    EXPECT_EQ(thermika::fetch::fetch(request).problem, "no destination directory is given");
}

TEST(Destination, takesARepeatedNameOnceAndNoMoreNamesThanAllowed) {
    const DestinationWorld world;
    Request request = world.request();
    request.names = {"a.dat", "a.dat", "b.dat", "c.dat"};
    request.limits.files = 2;
    EXPECT_EQ(linesOf(thermika::fetch::fetch(request)),
              "a.dat: fetched\nb.dat: fetched\n"
              "c.dat: refused, more than 2 files are asked for\n");
}

TEST(Destination, leavesNoDescriptorOpen) {
    const DestinationWorld world;
    const std::size_t before = openDescriptors();
    world.fetch();
    EXPECT_EQ(openDescriptors(), before);
}

}  // namespace
