// Opens and reads files whatever becomes of the calls: waits for a lease, repeats what a signal has
// interrupted, goes on after short reads.
#include "sdk/base/FileRead.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <cstring>

namespace dax {

namespace {

constexpr std::size_t kLineChunkBytes = 256;  // most USB attributes fit

constexpr int kMaxRepeats = 1000;  // of a call that signals interrupt, which then has failed

template <typename Call>
auto repeatInterrupted(const Call& call) {
    auto result = call();
    for (int i = 0; i < kMaxRepeats && result < 0 && errno == EINTR; ++i) result = call();
    return result;
}

bool isRegularFile(int directory, const char* path) {
    struct stat status {};
    return fstatat(directory, path, &status, 0) == 0 && S_ISREG(status.st_mode);
}

/// A descriptor, or a negative number and the reason in errno. Waits for no pipe and no device.
int openForReading(int directory, const char* path) {
    constexpr int kFlags = O_RDONLY | O_CLOEXEC | O_NOCTTY;
    const int fd = repeatInterrupted([&] { return openat(directory, path, kFlags | O_NONBLOCK); });
    if (fd >= 0 || errno != EWOULDBLOCK) return fd;
    // Another process (a file server) has a lease, which the kernel takes away from it meanwhile.
    if (isRegularFile(directory, path))
        return repeatInterrupted([&] { return openat(directory, path, kFlags); });
    errno = EWOULDBLOCK;
    return fd;
}

class Descriptor {
public:
    explicit Descriptor(const char* path, int directory = AT_FDCWD)
        : m_fd(openForReading(directory, path)) {}
    ~Descriptor() {
        if (isOpen()) close(m_fd);
    }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;

    bool isOpen() const { return m_fd >= 0; }
    int get() const { return m_fd; }

    /// Bytes read, 0 at the end, -1 on failure.
    ssize_t readSome(char* to, std::size_t bytes) const {
        return repeatInterrupted([&] { return read(m_fd, to, bytes); });
    }

private:
    int m_fd;
};

}  // namespace

std::optional<FileBytes> readRegularFile(const char* path, std::size_t maxBytes) {
    const Descriptor file(path);
    if (!file.isOpen()) return std::nullopt;
    struct stat status {};
    if (fstat(file.get(), &status) != 0) return std::nullopt;
    if (!S_ISREG(status.st_mode) || static_cast<std::uintmax_t>(status.st_size) > maxBytes)
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
    while (line.size() < kMaxLineBytes) {
        const ssize_t got =
            file.readSome(chunk, std::min(sizeof chunk, kMaxLineBytes - line.size()));
        if (got < 0) line.clear();
        if (got <= 0) return got == 0;
        const auto bytes = static_cast<std::size_t>(got);
        const void* const feed = std::memchr(chunk, '\n', bytes);
        if (feed == nullptr) {
            line.append(chunk, bytes);
            continue;
        }
        line.append(chunk, static_cast<std::size_t>(static_cast<const char*>(feed) - chunk));
        break;
    }
    return true;
}

bool isReadable(const char* path) { return Descriptor(path).isOpen(); }

}  // namespace dax
