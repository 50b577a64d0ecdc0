#include "stand-ins/agent/Server.h"

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

} // namespace

Server::Server(std::uint16_t port, std::function<void(Connection&)> serve)
    : serve_(std::move(serve)), stop_(CreateEventW(nullptr, TRUE, FALSE, nullptr)),
      arrival_(CreateEventW(nullptr, FALSE, FALSE, nullptr)) {
    StartWinsock_();
    Bind_(port);
    if (listener_ == INVALID_SOCKET) {
        const int error = WSAGetLastError();
        CloseHandle(stop_);
        CloseHandle(arrival_);
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
    for (const HANDLE thread : threads) {
        WaitForSingleObject(thread, INFINITE);
        CloseHandle(thread);
    }
    closesocket(listener_);
    CloseHandle(arrival_);
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
    isListening_ = WSAEventSelect(listener_, arrival_, FD_ACCEPT) == 0 && listen(listener_, SOMAXCONN) == 0;
    if (!isListening_) {
        throw std::runtime_error("Cannot listen: error " + std::to_string(WSAGetLastError()));
    }
    SetEvent(arrival_);
}

void Server::Refuse() {
    const Monitor::Hold hold(monitor_);
    if (isListening_) {
        closesocket(listener_);
        isListening_ = false;
        Bind_(port_);
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
    const HANDLE events[] = {stop_, arrival_};
    for (;;) {
        {
            const Monitor::Hold hold(monitor_);
            const SOCKET socket = isListening_ && !isStopping_ ? accept(listener_, nullptr, nullptr) : INVALID_SOCKET;
            if (socket != INVALID_SOCKET) {
                return socket;
            }
        }
        if (WaitForMultipleObjects(2, events, FALSE, INFINITE) != WAIT_OBJECT_0 + 1) {
            return INVALID_SOCKET;
        }
    }
}

/// Binds a new socket; listener_ stays invalid if the port is not to be had.
void Server::Bind_(std::uint16_t port) {
    listener_ = socket(AF_INET, SOCK_STREAM, IPPROTO_TCP);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    address.sin_port = htons(port);
    int size = sizeof address;
    if (bind(listener_, reinterpret_cast<const sockaddr*>(&address), size) != 0) {
        const int error = WSAGetLastError();
        closesocket(listener_);
        listener_ = INVALID_SOCKET;
        WSASetLastError(error);
        return;
    }
    getsockname(listener_, reinterpret_cast<sockaddr*>(&address), &size);
    port_ = ntohs(address.sin_port);
}

} // namespace stand_ins::agent
