// The bytes go to a file of another name in the same directory, which then gets the final name.
#include "cli/NewFile.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>

#include "cli/Command.h"
#include "cli/Escape.h"

namespace thermika::cli {

namespace {

constexpr int kNameAttempts = 100;
constexpr mode_t kMode = 0666;  // less the umask

[[noreturn]] void fail(const std::string& path, int reason, const char* nextStep) {
    throw Problem(Status::kFailed, "cannot write " + shown(path) + ": " + std::strerror(reason) +
                                       " (" + nextStep + ")");
}

/// A file that nobody else has, removed unless it got another name.
class TemporaryFile {
public:
    explicit TemporaryFile(const std::string& finalPath) {
        for (int attempt = 0; m_descriptor < 0 && attempt < kNameAttempts; ++attempt) {
            m_path =
                finalPath + ".part-" + std::to_string(getpid()) + "-" + std::to_string(attempt);
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
        while (!bytes.empty()) {
            const ssize_t written = ::write(m_descriptor, bytes.data(), bytes.size());
            if (written < 0 && errno != EINTR) return false;
            if (written > 0) bytes.remove_prefix(static_cast<std::size_t>(written));
        }
        return fsync(m_descriptor) == 0;
    }

    /// False, with `errno` set. Without `mayReplace` the temporary name is removed later.
    bool moveTo(const std::string& path, bool mayReplace) const {
        if (mayReplace) return std::rename(m_path.c_str(), path.c_str()) == 0;
        return link(m_path.c_str(), path.c_str()) == 0;
    }

private:
    std::string m_path;
    int m_descriptor = -1;
};

}  // namespace

void writeNewFile(const std::string& path, std::string_view bytes, bool mayReplace) {
    const TemporaryFile file(path);
    if (!file.isOpen()) fail(path, errno, "is there such a directory, and may you write to it?");
    if (!file.write(bytes)) fail(path, errno, "is the disk full?");
    if (file.moveTo(path, mayReplace)) return;
    const int reason = errno;
    const bool isReplaceable = reason == EEXIST && !std::filesystem::is_directory(path);
    fail(path, reason, isReplaceable ? "--force replaces it" : "choose another name");
}

}  // namespace thermika::cli
