#include "plugin-link/TCPCommon.h"

#include "foundation/Throw.h"
#include "plugin-link/Exceptions.h"

namespace vorlek::TCPCommon {
namespace {

bool IsBrokenConnection_(int error) {
    return error == WSAEINTR || error == WSAECONNABORTED || error == WSAECONNRESET;
}

} // namespace

int Send(const Socket& socket, std::span<const BYTE> data) {
    if (!socket.IsValid() || data.empty()) {
        Throw(L"vorlek::TCPCommon::Send", L"Invalid parameter!");
    }
    const int sent = ::send(socket.Get(), reinterpret_cast<const char*>(data.data()), static_cast<int>(data.size()), 0);
    if (sent == SOCKET_ERROR) {
        const int error = WSAGetLastError();
        if (IsBrokenConnection_(error)) {
            Throw<ConnectionTerminatedException>(L"vorlek::TCPCommon::Send", L"send failed!");
        }
        Throw(L"vorlek::TCPCommon::Send", L"send failed with: ", error);
    }
    return sent;
}

void Recv(const Socket& socket, std::vector<BYTE>& data) {
    if (!socket.IsValid() || data.empty()) {
        Throw(L"vorlek::TCPCommon::Recv", L"Invalid parameter!");
    }
    const int received = ::recv(socket.Get(), reinterpret_cast<char*>(data.data()), static_cast<int>(data.size()), 0);
    if (received <= 0) {
        const int error = received == 0 ? 0 : WSAGetLastError();
        if (received == 0 || IsBrokenConnection_(error)) {
            Throw<ConnectionTerminatedException>(L"vorlek::TCPCommon::Recv", L"recv failed!");
        }
        Throw(L"vorlek::TCPCommon::Recv", L"recv failed with: ", error);
    }
    data.resize(static_cast<std::size_t>(received));
}

bool WaitForRead(const Socket& socket, DWORD milliseconds, bool& ready) {
    return Wait(socket, milliseconds, true, false, false, ready);
}

bool WaitForRead(const Socket& socket, bool& ready) {
    return WaitForRead(socket, INFINITE, ready);
}

bool WaitForWrite(const Socket& socket, DWORD milliseconds, bool& ready) {
    return Wait(socket, milliseconds, false, true, false, ready);
}

bool WaitForException(const Socket& socket, DWORD milliseconds, bool& ready) {
    return Wait(socket, milliseconds, false, false, true, ready);
}

bool Wait(const Socket& socket, DWORD milliseconds, bool read, bool write, bool exception, bool& ready) {
    const fd_set only = {1, {socket.Get()}};
    fd_set readable = only;
    fd_set writable = only;
    fd_set exceptional = only;
    // Whole seconds only: a limit under one second does not wait at all.
    timeval limit = {static_cast<long>(milliseconds / 1000), 0};
    const int count = ::select(0, read ? &readable : nullptr, write ? &writable : nullptr,
                               exception ? &exceptional : nullptr, milliseconds == INFINITE ? nullptr : &limit);
    ready = count == 1;
    return count != SOCKET_ERROR;
}

} // namespace vorlek::TCPCommon
