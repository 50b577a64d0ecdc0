#pragma once
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "stand-ins/agent/Agent.h"
#include "stand-ins/agent/Monitor.h"
#include "tests/stand-ins/agent_client.h"

namespace agent_tests {

inline const std::wstring kData = L"DataControlPlugin";
inline const std::wstring kControl = L"ApplicationControlPlugin";

/// The bytes of the first question and of an inspection.
std::string ModeCall();
std::string InspectCall(const std::wstring& subject = L"Plans", const std::wstring& body = {});

/// An agent under a name of its own, with a work folder of its own.
class AgentServing : public testing::Test {
protected:
    stand_ins::AgentOptions Options_();
    std::vector<std::wstring> Log_() const;

    std::wstring Inspect_(const stand_ins::Agent& agent, const std::wstring& document);
    /// Whether the agent answers as it should.
    bool Serves_(const stand_ins::Agent& agent);

    const std::wstring service_ = OwnService();
    const OwnFolder work_;

private:
    mutable stand_ins::agent::Monitor monitor_;
    std::vector<std::wstring> log_;
};

} // namespace agent_tests
