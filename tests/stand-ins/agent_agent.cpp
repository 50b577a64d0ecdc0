#include <gtest/gtest.h>

#include <algorithm>
#include <stdexcept>

#include "platform/Windows.h"
#include "stand-ins/agent/Message.h"
#include "stand-ins/agent/Text.h"
#include "tests/stand-ins/agent_serving.h"

using namespace stand_ins;
using namespace agent_tests;

TEST_F(AgentServing, ThePortIsPublishedAsLongAsTheAgentLives) {
    {
        const Agent agent(Options_());
        EXPECT_NE(agent.Port(), 0);
        EXPECT_EQ(PublishedPortOf(service_), agent.Port());
    }
    EXPECT_EQ(PublishedPortOf(service_), 0);
}

TEST_F(AgentServing, ASecondAgentOfTheSameNameIsRefused) {
    const Agent agent(Options_());
    try {
        const Agent second(Options_());
        FAIL() << "it was let in";
    } catch (const std::runtime_error& failure) {
        EXPECT_EQ(failure.what(),
                  "The service " + stand_ins::agent::ToUtf8(service_) + " is published already by another process");
    }
    EXPECT_EQ(PublishedPortOf(service_), agent.Port());
}

TEST_F(AgentServing, ATakenPortIsRefusedAndNothingPublished) {
    const Agent agent(Options_());
    AgentOptions options = Options_();
    options.service = OwnService();
    options.port = agent.Port();
    const std::wstring service = options.service;
    EXPECT_THROW(Agent{std::move(options)}, std::runtime_error);
    EXPECT_EQ(PublishedPortOf(service), 0);
}

TEST_F(AgentServing, EachMethodAnswersInItsType) {
    const Agent agent(Options_());
    EXPECT_EQ(Call(agent.Port(), kData, L"GetExecutionMode", L"Email"), L"Response int: 1");
    EXPECT_EQ(Inspect_(agent, MailDocument(L"Plans", L"text")), L"Response string: <decision result=\"1\" />");
    EXPECT_EQ(Call(agent.Port(), kData, L"BeginInspect", MailDocument(L"[[block]]", L"")),
              L"Response string: <decision result=\"2\" />");
    EXPECT_EQ(Call(agent.Port(), kControl, L"HandleAppLaunchFileAccess", L"x"), L"Response int: 0");
    EXPECT_EQ(Call(agent.Port(), kControl, L"ProcessExit", L"x"), L"Response int: 0");
    EXPECT_EQ(Call(agent.Port(), kControl, L"StartAppMgrIdentifyChannels", L"x"),
              L"Response string: <DataAccessChannelsMessage><channels></channels><ApplicationLaunch "
              L"inspect=\"False\" /></DataAccessChannelsMessage>");
}

TEST_F(AgentServing, WhatItDoesNotKnowIsAnError) {
    const Agent agent(Options_());
    EXPECT_EQ(Call(agent.Port(), L"WishPlugin", L"Inspect", L""), L"Error string: There is no plug-in \"WishPlugin\".");
    EXPECT_EQ(Call(agent.Port(), kControl, L"Inspect", L""),
              L"Error string: The plug-in \"ApplicationControlPlugin\" has no method \"Inspect\".");
    EXPECT_EQ(Inspect_(agent, L"<inspectorMessage version=\"1\" channel=\"Email\"><context></inspectorMessage>"),
              L"Error string: malformed inspector document at character 74: </inspectorMessage> closes nothing");
    EXPECT_EQ(Inspect_(agent, L""),
              L"Error string: malformed inspector document at character 0: it does not begin with <inspectorMessage>");
}

TEST_F(AgentServing, RequestsAreKeptWithEveryByte) {
    Agent agent(Options_());
    const std::string bytes = CallBytes(kData, L"GetExecutionMode", L"Email");
    Exchange(agent.Port(), bytes);
    ASSERT_TRUE(agent.WaitForRequests(1));
    const auto requests = agent.Requests();
    ASSERT_EQ(requests.size(), 1u);
    EXPECT_EQ(requests[0].plugin, kData);
    EXPECT_EQ(requests[0].method, L"GetExecutionMode");
    EXPECT_EQ(requests[0].param, L"Email");
    EXPECT_EQ(requests[0].type, L"Request");
    EXPECT_EQ(requests[0].pid, 77u);
    EXPECT_EQ(requests[0].raw, bytes);
    agent.ClearRequests();
    EXPECT_FALSE(agent.WaitForRequests(1, 0));
}

TEST_F(AgentServing, ARequestInPiecesIsOneRequest) {
    const Agent agent(Options_());
    const std::string bytes = CallBytes(kData, L"GetExecutionMode", L"Email");
    Client client(agent.Port());
    client.Send(std::string_view(bytes).substr(0, 101));
    client.Send(std::string_view(bytes).substr(101));
    EXPECT_NE(client.Read().Text().find(L">1</Key>"), std::wstring::npos);
    EXPECT_EQ(agent.Requests().size(), 1u);
}

TEST_F(AgentServing, AClientThatLeavesEarlyDisturbsNobody) {
    const Agent agent(Options_());
    { const Client silent(agent.Port()); }
    {
        Client half(agent.Port());
        half.Send("<");
    }
    EXPECT_EQ(Call(agent.Port(), kData, L"GetExecutionMode", L"Email"), L"Response int: 1");
    EXPECT_EQ(agent.Requests().size(), 1u);
}

TEST_F(AgentServing, ManyConnectionsAreServedAtOnce) {
    const Agent agent(Options_());
    std::vector<std::unique_ptr<Client>> open;
    for (int i = 0; i < 20; ++i) {
        open.push_back(std::make_unique<Client>(agent.Port()));
        open.back()->Send("<");
    }
    EXPECT_EQ(Call(agent.Port(), kData, L"GetExecutionMode", L"Email"), L"Response int: 1");
}

TEST_F(AgentServing, ALongRequestIsAnsweredWhole) {
    const Agent agent(Options_());
    const std::wstring body(3000000, L'\x0416');
    EXPECT_EQ(Inspect_(agent, MailDocument(L"Long", body)), L"Response string: <decision result=\"1\" />");
    EXPECT_GT(agent.Requests()[0].raw.size(), 6000000u);
}

TEST_F(AgentServing, EachInspectionIsOneLineWithItsReason) {
    Agent agent(Options_());
    agent.SetPolicy(Policy::Block());
    EXPECT_EQ(Inspect_(agent, MailDocument(L"Plans", L"")), L"Response string: <decision result=\"2\" />");
    ASSERT_TRUE(agent.WaitForInspections(1));
    EXPECT_EQ(Log_(), std::vector<std::wstring>{L"Email \"Plans\": blocked (rule \"always\")"});
}

TEST_F(AgentServing, ADelimiterInWhatItQuotesIsNoEnd) {
    const Agent agent(Options_());
    const std::wstring subject = L"a###@@@###@@@###b";
    const Reply reply =
        Exchange(agent.Port(), CallBytes(kData, L"Inspect", MailDocument(subject + L"[[label: X]]", L"")));
    const std::wstring wire = stand_ins::agent::FromWire(reply.bytes);
    EXPECT_EQ(wire.find(L"###@@@###"), wire.size() - 9);
    EXPECT_NE(stand_ins::agent::WireMessage::FromText(reply.Text())
                  .Value(L"Result")
                  .find(L"value=\"[X] a" + stand_ins::agent::ReplaceAll(L"###@@@###@@@###", L"#", L"&#35;") + L"b["),
              std::wstring::npos);
}

TEST_F(AgentServing, AFileThatIsGoneIsAnErrorWithItsName) {
    const Agent agent(Options_());
    EXPECT_EQ(Inspect_(agent, MailDocument(L"[[label: X]]", L"", L"C:\\gone.txt")),
              L"Error string: Cannot read \"C:\\gone.txt\": error 2");
    EXPECT_EQ(work_.Count(), 0u);
}

TEST_F(AgentServing, ADelayedAnswerComesNoSooner) {
    const Agent agent(Options_());
    const ULONGLONG begin = GetTickCount64();
    Inspect_(agent, MailDocument(L"[[delay 150ms]]", L""));
    EXPECT_GE(GetTickCount64() - begin, 130u);
}

TEST_F(AgentServing, ADelayEndsWithTheAgent) {
    const ULONGLONG begin = GetTickCount64();
    {
        const Agent agent(Options_());
        Client client(agent.Port());
        client.Send(CallBytes(kData, L"Inspect", MailDocument(L"[[delay 60s]]", L"")));
        ASSERT_TRUE(agent.WaitForRequests(1));
    }
    EXPECT_LT(GetTickCount64() - begin, 30000u);
}

TEST_F(AgentServing, InspectionsAreRecordedForAPerson) {
    const OwnFolder record;
    AgentOptions options = Options_();
    options.recordFolder = record.Path() + L"\\new";
    const Agent agent(std::move(options));
    Inspect_(agent, MailDocument(L"Plans", L"two  spaces"));
    const std::string document = stand_ins::agent::ReadWholeFile(record.Path() + L"\\new\\0001-inspector.xml");
    EXPECT_NE(document.find("\n    <item name=\"EmailSubject\" value=\"Plans\" />\n"), std::string::npos);
    EXPECT_NE(document.find("<data>two  spaces</data>"), std::string::npos);
    EXPECT_EQ(stand_ins::agent::ReadWholeFile(record.Path() + L"\\new\\0001-decision.xml"),
              "<decision result=\"1\" />\n");
}

TEST_F(AgentServing, AResponderAnswersInPlaceOfThePolicy) {
    Agent agent(Options_());
    agent.SetResponder([](const Request& request) -> std::optional<Answer> {
        if (request.method == L"Inspect") {
            return Answer::Text(L"<decision result=\"7\" />");
        }
        if (request.method == L"ProcessExit") {
            throw std::runtime_error("no exit today");
        }
        return std::nullopt;
    });
    EXPECT_EQ(Inspect_(agent, L"not even XML"), L"Response string: <decision result=\"7\" />");
    EXPECT_EQ(Call(agent.Port(), kControl, L"ProcessExit", L""), L"Error string: no exit today");
    EXPECT_EQ(Call(agent.Port(), kData, L"GetExecutionMode", L"Email"), L"Response int: 1");
}

TEST_F(AgentServing, FilesOfAnAnswerThatNobodyGotAreRemoved) {
    const OwnFolder folder;
    const std::wstring path = folder.Write(L"a.cip", "content");
    const std::wstring document = MailDocument(L"[[replace attachment]]", L"", L"", path, L"a.csv");
    Agent agent(Options_());
    Inspect_(agent, document);
    EXPECT_EQ(work_.Count(), 1u);
    agent.Misbehave(Misbehaviour::CloseMidMessage);
    Exchange(agent.Port(), CallBytes(kData, L"Inspect", document));
    ASSERT_TRUE(agent.WaitForInspections(2));
    EXPECT_EQ(work_.Count(), 1u);
}
