// Connections opened before anybody needs them, to a listening socket of our own.
#include "fetch/SpareSockets.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <poll.h>

#include <string>

#include <gtest/gtest.h>

#include "fetch/Descriptor.h"

namespace {

using thermika::fetch::Descriptor;
using thermika::fetch::SpareSockets;

/// Listens at a free port of the address.
class Listener {
public:
    explicit Listener(const std::string& ip, int queue = 8) : m_address(addressOf(ip, 0)) {
        m_socket = Descriptor(socket(m_address.ss_family, SOCK_STREAM | SOCK_CLOEXEC, 0));
        socklen_t size = sizeof m_address;
        if (bind(m_socket.get(), &address(), size) != 0 || listen(m_socket.get(), queue) != 0 ||
            getsockname(m_socket.get(), &address(), &size) != 0)
            ADD_FAILURE() << thermika::fetch::errorText(errno);
    }

    static sockaddr_storage addressOf(const std::string& ip, int port) {
        sockaddr_storage address{};
        auto& six = reinterpret_cast<sockaddr_in6&>(address);
        auto& four = reinterpret_cast<sockaddr_in&>(address);
        if (inet_pton(AF_INET6, ip.c_str(), &six.sin6_addr) == 1) {
            six.sin6_family = AF_INET6;
            six.sin6_port = htons(static_cast<in_port_t>(port));
        } else {
            address = {};
            four.sin_family = AF_INET;
            four.sin_port = htons(static_cast<in_port_t>(port));
            inet_pton(AF_INET, ip.c_str(), &four.sin_addr);
        }
        return address;
    }

    sockaddr& address() { return reinterpret_cast<sockaddr&>(m_address); }
    int port() const {  // at the same place in both families
        return ntohs(reinterpret_cast<const sockaddr_in&>(m_address).sin_port);
    }
    bool isWaitedFor() const {
        pollfd now{m_socket.get(), POLLIN, 0};
        return poll(&now, 1, 0) == 1;
    }
    void await() const {
        pollfd now{m_socket.get(), POLLIN, 0};
        EXPECT_EQ(poll(&now, 1, -1), 1);
    }
    Descriptor next() const { return Descriptor(accept(m_socket.get(), nullptr, nullptr)); }

private:
    sockaddr_storage m_address;
    Descriptor m_socket;
};

TEST(SpareSockets, areConnectedOnceTheyAreTaken) {
    for (const char* const ip : {"127.0.0.1", "::1"}) {
        Listener server(ip);
        SpareSockets spares;
        spares.want(2);
        spares.connect(ip, server.port());
        const Descriptor theirs[] = {server.next(), server.next()};
        for (int i = 0; i < 2; ++i) {
            const Descriptor ours(spares.take(server.address()));
            ASSERT_TRUE(ours.isOpen()) << ip;
            sockaddr_storage peer{};
            socklen_t size = sizeof peer;
            EXPECT_EQ(getpeername(ours.get(), reinterpret_cast<sockaddr*>(&peer), &size), 0);
        }
        EXPECT_EQ(spares.take(server.address()), -1);
    }
}

TEST(SpareSockets, areOpenedOnlyWhereTheyAreWantedAndOnce) {
    Listener server("127.0.0.1");
    SpareSockets spares;
    spares.connect("127.0.0.1", server.port());
    EXPECT_FALSE(server.isWaitedFor());
    spares.want(1);
    spares.connect("127.0.0.1", server.port());
    EXPECT_TRUE(server.next().isOpen());
    spares.connect("127.0.0.1", server.port());
    EXPECT_FALSE(server.isWaitedFor());
    spares.want(1);
    spares.connect("no address", server.port());
    EXPECT_EQ(spares.take(server.address()), -1);
}

TEST(SpareSockets, areForNoOtherAddress) {
    Listener server("127.0.0.1");
    Listener other("127.0.0.1");
    sockaddr_storage elsewhere = Listener::addressOf("::1", server.port());
    SpareSockets spares;
    spares.want(1);
    spares.connect("127.0.0.1", server.port());
    const Descriptor theirs = server.next();
    EXPECT_EQ(spares.take(other.address()), -1);
    EXPECT_EQ(spares.take(reinterpret_cast<sockaddr&>(elsewhere)), -1);
    const Descriptor ours(spares.take(server.address()));
    EXPECT_TRUE(ours.isOpen());
}

TEST(SpareSockets, areForNoOtherKindOfAddress) {
    Listener server("127.0.0.1");
    SpareSockets spares;
    spares.want(1);
    spares.connect("127.0.0.1", server.port());
    const Descriptor theirs = server.next();
    sockaddr local = server.address();
    local.sa_family = AF_UNIX;
    EXPECT_EQ(spares.take(local), -1);
    const Descriptor ours(spares.take(server.address()));
    EXPECT_TRUE(ours.isOpen());
}

TEST(SpareSockets, thatAreNotConnectedYetArePassedOver) {
    Listener server("127.0.0.1", 0);
    const Descriptor first(socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0));
    ASSERT_EQ(connect(first.get(), &server.address(), sizeof(sockaddr_in)), 0);
    server.await();  // its queue is full from here on
    SpareSockets spares;
    spares.want(1);
    spares.connect("127.0.0.1", server.port());
    EXPECT_EQ(spares.take(server.address()), -1);
}

TEST(SpareSockets, thatCannotBeConnectedArePassedOver) {
    sockaddr_storage everybody = Listener::addressOf("255.255.255.255", 9);
    SpareSockets spares;
    spares.want(1);
    spares.connect("255.255.255.255", 9);
    EXPECT_EQ(spares.take(reinterpret_cast<sockaddr&>(everybody)), -1);
}

TEST(SpareSockets, thatTheServerHasClosedArePassedOver) {
    Listener server("127.0.0.1");
    SpareSockets spares;
    spares.want(1);
    spares.connect("127.0.0.1", server.port());
    server.next().reset();
    EXPECT_EQ(spares.take(server.address()), -1);
}

}  // namespace
