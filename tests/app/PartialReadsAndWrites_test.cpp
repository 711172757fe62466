// The kernel moves only a few bytes in each read and write of the real tool, as it may: the
// document must come out whole. A tracer lowers the number of bytes asked for; the kernel does the
// rest.
#include <fcntl.h>
#include <sys/ptrace.h>
#include <sys/syscall.h>
#include <sys/user.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <cstddef>
#include <filesystem>
#include <string>

#include <gtest/gtest.h>

#include "support/BuildPaths.h"
#include "support/ExpectedDocument.h"
#include "support/Sandbox.h"
#include "support/UsbTree.h"

namespace {

using thermika_test::RunResult;

constexpr int kNothingWasCut = 99;
constexpr int kSystemCallStop = SIGTRAP | 0x80;  // as PTRACE_O_TRACESYSGOOD marks it
constexpr unsigned long long kFewestCuts = 2;

/// Follows the calls of a stopped process and cuts those that transfer too much.
class Cutter {
public:
    Cutter(pid_t traced, unsigned long long most) : m_traced(traced), m_most(most) {}

    /// Its exit status, or kNothingWasCut; a signal ends the process in which this runs.
    int followToItsEnd() {
        int status = 0;
        waitpid(m_traced, &status, 0);
        ptrace(PTRACE_SETOPTIONS, m_traced, nullptr, PTRACE_O_TRACESYSGOOD | PTRACE_O_EXITKILL);
        while (WIFSTOPPED(status)) {
            const bool isCall = WSTOPSIG(status) == kSystemCallStop;
            if (isCall) look();
            const int passedOn = isCall || WSTOPSIG(status) == SIGTRAP ? 0 : WSTOPSIG(status);
            ptrace(PTRACE_SYSCALL, m_traced, nullptr, passedOn);
            waitpid(m_traced, &status, 0);
        }
        if (WIFSIGNALED(status)) std::raise(WTERMSIG(status));
        return m_cuts < kFewestCuts ? kNothingWasCut : WEXITSTATUS(status);
    }

private:
    void look() {
        __ptrace_syscall_info info{};
        ptrace(PTRACE_GET_SYSCALL_INFO, m_traced, sizeof info, &info);
        if (info.op == PTRACE_SYSCALL_INFO_ENTRY) {
            // The first thing in main(): what is read before is the loader's.
            m_isInMain =
                m_isInMain || (info.entry.nr == SYS_rt_sigaction && info.entry.args[0] == SIGPIPE);
            const bool isTransfer = info.entry.nr == SYS_read || info.entry.nr == SYS_write;
            m_asked =
                m_isInMain && isTransfer && info.entry.args[2] > m_most ? info.entry.args[2] : 0;
            if (m_asked != 0) setLength(m_most);
        } else if (m_asked != 0) {
            // Programs rely on finding the register as it was.
            setLength(m_asked);
            m_asked = 0;
            ++m_cuts;
        }
    }

    void setLength(unsigned long long bytes) const {
        user_regs_struct registers{};
        ptrace(PTRACE_GETREGS, m_traced, nullptr, &registers);
        registers.rdx = bytes;
        ptrace(PTRACE_SETREGS, m_traced, nullptr, &registers);
    }

    pid_t m_traced;
    unsigned long long m_most;
    unsigned long long m_asked = 0;  ///< in the call that is being made, 0 when it is not cut
    unsigned long long m_cuts = 0;
    bool m_isInMain = false;
};

/// The tool with at most `most` bytes in each read and write.
RunResult runCut(unsigned long long most, std::string option) {
    return thermika_test::run("not started", {}, [most, &option] {
        const pid_t tool = fork();
        if (tool == 0) {
            char name[] = "genconfig";
            char* argv[] = {name, option.empty() ? nullptr : option.data(), nullptr};
            ptrace(PTRACE_TRACEME, 0, nullptr, nullptr);
            execv(THERMIKA_TOOL, argv);
            _exit(127);
        }
        _exit(Cutter(tool, most).followToItsEnd());
    });
}

TEST(PartialReadsAndWrites, deliverTheWholeDocument) {
    thermika_test::inSandbox([] {
        thermika_test::UsbTree bus;
        bus.addCamera("1-1", "14080045");
        thermika_test::ExpectedDocument document;
        document.serial = "14080045";
        document.fovDeg = 33;
        std::filesystem::create_directories(document.calibrationDir);
        std::filesystem::copy(THERMIKA_EXAMPLES "/Cali-14080045.xml", document.calibrationDir);
        const RunResult delivered{document.text() + "\n", "", 0};
        for (const unsigned long long most : {1U, 2U, 3U, 7U, 64U, 1000U, 4095U}) {
            EXPECT_EQ(runCut(most, "-d14080045"), delivered) << most;
            EXPECT_EQ(runCut(most, ""), delivered) << most;
        }
    });
}

}  // namespace
