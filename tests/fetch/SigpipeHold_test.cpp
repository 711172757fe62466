// SIGPIPE: held back in one thread, and the program's own is not lost.
#include "fetch/SigpipeHold.h"

#include <unistd.h>

#include <csignal>

#include <gtest/gtest.h>

#include "support/Sandbox.h"

namespace {

using thermika::fetch::SigpipeHold;
using thermika_test::runInProcess;

void writeToClosedPipe() {
    int ends[2];
    if (pipe(ends) != 0) return;
    close(ends[0]);
    if (write(ends[1], "x", 1) >= 0) _exit(1);
    close(ends[1]);
}

TEST(SigpipeHold, keepsTheProcessAlive) {
    EXPECT_EQ(runInProcess([] {
                  {
                      const SigpipeHold hold;
                      writeToClosedPipe();
                  }
                  return 7;
              }).status,
              7);
}

TEST(SigpipeHold, isOverWithItsLife) {
    EXPECT_EQ(runInProcess([] {
                  { const SigpipeHold hold; }
                  writeToClosedPipe();
                  return 7;
              }).status,
              128 + SIGPIPE);
}

TEST(SigpipeHold, leavesASignalThatWasWaitingBefore) {
    EXPECT_EQ(runInProcess([] {
                  static volatile std::sig_atomic_t count = 0;
                  std::signal(SIGPIPE, [](int /*signal*/) { count = count + 1; });
                  sigset_t pipe;
                  sigemptyset(&pipe);
                  sigaddset(&pipe, SIGPIPE);
                  pthread_sigmask(SIG_BLOCK, &pipe, nullptr);
                  raise(SIGPIPE);
                  {
                      const SigpipeHold hold;
                      writeToClosedPipe();
                  }
                  if (count != 0) return 1;
                  pthread_sigmask(SIG_UNBLOCK, &pipe, nullptr);
                  return count == 1 ? 7 : 2;
              }).status,
              7);
}

}  // namespace
