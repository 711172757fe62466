// libcurl writes addresses as text and hands them over as structures: texts are compared.
#include "fetch/SpareSockets.h"

#include <arpa/inet.h>
#include <netdb.h>
#include <netinet/in.h>
#include <poll.h>

#include <array>
#include <memory>
#include <utility>

namespace thermika::fetch {

namespace {

bool isAddress(const sockaddr& address, const std::string& ip, int port) {
    const auto& four = reinterpret_cast<const sockaddr_in&>(address);
    const auto& six = reinterpret_cast<const sockaddr_in6&>(address);
    const bool isSix = address.sa_family == AF_INET6;
    const void* const bytes = isSix ? static_cast<const void*>(&six.sin6_addr) : &four.sin_addr;
    std::array<char, INET6_ADDRSTRLEN> text{};  // stays empty for any other family
    inet_ntop(address.sa_family, bytes, text.data(), text.size());
    // The port is at the same place in both.
    return ntohs(four.sin_port) == port && text.data() == ip;
}

/// Nothing can be read of it: not even that it was closed.
bool isConnectedAndSilent(int socket) {
    pollfd now{socket, POLLIN | POLLOUT, 0};
    return poll(&now, 1, 0) == 1 && now.revents == POLLOUT;
}

}  // namespace

void SpareSockets::connect(const std::string& ip, int port) {
    const std::size_t count = std::exchange(m_wanted, 0);
    if (count == 0) return;
    m_sockets.clear();
    m_ip = ip;
    m_port = port;
    addrinfo hints{};
    hints.ai_flags = AI_NUMERICHOST | AI_NUMERICSERV;
    hints.ai_socktype = SOCK_STREAM;
    addrinfo* found = nullptr;
    if (getaddrinfo(ip.c_str(), std::to_string(port).c_str(), &hints, &found) != 0) return;
    const std::unique_ptr<addrinfo, decltype(&freeaddrinfo)> address(found, freeaddrinfo);
    for (std::size_t i = 0; i < count; ++i) {
        Descriptor spare(socket(found->ai_family, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
        if (!spare.isOpen()) return;
        // take() sees what came of it.
        static_cast<void>(::connect(spare.get(), found->ai_addr, found->ai_addrlen));
        m_sockets.push_back(std::move(spare));
    }
}

int SpareSockets::take(const sockaddr& address) {
    if (!isAddress(address, m_ip, m_port)) return -1;
    while (!m_sockets.empty()) {
        Descriptor spare = std::move(m_sockets.back());
        m_sockets.pop_back();
        if (isConnectedAndSilent(spare.get())) return spare.release();
    }
    return -1;
}

}  // namespace thermika::fetch
