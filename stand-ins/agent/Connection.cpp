#include "stand-ins/agent/Connection.h"

#include <algorithm>
#include <array>

#include "stand-ins/agent/Message.h"

namespace stand_ins::agent {

Connection::Connection(SOCKET socket, HANDLE stop)
    : socket_(socket), stop_(stop), activity_(CreateEventW(nullptr, FALSE, FALSE, nullptr)) {
    // An accepted socket reports to the listener's event until it is given one of its own.
    WSAEventSelect(socket_, activity_, FD_READ | FD_WRITE | FD_CLOSE);
    const BOOL isOn = TRUE;
    setsockopt(socket_, IPPROTO_TCP, TCP_NODELAY, reinterpret_cast<const char*>(&isOn), sizeof isOn);
}

Connection::~Connection() {
    closesocket(socket_);
    CloseHandle(activity_);
}

bool Connection::Receive(std::string& bytes) {
    static const std::string delimiter = ToWire(kDelimiter);
    std::array<char, 65536> buffer;
    for (;;) {
        const int count = recv(socket_, buffer.data(), static_cast<int>(buffer.size()), 0);
        switch (count == 0 ? Outcome::Ended : Judge_(count)) {
        case Outcome::Done:
            bytes.append(buffer.data(), static_cast<std::size_t>(count));
            if (bytes.size() % 2 == 0 && bytes.ends_with(delimiter)) {
                return true;
            }
            break;
        case Outcome::Wait:
            if (!Await_()) {
                return false;
            }
            break;
        case Outcome::Ended:
            return false;
        }
    }
}

bool Connection::Send(std::string_view bytes) {
    constexpr std::size_t kMost = 1u << 20;
    while (!bytes.empty()) {
        const int count = send(socket_, bytes.data(), static_cast<int>(std::min(bytes.size(), kMost)), 0);
        const Outcome outcome = Judge_(count);
        if (outcome == Outcome::Ended || (outcome == Outcome::Wait && !Await_())) {
            return false;
        }
        if (outcome == Outcome::Done) {
            bytes.remove_prefix(static_cast<std::size_t>(count));
        }
    }
    return true;
}

bool Connection::Pause(std::uint32_t milliseconds) {
    return WaitForSingleObject(stop_, milliseconds) == WAIT_TIMEOUT;
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
        if (count == 0 || outcome == Outcome::Ended || (outcome == Outcome::Wait && !Await_())) {
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

Connection::Outcome Connection::Judge_(int result) const {
    if (result != SOCKET_ERROR) {
        return Outcome::Done;
    }
    return WSAGetLastError() == WSAEWOULDBLOCK ? Outcome::Wait : Outcome::Ended;
}

bool Connection::Await_() {
    const HANDLE events[] = {stop_, activity_};
    return WaitForMultipleObjects(2, events, FALSE, INFINITE) == WAIT_OBJECT_0 + 1;
}

} // namespace stand_ins::agent
