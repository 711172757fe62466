// A server that takes connections and never answers. For use in a sandbox, whose network it needs.
#pragma once

#include <arpa/inet.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>
#include <cstdint>
#include <system_error>

namespace thermika_test {

class SilentServer {
public:
    /// On 127.0.0.1; `queue` is for listen(). Throws when it cannot.
    explicit SilentServer(std::uint16_t port, int queue = 64)
        : m_socket(socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
        m_address.sin_family = AF_INET;
        m_address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        m_address.sin_port = htons(port);
        if (bind(m_socket, address(), sizeof m_address) != 0 || listen(m_socket, queue) != 0)
            throw std::system_error(errno, std::generic_category(), "silent server");
    }
    ~SilentServer() { close(m_socket); }
    SilentServer(const SilentServer&) = delete;
    SilentServer& operator=(const SilentServer&) = delete;

    const sockaddr* address() const { return reinterpret_cast<const sockaddr*>(&m_address); }

    /// Waits for a connection, which stays open.
    void awaitConnection() const { accept(m_socket, nullptr, nullptr); }

    /// How many have come since this was asked last; they are closed.
    int connections() const {
        int count = 0;
        for (pollfd waiting{m_socket, POLLIN, 0}; poll(&waiting, 1, 0) > 0; ++count)
            close(accept(m_socket, nullptr, nullptr));
        return count;
    }

private:
    int m_socket;
    sockaddr_in m_address{};
};

}  // namespace thermika_test
