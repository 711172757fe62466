// Reading whole files and first lines, from files as they should not be. System calls that fail
// stand in FileReadFailures_test.cpp.
#include "sdk/base/FileRead.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <filesystem>
#include <limits>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include <gtest/gtest.h>

#include "support/TestFiles.h"

namespace {

using dax::readFirstLine;
using dax::readRegularFile;
using thermika_test::openDescriptors;
using thermika_test::TempDir;
using thermika_test::writeFile;

constexpr std::size_t kNoLimit = std::numeric_limits<std::size_t>::max();

/// Ends the process when a read that must not block does.
struct Deadline {
    Deadline() { alarm(30); }
    ~Deadline() { alarm(0); }
};

/// Both ends of a pipe with a name, so that opening it never blocks.
class PipeEnds {
public:
    explicit PipeEnds(const std::string& path) : m_fd(open(path.c_str(), O_RDWR | O_CLOEXEC)) {}
    ~PipeEnds() { close(m_fd); }
    bool put(std::string_view text) const {
        return write(m_fd, text.data(), text.size()) == static_cast<ssize_t>(text.size());
    }

private:
    int m_fd;
};

std::string everyByte(std::size_t size) {
    std::string bytes;
    for (std::size_t i = 0; i < size; ++i) bytes += static_cast<char>(i * 7 + i / 256);
    return bytes;
}

std::string firstLine(const std::string& path) {
    std::string line = "from before";
    EXPECT_TRUE(readFirstLine(AT_FDCWD, path.c_str(), line)) << path;
    return line;
}

std::optional<dax::FileBytes> readWhole(const std::string& path, std::size_t maxBytes) {
    return readRegularFile(path.c_str(), maxBytes);
}

void expectNothing(const std::string& path, std::size_t maxBytes) {
    const Deadline deadline;
    EXPECT_FALSE(readWhole(path, maxBytes).has_value()) << path;
}

TEST(FileRead, givesEveryByteOfAFile) {
    const TempDir dir;
    for (const std::size_t size : {1U, 2U, 255U, 4096U, 4097U, 300'000U}) {
        const std::string bytes = everyByte(size);
        writeFile(dir / "file", bytes);
        const auto read = readWhole(dir / "file", kNoLimit);
        ASSERT_TRUE(read.has_value());
        EXPECT_TRUE(std::string_view(read->bytes.get(), read->size) == bytes) << size;
        read->bytes[read->size] = '\0';  // one byte more is ours
    }
}

TEST(FileRead, givesNoBytesOfAnEmptyFile) {
    const TempDir dir;
    writeFile(dir / "empty", "");
    for (const std::size_t maxBytes : {std::size_t(0), kNoLimit}) {
        const auto read = readWhole(dir / "empty", maxBytes);
        ASSERT_TRUE(read.has_value());
        EXPECT_EQ(read->size, 0U);
        EXPECT_NE(read->bytes, nullptr);
    }
}

TEST(FileRead, takesAFileOfExactlyTheLimitAndNoneLonger) {
    const TempDir dir;
    writeFile(dir / "file", everyByte(1000));
    const auto read = readWhole(dir / "file", 1000);
    ASSERT_TRUE(read.has_value());
    EXPECT_EQ(read->size, 1000U);
    EXPECT_TRUE(readWhole(dir / "file", 1001).has_value());
    expectNothing(dir / "file", 999);
    expectNothing(dir / "file", 0);
}

// A terabyte without contents: taking memory for it would throw.
TEST(FileRead, refusesAFileThatIsTooLongBeforeItTakesMemory) {
    const TempDir dir;
    writeFile(dir / "sparse", "");
    std::filesystem::resize_file(dir / "sparse", std::uintmax_t(3) << 30);
    expectNothing(dir / "sparse", (std::size_t(3) << 30) - 1);
}

TEST(FileRead, givesNothingOfAFileThatCannotBeOpened) {
    const TempDir dir;
    writeFile(dir / "file", "text");
    std::filesystem::create_symlink("loop", dir / "loop");
    expectNothing(dir / "missing", kNoLimit);
    expectNothing(dir / "file/inside", kNoLimit);
    expectNothing(dir / "loop", kNoLimit);
    expectNothing("", kNoLimit);
}

TEST(FileRead, refusesWhatIsNoRegularFile) {
    const TempDir dir;
    ASSERT_EQ(mkfifo((dir / "pipe").c_str(), 0600), 0);
    expectNothing(dir.path(), kNoLimit);
    expectNothing(dir / "pipe", kNoLimit);
    expectNothing("/dev/null", kNoLimit);
    expectNothing("/dev/zero", kNoLimit);
    const PipeEnds ends(dir / "pipe");
    ASSERT_TRUE(ends.put("text"));
    expectNothing(dir / "pipe", kNoLimit);
}

TEST(FileRead, followsALink) {
    const TempDir dir;
    writeFile(dir / "file", "text\nmore");
    std::filesystem::create_symlink("file", dir / "link");
    const auto read = readWhole(dir / "link", kNoLimit);
    ASSERT_TRUE(read.has_value());
    EXPECT_EQ(std::string(read->bytes.get(), read->size), "text\nmore");
    EXPECT_EQ(firstLine(dir / "link"), "text");
}

// The kernel's own files state a length of 0 whatever they hold.
TEST(FileRead, readsNoMoreBytesThanAFileStates) {
    const auto none = readWhole("/proc/self/status", kNoLimit);
    ASSERT_TRUE(none.has_value());
    EXPECT_EQ(none->size, 0U);
}

TEST(FileRead, givesTheFirstLineWithoutItsLineFeed) {
    const TempDir dir;
    const struct {
        std::string bytes;
        std::string line;
    } rows[] = {
        {"line\n", "line"},
        {"line\nanother\n", "line"},
        {"no line feed", "no line feed"},
        {"", ""},
        {"\n", ""},
        {"\nsecond\n", ""},
        {"with a return\r\nsecond", "with a return\r"},
        {"return\ralone", "return\ralone"},
        {std::string("ze\0ro\nx", 7), std::string("ze\0ro", 5)},
        {std::string("\0\0\n", 3), std::string("\0\0", 2)},
        {" \t\x01\x7F\x80\xFF \n", " \t\x01\x7F\x80\xFF "},
    };
    for (const auto& row : rows) {
        writeFile(dir / "file", row.bytes);
        EXPECT_EQ(firstLine(dir / "file"), row.line);
    }
}

TEST(FileRead, givesFirstLinesOfAnyLength) {
    const TempDir dir;
    for (const std::size_t length :
         {1U, 127U, 254U, 255U, 256U, 257U, 511U, 512U, 513U, 4095U, 4096U, 4097U}) {
        const std::string line(length, static_cast<char>('a' + length % 26));
        const std::string whole = dir / "whole";
        const std::string unended = dir / "unended";
        writeFile(whole, line + "\nsecond\n");
        writeFile(unended, line.substr(1));
        std::string first;
        std::string second;
        // One right after the other: the bytes of the former read are no part of the latter.
        const bool isRead = readFirstLine(AT_FDCWD, whole.c_str(), first) &&
                            readFirstLine(AT_FDCWD, unended.c_str(), second);
        EXPECT_TRUE(isRead);
        EXPECT_EQ(first, line);
        EXPECT_EQ(second, line.substr(1));
    }
}

TEST(FileRead, cutsAFirstLineOfMoreThan64KiB) {
    const TempDir dir;
    std::string line = everyByte(65537);
    for (char& byte : line) byte = byte == '\n' ? ' ' : byte;
    for (const std::size_t length : {65535U, 65536U, 65537U}) {
        writeFile(dir / "file", line.substr(0, length) + "\nsecond");
        EXPECT_TRUE(firstLine(dir / "file") == line.substr(0, std::min(length, dax::kMaxLineBytes)))
            << length;
    }
    const Deadline deadline;
    EXPECT_EQ(firstLine("/dev/zero"), std::string(65536, '\0')) << "which never ends";
}

TEST(FileRead, givesTheFirstLineOfTheKernelsFiles) {
    const std::string line = firstLine("/proc/self/status");
    EXPECT_EQ(line.substr(0, 6), "Name:\t");
    EXPECT_EQ(line.find('\n'), std::string::npos);
}

TEST(FileRead, givesNoLineOfAFileThatCannotBeOpened) {
    const TempDir dir;
    writeFile(dir / "file", "text");
    for (const std::string& path : {dir / "missing", dir / "file/inside", std::string()}) {
        std::string line = "from before";
        EXPECT_FALSE(readFirstLine(AT_FDCWD, path.c_str(), line)) << path;
        EXPECT_EQ(line, "") << path;
    }
}

TEST(FileRead, givesNoFirstLineWhereReadingFails) {
    const Deadline deadline;
    const TempDir dir;
    ASSERT_EQ(mkfifo((dir / "pipe").c_str(), 0600), 0);
    const PipeEnds ends(dir / "pipe");
    ASSERT_TRUE(ends.put("half a line"));
    // Nothing is mapped where the process's memory begins.
    const std::pair<std::string, int> files[] = {
        {dir.path(), EISDIR}, {"/proc/self/mem", EIO}, {dir / "pipe", EAGAIN}};
    for (const auto& [path, reason] : files) {
        std::string line = "from before";
        EXPECT_FALSE(readFirstLine(AT_FDCWD, path.c_str(), line)) << path;
        EXPECT_EQ(errno, reason) << path;
        EXPECT_EQ(line, "") << path;
    }
}

TEST(FileRead, looksARelativePathUpInTheDirectoryGiven) {
    const TempDir dir;
    std::filesystem::create_directory(dir / "sub");
    writeFile(dir / "sub/file", "inside\n");
    const int directory = open(dir.path().c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    std::string line;
    EXPECT_TRUE(readFirstLine(directory, "sub/file", line));
    EXPECT_EQ(line, "inside");
    EXPECT_FALSE(readFirstLine(directory, "file", line));
    EXPECT_EQ(errno, ENOENT);
    close(directory);
}

TEST(FileRead, doesNotWaitForAPipeNobodyWritesTo) {
    const Deadline deadline;
    const TempDir dir;
    ASSERT_EQ(mkfifo((dir / "pipe").c_str(), 0600), 0);
    EXPECT_EQ(firstLine(dir / "pipe"), "");
    EXPECT_EQ(firstLine("/dev/null"), "");
}

TEST(FileRead, leavesNoFileOpen) {
    const TempDir dir;
    writeFile(dir / "file", everyByte(1000));
    const std::size_t before = openDescriptors();
    for (const std::string& path : {dir / "file", dir / "missing", dir.path()}) {
        std::string line;
        readFirstLine(AT_FDCWD, path.c_str(), line);
        readWhole(path, kNoLimit);
        readWhole(path, 1);
    }
    EXPECT_EQ(openDescriptors(), before);
}

TEST(FileRead, takesDescriptorZeroAndAnEarlierInterruptionForNoFailure) {
    const TempDir dir;
    writeFile(dir / "file", "text");
    const int callers = dup(STDIN_FILENO);
    close(STDIN_FILENO);
    errno = EINTR;
    std::string line;
    EXPECT_TRUE(readFirstLine(AT_FDCWD, (dir / "file").c_str(), line));
    EXPECT_EQ(line, "text");
    EXPECT_EQ(fcntl(STDIN_FILENO, F_GETFD), -1);
    dup2(callers, STDIN_FILENO);
    close(callers);
}

}  // namespace
