#include "stand-ins/agent/Agent.h"

#include <algorithm>
#include <exception>
#include <filesystem>
#include <stdexcept>
#include <utility>

#include "stand-ins/agent/Decision.h"
#include "stand-ins/agent/Delivery.h"
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

Request RequestOf_(std::string raw) {
    Request request;
    request.raw = std::move(raw);
    const std::wstring text = FromWire(request.raw);
    const WireMessage message = WireMessage::FromText(std::wstring_view(text).substr(0, text.find(kDelimiter)));
    request.type = message.type;
    request.pid = message.pid;
    request.plugin = message.Value(L"Plugin");
    request.method = message.Value(L"Method");
    request.param = message.Value(L"Param");
    return request;
}

} // namespace

Answer Answer::Text(std::wstring result) {
    return {Kind::Text, std::move(result), 0, {}, {}};
}

Answer Answer::Number(std::int32_t result) {
    return {Kind::Number, {}, result, {}, {}};
}

Answer Answer::Error(std::wstring words) {
    return {Kind::Error, std::move(words), 0, {}, {}};
}

Answer Answer::Bytes(std::string bytes) {
    return {Kind::Bytes, {}, 0, std::move(bytes), {}};
}

class Agent::Impl {
public:
    explicit Impl(AgentOptions options)
        : log_(options.log),
          inspected_(std::move(options.inspected)),
          service_(WorkFolder_(options.workFolder), options.recordFolder, std::move(options.log)),
          policy_(std::make_shared<const Policy>(std::move(options.policy))),
          responder_(std::move(options.responder)),
          misbehaviour_(std::move(options.misbehaviour)),
          server_(options.port, [this](Connection& connection) { Serve_(connection); }),
          published_(options.service, server_.Port()) {
        Arrange_();
    }

    std::uint16_t Port() const { return server_.Port(); }

    std::vector<Request> Requests() const {
        const Monitor::Hold hold(monitor_);
        return requests_;
    }

    bool WaitForRequests(std::size_t count, std::uint32_t milliseconds) const {
        Monitor::Hold hold(monitor_);
        return hold.Await([&] { return requests_.size() >= count; }, milliseconds);
    }

    bool WaitForInspections(std::size_t count, std::uint32_t milliseconds) const {
        Monitor::Hold hold(monitor_);
        return hold.Await([&] { return inspections_ >= count; }, milliseconds);
    }

    void ClearRequests() {
        const Monitor::Hold hold(monitor_);
        requests_.clear();
        inspections_ = 0;
    }

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
            if (rule.kind == Misbehaviour::None && rule.method.empty()) {
                misbehaviour_.clear();
            }
            misbehaviour_.push_back(std::move(rule));
        }
        Arrange_();
    }

private:
    /// Listens or refuses as the misbehaviour of all methods has it, and publishes the port.
    void Arrange_() {
        if (MisbehaviourFor_({}).kind == Misbehaviour::Refuse) {
            server_.Refuse();
        } else {
            server_.Listen();
        }
        published_.Set(server_.Port());
    }

    MisbehaviourRule MisbehaviourFor_(const std::wstring& method) const {
        const Monitor::Hold hold(monitor_);
        const auto isMeant = [&](const MisbehaviourRule& rule) {
            if (rule.kind == Misbehaviour::Refuse) {
                return method.empty();
            }
            // An agent that died at the first question would show nothing of a death during an inspection.
            const bool isWide = rule.kind == Misbehaviour::Die ? method == L"Inspect" : true;
            return rule.method.empty() ? isWide : rule.method == method;
        };
        for (const auto* rules : {&misbehaviour_, &policy_->misbehaviour}) {
            const auto found = std::find_if(rules->rbegin(), rules->rend(), isMeant);
            if (found != rules->rend()) {
                return *found;
            }
        }
        return {};
    }

    /// Runs on a thread of the server, which must not see an exception.
    void Serve_(Connection& connection) {
        try {
            std::string raw;
            if (!connection.Receive(raw)) {
                if (!raw.empty()) {
                    Log_(L"A client left in the middle of its request.");
                }
                return;
            }
            Request request;
            Answer answer;
            std::wstring fault;
            try {
                request = RequestOf_(raw);
            } catch (const std::runtime_error& failure) {
                request.raw = std::move(raw);
                fault = FromUtf8(failure.what());
                Log_(fault);
            }
            Keep_(request);
            const MisbehaviourRule misbehaviour = MisbehaviourFor_(request.method);
            if (misbehaviour.kind == Misbehaviour::Die) {
                TerminateProcess(GetCurrentProcess(), kDied);
            }
            answer = fault.empty() ? Answer_(request, connection) : Answer::Error(fault);
            if (!Deliver(connection, answer, misbehaviour)) {
                RemoveFiles(answer.files);
            }
            if (request.method == L"Inspect") {
                CountInspection_();
            }
        } catch (const std::exception& failure) {
            Log_(L"A connection failed: " + FromUtf8(failure.what()));
        }
    }

    Answer Answer_(const Request& request, Connection& connection) {
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
        return service_.Handle(request, *policy,
                               [&](std::uint32_t milliseconds) { return connection.Pause(milliseconds); });
    }

    void Keep_(const Request& request) {
        Monitor::Hold hold(monitor_);
        requests_.push_back(request);
        hold.Changed();
    }

    void CountInspection_() {
        {
            Monitor::Hold hold(monitor_);
            ++inspections_;
            hold.Changed();
        }
        if (inspected_) {
            inspected_();
        }
    }

    void Log_(const std::wstring& line) const {
        if (log_) {
            log_(line);
        }
    }

    mutable Monitor monitor_;
    std::function<void(const std::wstring&)> log_;
    std::function<void()> inspected_;
    Service service_;
    std::shared_ptr<const Policy> policy_;
    Responder responder_;
    std::vector<MisbehaviourRule> misbehaviour_;
    std::vector<Request> requests_;
    std::size_t inspections_ = 0;
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
    return impl_->Requests();
}

bool Agent::WaitForRequests(std::size_t count, std::uint32_t milliseconds) const {
    return impl_->WaitForRequests(count, milliseconds);
}

bool Agent::WaitForInspections(std::size_t count, std::uint32_t milliseconds) const {
    return impl_->WaitForInspections(count, milliseconds);
}

void Agent::ClearRequests() {
    impl_->ClearRequests();
}

void Agent::SetPolicy(Policy policy) {
    impl_->SetPolicy(std::move(policy));
}

void Agent::SetResponder(Responder responder) {
    impl_->SetResponder(std::move(responder));
}

void Agent::Misbehave(Misbehaviour kind, const std::wstring& method, const std::wstring& words) {
    MisbehaviourRule rule{kind, method};
    if (!words.empty()) {
        rule.words = words;
    }
    impl_->Misbehave(std::move(rule));
}

} // namespace stand_ins
