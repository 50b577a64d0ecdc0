#pragma once
#include <span>
#include <vector>

#include "platform/Windows.h"
#include "plugin-link/Socket.h"

/// One system call each, on a blocking socket.
namespace vorlek::TCPCommon {

/// Sends the bytes; returns how many went. Throws ConnectionTerminatedException if the connection
/// broke, Exception for any other failure, an invalid socket or no bytes.
int Send(const Socket& socket, std::span<const BYTE> data);

/// Reads at most as many bytes as the vector holds, and shrinks it to what came. Throws as Send; a
/// peer that closed counts as a broken connection.
void Recv(const Socket& socket, std::vector<BYTE>& data);

/// The waits: milliseconds are cut to whole seconds, INFINITE has no limit. ready: exactly one socket
/// fulfils a condition. Returns false if the system cannot wait on the socket.
bool WaitForRead(const Socket& socket, DWORD milliseconds, bool& ready);
bool WaitForRead(const Socket& socket, bool& ready);
bool WaitForWrite(const Socket& socket, DWORD milliseconds, bool& ready);
bool WaitForException(const Socket& socket, DWORD milliseconds, bool& ready);
/// Waits for any of the conditions chosen.
bool Wait(const Socket& socket, DWORD milliseconds, bool read, bool write, bool exception, bool& ready);

} // namespace vorlek::TCPCommon
