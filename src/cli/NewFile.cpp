// The bytes go to a file of another name in the same directory, which then gets the final name.
#include "cli/NewFile.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <system_error>

#include "cli/Command.h"
#include "cli/WriteAll.h"

namespace thermika::cli {

namespace {

constexpr int kNameAttempts = 100;
constexpr mode_t kMode = 0666;  // less the umask

[[noreturn]] void fail(const std::string& path, const char* reason, const char* nextStep) {
    throw Problem(Status::kFailed, "cannot write " + path + ": " + reason + " (" + nextStep + ")");
}

/// A directory, a device, a pipe: a superuser could replace even those.
bool isNoFile(const std::string& path) {
    std::error_code ignored;
    const auto status = std::filesystem::status(path, ignored);
    return std::filesystem::exists(status) && !std::filesystem::is_regular_file(status);
}

/// With a "/" at its end.
std::string directoryOf(const std::string& path) {
    const std::size_t slash = path.rfind('/');
    return slash == std::string::npos ? "./" : path.substr(0, slash + 1);
}

/// The file has its name already, and some file systems cannot do it: failing is no reason to fail.
void syncDirectoryOf(const std::string& path) {
    const int descriptor = open(directoryOf(path).c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (descriptor < 0) return;
    fsync(descriptor);
    close(descriptor);
}

/// While it lives, what ends the process from a terminal waits, so that no temporary file stays.
class WithoutInterruption {
public:
    WithoutInterruption() {
        sigset_t signals;
        sigemptyset(&signals);
        for (const int each : {SIGINT, SIGTERM, SIGHUP}) sigaddset(&signals, each);
        pthread_sigmask(SIG_BLOCK, &signals, &m_before);
    }
    ~WithoutInterruption() { pthread_sigmask(SIG_SETMASK, &m_before, nullptr); }
    WithoutInterruption(const WithoutInterruption&) = delete;
    WithoutInterruption& operator=(const WithoutInterruption&) = delete;

private:
    sigset_t m_before{};
};

/// A file that nobody else has, removed unless it got another name.
class TemporaryFile {
public:
    explicit TemporaryFile(const std::string& finalPath) {
        // Short: the final name may have all the length that a name may have.
        const std::string begin =
            directoryOf(finalPath) + ".thermika-new-" + std::to_string(getpid()) + "-";
        for (int attempt = 0; m_descriptor < 0 && attempt < kNameAttempts; ++attempt) {
            m_path = begin + std::to_string(attempt) + ".part";
            m_descriptor = open(m_path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, kMode);
            if (m_descriptor < 0 && errno != EEXIST) break;
        }
    }
    ~TemporaryFile() {
        if (m_descriptor < 0) return;
        close(m_descriptor);
        unlink(m_path.c_str());
    }
    TemporaryFile(const TemporaryFile&) = delete;
    TemporaryFile& operator=(const TemporaryFile&) = delete;

    bool isOpen() const { return m_descriptor >= 0; }

    /// False, with `errno` set, when not all of it is on the disk.
    bool write(std::string_view bytes) const {
        return writeAll(m_descriptor, bytes) && fsync(m_descriptor) == 0;
    }

    /// False, with `errno` set. A temporary name that is still there is removed later.
    bool moveTo(const std::string& path, bool mayReplace) const {
        if (mayReplace) return std::rename(m_path.c_str(), path.c_str()) == 0;
        // FAT has no links; some network file systems do not know the flag.
        if (renameat2(AT_FDCWD, m_path.c_str(), AT_FDCWD, path.c_str(), RENAME_NOREPLACE) == 0)
            return true;
        return errno == EINVAL && link(m_path.c_str(), path.c_str()) == 0;
    }

private:
    std::string m_path;
    int m_descriptor = -1;
};

}  // namespace

void writeNewFile(const std::string& path, std::string_view bytes, bool mayReplace) {
    if (isNoFile(path)) fail(path, "it is no regular file", "choose another name");
    const WithoutInterruption untilItIsGone;
    const TemporaryFile file(path);
    if (!file.isOpen())
        fail(path, std::strerror(errno), "is there such a directory, and may you write to it?");
    if (!file.write(bytes)) fail(path, std::strerror(errno), "is the disk full?");
    if (file.moveTo(path, mayReplace)) return syncDirectoryOf(path);
    const int reason = errno;
    fail(path, std::strerror(reason),
         reason == EEXIST ? "--force replaces it" : "choose another name");
}

}  // namespace thermika::cli
