#include "tests/stand-ins/agent_serving.h"

namespace agent_tests {

using namespace stand_ins;

std::string ModeCall() {
    return CallBytes(kData, L"GetExecutionMode", L"Email");
}

std::string InspectCall(const std::wstring& subject, const std::wstring& body) {
    return CallBytes(kData, L"Inspect", MailDocument(subject, body));
}

AgentOptions AgentServing::Options_() {
    AgentOptions options;
    options.service = service_;
    options.workFolder = work_.Path();
    options.log = [this](const std::wstring& line) {
        const agent::Monitor::Hold hold(monitor_);
        log_.push_back(line);
    };
    return options;
}

std::vector<std::wstring> AgentServing::Log_() const {
    const agent::Monitor::Hold hold(monitor_);
    return log_;
}

std::wstring AgentServing::Inspect_(const Agent& agent, const std::wstring& document) {
    return Call(agent.Port(), kData, L"Inspect", document);
}

bool AgentServing::Serves_(const Agent& agent) {
    return Call(agent.Port(), kData, L"GetExecutionMode", L"Email") == L"Response int: 1";
}

} // namespace agent_tests
