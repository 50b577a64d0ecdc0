#pragma once
#include <cstdint>
#include <string>
#include <string_view>

#include "platform/Windows.h"

// Plain Winsock calls: the floor beside which the link is measured. A failure ends the process, for nothing measured
// behind it would be true.
namespace link_benchmarks {

/// Listens at a free port of the loopback address. port: out.
SOCKET Listen(std::uint16_t& port);
/// A connection to a port of the loopback address.
SOCKET Connect(std::uint16_t port);

void SendAll(SOCKET socket, std::string_view bytes);
/// As many bytes as the buffer has; false if the peer closes first.
bool ReceiveAll(SOCKET socket, char* bytes, std::size_t size);

void SendLength(SOCKET socket, std::size_t length);
/// False if the peer closes first.
bool ReceiveLength(SOCKET socket, std::size_t& length);

} // namespace link_benchmarks
