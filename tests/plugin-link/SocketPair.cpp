#include "tests/plugin-link/SocketPair.h"

#include <stdexcept>

namespace plugin_link_tests {
namespace {

void Require(bool condition, const char* what) {
    if (!condition) {
        throw std::runtime_error(std::string(what) + " failed with " + std::to_string(WSAGetLastError()));
    }
}

sockaddr_in Loopback(std::uint16_t port) {
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    address.sin_port = htons(port);
    return address;
}

} // namespace

Listener::Listener() {
    socket_ = ::socket(AF_INET, SOCK_STREAM, IPPROTO_TCP);
    sockaddr_in address = Loopback(0);
    int length = sizeof address;
    auto* generic = reinterpret_cast<sockaddr*>(&address);
    Require(::bind(socket_.Get(), generic, length) == 0, "bind");
    Require(::listen(socket_.Get(), SOMAXCONN) == 0, "listen");
    Require(::getsockname(socket_.Get(), generic, &length) == 0, "getsockname");
    port_ = ntohs(address.sin_port);
}

SOCKET Listener::Accept() const {
    return ::accept(socket_.Get(), nullptr, nullptr);
}

void Listener::Close() {
    socket_ = INVALID_SOCKET;
}

SOCKET Connect(std::uint16_t port) {
    const SOCKET socket = ::socket(AF_INET, SOCK_STREAM, IPPROTO_TCP);
    const sockaddr_in address = Loopback(port);
    Require(::connect(socket, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0, "connect");
    return socket;
}

SocketPair::SocketPair() {
    const Listener listener;
    near_ = Connect(listener.Port());
    far_ = listener.Accept();
    Require(far_.IsValid(), "accept");
    // Otherwise a piece may wait for the acknowledgement of the one before.
    const BOOL on = TRUE;
    ::setsockopt(far_.Get(), IPPROTO_TCP, TCP_NODELAY, reinterpret_cast<const char*>(&on), sizeof on);
}

PieceWriter::PieceWriter(SocketPair& pair, std::vector<std::string> pieces, bool close)
    : pair_(pair),
      pieces_(std::move(pieces)),
      close_(close),
      thread_(CreateThread(nullptr, 0, &PieceWriter::Run_, this, 0, nullptr)) {}

PieceWriter::~PieceWriter() {
    WaitForSingleObject(thread_, INFINITE);
    CloseHandle(thread_);
}

DWORD PieceWriter::Run_(void* self) {
    auto& writer = *static_cast<PieceWriter*>(self);
    for (const std::string& piece : writer.pieces_) {
        ::send(writer.pair_.far_.Get(), piece.data(), static_cast<int>(piece.size()), 0);
        u_long unread = 1;
        while (unread != 0 && ::ioctlsocket(writer.pair_.near_.Get(), FIONREAD, &unread) == 0) {
            SwitchToThread();
        }
    }
    if (writer.close_) {
        ::shutdown(writer.pair_.far_.Get(), SD_BOTH);
    }
    return 0;
}

std::string Bytes(std::wstring_view text) {
    std::string bytes;
    for (const wchar_t unit : text) {
        bytes.push_back(static_cast<char>(unit & 0xFF));
        bytes.push_back(static_cast<char>(unit >> 8));
    }
    return bytes;
}

std::string ReadAll(SOCKET socket) {
    std::string all;
    char chunk[4096];
    for (int count; (count = ::recv(socket, chunk, sizeof chunk, 0)) > 0;) {
        all.append(chunk, static_cast<std::size_t>(count));
    }
    return all;
}

} // namespace plugin_link_tests
