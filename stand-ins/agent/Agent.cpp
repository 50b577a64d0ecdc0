#include "stand-ins/agent/Agent.h"

#include <algorithm>
#include <exception>
#include <filesystem>
#include <stdexcept>
#include <utility>

#include "stand-ins/agent/Connection.h"
#include "stand-ins/agent/Decision.h"
#include "stand-ins/agent/Delivery.h"
#include "stand-ins/agent/Journal.h"
#include "stand-ins/agent/Message.h"
#include "stand-ins/agent/Monitor.h"
#include "stand-ins/agent/PublishedPort.h"
#include "stand-ins/agent/Server.h"
#include "stand-ins/agent/Service.h"
#include "stand-ins/agent/Text.h"

namespace stand_ins {

using namespace agent;

namespace {

constexpr UINT kDied = 3;

std::wstring WorkFolder_(const std::wstring& folder) {
    return folder.empty() ? (std::filesystem::temp_directory_path() / L"agent").wstring()
                          : std::filesystem::absolute(folder).wstring();
}

/// A size that is not that of its value; empty if there is none. The format does not check it, but a client of ours
/// should have it right.
std::wstring LyingSize_(const WireMessage& message) {
    for (const auto& [name, entry] : message.entries) {
        const std::wstring size = std::to_wstring(entry.TrueSize());
        if (entry.size != size) {
            return L"The size of \"" + OneLine(name) + L"\" is said to be " + entry.size.value_or(L"nothing") +
                   L", and is " + size + L".";
        }
    }
    return {};
}

/// Reads the rest of the request from its bytes; returns what is odd about it. Throws std::runtime_error if they are no
/// request.
std::wstring Read_(Request& request) {
    const std::wstring text = FromWire(request.raw);
    const std::size_t end = text.find(kDelimiter);
    const WireMessage message = WireMessage::FromText(std::wstring_view(text).substr(0, end));
    if (message.type != L"Request") {
        throw std::runtime_error("a message of the type \"" + ToUtf8(message.type) + "\" is no request");
    }
    if (end + kDelimiter.size() != text.size()) {
        throw std::runtime_error("more than one message in a request");
    }
    request.type = message.type;
    request.pid = message.pid;
    request.plugin = message.Value(L"Plugin");
    request.method = message.Value(L"Method");
    request.param = message.Value(L"Param");
    return LyingSize_(message);
}

/// The files of an answer, removed unless the answer has reached its client.
class AnswerFiles_ {
public:
    explicit AnswerFiles_(std::vector<std::wstring> files) : files_(std::move(files)) {}
    ~AnswerFiles_() { RemoveFiles(files_); }
    AnswerFiles_(const AnswerFiles_&) = delete;
    AnswerFiles_& operator=(const AnswerFiles_&) = delete;

    /// Lets go of them, or removes them now.
    void Settle(bool areClients) {
        if (!areClients) {
            RemoveFiles(files_);
        }
        files_.clear();
    }

private:
    std::vector<std::wstring> files_;
};

/// How a request was answered, for a person.
std::wstring Outcome_(const Answer& answer, const Misbehaviour& misbehaviour, std::size_t sent, std::size_t size) {
    const std::wstring what = answer.kind == Answer::Kind::Error    ? L"Error \"" + OneLine(answer.text) + L"\""
                              : answer.kind == Answer::Kind::Number ? L"Response " + std::to_wstring(answer.number)
                                                                    : L"Response";
    return what + L", " + std::to_wstring(sent) + L" of " + std::to_wstring(size) + L" bytes sent" +
           (misbehaviour.IsNone() ? L"" : L", misbehaving: " + misbehaviour.kinds);
}

} // namespace

Answer Answer::Text(std::wstring result) {
    return {Kind::Text, std::move(result), 0, {}, {}, 0, {}};
}

Answer Answer::Number(std::int32_t result) {
    return {Kind::Number, {}, result, {}, {}, 0, {}};
}

Answer Answer::Error(std::wstring words) {
    return {Kind::Error, std::move(words), 0, {}, {}, 0, {}};
}

Answer Answer::Bytes(std::string bytes) {
    return {Kind::Bytes, {}, 0, std::move(bytes), {}, 0, {}};
}

class Agent::Impl {
public:
    explicit Impl(AgentOptions options)
        : policy_(std::make_shared<const Policy>(std::move(options.policy))),
          responder_(std::move(options.responder)),
          misbehaviour_(std::move(options.misbehaviour)),
          log_(options.log),
          inspected_(std::move(options.inspected)),
          journal_(options.recordFolder, options.keepsRequests),
          longestRequest_(options.longestRequest),
          service_(WorkFolder_(options.workFolder), options.recordFolder, std::move(options.log)),
          server_(options.port, [this](Connection& connection) { Serve_(connection); }),
          published_(options.service, server_.Port()) {
        Arrange_();
    }

    std::uint16_t Port() const { return server_.Port(); }

    Journal& Log() { return journal_; }

    void SetPolicy(Policy policy) {
        {
            const Monitor::Hold hold(monitor_);
            policy_ = std::make_shared<const Policy>(std::move(policy));
        }
        Arrange_();
    }

    void SetResponder(Responder responder) {
        const Monitor::Hold hold(monitor_);
        responder_ = std::move(responder);
    }

    void Misbehave(MisbehaviourRule rule) {
        {
            const Monitor::Hold hold(monitor_);
            if (rule.misbehaviour.IsNone() && rule.method.empty()) {
                misbehaviour_.clear();
            }
            misbehaviour_.push_back(std::move(rule));
        }
        Arrange_();
    }

private:
    /// Listens or refuses as the misbehaviour of all methods has it, and publishes the port.
    void Arrange_() {
        if (MisbehaviourFor_({}).delivery.isRefused) {
            server_.Refuse();
        } else {
            server_.Listen();
        }
        published_.Set(server_.Port());
    }

    Misbehaviour MisbehaviourFor_(const std::wstring& method) const {
        const Monitor::Hold hold(monitor_);
        const auto isMeant = [&](const MisbehaviourRule& rule) {
            // An agent that died at the first question would show nothing of a death during an inspection.
            if (rule.method.empty() && rule.misbehaviour.delivery.end == Delivery::End::Death) {
                return method == L"Inspect";
            }
            return rule.method.empty() || rule.method == method;
        };
        for (const auto* rules : {&misbehaviour_, &policy_->misbehaviour}) {
            const auto found = std::find_if(rules->rbegin(), rules->rend(), isMeant);
            if (found != rules->rend()) {
                return found->misbehaviour;
            }
        }
        return {};
    }

    /// Runs on a thread of the server, which must not see an exception.
    void Serve_(Connection& connection) {
        try {
            journal_.AddConnection();
            const Misbehaviour blind = MisbehaviourFor_({});
            Request request;
            const std::size_t most = std::min(blind.delivery.unread.value_or(longestRequest_), longestRequest_);
            if (connection.Receive(request.raw, most)) {
                Respond_(connection, request);
            } else if (request.raw.size() < most) {
                Break_(request, L"A client left in the middle of its request.");
            } else if (blind.delivery.unread) {
                Break_(request, L"A request was left unread.");
                Deliver(connection, BytesOf(Answer::Error(L"The request was not read."), blind.spoilings),
                        blind.delivery);
            } else {
                Break_(request, L"A request was longer than " + std::to_wstring(most) + L" bytes.");
            }
        } catch (const std::exception& failure) {
            Log_(L"A connection failed: " + FromUtf8(failure.what()));
        }
    }

    /// A client that came and went without a word is none to speak of.
    void Break_(const Request& request, const std::wstring& line) {
        if (!request.raw.empty()) {
            journal_.AddBroken(request.raw.size());
            Log_(line);
        }
    }

    void Respond_(Connection& connection, Request& request) {
        std::wstring fault;
        try {
            if (const std::wstring oddity = Read_(request); !oddity.empty()) {
                Log_(oddity);
            }
        } catch (const std::runtime_error& failure) {
            fault = FromUtf8(failure.what());
            Log_(fault);
        }
        const std::uint64_t number = journal_.AddRequest(request, !fault.empty());
        const Answer answer = fault.empty() ? Answer_(request) : Answer::Error(fault);
        AnswerFiles_ files(answer.files);
        const Misbehaviour misbehaviour =
            answer.misbehaviour.IsNone() ? MisbehaviourFor_(request.method) : answer.misbehaviour;
        const std::string bytes = BytesOf(answer, misbehaviour.spoilings);
        Delivery delivery = misbehaviour.delivery;
        delivery.delay += answer.delay;
        const std::size_t sent = Deliver(connection, bytes, delivery);
        files.Settle(misbehaviour.IsUnderstood(sent, bytes.size()));
        journal_.AddOutcome(number, request, Outcome_(answer, misbehaviour, sent, bytes.size()));
        if (request.method == L"Inspect" && inspected_) {
            inspected_();
        }
        if (delivery.end == Delivery::End::Death) {
            TerminateProcess(GetCurrentProcess(), kDied);
        }
    }

    Answer Answer_(const Request& request) {
        Responder responder;
        std::shared_ptr<const Policy> policy;
        {
            const Monitor::Hold hold(monitor_);
            responder = responder_;
            policy = policy_;
        }
        try {
            if (auto answer = responder ? responder(request) : std::nullopt) {
                return *std::move(answer);
            }
        } catch (const std::exception& failure) {
            return Answer::Error(FromUtf8(failure.what()));
        }
        return service_.Handle(request, *policy);
    }

    void Log_(const std::wstring& line) const {
        if (log_) {
            log_(line);
        }
    }

    mutable Monitor monitor_; ///< of what may be changed while requests come: the three below
    std::shared_ptr<const Policy> policy_;
    Responder responder_;
    std::vector<MisbehaviourRule> misbehaviour_;
    std::function<void(const std::wstring&)> log_;
    std::function<void()> inspected_;
    Journal journal_;
    std::size_t longestRequest_;
    Service service_;
    // Declared last, so that its threads end before what they use; they touch the published port never.
    Server server_;
    PublishedPort published_;
};

Agent::Agent(AgentOptions options) : impl_(std::make_unique<Impl>(std::move(options))) {}
Agent::~Agent() = default;

std::uint16_t Agent::Port() const {
    return impl_->Port();
}

std::vector<Request> Agent::Requests() const {
    return impl_->Log().Requests();
}

bool Agent::WaitForRequests(std::size_t count, std::uint32_t milliseconds) const {
    return impl_->Log().WaitForRequests(count, milliseconds);
}

bool Agent::WaitForInspections(std::size_t count, std::uint32_t milliseconds) const {
    return impl_->Log().WaitForInspections(count, milliseconds);
}

void Agent::ClearRequests() {
    impl_->Log().Clear();
}

Served Agent::Numbers() const {
    return impl_->Log().Numbers();
}

void Agent::SetPolicy(Policy policy) {
    impl_->SetPolicy(std::move(policy));
}

void Agent::SetResponder(Responder responder) {
    impl_->SetResponder(std::move(responder));
}

void Agent::Misbehave(const Misbehaviour& misbehaviour, const std::wstring& method) {
    impl_->Misbehave(MisbehaviourRule(misbehaviour, method));
}

} // namespace stand_ins
