// What the agent keeps of what it served.
#include "stand-ins/agent/Message.h"
#include "stand-ins/agent/Text.h"
#include "tests/stand-ins/agent_serving.h"

using namespace stand_ins;

namespace agent_tests {

TEST_F(AgentServing, EveryRequestIsALineWithItsOutcome) {
    const OwnFolder record;
    {
        AgentOptions options = Options_();
        options.recordFolder = record.Path();
        Agent agent(std::move(options));
        Exchange(agent.Port(), ModeCall());
        agent.WaitForRequests(1);
        agent.Misbehave(L"close=10", L"Inspect");
        Exchange(agent.Port(), InspectCall(L"Plans"));
        ASSERT_TRUE(agent.WaitForInspections(1));
        Exchange(agent.Port(), CallBytes(L"Wish\nPlugin", L"Grant", L""));
    }
    const std::wstring mode = std::to_wstring(ModeCall().size());
    const std::wstring inspect = std::to_wstring(InspectCall(L"Plans").size());
    const std::wstring lines =
        stand_ins::agent::FromUtf8(stand_ins::agent::ReadWholeFile(record.Path() + L"\\requests.txt"));
    EXPECT_EQ(lines.substr(0, lines.find(L", 3")),
              L"1: " + mode + L" bytes from process 77, DataControlPlugin.GetExecutionMode: Response 1");
    EXPECT_NE(lines.find(L"\n2: " + inspect + L" bytes from process 77, DataControlPlugin.Inspect: Response, 10 of "),
              std::wstring::npos);
    EXPECT_NE(lines.find(L" bytes sent, misbehaving: close=10\n3: "), std::wstring::npos);
    EXPECT_NE(lines.find(L"Wish Plugin.Grant: Error \"There is no plug-in \"Wish Plugin\".\""), std::wstring::npos);
}

TEST_F(AgentServing, ARequestBrokenOffIsALineToo) {
    const OwnFolder record;
    {
        AgentOptions options = Options_();
        options.recordFolder = record.Path();
        Agent agent(std::move(options));
        Client(agent.Port()).Send("<");
        EXPECT_TRUE(Serves_(agent));
    }
    EXPECT_NE(stand_ins::agent::ReadWholeFile(record.Path() + L"\\requests.txt")
                  .find("-: a request broken off after 1 byte\n"),
              std::string::npos);
}

TEST_F(AgentServing, WhatWasServedIsCountedByMethod) {
    Agent agent(Options_());
    Exchange(agent.Port(), ModeCall());
    Exchange(agent.Port(), ModeCall());
    Exchange(agent.Port(), CallBytes(kControl, L"ProcessExit", L""));
    Exchange(agent.Port(), CallBytes(kControl, L"Dance", L""));
    Exchange(agent.Port(), stand_ins::agent::ToWire(stand_ins::agent::kDelimiter));
    const Served served = agent.Numbers();
    EXPECT_EQ(served.requests, 5u);
    EXPECT_EQ(served.connections, 5u);
    EXPECT_EQ(served.malformed, 1u);
    EXPECT_EQ(served.methods,
              (std::map<std::wstring, std::uint64_t>{{L"GetExecutionMode", 2}, {L"ProcessExit", 1}, {L"unknown", 1}}));
}

TEST(AgentServed, IsOneLineForAPerson) {
    Served served;
    EXPECT_EQ(served.ToText(), L"served 0 requests on 0 connections");
    served.requests = 1;
    served.connections = 1;
    served.methods[L"Inspect"] = 1;
    EXPECT_EQ(served.ToText(), L"served 1 request on 1 connection: 1 Inspect");
    served.requests = 4;
    served.connections = 6;
    served.malformed = 3;
    served.broken = 2;
    EXPECT_EQ(served.ToText(), L"served 4 requests on 6 connections: 1 Inspect, 3 malformed; 2 requests broken off");
}

TEST_F(AgentServing, AnAgentThatRunsForLongKeepsNoRequest) {
    AgentOptions options = Options_();
    options.keepsRequests = false;
    Agent agent(std::move(options));
    EXPECT_TRUE(Serves_(agent));
    EXPECT_TRUE(agent.WaitForRequests(1, 0));
    EXPECT_TRUE(agent.Requests().empty());
}

TEST_F(AgentServing, ARecordThatCannotBeMadeIsToldAtTheStart) {
    const OwnFolder folder;
    AgentOptions options = Options_();
    options.recordFolder = folder.Write(L"file", "") + L"\\record";
    EXPECT_THROW(Agent{std::move(options)}, std::runtime_error);
    EXPECT_EQ(PublishedPortOf(service_), 0);
}

} // namespace agent_tests
