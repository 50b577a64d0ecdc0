#pragma once
#include <string>
#include <vector>

#include "plugin-link/Socket.h"

namespace fuzz {

/// Stands where a socket would: what is sent to it is kept, and what is received from it comes in pieces, until the
/// peer closes. No call reaches the system. One at a time.
class ScriptedSocket {
public:
    /// cuts: the places at which one piece ends and the next begins, ascending.
    explicit ScriptedSocket(std::string incoming, std::vector<std::size_t> cuts = {});
    ~ScriptedSocket();
    ScriptedSocket(const ScriptedSocket&) = delete;
    ScriptedSocket& operator=(const ScriptedSocket&) = delete;

    const vorlek::Socket& Get() const { return socket_; }
    const std::string& Sent() const { return sent_; }
    /// Whether everything was received.
    bool IsAtEnd() const { return incoming_.size() == received_; }

    int Receive_(char* data, std::size_t room);
    int Send_(const char* data, std::size_t size);

private:
    std::string incoming_;
    std::size_t received_ = 0;
    std::vector<std::size_t> cuts_;
    std::string sent_;
    vorlek::Socket socket_;
};

} // namespace fuzz
