#pragma once
#include <cstddef>
#include <cstdint>
#include <functional>
#include <vector>

#include "platform/Windows.h"
#include "stand-ins/agent/Connection.h"
#include "stand-ins/agent/Monitor.h"

namespace stand_ins::agent {

/// Accepts connections on the loopback address and serves each on a thread of its own. The threads take turns at
/// waiting for the next connection, so that an exchange costs no new thread unless all are busy; those that a rush of
/// connections has brought end with it.
class Server {
public:
    /// Port 0: any free one. `serve` is called by several threads at once and must not throw.
    /// Throws std::runtime_error if the port is taken.
    Server(std::uint16_t port, std::function<void(Connection&)> serve);
    ~Server();
    Server(const Server&) = delete;
    Server& operator=(const Server&) = delete;

    std::uint16_t Port() const;

    /// How many threads there are at this moment, waiting or busy.
    std::size_t ThreadCount() const;

    /// Lets connections in from now on.
    void Listen();

    /// Refuses connections from now on. The port stays, or is another if the system did not give it back.
    void Refuse();

private:
    struct Thread_ {
        HANDLE handle;
        DWORD id;
        bool hasEnded = false; ///< it has nothing left to do but to return
    };

    static DWORD WINAPI Procedure_(void* server);
    void StartThread_();
    void JoinEnded_();
    void Run_();
    bool Leaves_();
    SOCKET Accept_();
    void Bind_(std::uint16_t port);

    std::function<void(Connection&)> serve_;
    mutable Monitor monitor_;
    Monitor turn_; ///< held by the thread that waits for a connection
    SOCKET stop_;  ///< a datagram to itself, never read, ends every wait
    SOCKET wake_;  ///< a datagram to itself ends the wait for a connection once
    SOCKET listener_ = INVALID_SOCKET;
    std::uint16_t port_ = 0;
    bool isListening_ = false;
    bool isStopping_ = false;
    std::size_t waiting_ = 0; ///< threads between connections
    std::vector<Thread_> threads_;
};

} // namespace stand_ins::agent
