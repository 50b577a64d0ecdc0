#include "benchmarks/link/RawSocket.h"

#include <cstdio>
#include <cstdlib>
#include <limits>

namespace link_benchmarks {
namespace {

constexpr std::size_t kLargestCall = std::numeric_limits<int>::max();

void Require_(bool done, const char* call) {
    if (!done) {
        std::printf("%s failed with: %d\n", call, WSAGetLastError());
        std::exit(1);
    }
}

SOCKET Create_() {
    const SOCKET created = socket(AF_INET, SOCK_STREAM, IPPROTO_TCP);
    Require_(created != INVALID_SOCKET, "socket");
    return created;
}

sockaddr_in Loopback_(std::uint16_t port) {
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(port);
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    return address;
}

} // namespace

SOCKET Listen(std::uint16_t& port) {
    const SOCKET listener = Create_();
    sockaddr_in address = Loopback_(0);
    int size = sizeof address;
    auto* const any = reinterpret_cast<sockaddr*>(&address);
    Require_(bind(listener, any, size) == 0, "bind");
    Require_(listen(listener, SOMAXCONN) == 0, "listen");
    Require_(getsockname(listener, any, &size) == 0, "getsockname");
    port = ntohs(address.sin_port);
    return listener;
}

SOCKET Connect(std::uint16_t port) {
    const SOCKET connection = Create_();
    const sockaddr_in address = Loopback_(port);
    Require_(connect(connection, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0, "connect");
    return connection;
}

void SendAll(SOCKET socket, std::string_view bytes) {
    while (!bytes.empty()) {
        const int sent = send(socket, bytes.data(), static_cast<int>(std::min(bytes.size(), kLargestCall)), 0);
        Require_(sent > 0, "send");
        bytes.remove_prefix(static_cast<std::size_t>(sent));
    }
}

bool ReceiveAll(SOCKET socket, char* bytes, std::size_t size) {
    while (size != 0) {
        const int received = recv(socket, bytes, static_cast<int>(std::min(size, kLargestCall)), 0);
        if (received <= 0) {
            return false;
        }
        bytes += received;
        size -= static_cast<std::size_t>(received);
    }
    return true;
}

void SendLength(SOCKET socket, std::size_t length) {
    const auto bits = static_cast<std::uint32_t>(length);
    SendAll(socket, {reinterpret_cast<const char*>(&bits), sizeof bits});
}

bool ReceiveLength(SOCKET socket, std::size_t& length) {
    std::uint32_t bits = 0;
    const bool received = ReceiveAll(socket, reinterpret_cast<char*>(&bits), sizeof bits);
    length = bits;
    return received;
}

} // namespace link_benchmarks
