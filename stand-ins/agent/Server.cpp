#include "stand-ins/agent/Server.h"

#include <algorithm>
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
SOCKET NewDatagramSocket_() {
    StartWinsock_();
    const SOCKET wake = socket(AF_INET, SOCK_DGRAM, IPPROTO_UDP);
    const auto address = Bound_(wake, 0);
    if (!address || connect(wake, reinterpret_cast<const sockaddr*>(&*address), sizeof *address) != 0) {
        closesocket(wake);
        throw std::runtime_error("Winsock gives no socket: error " + std::to_string(WSAGetLastError()));
    }
    return wake;
}

/// Makes a datagram socket readable.
void Signal_(SOCKET socket) {
    send(socket, "", 1, 0);
}

/// Threads that stay although there is nothing to do.
constexpr std::size_t kSpareThreads = 8;
constexpr SIZE_T kStackBytes = 512 * 1024;

} // namespace

Server::Server(std::uint16_t port, std::function<void(Connection&)> serve)
    : serve_(std::move(serve)), stop_(NewDatagramSocket_()), wake_(NewDatagramSocket_()) {
    Bind_(port);
    if (listener_ == INVALID_SOCKET) {
        const int error = WSAGetLastError();
        closesocket(stop_);
        closesocket(wake_);
        throw std::runtime_error("Cannot take port " + std::to_string(port) + " of 127.0.0.1: error " +
                                 std::to_string(error));
    }
    const Monitor::Hold hold(monitor_);
    StartThread_();
}

Server::~Server() {
    std::vector<Thread_> threads;
    {
        const Monitor::Hold hold(monitor_);
        isStopping_ = true;
        threads = std::exchange(threads_, {});
    }
    Signal_(stop_);
    Signal_(wake_);
    for (const Thread_& thread : threads) {
        WaitForSingleObject(thread.handle, INFINITE);
        CloseHandle(thread.handle);
    }
    closesocket(listener_);
    closesocket(wake_);
    closesocket(stop_);
}

std::uint16_t Server::Port() const {
    const Monitor::Hold hold(monitor_);
    return port_;
}

std::size_t Server::ThreadCount() const {
    const Monitor::Hold hold(monitor_);
    return static_cast<std::size_t>(
        std::ranges::count_if(threads_, [](const Thread_& thread) { return !thread.hasEnded; }));
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
    Signal_(wake_);
}

void Server::Refuse() {
    const Monitor::Hold hold(monitor_);
    if (isListening_) {
        closesocket(listener_);
        isListening_ = false;
        Bind_(port_);
        if (listener_ == INVALID_SOCKET) {
            // Somebody else may listen on the old port by now: a held one refuses for certain.
            Bind_(0);
        }
        Signal_(wake_);
    }
}

DWORD WINAPI Server::Procedure_(void* server) {
    static_cast<Server*>(server)->Run_();
    return 0;
}

void Server::StartThread_() {
    DWORD id = 0;
    const HANDLE thread =
        CreateThread(nullptr, kStackBytes, &Server::Procedure_, this, STACK_SIZE_PARAM_IS_A_RESERVATION, &id);
    if (thread != nullptr) {
        threads_.push_back({thread, id});
        ++waiting_;
    }
}

void Server::JoinEnded_() {
    std::erase_if(threads_, [](const Thread_& thread) {
        return thread.hasEnded && WaitForSingleObject(thread.handle, INFINITE) == WAIT_OBJECT_0 &&
               CloseHandle(thread.handle);
    });
}

void Server::Run_() {
    for (SOCKET socket = Accept_(); socket != INVALID_SOCKET; socket = Accept_()) {
        {
            const Monitor::Hold hold(monitor_);
            if (--waiting_ == 0 && !isStopping_) {
                StartThread_();
            }
        }
        {
            Connection connection(socket, stop_);
            serve_(connection);
        }
        if (Leaves_()) {
            return;
        }
    }
}

/// Whether the calling thread, which has done its work, is one too many.
bool Server::Leaves_() {
    const Monitor::Hold hold(monitor_);
    if (waiting_ < kSpareThreads || isStopping_) {
        ++waiting_;
        return false;
    }
    JoinEnded_();
    std::ranges::find(threads_, GetCurrentThreadId(), &Thread_::id)->hasEnded = true;
    return true;
}

SOCKET Server::Accept_() {
    // Level-triggered, unlike WSAEventSelect, under which Wine now and then forgets to tell of a connection.
    const Monitor::Hold turn(turn_);
    for (;;) {
        fd_set readable{1, {wake_}};
        timeval soon{0, 50000};
        timeval* limit = nullptr;
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
                if (WSAGetLastError() == WSAEWOULDBLOCK) {
                    readable = {2, {wake_, listener_}};
                } else {
                    // A client that is gone already, or no socket left for it: not to be asked for without a pause.
                    limit = &soon;
                }
            }
        }
        // A listener that is closed in the meantime makes this fail at once, and the next turn does without it.
        if (select(0, &readable, nullptr, nullptr, limit) > 0 && FD_ISSET(wake_, &readable)) {
            char ignored;
            recv(wake_, &ignored, 1, 0);
        }
    }
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
