// An open file that is closed with its owner, calls that are repeated after a signal, and the words
// for what a system call answered.
#pragma once

#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <string>
#include <utility>

namespace thermika::fetch {

class Descriptor {
public:
    Descriptor() = default;
    /// Takes over `fd`; -1 for none.
    explicit Descriptor(int fd) : m_fd(fd) {}
    ~Descriptor() { reset(); }
    Descriptor(Descriptor&& other) noexcept : m_fd(std::exchange(other.m_fd, -1)) {}
    Descriptor& operator=(Descriptor&& other) noexcept {
        std::swap(m_fd, other.m_fd);
        return *this;
    }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;

    bool isOpen() const { return m_fd >= 0; }
    int get() const { return m_fd; }

    /// The caller closes it from here on.
    int release() { return std::exchange(m_fd, -1); }

    /// Process: errno stays as it was.
    void reset() {
        if (!isOpen()) return;
        const int error = errno;
        close(release());
        errno = error;
    }

private:
    int m_fd = -1;
};

/// What `call` answers that is not an interruption; after so many of those, -1 and EINTR.
template <typename Call>
auto retrying(const Call& call) {
    constexpr int kMostInterruptions = 1000;
    auto result = call();
    for (int i = 0; i < kMostInterruptions && result == -1 && errno == EINTR; ++i) result = call();
    return result;
}

/// In English whatever the locale, unlike strerror().
inline std::string errorText(int error) {
    const char* const text = strerrordesc_np(error);
    return text != nullptr ? text : "error " + std::to_string(error);
}

}  // namespace thermika::fetch
