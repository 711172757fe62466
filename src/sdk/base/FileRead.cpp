// Descriptors, interrupted calls and short reads; nothing about what is in the files.
#include "sdk/base/FileRead.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

namespace dax {

namespace {

constexpr std::size_t kLineChunkBytes = 256;  // most USB attributes fit

class Descriptor {
public:
    explicit Descriptor(const char* path, int directory = AT_FDCWD)
        : m_fd(openRetrying(directory, path)) {}
    ~Descriptor() {
        if (isOpen()) close(m_fd);
    }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;

    bool isOpen() const { return m_fd >= 0; }
    int get() const { return m_fd; }

    /// Bytes read, 0 at the end, -1 on failure; never interrupted.
    ssize_t readSome(char* to, std::size_t bytes) const {
        ssize_t got = 0;
        do got = read(m_fd, to, bytes);
        while (got < 0 && errno == EINTR);
        return got;
    }

private:
    static int openRetrying(int directory, const char* path) {
        int fd = -1;
        do fd = openat(directory, path, O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY);
        while (fd < 0 && errno == EINTR);
        return fd;
    }

    int m_fd;
};

}  // namespace

std::optional<FileBytes> readRegularFile(const char* path, std::size_t maxBytes) {
    const Descriptor file(path);
    if (!file.isOpen()) return std::nullopt;
    struct stat status {};
    if (fstat(file.get(), &status) != 0) return std::nullopt;
    if (!S_ISREG(status.st_mode) || static_cast<std::size_t>(status.st_size) > maxBytes)
        return std::nullopt;

    FileBytes result;
    auto left = static_cast<std::size_t>(status.st_size);
    // Not make_unique: it would write every byte once more before read() does.
    result.bytes.reset(new char[left + 1]);
    while (left > 0) {
        const ssize_t got = file.readSome(result.bytes.get() + result.size, left);
        if (got < 0) return std::nullopt;
        if (got == 0) break;
        left -= static_cast<std::size_t>(got);
        result.size += static_cast<std::size_t>(got);
    }
    return result;
}

bool readFirstLine(int directory, const char* path, std::string& line) {
    line.clear();
    const Descriptor file(path, directory);
    if (!file.isOpen()) return false;
    char chunk[kLineChunkBytes];
    for (;;) {
        const ssize_t got = file.readSome(chunk, sizeof chunk);
        if (got < 0) line.clear();
        if (got <= 0) return got == 0;
        const auto bytes = static_cast<std::size_t>(got);
        if (const void* const feed = std::memchr(chunk, '\n', bytes)) {
            line.append(chunk, static_cast<std::size_t>(static_cast<const char*>(feed) - chunk));
            return true;
        }
        line.append(chunk, bytes);
    }
}

bool isReadable(const char* path) { return Descriptor(path).isOpen(); }

}  // namespace dax
