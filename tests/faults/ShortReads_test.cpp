// Every read gives few bytes at a time, every other one is interrupted first: documents and device
// attributes must come out whole. Replaces read(), so it is a program of its own.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <string>

#include "imgproc/Cali.h"
#include "sdk/IRCalibrationManager.h"
#include "sdk/base/FileRead.h"
#include "sdk/xml/DocumentText.h"
#include "support/BuildPaths.h"
#include "support/DownloadSandbox.h"
#include "support/Recorder.h"
#include "support/Sandbox.h"
#include "support/TestFiles.h"

namespace {

bool g_isShort = false;
std::size_t g_mostBytes = 1;  // of a short read
std::size_t g_calls = 0;
int g_error = 0;  // when not 0, of every read

}  // namespace

// By the linker's name: FORTIFY may define the C name in a header.
extern "C" ssize_t shortRead(int descriptor, void* buffer, std::size_t bytes) __asm__("read");

extern "C" ssize_t shortRead(int descriptor, void* buffer, std::size_t bytes) {
    if (g_error != 0) {
        ++g_calls;
        errno = g_error;
        return -1;
    }
    if (g_isShort && ++g_calls % 2 == 0) {
        errno = EINTR;
        return -1;
    }
    return syscall(SYS_read, descriptor, buffer, g_isShort ? std::min(bytes, g_mostBytes) : bytes);
}

namespace {

class ShortReads : public testing::Test {
protected:
    ~ShortReads() override {
        g_isShort = false;
        g_error = 0;
        g_mostBytes = 1;
    }

    thermika_test::TempDir m_dir;
};

TEST_F(ShortReads, giveAWholeDescription) {
    thermika_test::writeFile(
        m_dir / "Cali-14080045.xml",
        thermika_test::readFile(std::string(THERMIKA_EXAMPLES) + "/Cali-14080045.xml"));
    g_isShort = true;
    ConfigCali cali;
    ASSERT_EQ(cali.load(m_dir.path().c_str(), 14080045), 0);
    EXPECT_GT(g_calls, 10000U);
    EXPECT_EQ(cali.getOpticsCount(), 3);
    EXPECT_EQ(cali.getTempRangeCount(18, const_cast<char*>("T18 HT")), 4);
}

TEST_F(ShortReads, giveTheSameTextWhereverTheyEnd) {
    using namespace std::string_literals;
    const std::string lines =
        "<a>1</a>\n<!-- one --><!\n-- <!-- two -->\n--\n>\r\n<b>\0</b>\n--\n\n<!-- </R -->- x"s;
    for (const std::string& end : {"\n</R>\n"s, "\n-->\n</R>"s, "\n<!--\n</R>\n<a>"s, ""s}) {
        const std::string file = m_dir / "file";
        thermika_test::writeFile(file, "\n <R x>\n" + lines + lines + end);
        g_isShort = false;
        const auto whole = dax::readDocumentText(file.c_str(), "R");
        ASSERT_TRUE(whole);
        for (g_mostBytes = 1; g_mostBytes < 60; ++g_mostBytes) {
            g_isShort = true;
            const auto pieced = dax::readDocumentText(file.c_str(), "R");
            ASSERT_TRUE(pieced);
            EXPECT_STREQ(pieced->text.get(), whole->text.get()) << g_mostBytes << end;
            EXPECT_EQ(pieced->joinedSize, whole->joinedSize) << g_mostBytes << end;
            EXPECT_EQ(pieced->commentsPairUp, whole->commentsPairUp) << g_mostBytes << end;
        }
    }
}

// The second reading might have seen another document than the one that was judged.
TEST_F(ShortReads, areDoneOnceWhereCommentsDoNotPairUp) {
    const std::string file = m_dir / "file";
    thermika_test::writeFile(file, "<R>\none -->\n</R>\n");
    g_calls = 0;
    g_mostBytes = 1000;
    g_isShort = true;
    const auto document = dax::readDocumentText(file.c_str(), "R");
    ASSERT_TRUE(document);
    EXPECT_STREQ(document->text.get(), "one -->");
    EXPECT_EQ(g_calls, 1U);
}

TEST_F(ShortReads, giveAWholeFirstLine) {
    thermika_test::writeFile(m_dir / "serial", "14080045\nnot this");
    g_isShort = true;
    std::string line;
    ASSERT_TRUE(dax::readFirstLine(AT_FDCWD, (m_dir / "serial").c_str(), line));
    EXPECT_EQ(line, "14080045");
    EXPECT_GT(g_calls, 10U);
}

/// What the check for a default route answers when each read of the count ends with `error`.
thermika_test::Outcome routeCheckWith(int error) {
    const thermika_test::DownloadSandbox world;
    thermika_test::recordProgram("grep", "echo 1");
    return thermika_test::outcomeOf([error] {
        g_calls = 0;
        g_error = error;
        const bool answer =
            dax::IRCalibrationManager::getInstance()->isOnlineCalibrationRepoAccessible();
        g_error = 0;
        return answer;
    });
}

TEST_F(ShortReads, thatFailLeaveNoRouteAndAreNotRepeated) {
    thermika_test::inSandbox([] {
        EXPECT_EQ(routeCheckWith(0), (thermika_test::Outcome{true, ""}));
        EXPECT_EQ(routeCheckWith(EIO), (thermika_test::Outcome{false, ""}));
        EXPECT_EQ(g_calls, 1U);
    });
}

TEST_F(ShortReads, thatAreInterruptedWithoutEndLeaveNoRoute) {
    thermika_test::inSandbox([] {
        EXPECT_EQ(routeCheckWith(EINTR), (thermika_test::Outcome{false, ""}));
        EXPECT_EQ(g_calls, 1000U);
    });
}

}  // namespace
