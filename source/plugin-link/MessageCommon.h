#pragma once
#include <memory>
#include <vector>

#include "plugin-link/Message.h"
#include "plugin-link/Socket.h"

/// Messages on a socket: the text in UTF-16, little-endian, without a mark and without a length in
/// front; a fixed delimiter ends each.
namespace vorlek::MessageCommon {

/// Throws what TCPCommon::Send throws.
void Send(const Socket& socket, const Message& message);

/// Blocks until what has arrived ends in a delimiter, and appends every message of it. Throws
/// ConnectionTerminatedException if the peer goes before that, and what Message::FromString throws.
void Receive(const Socket& socket, std::vector<std::unique_ptr<Message>>& messages);

} // namespace vorlek::MessageCommon
