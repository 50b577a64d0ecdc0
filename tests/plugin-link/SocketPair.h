#pragma once
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "platform/Windows.h"
#include "plugin-link/Socket.h"

namespace plugin_link_tests {

/// A socket that listens on a free port of the loopback address.
class Listener {
public:
    Listener();

    std::uint16_t Port() const { return port_; }
    /// The next connection.
    SOCKET Accept() const;
    /// From now on connections are refused.
    void Close();

private:
    vorlek::Socket socket_;
    std::uint16_t port_ = 0;
};

/// A new connection to a port of the loopback address.
SOCKET Connect(std::uint16_t port);

/// Two ends of one connection on the loopback address.
struct SocketPair {
    SocketPair();

    vorlek::Socket near_;
    vorlek::Socket far_;
};

/// Writes pieces to one end, each only when the other end has read all of those before, so that no two
/// arrive in one read; then closes the end it writes to, if told so.
class PieceWriter {
public:
    PieceWriter(SocketPair& pair, std::vector<std::string> pieces, bool close = false);
    ~PieceWriter();
    PieceWriter(const PieceWriter&) = delete;
    PieceWriter& operator=(const PieceWriter&) = delete;

private:
    static DWORD WINAPI Run_(void* self);

    SocketPair& pair_;
    std::vector<std::string> pieces_;
    bool close_;
    HANDLE thread_;
};

/// The bytes of a text, two for each code unit, the low one first.
std::string Bytes(std::wstring_view text);
/// Everything that can be read until the peer closes.
std::string ReadAll(SOCKET socket);

} // namespace plugin_link_tests
