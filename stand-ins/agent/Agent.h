#pragma once
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "stand-ins/agent/Misbehaviour.h"
#include "stand-ins/agent/Policy.h"

namespace stand_ins {

/// A request as it came over the wire.
struct Request {
    std::wstring plugin;
    std::wstring method;
    std::wstring param;
    std::wstring type;     ///< of the message: "Request" from an honest client
    std::uint32_t pid = 0; ///< the client's process
    std::string raw;       ///< every byte, the delimiter included
};

/// What goes back for a request.
struct Answer {
    enum class Kind { Text, Number, Error, Bytes };
    Kind kind = Kind::Text;
    std::wstring text;               ///< the result, or the words of the error
    std::int32_t number = 0;         ///< the result of a method that returns a number
    std::string bytes;               ///< of Kind::Bytes: sent as they are, nothing added
    std::vector<std::wstring> files; ///< the files that the text names; removed again if it cannot be delivered
    std::uint32_t delay = 0;         ///< milliseconds before it goes out
    Misbehaviour misbehaviour;       ///< of this one answer, before any that the agent has for its method

    static Answer Text(std::wstring result);
    static Answer Number(std::int32_t result);
    static Answer Error(std::wstring words);
    static Answer Bytes(std::string bytes);
};

/// What an agent has served so far, in numbers.
struct Served {
    std::uint64_t connections = 0;
    std::uint64_t requests = 0;                    ///< whole ones, the malformed included
    std::uint64_t malformed = 0;                   ///< whole, but no requests
    std::uint64_t broken = 0;                      ///< begun, but never whole
    std::map<std::wstring, std::uint64_t> methods; ///< requests by their method; "unknown": any that the agent lacks

    /// One line for a person.
    std::wstring ToText() const;
};

/// Answers a request in place of the policy; nullopt leaves it to the policy. Called on the connection's thread, by
/// several at once; a std::exception out of it becomes an `Error` answer with its text.
using Responder = std::function<std::optional<Answer>(const Request&)>;

struct AgentOptions {
    std::wstring service = L"QLTPluginService";
    std::uint16_t port = 0;    ///< 0: any free one
    Policy policy;             ///< default: every channel is watched, every item allowed
    Responder responder;       ///< asked first, before anything of the request's parameter is read
    std::wstring workFolder;   ///< for the files of decisions; empty: %temp%\agent
    std::wstring recordFolder; ///< gets each inspection's document and decision, a line for each request; empty: none
    bool keepsRequests = true; ///< whether Agent::Requests has any; an agent that runs for long does without
    std::size_t longestRequest = 512u << 20;      ///< bytes; a client that sends more is cut off
    std::vector<MisbehaviourRule> misbehaviour;   ///< beside those of the policy
    std::function<void(const std::wstring&)> log; ///< gets one line for each inspection and each oddity
    std::function<void()> inspected;              ///< called after each inspection, once its answer is out
};

/// A data-protection agent's plug-in manager: publishes its port in the service's section and answers requests on the
/// loopback address, each connection on a thread of its own, from the end of construction to destruction.
class Agent {
public:
    /// Throws std::runtime_error with one clear line if the service is published already, or the port is taken.
    explicit Agent(AgentOptions options = {});
    ~Agent();
    Agent(const Agent&) = delete;
    Agent& operator=(const Agent&) = delete;

    /// The published port.
    std::uint16_t Port() const;

    /// Every request so far, in the order in which they were complete, those that were badly treated included.
    std::vector<Request> Requests() const;

    /// Waits until that many requests have come. False: the time (milliseconds) ran out first.
    bool WaitForRequests(std::size_t count, std::uint32_t milliseconds = 10000) const;

    /// Waits until that many inspections have been answered. False: the time (milliseconds) ran out first.
    bool WaitForInspections(std::size_t count, std::uint32_t milliseconds = 10000) const;

    /// Forgets the requests so far.
    void ClearRequests();

    /// Holds for the requests that come from now on.
    void SetPolicy(Policy policy);
    void SetResponder(Responder responder);

    Served Numbers() const;

    /// Adds a misbehaviour for the requests that come from now on; of two for one method the later holds.
    /// Misbehaviour::None makes the agent behave again; one that refused listens again.
    /// Throws std::runtime_error for a method with a misbehaviour that holds for all requests alike.
    void Misbehave(const Misbehaviour& misbehaviour, const std::wstring& method = {});

private:
    class Impl;
    std::unique_ptr<Impl> impl_;
};

} // namespace stand_ins
