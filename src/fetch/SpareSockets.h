// Connections that are opened before anybody needs them: when what follows is asked for, their
// first round trip is over.
#pragma once

#include <sys/socket.h>

#include <cstddef>
#include <string>
#include <vector>

#include "fetch/Descriptor.h"

namespace thermika::fetch {

class SpareSockets {
public:
    /// The next connect() opens so many, and no later one.
    void want(std::size_t count) { m_wanted = count; }

    /// Begins to connect the wanted ones to a numeric address. What cannot be begun is left out.
    void connect(const std::string& ip, int port);

    /// One that is connected to `address`, close-on-exec, for the caller to close; -1 when there is
    /// none. Those that are not connected yet, and those that the server has closed, are closed.
    int take(const sockaddr& address);

private:
    std::size_t m_wanted = 0;
    std::string m_ip;  ///< all of them lead to this address
    int m_port = 0;
    std::vector<Descriptor> m_sockets;
};

}  // namespace thermika::fetch
