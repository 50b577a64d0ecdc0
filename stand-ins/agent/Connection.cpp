#include "stand-ins/agent/Connection.h"

#include <algorithm>
#include <array>

#include "stand-ins/agent/Message.h"

namespace stand_ins::agent {

Connection::Connection(SOCKET socket, SOCKET stop) : socket_(socket), stop_(stop) {
    u_long isOn = 1;
    ioctlsocket(socket_, static_cast<long>(FIONBIO), &isOn);
    const BOOL isUndelayed = TRUE;
    setsockopt(socket_, IPPROTO_TCP, TCP_NODELAY, reinterpret_cast<const char*>(&isUndelayed), sizeof isUndelayed);
}

Connection::~Connection() {
    closesocket(socket_);
}

bool Connection::Receive(std::string& bytes, std::size_t most) {
    static const std::string delimiter = ToWire(kDelimiter);
    std::array<char, 65536> buffer;
    while (bytes.size() < most) {
        const auto room = static_cast<int>(std::min(buffer.size(), most - bytes.size()));
        const int count = recv(socket_, buffer.data(), room, 0);
        const Outcome outcome = count == 0 ? Outcome::Ended : Judge_(count);
        if (outcome == Outcome::Ended || (outcome == Outcome::Wait && !AwaitInput_())) {
            return false;
        }
        if (outcome == Outcome::Done) {
            bytes.append(buffer.data(), static_cast<std::size_t>(count));
            if (bytes.size() % 2 == 0 && bytes.ends_with(delimiter)) {
                return true;
            }
        }
    }
    return false;
}

std::size_t Connection::Send(std::string_view bytes) {
    constexpr std::size_t kMost = 1u << 20;
    std::size_t sent = 0;
    while (sent < bytes.size()) {
        const int count = send(socket_, bytes.data() + sent, static_cast<int>(std::min(bytes.size() - sent, kMost)), 0);
        const Outcome outcome = Judge_(count);
        if (outcome == Outcome::Ended || (outcome == Outcome::Wait && !AwaitRoom_())) {
            break;
        }
        sent += outcome == Outcome::Done ? static_cast<std::size_t>(count) : 0;
    }
    return sent;
}

bool Connection::Pause(std::uint32_t milliseconds) {
    if (milliseconds == 0) {
        return true;
    }
    fd_set readable{1, {stop_}};
    timeval limit{static_cast<long>(milliseconds / 1000), static_cast<long>(milliseconds % 1000 * 1000)};
    return select(0, &readable, nullptr, nullptr, &limit) == 0;
}

void Connection::Finish() {
    shutdown(socket_, SD_SEND);
    AwaitEnd();
}

void Connection::AwaitEnd() {
    std::array<char, 4096> ignored;
    for (;;) {
        const int count = recv(socket_, ignored.data(), static_cast<int>(ignored.size()), 0);
        const Outcome outcome = Judge_(count);
        if (count == 0 || outcome == Outcome::Ended || (outcome == Outcome::Wait && !AwaitInput_())) {
            return;
        }
    }
}

void Connection::Reset() {
    const linger abortive{1, 0};
    setsockopt(socket_, SOL_SOCKET, SO_LINGER, reinterpret_cast<const char*>(&abortive), sizeof abortive);
    closesocket(socket_);
    socket_ = INVALID_SOCKET;
}

Connection::Outcome Connection::Judge_(int result) {
    if (result != SOCKET_ERROR) {
        return Outcome::Done;
    }
    return WSAGetLastError() == WSAEWOULDBLOCK ? Outcome::Wait : Outcome::Ended;
}

// Both waits use select, which tells of a state: of an event, as WSAEventSelect does, Wine now and then forgets to
// tell.

bool Connection::AwaitInput_() {
    fd_set readable{2, {stop_, socket_}};
    return select(0, &readable, nullptr, nullptr, nullptr) > 0 && !FD_ISSET(stop_, &readable);
}

bool Connection::AwaitRoom_() {
    fd_set readable{1, {stop_}};
    fd_set writable{1, {socket_}};
    // Not every system tells a writer of a reset: now and then the next send has to find out.
    timeval limit{1, 0};
    return select(0, &readable, &writable, nullptr, &limit) != SOCKET_ERROR && !FD_ISSET(stop_, &readable);
}

} // namespace stand_ins::agent
