// What is said, and what stays on the disk, when the system fails at a file or a directory, or when
// somebody is faster. Links other system calls in, so it belongs to a program of its own.
#include <fcntl.h>
#include <sys/stat.h>

#include <atomic>
#include <cerrno>
#include <filesystem>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "fetch/Descriptor.h"
#include "fetch/Destination.h"
#include "fetch/PartFile.h"
#include "fetch/RegularFile.h"
#include "fetch/support/FailingCalls.h"
#include "fetch/support/FetchTest.h"
#include "support/DownloadSandbox.h"
#include "support/TestFiles.h"

namespace {

namespace fs = std::filesystem;
using namespace thermika_test;
using thermika::fetch::Allowance;
using thermika::fetch::Descriptor;
using thermika::fetch::Destination;
using thermika::fetch::Folder;
using thermika::fetch::openRegularFile;
using thermika::fetch::PartFile;
using thermika::fetch::RegularFile;
using thermika::fetch::Request;

/// Two files to fetch, one of them in a folder of its own, and an empty directory for them.
class FailingDisk : public testing::Test {
protected:
    FailingDisk() {
        fs::create_directories(source + "/sub");
        fs::create_directories(destination);
        writeFile(source + "/a.dat", "bytes of a");
        writeFile(source + "/sub/b.dat", "bytes of b");
    }
    ~FailingDisk() override { forgetPlans(); }

    Request request(const std::vector<std::string>& names) const {
        return requestFor(names, Folder{source}, destination);
    }
    std::string lines(const std::vector<std::string>& names) const {
        return linesOf(thermika::fetch::fetch(request(names)));
    }
    Files fetched() const { return contents(destination); }
    static mode_t modeOf(const std::string& path) {
        struct stat status {};
        EXPECT_EQ(stat(path.c_str(), &status), 0) << path;
        return status.st_mode & 07777;
    }

    TempDir home;
    std::string source = home / "medium";
    std::string destination = home / "cali";
};

TEST_F(FailingDisk, atTheDirectoryIsTheProblemOfFilesThatAreThere) {
    // The file itself gets to the disk.
    beforeNext(SystemCall::kFsync, [] { failNext(SystemCall::kFsync, EIO); });
    const auto report = thermika::fetch::fetch(request({"a.dat"}));
    EXPECT_EQ(report.problem,
              "cannot write the directory " + destination + " to the disk: Input/output error");
    EXPECT_EQ(wordFor(report.files.at(0).outcome), "fetched");
    EXPECT_FALSE(report.isComplete());
}

// As on file systems that write no directory by itself.
TEST_F(FailingDisk, atADirectoryThatCannotBeWrittenByItselfIsNoProblem) {
    for (const int error : {EINVAL, ENOTSUP}) {
        beforeNext(SystemCall::kFsync, [error] { failNext(SystemCall::kFsync, error); });
        Request again = request({"a.dat"});
        again.replacePresent = true;
        EXPECT_TRUE(thermika::fetch::fetch(again).isComplete()) << error;
    }
}

// As FAT does, whose files have the mode that the file system was mounted with.
TEST_F(FailingDisk, thatHasNoModesTakesFilesThatEveryUserCanRead) {
    const auto mountedWith = [this](fs::perms mode) {
        beforeNext(SystemCall::kFchmod, [this, mode] {
            for (const auto& entry : fs::directory_iterator(destination))
                fs::permissions(entry.path(), mode);
        });
        failNext(SystemCall::kFchmod, EPERM);
    };
    mountedWith(fs::perms(0700));
    EXPECT_EQ(lines({"a.dat"}), "a.dat: failed, cannot change the mode: Operation not permitted\n");
    mountedWith(fs::perms(0755));
    EXPECT_EQ(lines({"a.dat"}), "a.dat: fetched\n");
}

TEST_F(FailingDisk, atAFileInstallsNothing) {
    failNext(SystemCall::kFsync, EIO);
    EXPECT_EQ(lines({"a.dat"}), "a.dat: failed, cannot write to the disk: Input/output error\n");
    EXPECT_EQ(fetched(), Files());
    failNext(SystemCall::kFchmod, EIO);
    EXPECT_EQ(lines({"a.dat"}), "a.dat: failed, cannot change the mode: Input/output error\n");
    EXPECT_EQ(fetched(), Files());
}

TEST_F(FailingDisk, whereADirectoryIsMadeIsNamed) {
    for (const SystemCall call : {SystemCall::kFstat, SystemCall::kFchmod}) {
        fs::remove_all(destination);
        failNext(call, EIO);
        EXPECT_EQ(thermika::fetch::fetch(request({"a.dat"})).problem,
                  "cannot create the directory " + destination +
                      ": Input/output error (choose a directory that you may write to)");
    }
}

TEST_F(FailingDisk, leavesTheModeOfSomebodyElsesDirectoryInPlaceOfOurs) {
    fs::remove_all(destination);
    const mode_t former = umask(077);
    failNext(SystemCall::kGeteuid);
    EXPECT_EQ(lines({"a.dat"}), "a.dat: fetched\n");
    umask(former);
    EXPECT_EQ(modeOf(destination), 0700U);
}

TEST_F(FailingDisk, withoutRandomNumbersIsSaidBeforeAnythingIsRead) {
    failNext(SystemCall::kGetrandom, ENOSYS);
    EXPECT_EQ(thermika::fetch::fetch(request({"a.dat"})).problem,
              "cannot write to the directory " + destination +
                  ": cannot get a random number: Function not implemented (choose a directory "
                  "that you may write to)");
    EXPECT_EQ(fetched(), Files());
}

// As on some network file systems.
TEST_F(FailingDisk, withoutLocksIsWrittenAllTheSame) {
    Destination directory(destination);
    ASSERT_TRUE(directory.openExisting());
    Allowance allowance{100, 100};
    PartFile part(directory, allowance);
    failNext(SystemCall::kFlock, ENOLCK);
    beforeNext(SystemCall::kFlock,
               [] { beforeNext(SystemCall::kFlock, [] { ADD_FAILURE() << "it is made anew"; }); });
    EXPECT_TRUE(part.append("bytes"));
    EXPECT_TRUE(part.install("a.dat"));
    EXPECT_EQ(fetched(), (Files{{"a.dat", "bytes"}}));
}

TEST_F(FailingDisk, atALockedFileMakesItAnew) {
    Destination directory(destination);
    ASSERT_TRUE(directory.openExisting());
    Allowance allowance{100, 100};
    PartFile part(directory, allowance);
    failNext(SystemCall::kFstat, EIO);
    int names = 0;
    beforeNext(SystemCall::kGetrandom, [&names] {
        ++names;
        beforeNext(SystemCall::kGetrandom, [&names] { ++names; });
    });
    EXPECT_TRUE(part.append("bytes"));
    EXPECT_EQ(names, 2);
    EXPECT_EQ(fetched().size(), 1U);
    EXPECT_TRUE(part.install("a.dat"));
    EXPECT_EQ(fetched(), (Files{{"a.dat", "bytes"}}));
}

TEST_F(FailingDisk, atASourceIsSaidOfTheFile) {
    failNext(SystemCall::kRead, EIO);
    EXPECT_EQ(lines({"a.dat"}), "a.dat: failed, cannot read it: Input/output error\n");
    EXPECT_EQ(fetched(), Files());
}

TEST_F(FailingDisk, atAnOpenFileLeavesItUnread) {
    const Descriptor folder(open(source.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    const std::size_t before = openDescriptors();
    failNext(SystemCall::kFstat, EIO);
    const RegularFile file = openRegularFile(folder.get(), "a.dat");
    EXPECT_EQ(file.problem, "cannot read it: Input/output error");
    EXPECT_FALSE(file.file.isOpen());
    EXPECT_EQ(openDescriptors(), before);
}

TEST_F(FailingDisk, opensNothingThatTookTheNameOfAFileMeanwhile) {
    const Descriptor folder(open(source.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    const std::string name = source + "/a.dat";
    beforeNext(SystemCall::kOpenat, [&name] {
        fs::remove(name);
        EXPECT_EQ(mkfifo(name.c_str(), 0644), 0);
    });
    const RegularFile file = openRegularFile(folder.get(), "a.dat");
    EXPECT_EQ(file.problem, "it is no regular file");
    EXPECT_FALSE(file.file.isOpen());
}

TEST_F(FailingDisk, withoutTypesOfEntriesIsSearchedAsAnyOther) {
    const EntriesWithoutType world;
    fs::create_symlink("sub", source + "/link");
    EXPECT_EQ(lines({"a.dat", "b.dat", "link"}),
              "a.dat: fetched\nb.dat: fetched\nlink: failed, it is a link\n");
}

TEST_F(FailingDisk, losesAnEntryThatGoesAwayBeforeItsTypeIsKnown) {
    const EntriesWithoutType world;
    fs::remove(source + "/a.dat");
    fs::remove_all(destination);  // nothing is looked for there
    beforeNext(SystemCall::kFstatat, [this] { fs::remove_all(source + "/sub"); });
    EXPECT_EQ(lines({"b.dat"}), "b.dat: missing, it is in no folder below " + source + "\n");
}

TEST_F(FailingDisk, inTheMiddleOfAFolderIsSaidOfMissingFiles) {
    fs::remove_all(destination);  // it would be read first
    failNext(SystemCall::kReaddir, EIO);
    EXPECT_EQ(lines({"a.dat"}), "a.dat: missing, it is in no folder below " + source +
                                    ", but 1 could not be read (" + source +
                                    "/: Input/output error)\n");
}

TEST_F(FailingDisk, isNotSearchedOnceTheCallIsCancelled) {
    std::atomic<bool> cancel{false};
    Request cancelled = request({"b.dat"});
    cancelled.cancel = &cancel;
    fs::remove(source + "/a.dat");
    fs::remove_all(destination);
    const EntriesWithoutType world;
    beforeNext(SystemCall::kFstatat, [&cancel] {
        cancel = true;
        beforeNext(SystemCall::kReaddir, [] { ADD_FAILURE() << "the folder is read on"; });
        beforeNext(SystemCall::kOpenat, [] { ADD_FAILURE() << "another folder is opened"; });
    });
    EXPECT_EQ(linesOf(thermika::fetch::fetch(cancelled)), "b.dat: not tried, cancelled\n");
    EXPECT_TRUE(cancel);
}

TEST_F(FailingDisk, getsNoMoreOfAFileOnceTheCallIsCancelled) {
    std::atomic<bool> cancel{false};
    Request cancelled = request({"a.dat"});
    cancelled.cancel = &cancel;
    beforeNext(SystemCall::kRead, [&cancel] { cancel = true; });
    const auto report = thermika::fetch::fetch(cancelled);
    EXPECT_EQ(linesOf(report), "a.dat: not tried, cancelled\n");
    EXPECT_EQ(report.files.at(0).source, "");
    EXPECT_EQ(fetched(), Files());
}

// The file was there, and the report said that it had not been tried.
TEST_F(FailingDisk, holdsTheFileThatWasInstalledWhileTheCallWasCancelled) {
    writeFile(source + "/c.dat", "bytes of c");
    std::atomic<bool> cancel{false};
    Request cancelled = request({"a.dat", "c.dat"});
    cancelled.cancel = &cancel;
    beforeNext(SystemCall::kFsync, [&cancel] { cancel = true; });
    const auto report = thermika::fetch::fetch(cancelled);
    EXPECT_EQ(linesOf(report), "a.dat: fetched\nc.dat: not tried, cancelled\n");
    EXPECT_EQ(report.files.at(1).tries, 0U);
    EXPECT_EQ(fetched(), (Files{{"a.dat", "bytes of a"}}));
}

}  // namespace
