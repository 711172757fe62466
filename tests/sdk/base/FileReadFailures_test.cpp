// Reading files while opening, examining and reading them is interrupted, fails or ends early.
// Links other system calls in, so it is a program of its own.
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <cstring>
#include <limits>
#include <string>

#include <gtest/gtest.h>

#include "sdk/base/FileRead.h"
#include "support/TestFiles.h"

namespace {

/// What becomes of the calls from now on.
struct Faults {
    int interruptedOpens = 0;
    int interruptedReads = 0;
    bool isStatFailing = false;
    std::size_t readable = std::size_t(-1);  ///< bytes until reading answers `end`
    ssize_t end = 0;
    bool isOpeningBlocked = false;
};

Faults g_faults;
int g_flags = 0;  // of the last open

int failure(int reason) {
    errno = reason;
    return -1;
}

}  // namespace

// The linker's names for the functions that everybody calls here and for the C library's.
extern "C" int realOpenat(int directory, const char* path, int flags,
                          mode_t mode) __asm__("__real_" THERMIKA_OPENAT);
extern "C" int realFstat(int descriptor, struct stat* status) __asm__("__real_" THERMIKA_FSTAT);
extern "C" ssize_t realRead(int descriptor, void* buffer, std::size_t bytes) __asm__("__real_read");
extern "C" int wrapOpenat(int directory, const char* path, int flags,
                          mode_t mode) __asm__("__wrap_" THERMIKA_OPENAT);
extern "C" int wrapFstat(int descriptor, struct stat* status) __asm__("__wrap_" THERMIKA_FSTAT);
extern "C" ssize_t wrapRead(int descriptor, void* buffer, std::size_t bytes) __asm__("__wrap_read");

extern "C" int wrapOpenat(int directory, const char* path, int flags, mode_t mode) {
    g_flags = flags;
    if (g_faults.interruptedOpens-- > 0) return failure(EINTR);
    // As for a lease; nobody may be made to wait by what only looks like one.
    if (g_faults.isOpeningBlocked) {
        EXPECT_NE(flags & O_NONBLOCK, 0);
        return failure(EWOULDBLOCK);
    }
    return realOpenat(directory, path, flags, mode);
}

extern "C" int wrapFstat(int descriptor, struct stat* status) {
    return g_faults.isStatFailing ? failure(EIO) : realFstat(descriptor, status);
}

extern "C" ssize_t wrapRead(int descriptor, void* buffer, std::size_t bytes) {
    if (g_faults.interruptedReads-- > 0) return failure(EINTR);
    if (g_faults.readable == 0) return g_faults.end < 0 ? failure(EIO) : 0;
    const ssize_t got = realRead(descriptor, buffer, std::min(bytes, g_faults.readable));
    if (got > 0) g_faults.readable -= static_cast<std::size_t>(got);
    return got;
}

namespace {

constexpr std::size_t kNoLimit = std::numeric_limits<std::size_t>::max();

class FileReadFailures : public testing::Test {
protected:
    FileReadFailures() { thermika_test::writeFile(m_path, "first\nsecond"); }
    ~FileReadFailures() override { EXPECT_EQ(thermika_test::openDescriptors(), m_descriptors); }

    /// The file's bytes under these faults, "none" without them.
    std::string bytes(const Faults& faults) {
        g_faults = faults;
        const auto read = dax::readRegularFile(m_path.c_str(), kNoLimit);
        g_faults = {};
        return read ? std::string(read->bytes.get(), read->size) : "none";
    }

    /// The file's first line under these faults, the reason without it.
    std::string firstLine(const Faults& faults) {
        std::string line = "from before";
        g_faults = faults;
        const bool isRead = dax::readFirstLine(AT_FDCWD, m_path.c_str(), line);
        const int reason = errno;
        g_faults = {};
        if (isRead) return line;
        EXPECT_EQ(line, "");
        return std::strerror(reason);
    }

private:
    thermika_test::TempDir m_dir;
    std::string m_path = m_dir / "file";
    std::size_t m_descriptors = thermika_test::openDescriptors();
};

Faults readingThenFailing(std::size_t readable) { return {0, 0, false, readable, -1, false}; }

Faults readingThenEnding(std::size_t readable) { return {0, 0, false, readable, 0, false}; }

TEST_F(FileReadFailures, areNotSeenWhereACallWasOnlyInterrupted) {
    EXPECT_EQ(bytes({2, 0}), "first\nsecond");
    EXPECT_EQ(bytes({0, 2}), "first\nsecond");
    EXPECT_EQ(firstLine({2, 0}), "first");
    EXPECT_EQ(firstLine({0, 2}), "first");
}

TEST_F(FileReadFailures, endCallsThatAreInterruptedWithoutEnd) {
    EXPECT_EQ(bytes({1000, 0}), "first\nsecond");
    EXPECT_EQ(bytes({1001, 0}), "none");
    EXPECT_EQ(bytes({0, 1000}), "first\nsecond");
    EXPECT_EQ(bytes({0, 1001}), "none");
}

TEST_F(FileReadFailures, areNoReasonToWaitForWhatIsNoRegularFile) {
    Faults faults;
    faults.isOpeningBlocked = true;
    for (const char* const path : {"/dev/null", "/", "/missing"}) {
        g_faults = faults;
        EXPECT_FALSE(dax::isReadable(path)) << path;
        EXPECT_EQ(errno, EWOULDBLOCK) << path;
        g_faults = {};
    }
}

TEST_F(FileReadFailures, leaveNoDescriptorToChildren) {
    EXPECT_EQ(bytes({}), "first\nsecond");
    EXPECT_NE(g_flags & O_CLOEXEC, 0);
    EXPECT_EQ(firstLine({}), "first");
    EXPECT_NE(g_flags & O_CLOEXEC, 0);
}

TEST_F(FileReadFailures, giveNoBytesWhenTheFileCannotBeExamined) {
    EXPECT_EQ(bytes({0, 0, true}), "none");
}

TEST_F(FileReadFailures, giveNoBytesWhenReadingFailsBeforeTheEnd) {
    for (const std::size_t readable : {0U, 1U, 11U}) {
        EXPECT_EQ(bytes(readingThenFailing(readable)), "none");
    }
    EXPECT_EQ(bytes(readingThenFailing(12)), "first\nsecond");
}

TEST_F(FileReadFailures, giveWhatIsLeftOfAFileThatShrinksMeanwhile) {
    EXPECT_EQ(bytes(readingThenEnding(0)), "");
    EXPECT_EQ(bytes(readingThenEnding(7)), "first\ns");
}

TEST_F(FileReadFailures, giveNoFirstLineWhenReadingFailsWithinIt) {
    EXPECT_EQ(firstLine(readingThenFailing(0)), "Input/output error");
    EXPECT_EQ(firstLine(readingThenFailing(5)), "Input/output error");
    EXPECT_EQ(firstLine(readingThenFailing(6)), "first");
}

TEST_F(FileReadFailures, giveTheBeginningOfALineThatEndsWithItsFile) {
    EXPECT_EQ(firstLine(readingThenEnding(3)), "fir");
}

}  // namespace
