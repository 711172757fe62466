// See the header. The sandbox's process reports its failures through an unnamed file, which its
// parent reads when it has ended and turns into failures of its own.
#include "support/Sandbox.h"

#include <fcntl.h>
#include <linux/capability.h>
#include <linux/filter.h>
#include <linux/seccomp.h>
#include <sched.h>
#include <sys/mman.h>
#include <sys/mount.h>
#include <sys/prctl.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <iterator>
#include <ostream>
#include <stdexcept>
#include <string_view>
#include <system_error>

#include <gtest/gtest.h>

#include "support/ProcessEnd.h"
#include "support/SystemError.h"

namespace thermika_test {

namespace {

constexpr unsigned int kLongestRunSeconds = 100;
constexpr int kCannotStart = 127;  // as a shell says it

/// A file in memory, without a name; closed at the end.
class MemoryFile {
public:
    MemoryFile() : m_fd(memfd_create("thermika-test", MFD_CLOEXEC)) {
        if (m_fd < 0) throwSystemError("memfd_create");
    }
    ~MemoryFile() { close(m_fd); }
    MemoryFile(const MemoryFile&) = delete;
    MemoryFile& operator=(const MemoryFile&) = delete;

    int get() const { return m_fd; }

    /// Throws when not all is written.
    void append(std::string_view bytes) const {
        if (write(m_fd, bytes.data(), bytes.size()) != static_cast<ssize_t>(bytes.size()))
            throwSystemError("write to memory");
    }

    std::string text() const {
        struct stat status {};
        if (fstat(m_fd, &status) != 0) throwSystemError("fstat");
        std::string bytes(static_cast<std::size_t>(status.st_size), '\0');
        if (pread(m_fd, bytes.data(), bytes.size(), 0) != static_cast<ssize_t>(bytes.size()))
            throwSystemError("pread");
        return bytes;
    }

private:
    int m_fd;
};

/// More time for what runs slowly, as under valgrind.
unsigned int longestRunSeconds() {
    const char* const seconds = std::getenv("THERMIKA_SANDBOX_SECONDS");
    return seconds == nullptr ? kLongestRunSeconds : static_cast<unsigned int>(std::stoul(seconds));
}

/// A forked process ends with its parent, and after a while in any case.
void limitLife() {
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    alarm(longestRunSeconds());
}

/// As a shell gives it.
int waitFor(pid_t child) {
    int status = 0;
    while (waitpid(child, &status, 0) < 0)
        if (errno != EINTR) throwSystemError("waitpid");
    return WIFSIGNALED(status) ? 128 + WTERMSIG(status) : WEXITSTATUS(status);
}

void writeProcFile(const char* path, const std::string& text) {
    const int fd = open(path, O_WRONLY | O_CLOEXEC);
    if (fd < 0) throwSystemError(path);
    const ssize_t written = write(fd, text.data(), text.size());
    close(fd);
    if (written != static_cast<ssize_t>(text.size())) throwSystemError(path);
}

void enterNamespaces() {
    if (std::getenv("THERMIKA_NO_NAMESPACES") != nullptr)
        throw std::runtime_error("this test lacks the label `namespaces`: see Discover.cmake");
    const std::string uid = std::to_string(geteuid());
    const std::string gid = std::to_string(getegid());
    constexpr int kMountsAndNetwork = CLONE_NEWNS | CLONE_NEWNET;
    if (unshare(CLONE_NEWUSER | kMountsAndNetwork) == 0) {
        writeProcFile("/proc/self/setgroups", "deny");
        writeProcFile("/proc/self/uid_map", "0 " + uid + " 1");
        writeProcFile("/proc/self/gid_map", "0 " + gid + " 1");
    } else if (unshare(kMountsAndNetwork) != 0) {  // possible for root, where users have none
        throwSystemError(
            "this system does not allow private namespaces: become root, or allow user namespaces");
    }
    if (mount("none", "/", "none", MS_REC | MS_PRIVATE, nullptr) != 0)
        throwSystemError("private mounts");
}

/// From here on file modes bind this process and the programs that it starts.
void obeyFileModes() {
    constexpr unsigned int kOverrides[] = {CAP_DAC_OVERRIDE, CAP_DAC_READ_SEARCH};
    __user_cap_header_struct header{_LINUX_CAPABILITY_VERSION_3, 0};
    __user_cap_data_struct sets[_LINUX_CAPABILITY_U32S_3] = {};
    if (syscall(SYS_capget, &header, sets) != 0) throwSystemError("capget");
    for (const unsigned int override : kOverrides) {
        if (prctl(PR_CAPBSET_DROP, override, 0, 0, 0) != 0) throwSystemError("PR_CAPBSET_DROP");
        sets[0].effective &= ~(1U << override);
        sets[0].permitted &= ~(1U << override);
    }
    if (syscall(SYS_capset, &header, sets) != 0) throwSystemError("capset");
}

/// Writes each failure as file, line and message, each ended by a zero byte.
class FailureSender : public testing::EmptyTestEventListener {
public:
    explicit FailureSender(const MemoryFile& report) : m_report(report) {}

    // A skip counts as a failure: its test would look passed otherwise.
    void OnTestPartResult(const testing::TestPartResult& result) override {
        if (result.passed()) return;
        const char* const file = result.file_name() != nullptr ? result.file_name() : "";
        m_report.append(std::string(file) + '\0' + std::to_string(result.line_number()) + '\0' +
                        result.message() + '\0');
    }

private:
    const MemoryFile& m_report;
};

/// The last thing in the report of a body that ran to its end.
constexpr std::string_view kCompleted = "completed";

void runBody(const std::function<void()>& body) {
    try {
        enterNamespaces();
        mountEmptyFolder("/sys");
        mountEmptyFolder("/usr/share");
        obeyFileModes();
        limitLife();
        body();
    } catch (const std::exception& error) {
        ADD_FAILURE() << "in the sandbox: " << error.what();
    }
}

/// Fails the running test as the report says; false when the body did not run to its end.
bool relay(std::string_view report) {
    const auto cutField = [&report] {
        const std::string field(report.substr(0, report.find('\0')));
        report.remove_prefix(field.size() + 1);
        return field;
    };
    while (!report.empty() && report != kCompleted) {
        const std::string file = cutField();
        const int line = std::stoi(cutField());
        ADD_FAILURE_AT(file.c_str(), line) << cutField();
    }
    return report == kCompleted;
}

/// The life of a sandbox's process; what escapes from it ends it with a signal.
[[noreturn]] void liveInSandbox(const std::function<void()>& body,
                                const MemoryFile& report) noexcept {
    auto& listeners = testing::UnitTest::GetInstance()->listeners();
    delete listeners.Release(listeners.default_result_printer());
    listeners.Append(new FailureSender(report));
    unsetenv("POSIXLY_CORRECT");  // would change how the programs started there read options
    runBody(body);
    report.append(kCompleted);
    std::exit(EXIT_SUCCESS);  // not _exit(): leak and coverage reports are written on the way
}

/// `fd` becomes `target` here and in the programs started from here.
void redirect(int fd, int target) {
    if (fd < 0 || dup2(fd, target) < 0) throwSystemError("redirect");
}

[[noreturn]] void becomeProgram(const std::string& program, char* const* argv,
                                const MemoryFile& out, const MemoryFile& err,
                                const std::function<void()>& prepare) noexcept {
    redirect(open("/dev/null", O_RDONLY | O_CLOEXEC), STDIN_FILENO);
    redirect(out.get(), STDOUT_FILENO);
    redirect(err.get(), STDERR_FILENO);
    limitLife();
    if (prepare) prepare();
    execvp(program.c_str(), argv);
    err.append(program + ": " + std::generic_category().message(errno) + "\n");
    _exit(kCannotStart);
}

}  // namespace

void inSandbox(const std::function<void()>& body) {
    std::fflush(nullptr);
    const MemoryFile report;
    const pid_t child = fork();
    if (child < 0) throwSystemError("fork");
    if (child == 0) liveInSandbox(body, report);
    const int status = waitFor(child);
    const bool isCompleted = relay(report.text());
    EXPECT_TRUE(isCompleted && status == EXIT_SUCCESS)
        << "the sandbox's process ended early, with status " << status;
}

void mountEmptyFolder(const std::string& dir) {
    if (mount("tmpfs", dir.c_str(), "tmpfs", MS_NOSUID | MS_NODEV, "mode=0755") != 0)
        throwSystemError("cannot mount over " + dir);
}

void failSystemCall(unsigned int number, unsigned int error) {
    sock_filter rules[] = {
        BPF_STMT(BPF_LD | BPF_W | BPF_ABS, static_cast<unsigned int>(offsetof(seccomp_data, nr))),
        BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, number, 0, 1),
        BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ERRNO | error),
        BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ALLOW),
    };
    sock_fprog filter{static_cast<unsigned short>(std::size(rules)), rules};
    if (prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) != 0 ||
        prctl(PR_SET_SECCOMP, SECCOMP_MODE_FILTER, &filter) != 0)
        throwSystemError("cannot filter system calls");
}

bool operator==(const RunResult& a, const RunResult& b) {
    return a.out == b.out && a.err == b.err && a.status == b.status;
}

std::ostream& operator<<(std::ostream& out, const RunResult& result) {
    return out << "status " << result.status << "\nstandard output: \"" << result.out
               << "\"\nstandard error: \"" << result.err << '"';
}

RunResult run(const std::string& program, const std::vector<std::string>& argv,
              const std::function<void()>& prepare) {
    std::vector<std::string> copies = argv;
    std::vector<char*> pointers;
    for (std::string& argument : copies) pointers.push_back(argument.data());
    pointers.push_back(nullptr);

    std::fflush(nullptr);
    const MemoryFile out;
    const MemoryFile err;
    const pid_t child = fork();
    if (child < 0) throwSystemError("fork");
    if (child == 0) becomeProgram(program, pointers.data(), out, err, prepare);
    RunResult result;
    result.status = waitFor(child);
    result.out = out.text();
    result.err = err.text();
    return result;
}

RunResult runInProcess(const std::function<int()>& body) {
    return run("not started", {}, [&body] {
        const int status = body();
        std::fflush(stdout);
        _exit(statusAtEnd(status));
    });
}

}  // namespace thermika_test
