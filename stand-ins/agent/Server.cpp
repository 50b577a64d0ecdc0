#include "stand-ins/agent/Server.h"

#include <optional>
#include <stdexcept>
#include <string>
#include <utility>

namespace stand_ins::agent {
namespace {

/// Winsock, from the first server to the end of the process.
void StartWinsock_() {
    static const int result = [] {
        WSADATA data;
        return WSAStartup(MAKEWORD(2, 2), &data);
    }();
    if (result != 0) {
        throw std::runtime_error("Winsock does not start: error " + std::to_string(result));
    }
}

/// Binds a socket to the loopback address; the address that it got, or nothing.
std::optional<sockaddr_in> Bound_(SOCKET socket, std::uint16_t port) {
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    address.sin_port = htons(port);
    int size = sizeof address;
    if (bind(socket, reinterpret_cast<const sockaddr*>(&address), size) != 0 ||
        getsockname(socket, reinterpret_cast<sockaddr*>(&address), &size) != 0) {
        return std::nullopt;
    }
    return address;
}

/// A datagram socket that sends to itself.
SOCKET NewWakeSocket_() {
    StartWinsock_();
    const SOCKET wake = socket(AF_INET, SOCK_DGRAM, IPPROTO_UDP);
    const auto address = Bound_(wake, 0);
    if (!address || connect(wake, reinterpret_cast<const sockaddr*>(&*address), sizeof *address) != 0) {
        closesocket(wake);
        throw std::runtime_error("Winsock gives no socket: error " + std::to_string(WSAGetLastError()));
    }
    return wake;
}

} // namespace

Server::Server(std::uint16_t port, std::function<void(Connection&)> serve)
    : serve_(std::move(serve)), stop_(CreateEventW(nullptr, TRUE, FALSE, nullptr)), wake_(NewWakeSocket_()) {
    Bind_(port);
    if (listener_ == INVALID_SOCKET) {
        const int error = WSAGetLastError();
        CloseHandle(stop_);
        closesocket(wake_);
        throw std::runtime_error("Cannot take port " + std::to_string(port) + " of 127.0.0.1: error " +
                                 std::to_string(error));
    }
    const Monitor::Hold hold(monitor_);
    StartThread_();
}

Server::~Server() {
    std::vector<HANDLE> threads;
    {
        const Monitor::Hold hold(monitor_);
        isStopping_ = true;
        threads = std::exchange(threads_, {});
    }
    SetEvent(stop_);
    Wake_();
    for (const HANDLE thread : threads) {
        WaitForSingleObject(thread, INFINITE);
        CloseHandle(thread);
    }
    closesocket(listener_);
    closesocket(wake_);
    CloseHandle(stop_);
}

std::uint16_t Server::Port() const {
    const Monitor::Hold hold(monitor_);
    return port_;
}

void Server::Listen() {
    const Monitor::Hold hold(monitor_);
    if (isListening_) {
        return;
    }
    if (listener_ == INVALID_SOCKET) {
        Bind_(port_);
    }
    if (listener_ == INVALID_SOCKET) {
        Bind_(0);
    }
    u_long isOn = 1;
    isListening_ = ioctlsocket(listener_, static_cast<long>(FIONBIO), &isOn) == 0 && listen(listener_, SOMAXCONN) == 0;
    if (!isListening_) {
        throw std::runtime_error("Cannot listen: error " + std::to_string(WSAGetLastError()));
    }
    Wake_();
}

void Server::Refuse() {
    const Monitor::Hold hold(monitor_);
    if (isListening_) {
        closesocket(listener_);
        isListening_ = false;
        Bind_(port_);
        Wake_();
    }
}

DWORD WINAPI Server::Thread_(void* server) {
    static_cast<Server*>(server)->Run_();
    return 0;
}

void Server::StartThread_() {
    const HANDLE thread = CreateThread(nullptr, 0, &Server::Thread_, this, 0, nullptr);
    if (thread != nullptr) {
        threads_.push_back(thread);
        ++waiting_;
    }
}

void Server::Run_() {
    for (SOCKET socket = Accept_(); socket != INVALID_SOCKET; socket = Accept_()) {
        {
            const Monitor::Hold hold(monitor_);
            if (--waiting_ == 0 && !isStopping_) {
                StartThread_();
            }
        }
        Connection connection(socket, stop_);
        serve_(connection);
        const Monitor::Hold hold(monitor_);
        ++waiting_;
    }
}

SOCKET Server::Accept_() {
    // Level-triggered, unlike WSAEventSelect, under which Wine now and then forgets to tell of a connection.
    const Monitor::Hold turn(turn_);
    for (;;) {
        fd_set readable{1, {wake_}};
        {
            const Monitor::Hold hold(monitor_);
            if (isStopping_) {
                return INVALID_SOCKET;
            }
            if (isListening_) {
                const SOCKET accepted = accept(listener_, nullptr, nullptr);
                if (accepted != INVALID_SOCKET) {
                    return accepted;
                }
                readable = {2, {wake_, listener_}};
            }
        }
        // A listener that is closed in the meantime makes this fail at once, and the next turn does without it.
        if (select(0, &readable, nullptr, nullptr, nullptr) > 0 && FD_ISSET(wake_, &readable)) {
            char ignored;
            recv(wake_, &ignored, 1, 0);
        }
    }
}

void Server::Wake_() {
    send(wake_, "", 1, 0);
}

/// Binds a new socket; listener_ stays invalid if the port is not to be had.
void Server::Bind_(std::uint16_t port) {
    listener_ = socket(AF_INET, SOCK_STREAM, IPPROTO_TCP);
    if (const auto address = Bound_(listener_, port)) {
        port_ = ntohs(address->sin_port);
        return;
    }
    const int error = WSAGetLastError();
    closesocket(listener_);
    listener_ = INVALID_SOCKET;
    WSASetLastError(error);
}

} // namespace stand_ins::agent
