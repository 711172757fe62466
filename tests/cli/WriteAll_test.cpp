// Writing although signals come in between.
#include "cli/WriteAll.h"

#include <fcntl.h>
#include <sys/time.h>
#include <unistd.h>

#include <csignal>
#include <string>

#include <gtest/gtest.h>

namespace {

using thermika::cli::writeAll;

int g_ends[2];
int g_signals = 0;
std::string g_received(1U << 20U, '\0');
std::size_t g_count = 0;

/// The first ends a write with a part of its bytes, the second one with none: the pipe is full.
void receiveAtTheThird(int /*signal*/) {
    if (++g_signals < 3) return;
    const ssize_t got = read(g_ends[0], &g_received[g_count], g_received.size() - g_count);
    if (got > 0) g_count += static_cast<std::size_t>(got);
}

TEST(WriteAll, goesOnAfterInterruptions) {
    ASSERT_EQ(pipe2(g_ends, O_CLOEXEC), 0);
    struct sigaction action {};
    struct sigaction before {};
    action.sa_handler = receiveAtTheThird;
    ASSERT_EQ(sigaction(SIGALRM, &action, &before), 0);
    const itimerval often{{0, 20000}, {0, 20000}};
    setitimer(ITIMER_REAL, &often, nullptr);
    std::string sent;
    for (int i = 0; i < 20000; ++i) sent += std::to_string(i) + "\n";
    EXPECT_TRUE(writeAll(g_ends[1], sent));
    const itimerval never{};
    setitimer(ITIMER_REAL, &never, nullptr);
    sigaction(SIGALRM, &before, nullptr);
    close(g_ends[1]);
    for (ssize_t got = 1; got > 0; g_count += static_cast<std::size_t>(got))
        got = read(g_ends[0], &g_received[g_count], g_received.size() - g_count);
    close(g_ends[0]);
    EXPECT_GE(g_signals, 3);
    EXPECT_EQ(g_received.substr(0, g_count), sent);
}

TEST(WriteAll, saysThatItCannot) {
    EXPECT_FALSE(writeAll(-1, "a"));
    EXPECT_TRUE(writeAll(-1, ""));
}

}  // namespace
