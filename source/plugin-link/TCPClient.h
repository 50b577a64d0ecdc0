#pragma once
#include <cstdint>
#include <string>

#include "plugin-link/IP.h"
#include "plugin-link/Socket.h"

namespace vorlek {

/// A TCP connection, blocking and without a time limit. Belongs to the thread that made it.
class TCPClient {
public:
    /// Resolves the host and creates a socket, not yet connected. Throws Exception if either fails.
    TCPClient(const std::wstring& host, std::uint16_t port);
    TCPClient(const TCPClient&) = delete;
    TCPClient& operator=(const TCPClient&) = delete;
    virtual ~TCPClient();

    /// Called once connected.
    virtual void OnConnect() {}

    /// Drops any connection, resolves again and connects. Throws Exception if that fails.
    void Connect();
    const Socket& GetSocket() const { return socket_; }

private:
    void Init();

    IP ip_;
    Socket socket_;
};

} // namespace vorlek
