#pragma once
#include <cstdint>
#include <string>
#include <string_view>

#include "platform/Windows.h"

namespace stand_ins::agent {

/// One accepted connection. Every wait ends early when the server stops.
class Connection {
public:
    /// Takes the socket; `stop` is the event that ends all waiting.
    Connection(SOCKET socket, HANDLE stop);
    ~Connection();
    Connection(const Connection&) = delete;
    Connection& operator=(const Connection&) = delete;

    /// Reads until what came ends in the delimiter. False: the client or the server ended first.
    bool Receive(std::string& bytes);

    /// False: the client or the server ended first.
    bool Send(std::string_view bytes);

    /// Waits; false when the server stops.
    bool Pause(std::uint32_t milliseconds);

    /// Ends the own side and waits for the client to end its own, so that nothing sent is lost.
    void Finish();

    /// Waits for the client to end without ending the own side.
    void AwaitEnd();

    /// Breaks the connection.
    void Reset();

private:
    enum class Outcome { Done, Wait, Ended };
    Outcome Judge_(int result) const;
    bool Await_();

    SOCKET socket_;
    HANDLE stop_;
    WSAEVENT activity_;
};

} // namespace stand_ins::agent
