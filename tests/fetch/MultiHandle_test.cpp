// Which descriptors are closed on exec: libcurl's own, and no other that has a number where its own
// are expected. Links another curl_multi_init() in, so it belongs to a program of its own.
#include "fetch/MultiHandle.h"

#include <fcntl.h>
#include <sys/socket.h>
#include <unistd.h>

#include <functional>
#include <string>
#include <utility>

#include <gtest/gtest.h>

#include "support/TestFiles.h"

namespace {

std::function<void()> g_beforeInit;
std::function<void()> g_afterInit;

}  // namespace

extern "C" CURLM* realMultiInit() __asm__("__real_curl_multi_init");
extern "C" CURLM* wrapMultiInit() __asm__("__wrap_curl_multi_init");

extern "C" CURLM* wrapMultiInit() {
    if (g_beforeInit) g_beforeInit();
    CURLM* const multi = realMultiInit();
    if (g_afterInit) g_afterInit();
    return multi;
}

namespace {

using thermika::fetch::makeMultiHandle;
using thermika::fetch::MultiHandle;

/// Descriptors of a test, closed with it; open for programs that are started, as they should stay.
class MultiHandleAmongStrangers : public testing::Test {
protected:
    ~MultiHandleAmongStrangers() override {
        g_beforeInit = nullptr;
        g_afterInit = nullptr;
    }

    /// A handle, and the numbers that libcurl's own descriptors are expected to have.
    MultiHandle make() {
        m_reading = open("/", O_RDONLY | O_CLOEXEC);
        m_writing = open("/", O_RDONLY | O_CLOEXEC);
        closeBoth();
        return makeMultiHandle();
    }
    /// Gives both these numbers.
    void place(int forReading, int forWriting) const {
        EXPECT_EQ(dup2(forReading, m_reading), m_reading);
        EXPECT_EQ(dup2(forWriting, m_writing), m_writing);
    }
    void closeBoth() const {
        close(m_reading);
        close(m_writing);
    }
    void expectUnchanged() const {
        EXPECT_EQ(fcntl(m_reading, F_GETFD), 0);
        EXPECT_EQ(fcntl(m_writing, F_GETFD), 0);
    }
    /// Of a handle that is made where these have the numbers.
    void expectUnchangedBefore(int forReading, int forWriting) {
        g_beforeInit = [&] { place(forReading, forWriting); };
        const MultiHandle multi = make();
        EXPECT_NE(multi, nullptr);
        expectUnchanged();
        closeBoth();
    }

    /// Of a handle that is made before these take the numbers from its own.
    void expectUnchangedAfter(int forReading, int forWriting) {
        g_beforeInit = nullptr;
        g_afterInit = [&] { place(forReading, forWriting); };
        {
            const MultiHandle multi = make();
            expectUnchanged();
        }
        closeBoth();
    }

    int m_reading = -1;
    int m_writing = -1;
};

/// Two that are connected. The first was made first.
class Pair {
public:
    Pair() { EXPECT_EQ(socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, m_ends), 0); }
    ~Pair() {
        close(m_ends[0]);
        close(m_ends[1]);
    }
    Pair(const Pair&) = delete;
    Pair& operator=(const Pair&) = delete;

    int first() const { return m_ends[0]; }
    int second() const { return m_ends[1]; }
    void sendToFirst(const std::string& bytes) const { sendFrom(second(), bytes); }
    void sendToSecond(const std::string& bytes) const { sendFrom(first(), bytes); }

private:
    static void sendFrom(int end, const std::string& bytes) {
        EXPECT_EQ(send(end, bytes.data(), bytes.size(), 0), static_cast<ssize_t>(bytes.size()));
    }

    int m_ends[2] = {-1, -1};
};

TEST_F(MultiHandleAmongStrangers, closesItsOwnOnExec) {
    const MultiHandle multi = make();
    for (const int fd : {m_reading, m_writing})  // later versions leave one of them closed
        EXPECT_NE(fcntl(fd, F_GETFD), 0) << fd;
}

TEST_F(MultiHandleAmongStrangers, leavesFilesAsTheyAre) {
    const thermika_test::TempDir home;
    thermika_test::writeFile(home / "file", "");
    const int file = open((home / "file").c_str(), O_RDWR | O_CLOEXEC);
    expectUnchangedBefore(file, file);
    close(file);
}

TEST_F(MultiHandleAmongStrangers, leavesSocketsAsTheyAreThatHeldBytesBefore) {
    const Pair reading;
    const Pair writing;
    reading.sendToFirst("1");
    expectUnchangedBefore(reading.first(), reading.second());
    writing.sendToSecond("1");
    expectUnchangedBefore(writing.first(), writing.second());
    expectUnchangedAfter(writing.first(), writing.second());
}

TEST_F(MultiHandleAmongStrangers, leavesSocketsAsTheyAreThatAreNotWokenUp) {
    const Pair strangers;
    expectUnchangedBefore(strangers.first(), strangers.second());
}

TEST_F(MultiHandleAmongStrangers, leavesSocketsAsTheyAreThatAreNotItsPair) {
    const Pair strangers;
    // Woken up as its own would be, but made in another order.
    expectUnchangedAfter(strangers.second(), strangers.first());
}

TEST_F(MultiHandleAmongStrangers, isMadeAlsoWhenItsOwnHaveOtherNumbers) {
    const std::size_t before = thermika_test::openDescriptors();
    {
        g_beforeInit = [this] { place(STDIN_FILENO, STDIN_FILENO); };
        g_afterInit = [this] { closeBoth(); };
        const MultiHandle multi = make();
        EXPECT_NE(multi, nullptr);
        EXPECT_EQ(fcntl(m_reading, F_GETFD), -1);
    }
    EXPECT_EQ(thermika_test::openDescriptors(), before);
}

}  // namespace
