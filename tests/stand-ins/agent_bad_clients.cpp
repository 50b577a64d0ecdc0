// Clients that do not do as they should: the agent stays, and keeps nothing of them.
#include <algorithm>
#include <memory>

#include "platform/Windows.h"
#include "stand-ins/agent/Message.h"
#include "stand-ins/agent/Server.h"
#include "stand-ins/agent/Text.h"
#include "tests/stand-ins/agent_serving.h"
#include "tests/support/Threads.h"

using namespace stand_ins;

namespace agent_tests {
namespace {

using agent::ToWire;

/// The open handles of the process, sockets included, probed one by one: Wine's GetProcessHandleCount does not count.
int Handles_() {
    int count = 0;
    for (std::uintptr_t value = 4; value < 0x8000; value += 4) {
        DWORD flags = 0;
        count += GetHandleInformation(reinterpret_cast<HANDLE>(value), &flags) ? 1 : 0;
    }
    return count;
}

std::wstring Repeated_(std::wstring_view text, int count) {
    std::wstring repeated;
    for (int i = 0; i < count; ++i) {
        repeated += text;
    }
    return repeated;
}

} // namespace

TEST_F(AgentServing, WhatIsNoRequestIsAnErrorWithItsFault) {
    const Agent agent(Options_());
    const auto answer = [&](const std::wstring& text) {
        const auto message = agent::WireMessage::FromText(Exchange(agent.Port(), ToWire(text + L"###@@@###")).Text());
        return message.type + L": " + message.Value(L"Error");
    };
    EXPECT_EQ(answer(L"nonsense"), L"Error: malformed message at character 0: text outside the element at the top");
    EXPECT_EQ(answer(L""), L"Error: malformed message at character 0: it does not begin with <Msg>");
    EXPECT_EQ(answer(L"<Msg version=\"1\" type=\"Response\" pid=\"1\"/>"),
              L"Error: a message of the type \"Response\" is no request");
    EXPECT_EQ(answer(L"<!DOCTYPE Msg><Msg version=\"1\" type=\"Request\" pid=\"1\"/>"),
              L"Error: malformed message at character 0: a type definition");
    EXPECT_EQ(answer(L"<Msg version=\"1\" type=\"Request\" pid=\"1\"/>"), L"Error: There is no plug-in \"\".");
    EXPECT_EQ(answer(Repeated_(L"<a>", 200000)),
              L"Error: malformed message at character 3: it does not begin with <Msg>");
    EXPECT_EQ(agent.Numbers().malformed, 5u);
    EXPECT_TRUE(Serves_(agent));
}

TEST_F(AgentServing, OneRequestAConnectionIsAll) {
    const Agent agent(Options_());
    const std::wstring text = Exchange(agent.Port(), ModeCall() + ModeCall()).Text();
    EXPECT_NE(text.find(L"more than one message in a request"), std::wstring::npos);
}

TEST_F(AgentServing, ADocumentOfAnyDepthIsRead) {
    const Agent agent(Options_());
    const std::wstring deep = Repeated_(L"<a>", 200000) + Repeated_(L"</a>", 200000);
    EXPECT_EQ(Inspect_(agent, L"<inspectorMessage version=\"1\" channel=\"Email\">" + deep + L"</inspectorMessage>"),
              L"Response string: <decision result=\"1\" />");
}

TEST_F(AgentServing, AnySequenceOfBytesIsAnswered) {
    const Agent agent(Options_());
    // Xorshift: the same bytes each time.
    std::uint32_t state = 2463534242;
    for (int round = 0; round < 200; ++round) {
        std::string bytes;
        for (int i = 0; i < 2 * (round + 1); ++i) {
            state ^= state << 13;
            state ^= state >> 17;
            state ^= state << 5;
            bytes += static_cast<char>(state);
        }
        ASSERT_NE(Exchange(agent.Port(), bytes + ToWire(L"###@@@###")).Text().find(L"type=\"Error\""),
                  std::wstring::npos);
    }
    EXPECT_TRUE(Serves_(agent));
}

TEST_F(AgentServing, AClientMayLeaveOrBreakAtAnyByte) {
    const Agent agent(Options_());
    const std::string call = ModeCall();
    std::uint64_t broken = 0;
    for (std::size_t at = 0; at < call.size(); at += 7) {
        broken += at == 0 ? 0 : 2;
        Client(agent.Port()).Send(call.substr(0, at));
        Client breaking(agent.Port());
        breaking.Send(call.substr(0, at));
        breaking.Reset();
    }
    EXPECT_TRUE(Serves_(agent));
    EXPECT_EQ(agent.Numbers().requests, 1u);
    EXPECT_LE(agent.Numbers().broken, broken);
}

TEST_F(AgentServing, AnEndInTheMiddleOfACodeUnitIsNoRequest) {
    const Agent agent(Options_());
    Client client(agent.Port());
    client.Send("x" + ModeCall());
    EXPECT_FALSE(client.IsReadable(50));
}

TEST_F(AgentServing, AClientThatReadsNothingHoldsNobodyUp) {
    auto agent = std::make_unique<Agent>(Options_());
    agent->Misbehave(L"huge=100MB", L"Inspect");
    const auto deaf = std::make_unique<Client>(agent->Port());
    deaf->Send(InspectCall());
    ASSERT_TRUE(agent->WaitForRequests(1));
    EXPECT_TRUE(Serves_(*agent));
    const ULONGLONG begin = GetTickCount64();
    agent.reset();
    EXPECT_LT(GetTickCount64() - begin, 30000u);
}

TEST_F(AgentServing, AClientThatLeavesInTheMiddleOfAnAnswerGetsNoFiles) {
    const OwnFolder folder;
    Agent agent(Options_());
    agent.Misbehave(L"huge=100MB", L"Inspect");
    {
        Client client(agent.Port());
        client.Send(
            CallBytes(kData, L"Inspect",
                      MailDocument(L"[[replace attachment]]", L"", L"", folder.Write(L"a.cip", "x"), L"a.csv")));
        client.Read(100000);
        client.Reset();
    }
    ASSERT_TRUE(agent.WaitForInspections(1));
    EXPECT_EQ(work_.Count(), 0u);
}

TEST_F(AgentServing, ARequestWithoutAnEndIsCutOff) {
    AgentOptions options = Options_();
    options.longestRequest = 100000;
    const Agent agent(std::move(options));
    Client client(agent.Port());
    client.Send(std::string(100000, 'x'));
    EXPECT_TRUE(client.IsReadable(10000));
    EXPECT_EQ(client.Read().bytes, "");
    EXPECT_TRUE(Serves_(agent));
    EXPECT_EQ(agent.Numbers().broken, 1u);
    EXPECT_EQ(Log_(), std::vector<std::wstring>{L"A request was longer than 100000 bytes."});
}

TEST_F(AgentServing, ASizeThatLiesIsNotedAndTheRequestAnswered) {
    const Agent agent(Options_());
    std::wstring call = agent::FromWire(ModeCall());
    call = agent::ReplaceAll(call, L"size=\"10\"", L"size=\"12\"");
    EXPECT_NE(Exchange(agent.Port(), ToWire(call)).Text().find(L">1</Key>"), std::wstring::npos);
    EXPECT_EQ(Log_(), std::vector<std::wstring>{L"The size of \"Param\" is said to be 12, and is 10."});
}

TEST_F(AgentServing, AThousandConnectionsAreOpenAtOnceAndEachHasItsAnswer) {
    constexpr int kClients = 1000;
    Agent agent(Options_());
    agent.SetPolicy(Policy::FromText(R"({"rules": [{"name": "r", "then": {"subject": "<{subject}>"}}]})"));
    std::vector<std::unique_ptr<Client>> clients;
    for (int i = 0; i < kClients; ++i) {
        clients.push_back(std::make_unique<Client>(agent.Port()));
        ASSERT_TRUE(clients.back()->IsConnected()) << i;
        clients.back()->Send("<");
    }
    EXPECT_TRUE(Serves_(agent));
    for (int i = 0; i < kClients; ++i) {
        clients[static_cast<std::size_t>(i)]->Send(InspectCall(std::to_wstring(i)).substr(1));
    }
    for (int i = 0; i < kClients; ++i) {
        const std::wstring text = clients[static_cast<std::size_t>(i)]->Read().Text();
        ASSERT_NE(text.find(L"&amp;lt;" + std::to_wstring(i) + L"&amp;gt;"), std::wstring::npos) << i;
    }
    EXPECT_EQ(agent.Numbers().connections, kClients + 1u);
}

TEST_F(AgentServing, AHundredThreadsAskAtOnceAndEachHasItsAnswer) {
    Agent agent(Options_());
    agent.SetPolicy(Policy::FromText(R"({"rules": [{"name": "r", "then": {"subject": "<{subject}>"}}]})"));
    std::atomic<int> right = 0;
    test_support::RunThreads(100, [&](int number) {
        for (int i = 0; i < 5; ++i) {
            const std::wstring subject = std::to_wstring(number) + L"-" + std::to_wstring(i);
            right +=
                Exchange(agent.Port(), InspectCall(subject)).Text().find(L";" + subject + L"&") != std::wstring::npos
                    ? 1
                    : 0;
        }
    });
    EXPECT_EQ(right, 500);
}

TEST(AgentServer, KeepsNeitherThreadsNorHandlesOfARush) {
    agent::Monitor monitor;
    int ended = 0;
    const auto rush = [&](agent::Server& server) {
        std::vector<std::unique_ptr<Client>> clients;
        for (int i = 0; i < 200; ++i) {
            clients.push_back(std::make_unique<Client>(server.Port()));
            clients.back()->Send("<");
        }
        clients.clear();
        agent::Monitor::Hold hold(monitor);
        EXPECT_TRUE(hold.Await([&] { return ended == 200; }, 30000));
        ended = 0;
    };
    const auto serve = [&](agent::Connection& connection) {
        std::string bytes;
        connection.Receive(bytes, 1000);
        agent::Monitor::Hold hold(monitor);
        ++ended;
        hold.Changed();
    };
    int before = 0;
    {
        agent::Server server(0, serve);
        server.Listen();
        rush(server);
        const auto isCalm = [&] { return server.ThreadCount() <= 9; };
        agent::Monitor::Hold hold(monitor);
        EXPECT_TRUE(hold.Await(isCalm, 10000)) << server.ThreadCount();
    }
    before = Handles_();
    {
        agent::Server server(0, serve);
        server.Listen();
        rush(server);
        rush(server);
    }
    EXPECT_EQ(Handles_(), before);
}

TEST_F(AgentServing, AnAgentThatEndsLeavesNoHandle) {
    const auto run = [&] {
        Agent agent(Options_());
        EXPECT_TRUE(Serves_(agent));
        agent.Misbehave(Misbehaviour::Refuse);
        agent.Misbehave(L"reset");
        Exchange(agent.Port(), InspectCall());
    };
    run();
    const int before = Handles_();
    run();
    run();
    EXPECT_EQ(Handles_(), before);
}

} // namespace agent_tests
