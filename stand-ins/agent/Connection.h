#pragma once
#include <cstdint>
#include <string>
#include <string_view>

#include "platform/Windows.h"

namespace stand_ins::agent {

/// One accepted connection. Every wait ends early when the server stops.
class Connection {
public:
    /// Takes the socket; `stop` has something to read once all waiting is to end.
    Connection(SOCKET socket, SOCKET stop);
    ~Connection();
    Connection(const Connection&) = delete;
    Connection& operator=(const Connection&) = delete;

    /// Reads until what came ends in the delimiter. False: the client or the server ended first, or `most` bytes came
    /// without one.
    bool Receive(std::string& bytes, std::size_t most);

    /// How many of the bytes went out: fewer than all if the client or the server ended first.
    std::size_t Send(std::string_view bytes);

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
    static Outcome Judge_(int result);
    bool AwaitInput_();
    bool AwaitRoom_();

    SOCKET socket_;
    SOCKET stop_;
};

} // namespace stand_ins::agent
