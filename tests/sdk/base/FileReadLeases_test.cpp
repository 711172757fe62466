// Reading files that another process, as a file server does, has a lease on.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <cstring>
#include <ctime>
#include <string>

#include "imgproc/Cali.h"
#include "sdk/base/FileRead.h"
#include "support/TestFiles.h"

namespace {

/// Another process that has a lease on a file and gives it up some time after it was asked to.
class LeaseHolder {
public:
    explicit LeaseHolder(const std::string& path) {
        int ready[2];
        if (pipe(ready) != 0) return;
        m_child = fork();
        if (m_child == 0) hold(path.c_str(), ready[1]);
        close(ready[1]);
        char answer = '\0';
        m_holds = read(ready[0], &answer, 1) == 1 && answer == 'y';
        close(ready[0]);
    }
    LeaseHolder(const LeaseHolder&) = delete;
    LeaseHolder& operator=(const LeaseHolder&) = delete;

    bool holds() const { return m_holds; }

    /// Whether it was asked for the file and has given the lease up.
    bool wasAsked() const {
        int status = 0;
        return waitpid(m_child, &status, 0) == m_child && WIFEXITED(status) &&
               WEXITSTATUS(status) == 0;
    }

private:
    [[noreturn]] static void hold(const char* path, int ready) {
        alarm(30);
        sigset_t asked;
        sigemptyset(&asked);
        sigaddset(&asked, SIGIO);
        sigprocmask(SIG_BLOCK, &asked, nullptr);
        const int file = open(path, O_RDWR | O_CLOEXEC);
        const bool holds = fcntl(file, F_SETLEASE, F_WRLCK) == 0;
        if (write(ready, holds ? "y" : "n", 1) != 1 || !holds) _exit(1);
        int signal = 0;
        sigwait(&asked, &signal);
        // So late that who does not wait has long given up.
        const timespec delay{0, 50'000'000};
        nanosleep(&delay, nullptr);
        _exit(fcntl(file, F_SETLEASE, F_UNLCK) == 0 ? 0 : 2);
    }

    pid_t m_child = -1;
    bool m_holds = false;
};

TEST(FileReadLeases, areWaitedForByEveryReader) {
    const thermika_test::TempDir dir;
    const std::string path = dir / "file";
    thermika_test::writeFile(path, "first\nsecond");
    {
        const LeaseHolder server(path);
        ASSERT_TRUE(server.holds());
        const auto read = dax::readRegularFile(path.c_str(), 100);
        ASSERT_TRUE(read);
        EXPECT_EQ(read->size, 12U);
        EXPECT_TRUE(server.wasAsked());
    }
    {
        const LeaseHolder server(path);
        ASSERT_TRUE(server.holds());
        EXPECT_TRUE(dax::isReadable(path.c_str()));
        EXPECT_TRUE(server.wasAsked());
    }
    const LeaseHolder server(path);
    ASSERT_TRUE(server.holds());
    std::string line;
    EXPECT_TRUE(dax::readFirstLine(AT_FDCWD, path.c_str(), line));
    EXPECT_EQ(line, "first");
    EXPECT_TRUE(server.wasAsked());
}

TEST(FileReadLeases, hideNoDescription) {
    const thermika_test::TempDir dir;
    thermika_test::writeFile(dir / "Cali-12345678.xml", "<CaliData>\n</CaliData>\n");
    const LeaseHolder server(dir / "Cali-12345678.xml");
    ASSERT_TRUE(server.holds());
    ConfigCali cali;
    EXPECT_EQ(cali.load(dir.path().c_str(), 12345678), 0);
    EXPECT_TRUE(server.wasAsked());
}

}  // namespace
