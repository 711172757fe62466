// See the header.
#include "support/DownloadSandbox.h"

#include <linux/audit.h>
#include <linux/filter.h>
#include <linux/seccomp.h>
#include <net/if.h>
#include <sched.h>
#include <sys/ioctl.h>
#include <sys/mount.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <iterator>

#include "sdk/IRLogger.h"
#include "support/BuildPaths.h"
#include "support/LogText.h"
#include "support/Sandbox.h"
#include "support/SystemError.h"
#include "support/TestFiles.h"

namespace thermika_test {

namespace fs = std::filesystem;

namespace {

constexpr const char* kWorld = "/usr/share/world";
constexpr const char* kScratch = "/usr/share/world/scratch";
constexpr const char* kWgetSettings = "/usr/share/world/wgetrc";

std::string worldFile(const std::string& name, std::string_view bytes) {
    std::string path = std::string(kWorld) + "/" + name;
    writeFile(path, bytes);
    return path;
}

/// `file` stands for `target` from here on.
void cover(const std::string& target, const std::string& file) {
    if (mount(file.c_str(), target.c_str(), "none", MS_BIND, nullptr) != 0)
        throwSystemError("cannot mount over " + target);
}

/// The file's name is to be one that programs look up in /etc. Where /etc has no such file to mount
/// over, as on a bare system, /etc is covered with links to all it holds, and the file among them.
void coverInEtc(const std::string& name, std::string_view bytes) {
    const std::string file = worldFile(name, bytes);
    if (fs::exists("/etc/" + name)) {
        cover("/etc/" + name, file);
        return;
    }
    const std::string covered = std::string(kWorld) + "/covered-etc-" + name;
    const std::string links = std::string(kWorld) + "/etc-" + name;
    for (const std::string& dir : {covered, links}) fs::create_directory(dir);
    // With what is mounted below it: a user namespace must not look under its parent's mounts.
    if (mount("/etc", covered.c_str(), "none", MS_BIND | MS_REC, nullptr) != 0)
        throwSystemError("cannot mount /etc elsewhere");
    for (const auto& entry : fs::directory_iterator(covered))
        fs::create_symlink(entry.path(), fs::path(links) / entry.path().filename());
    fs::create_symlink(file, fs::path(links) / name);
    cover("/etc", links);
}

void bringLoopbackUp() {
    const int handle = socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0);
    ifreq request{};
    std::strcpy(request.ifr_name, "lo");
    request.ifr_flags = IFF_UP;
    const int result = ioctl(handle, SIOCSIFFLAGS, &request);
    close(handle);
    if (result != 0) throwSystemError("cannot bring loopback up");
}

void setEnvironment() {
    clearenv();
    for (const auto& [name, value] : std::map<std::string, std::string>{
             {"HOME", kScratch},
             {"LC_ALL", "C"},
             {"PATH", "/usr/local/sbin:/usr/local/bin:/usr/sbin:/usr/bin:/sbin:/bin"},
             {"SYSTEM_WGETRC", kWgetSettings},
             {"TMPDIR", kScratch}})
        setenv(name.c_str(), value.c_str(), 1);
}

}  // namespace

DownloadSandbox::DownloadSandbox() {
    for (const char* const dir : {kWorld, kScratch, kCaliDir}) fs::create_directories(dir);
    setEnvironment();
    worldFile("wgetrc", "quiet = on\ntries = 2\nwaitretry = 0\n");
    // The sources may lie below /tmp, which is about to be hidden.
    writeFile(kServerScript, readFile(THERMIKA_TEST_SUPPORT "/file-server.py"));
    coverInEtc("hosts", std::string("127.0.0.1 localhost ") + THERMIKA_DOWNLOAD_HOST + "\n");
    coverInEtc("nsswitch.conf", "hosts: files\n");
    mountEmptyFolder("/tmp");
    bringLoopbackUp();
    const std::string empty = std::string(kWorld) + "/empty";
    fs::create_directory(empty);
    fs::current_path(empty);
}

DownloadSandbox::~DownloadSandbox() { umount2("/tmp", MNT_DETACH); }

void DownloadSandbox::letWgetTalk() { writeFile(kWgetSettings, "tries = 2\nwaitretry = 0\n"); }

void DownloadSandbox::hideAllPrograms() {
    const std::string empty = std::string(kWorld) + "/no-programs";
    fs::create_directory(empty);
    setenv("PATH", empty.c_str(), 1);
}

void mountOver(const std::string& dir, const std::string& options) {
    if (mount("tmpfs", dir.c_str(), "tmpfs", MS_NOSUID | MS_NODEV, options.c_str()) != 0)
        throwSystemError("cannot mount over " + dir);
}

void makeReadOnly(const std::string& dir) {
    cover(dir, dir);
    // A file system of this sandbox's own: no flag of it is locked.
    if (mount("none", dir.c_str(), "none", MS_REMOUNT | MS_BIND | MS_RDONLY, nullptr) != 0)
        throwSystemError("cannot make read-only: " + dir);
}

void forbidNewProcesses() {
    // Limits of a user's processes do not bind user 0; a filter of system calls binds everybody.
    // The leak checker's own helper alone may start: it is the only one that nobody traces. (Where
    // the highest byte comes first, this is the other half of the flags, and nobody may.)
    constexpr auto kNumber = static_cast<unsigned int>(offsetof(seccomp_data, nr));
    constexpr auto kCloneFlags = static_cast<unsigned int>(offsetof(seccomp_data, args));
    sock_filter rules[] = {
        BPF_STMT(BPF_LD | BPF_W | BPF_ABS, kNumber),
#ifdef SYS_fork
        BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, SYS_fork, 6, 0),
        BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, SYS_vfork, 5, 0),
#endif
        BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, SYS_clone3, 4, 0),
        BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, SYS_clone, 0, 2),
        BPF_STMT(BPF_LD | BPF_W | BPF_ABS, kCloneFlags),
        BPF_JUMP(BPF_JMP | BPF_JSET | BPF_K, CLONE_UNTRACED, 0, 1),
        BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ALLOW),
        BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ERRNO | EAGAIN),
    };
    sock_fprog filter{static_cast<unsigned short>(std::size(rules)), rules};
    if (prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) != 0 ||
        prctl(PR_SET_SECCOMP, SECCOMP_MODE_FILTER, &filter) != 0)
        throwSystemError("cannot filter system calls");
}

void forbidNewDescriptors() {
    const int lowest = dup(STDERR_FILENO);
    rlimit files{};
    if (lowest < 0 || close(lowest) != 0 || getrlimit(RLIMIT_NOFILE, &files) != 0)
        throwSystemError("cannot find the next descriptor");
    files.rlim_cur = static_cast<rlim_t>(lowest);
    if (setrlimit(RLIMIT_NOFILE, &files) != 0) throwSystemError("cannot limit descriptors");
}

bool operator==(const Outcome& a, const Outcome& b) {
    return a.result == b.result && a.log == b.log;
}

std::ostream& operator<<(std::ostream& out, const Outcome& outcome) {
    return out << (outcome.result ? "true" : "false") << ", standard error: \"" << outcome.log
               << '"';
}

Outcome outcomeOf(const std::function<bool()>& operation) {
    dax::IRLogger::setVerbosity(dax::IRLOG_INFO, dax::IRLOG_OFF, nullptr);
    StderrCapture log;
    const bool result = operation();
    return {result, withoutSecondsAndLines(
                        withoutSecondsAndLines(log.text(), "IRCalibrationManager"), "SimpleXML")};
}

std::string managerLine(const std::string& severity, const std::string& message) {
    return severity + " [IRCalibrationManager:#] @ #s :" + message + "\n";
}

Files contents(const std::string& dir) {
    Files found;
    for (const auto& entry : fs::recursive_directory_iterator(dir)) {
        const std::string name = entry.path().lexically_relative(dir).string();
        if (entry.is_directory())
            found[name + "/"] = "";
        else
            found[name] = readFile(entry.path().string());
    }
    return found;
}

}  // namespace thermika_test
