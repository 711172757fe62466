// Whether files may be created in a directory: every answer of the system, and what is left.
#include "sdk/camera/WriteAccess.h"

#include <sys/inotify.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <iterator>
#include <map>
#include <string>

#include <gtest/gtest.h>

#include "support/DownloadSandbox.h"
#include "support/Sandbox.h"
#include "support/TestFiles.h"

namespace {

namespace fs = std::filesystem;
using dax::writeAccessError;
using thermika_test::contents;
using thermika_test::inSandbox;
using thermika_test::TempDir;
using thermika_test::writeFile;

using Files = std::map<std::string, std::string>;

TEST(WriteAccess, createsAnEmptyFileAndRemovesIt) {
    const TempDir dir;
    writeFile(dir / "other", "text");
    const int watch = inotify_init1(IN_CLOEXEC | IN_NONBLOCK);
    ASSERT_GE(inotify_add_watch(watch, dir.path().c_str(), IN_ALL_EVENTS), 0);
    EXPECT_EQ(writeAccessError(dir.path()), 0);
    alignas(inotify_event) char events[4096];
    const ssize_t got = read(watch, events, sizeof events);
    close(watch);
    std::string story;
    for (const char* at = events; at < events + got;) {
        const auto* const event = reinterpret_cast<const inotify_event*>(at);
        EXPECT_STREQ(event->name, ".thermika_access");
        if ((event->mask & IN_CREATE) != 0) story += "created ";
        if ((event->mask & IN_MODIFY) != 0) story += "written ";
        if ((event->mask & IN_CLOSE_WRITE) != 0) story += "closed ";
        if ((event->mask & IN_DELETE) != 0) story += "removed ";
        at += sizeof(inotify_event) + event->len;
    }
    EXPECT_EQ(story, "created closed removed ");
    EXPECT_EQ(contents(dir.path()), (Files{{"other", "text"}}));
}

TEST(WriteAccess, keepsNoDescriptorOpen) {
    const auto countDescriptors = [] {
        return std::distance(fs::directory_iterator("/proc/self/fd"), fs::directory_iterator());
    };
    const TempDir dir;
    const auto before = countDescriptors();
    EXPECT_EQ(writeAccessError(dir.path()), 0);
    EXPECT_EQ(countDescriptors(), before);
}

TEST(WriteAccess, takesTheDirectoryAsItStands) {
    const TempDir dir;
    fs::create_directory(dir / "a b");
    EXPECT_EQ(writeAccessError(dir / "a b"), 0);
    EXPECT_EQ(writeAccessError(dir / "a b//"), 0);
    EXPECT_EQ(contents(dir.path()), (Files{{"a b/", ""}}));
}

TEST(WriteAccess, removesAFileThatWasThereBefore) {
    const TempDir dir;
    writeFile(dir / ".thermika_access", "text");
    EXPECT_EQ(writeAccessError(dir.path()), 0);
    EXPECT_EQ(contents(dir.path()), Files());
}

TEST(WriteAccess, doesNotWaitForTheReaderOfAPipe) {
    // The sandbox ends who waits.
    inSandbox([] {
        const std::string pipe = "/usr/share/.thermika_access";
        ASSERT_EQ(mkfifo(pipe.c_str(), 0666), 0);
        EXPECT_EQ(writeAccessError("/usr/share"), ENXIO);
        EXPECT_TRUE(fs::is_fifo(pipe));
    });
}

TEST(WriteAccess, emptiesWhatALinkLeadsToAndRemovesTheLink) {
    const TempDir dir;
    fs::create_directory(dir / "tested");
    writeFile(dir / "target", "text");
    fs::create_symlink(dir / "target", dir / "tested/.thermika_access");
    EXPECT_EQ(writeAccessError(dir / "tested"), 0);
    EXPECT_EQ(contents(dir.path()), (Files{{"target", ""}, {"tested/", ""}}));
}

TEST(WriteAccess, answersTheSystemsErrorNumber) {
    const TempDir dir;
    EXPECT_EQ(writeAccessError(dir / "absent"), ENOENT);
    writeFile(dir / "file", "");
    EXPECT_EQ(writeAccessError(dir / "file"), ENOTDIR);
    EXPECT_EQ(writeAccessError(dir / std::string(5000, 'd')), ENAMETOOLONG);
    EXPECT_EQ(contents(dir.path()), (Files{{"file", ""}}));
    fs::create_directory(dir / ".thermika_access");
    EXPECT_EQ(writeAccessError(dir.path()), EISDIR);
}

TEST(WriteAccess, tellsAForbiddenDirectoryFromAReadOnlyOneAndAFullOne) {
    inSandbox([] {
        fs::create_directory("/usr/share/dir");
        ASSERT_EQ(chmod("/usr/share/dir", 0555), 0);
        EXPECT_EQ(writeAccessError("/usr/share/dir"), EACCES);
        ASSERT_EQ(chmod("/usr/share/dir", 0755), 0);
        EXPECT_EQ(writeAccessError("/usr/share/dir"), 0);
        thermika_test::makeReadOnly("/usr/share/dir");
        EXPECT_EQ(writeAccessError("/usr/share/dir"), EROFS);
        fs::create_directory("/usr/share/full");
        thermika_test::mountOver("/usr/share/full", "nr_inodes=1");
        EXPECT_EQ(writeAccessError("/usr/share/full"), ENOSPC);
    });
}

TEST(WriteAccess, doesNotMindAFileThatCannotBeRemoved) {
    inSandbox([] {
        fs::create_directory("/usr/share/dir");
        writeFile("/usr/share/dir/.thermika_access", "text");
        ASSERT_EQ(chmod("/usr/share/dir", 0555), 0);
        EXPECT_EQ(writeAccessError("/usr/share/dir"), 0);
        EXPECT_EQ(contents("/usr/share/dir"), (Files{{".thermika_access", ""}}));
    });
}

TEST(WriteAccess, createsWhatALinkLeadsToWithTheModeThatTheUmaskLeaves) {
    const TempDir dir;
    fs::create_directory(dir / "tested");
    fs::create_symlink(dir / "target", dir / "tested/.thermika_access");
    const mode_t callers = umask(0002);
    EXPECT_EQ(writeAccessError(dir / "tested"), 0);
    umask(callers);
    struct stat status {};
    ASSERT_EQ(stat((dir / "target").c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 07777, 0664U);
}

}  // namespace
