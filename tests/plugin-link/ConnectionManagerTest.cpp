#include "plugin-link/ConnectionManager.h"

#include <atomic>
#include <functional>
#include <memory>
#include <type_traits>

#include <gmock/gmock.h>

#include "platform/ticpp/ticpp.h"
#include "plugin-link/Exceptions.h"
#include "stand-ins/agent/Agent.h"
#include "tests/plugin-link/FailingXml.h"
#include "tests/plugin-link/Service.h"
#include "tests/plugin-link/SocketPair.h"
#include "tests/plugin-link/Throws.h"
#include "tests/support/LogCapture.h"
#include "tests/support/Threads.h"

namespace {

using namespace plugin_link_tests;
using stand_ins::Agent;
using stand_ins::Answer;
using testing::ElementsAre;
using vorlek::CInspectorMessage;
using vorlek::PluginUtils::CConnectionManager;
using vorlek::PluginUtils::PluginManagerConnectionException;
using vorlek::PluginUtils::PluginManagerFormatException;

constexpr wchar_t kFormatWords[] = L"Failed on CInspectorMessage::GetFormattedMessage";

/// An operation with a text for its argument.
struct Operation {
    const wchar_t* location;
    const wchar_t* plugin;
    const wchar_t* method;
    const wchar_t* remoteLog;
    const wchar_t* otherLog;
    const wchar_t* thrown;
    std::function<void(const CConnectionManager&)> call;
};

const std::wstring kParam = L"<inspectorMessage/>";

const Operation kInspect = {L"vorlek::PluginUtils::CConnectionManager::Inspect",
                            L"DataControlPlugin",
                            L"Inspect",
                            L"Failed to call Inspect: ",
                            L"Failed to call Inspect.",
                            L"Failed to call Inspect",
                            [](const CConnectionManager& manager) { manager.Inspect(kParam); }};
const Operation kBeginInspect = {L"vorlek::PluginUtils::CConnectionManager::BeginInspect",
                                 L"DataControlPlugin",
                                 L"BeginInspect",
                                 L"Failed to call BeginInspect: ",
                                 L"Failed to call BeginInspect.",
                                 L"Failed to call BeginInspect",
                                 [](const CConnectionManager& manager) { manager.BeginInspect(kParam); }};
const Operation kHandleAppLaunchFileAccess = {
    L"vorlek::PluginUtils::CConnectionManager::HandleAppLaunchFileAccess",
    L"ApplicationControlPlugin",
    L"HandleAppLaunchFileAccess",
    L"Failed to call HandleAppLaunchFileAccess: ",
    L"Failed to call HandleAppLaunchFileAccess.",
    L"Failed to call HandleAppLaunchFileAccess",
    [](const CConnectionManager& manager) { manager.HandleAppLaunchFileAccess(kParam); }};
const Operation kProcessExit = {L"vorlek::PluginUtils::CConnectionManager::ProcessExit",
                                L"ApplicationControlPlugin",
                                L"ProcessExit",
                                L"Failed to call ProcessExit(at QLTAgent): ",
                                L"Failed to call ProcessExit(At QLTAgent).",
                                L"Failed to call ProcessExit(At QLTAgent)",
                                [](const CConnectionManager& manager) { manager.ProcessExit(kParam); }};
const Operation kGetExecutionMode = {L"vorlek::PluginUtils::CConnectionManager::GetExecutionMode",
                                     L"DataControlPlugin",
                                     L"GetExecutionMode",
                                     L"Failed to call GetExecutionMode: ",
                                     L"Failed to call GetExecutionMode.",
                                     L"Failed to call GetExecutionMode",
                                     [](const CConnectionManager& manager) { manager.GetExecutionMode(kParam); }};

const Operation* const kAll[] = {&kInspect, &kBeginInspect, &kHandleAppLaunchFileAccess, &kProcessExit,
                                 &kGetExecutionMode};
const Operation* const kWithAnswer[] = {&kInspect, &kHandleAppLaunchFileAccess, &kProcessExit, &kGetExecutionMode};

const std::wstring kChannels = L"<DataAccessChannelsMessage><channels><channel>Http</channel></channels>"
                               L"<ApplicationLaunch inspect=\"True\" /></DataAccessChannelsMessage>";
const std::wstring kBeforeChannels =
    L"StartAppMgrIdentifyChannels: executing QLTAGENT command (look for after. if that get stuck, there will be 5 sec "
    L"delay on process from mojave to TOBIAS)";

/// The lines of one level of the manager's own logger.
std::vector<std::wstring> ManagersLines(const test_support::LogCapture& log, const std::wstring& level) {
    std::vector<std::wstring> texts;
    for (const auto& line : log.Lines()) {
        if (line.level == level && line.logger.ends_with(L"vorlek.PluginUtils.CConnectionManager")) {
            texts.push_back(line.text);
        }
    }
    return texts;
}

std::vector<std::wstring> ManagersErrors(const test_support::LogCapture& log) {
    return ManagersLines(log, L"ERROR");
}

} // namespace

TEST(ConnectionManager, CallsThePlugInAndMethodOfEachOperationWithItsArgument) {
    Agent agent;
    agent.SetResponder([](const stand_ins::Request& request) {
        return request.method == L"Inspect" ? Answer::Text(L"<decision result=\"1\" />") : Answer::Number(7);
    });
    const CConnectionManager manager;
    for (const Operation* operation : kAll) {
        agent.ClearRequests();
        operation->call(manager);
        ASSERT_TRUE(agent.WaitForRequests(1)) << operation->method;
        const auto requests = agent.Requests();
        EXPECT_EQ(requests[0].plugin, operation->plugin);
        EXPECT_EQ(requests[0].method, operation->method);
        EXPECT_EQ(requests[0].param, kParam);
        EXPECT_EQ(requests[0].raw.find(Bytes(L"hidden=\"1\"")), std::string::npos);
    }
}

TEST(ConnectionManager, BringsTheModeOfAChannel) {
    Agent agent;
    for (const std::int32_t mode : {0, 1, -1, 42}) {
        agent.SetResponder([mode](const stand_ins::Request&) { return Answer::Number(mode); });
        EXPECT_EQ(CConnectionManager().GetExecutionMode(L"Email"), mode);
    }
    EXPECT_EQ(agent.Requests()[0].param, L"Email");
}

TEST(ConnectionManager, BringsTheDecision) {
    Agent agent;
    agent.SetResponder([](const stand_ins::Request&) {
        return Answer::Text(L"<decision result=\"1\"><DataModifications><EmailSubject value=\"label\"/>"
                            L"</DataModifications></decision>");
    });
    const CConnectionManager manager;
    const auto decision = manager.Inspect(kParam);
    EXPECT_EQ(decision->GetResult(), 1);
    EXPECT_EQ(decision->GetSubjectLabel(), L"label");
    EXPECT_EQ(manager.Inspect(CInspectorMessage(L"Email"))->GetSubjectLabel(), L"label");
}

TEST(ConnectionManager, SendsAFormattedMessage) {
    Agent agent;
    agent.SetResponder([](const stand_ins::Request& request) {
        return request.method == L"Inspect" ? Answer::Text(L"<decision result=\"1\" />") : Answer::Number(0);
    });
    CInspectorMessage message(L"Email");
    message.AddContextItem(L"EmailSubject", L"<&\u00e9>");
    const CConnectionManager manager;
    manager.Inspect(message);
    manager.HandleAppLaunchFileAccess(message);
    manager.ProcessExit(message);
    manager.BeginInspect(message);
    ASSERT_TRUE(agent.WaitForRequests(4));
    for (const auto& request : agent.Requests()) {
        EXPECT_EQ(request.param, message.GetFormattedMessage()) << request.method;
    }
}

TEST(ConnectionManager, TurnsAServiceThatIsDownIntoItsOwnFailure) {
    const CConnectionManager manager;
    for (const Operation* operation : kAll) {
        const test_support::LogCapture log;
        const auto failure = Thrown<PluginManagerConnectionException>([&] { operation->call(manager); });
        EXPECT_EQ(failure.GetMessage(), operation->thrown);
        EXPECT_EQ(failure.GetLocation(), operation->location);
        EXPECT_THAT(ManagersErrors(log), ElementsAre(operation->otherLog));
    }
}

TEST(ConnectionManager, PassesOnWhatTheServiceItselfReports) {
    Agent agent;
    agent.SetResponder([](const stand_ins::Request&) { return Answer::Error(L"no policy"); });
    const CConnectionManager manager;
    for (const Operation* operation : kWithAnswer) {
        const test_support::LogCapture log;
        const auto failure = Thrown<vorlek::RemoteException>([&] { operation->call(manager); });
        EXPECT_EQ(failure.GetMessage(), L"no policy");
        EXPECT_THAT(ManagersErrors(log), ElementsAre(operation->remoteLog + std::wstring(L"no policy")));
    }
}

TEST(ConnectionManager, TakesAResultOfAnotherTypeForAFailureOfTheConnection) {
    Agent agent;
    agent.SetResponder([](const stand_ins::Request& request) {
        return request.method == L"Inspect" ? Answer::Number(1) : Answer::Text(L"1");
    });
    const CConnectionManager manager;
    for (const Operation* operation : kWithAnswer) {
        const auto failure = Thrown<PluginManagerConnectionException>([&] { operation->call(manager); });
        EXPECT_EQ(failure.GetMessage(), operation->thrown);
    }
}

TEST(ConnectionManager, MakesEveryFailureToInspectAMessageOne) {
    const CInspectorMessage message(L"Email");
    const CConnectionManager manager;
    const auto expectFormat = [&] {
        const auto failure = Thrown<PluginManagerFormatException>([&] { manager.Inspect(message); });
        EXPECT_EQ(failure.GetMessage(), kFormatWords);
        EXPECT_EQ(failure.GetLocation(), L"vorlek::PluginUtils::CConnectionManager::Inspect");
    };
    {
        const test_support::LogCapture log;
        expectFormat();
        EXPECT_THAT(ManagersErrors(log), ElementsAre(L"Failed to call Inspect."));
    }
    Agent agent;
    agent.SetResponder([](const stand_ins::Request&) { return Answer::Error(L"no policy"); });
    const test_support::LogCapture log;
    expectFormat();
    EXPECT_THAT(ManagersErrors(log), ElementsAre(L"Failed to call Inspect: no policy"));
}

TEST(ConnectionManager, SendsNothingOfAMessageThatCannotBeFormatted) {
    Agent agent;
    const CInspectorMessage message(L"Email");
    const CConnectionManager manager;
    const std::pair<std::function<void()>, const wchar_t*> calls[] = {
        {[&] { manager.Inspect(message); }, kInspect.location},
        {[&] { manager.BeginInspect(message); }, kBeginInspect.location},
        {[&] { manager.HandleAppLaunchFileAccess(message); }, kHandleAppLaunchFileAccess.location},
        {[&] { manager.ProcessExit(message); }, kProcessExit.location}};
    for (const auto& [call, location] : calls) {
        const FailingXml failing(FailingXml::At::Print);
        const auto failure = Thrown<PluginManagerFormatException>(call);
        EXPECT_EQ(failure.GetMessage(), kFormatWords);
        EXPECT_EQ(failure.GetLocation(), location);
    }
    EXPECT_TRUE(agent.Requests().empty());
}

TEST(ConnectionManager, GuardsOnlyTheFormattingInTheOtherOperations) {
    const CInspectorMessage message(L"Email");
    const CConnectionManager manager;
    EXPECT_EQ(Thrown<PluginManagerConnectionException>([&] { manager.BeginInspect(message); }).GetMessage(),
              L"Failed to call BeginInspect");
    EXPECT_EQ(Thrown<PluginManagerConnectionException>([&] { manager.ProcessExit(message); }).GetMessage(),
              L"Failed to call ProcessExit(At QLTAgent)");
    Agent agent;
    agent.SetResponder([](const stand_ins::Request&) { return Answer::Error(L"no policy"); });
    EXPECT_EQ(Thrown<vorlek::RemoteException>([&] { manager.HandleAppLaunchFileAccess(message); }).GetMessage(),
              L"no policy");
}

TEST(ConnectionManager, DoesNotSeeAnErrorThatItDoesNotWaitFor) {
    Agent agent;
    agent.SetResponder([](const stand_ins::Request&) { return Answer::Error(L"no policy"); });
    const CConnectionManager manager;
    EXPECT_NO_THROW(manager.BeginInspect(kParam));
    EXPECT_NO_THROW(manager.BeginInspect(CInspectorMessage(L"Email")));
    EXPECT_TRUE(agent.WaitForRequests(2));
}

TEST(ConnectionManager, BringsADecisionThatBlocksForAnAnswerThatCannotBeRead) {
    Agent agent;
    agent.SetResponder([](const stand_ins::Request&) { return Answer::Text(L"no document"); });
    const auto decision = CConnectionManager().Inspect(kParam);
    EXPECT_EQ(decision->GetResult(), vorlek::InspectionDecision::kBlock);
    EXPECT_FALSE(decision->HasModifications());
}

TEST(ConnectionManager, AsksForTheChannelsInForce) {
    const Service service([](SOCKET connection) {
        const std::wstring request = TextOf(ReadMessage(connection));
        EXPECT_NE(request.find(L">ApplicationControlPlugin<"), std::wstring::npos);
        EXPECT_NE(request.find(L">StartAppMgrIdentifyChannels<"), std::wstring::npos);
        EXPECT_NE(request.find(L">&lt;?xml version=\"1.0\" ?&gt;&lt;inspectorMessage"), std::wstring::npos);
        Write(connection, AnswerOf(kChannels));
    });
    const test_support::LogCapture log;
    const auto channels = CConnectionManager().StartAppMgrIdentifyChannels(CInspectorMessage(L"ApplicationGroup"));
    EXPECT_TRUE(channels->IsChannelActivated(3));
    EXPECT_FALSE(channels->IsChannelActivated(0));
    EXPECT_THAT(ManagersLines(log, L"INFO"),
                ElementsAre(kBeforeChannels,
                            L"StartAppMgrIdentifyChannels: AFTER executing QLTAGENT command.result= " + kChannels));
    EXPECT_THAT(ManagersLines(log, L"TRACE"), testing::IsEmpty());
}

TEST(ConnectionManager, TranslatesNoFailureToAskForTheChannels) {
    const CInspectorMessage message(L"ApplicationGroup");
    const CConnectionManager manager;
    const auto expect = [&]<class Failure>(std::type_identity<Failure>, const std::wstring& words,
                                           const std::vector<std::wstring>& errors) {
        const test_support::LogCapture log;
        const auto failure = Thrown<Failure>([&] { manager.StartAppMgrIdentifyChannels(message); });
        EXPECT_EQ(failure.GetMessage(), words);
        EXPECT_EQ(ManagersErrors(log), errors);
        EXPECT_THAT(ManagersLines(log, L"INFO").front(), kBeforeChannels);
    };
    expect(std::type_identity<vorlek::Exception>(), L"OpenFileMapping failed with: 2",
           {L"Failed to call StartAppMgrIdentifyChannels."});
    const std::string answers[] = {ErrorOf(L"no policy"), AnswerOf(L"<no channels />")};
    std::size_t next = 0;
    const Service service([&](SOCKET connection) {
        ReadMessage(connection);
        Write(connection, answers[next++]);
    });
    expect(std::type_identity<vorlek::RemoteException>(), L"no policy",
           {L"Failed to call StartAppMgrIdentifyChannels: no policy"});
    // An answer that cannot be read is no failure of the call.
    expect(std::type_identity<vorlek::DataAccessChannelsMessageFormatException>(),
           L"Error reading Attributes. (line 1, column 14)", {});
}

TEST(ConnectionManager, PassesOnThatTheQuestionForTheChannelsCannotBeFormatted) {
    const CInspectorMessage message(L"ApplicationGroup");
    const CConnectionManager manager;
    const FailingXml failing(FailingXml::At::Print);
    const test_support::LogCapture log;
    EXPECT_THROW(manager.StartAppMgrIdentifyChannels(message), ticpp::Exception);
    EXPECT_THAT(ManagersErrors(log), ElementsAre(L"Failed to call StartAppMgrIdentifyChannels."));
}

TEST(ConnectionManager, AnswersAHundredCallersAtOnceEachWithItsOwn) {
    constexpr int kCallers = 100;
    std::atomic<int> there = 0;
    const HANDLE all = CreateEventW(nullptr, TRUE, FALSE, nullptr);
    std::vector<std::wstring> answers(kCallers);
    {
        // No one gets an answer before everyone has asked.
        const Service service([&](SOCKET connection) {
            const std::wstring param = ParamOf(ReadMessage(connection));
            if (++there == kCallers) {
                SetEvent(all);
            }
            WaitForSingleObject(all, INFINITE);
            Write(connection, AnswerOf(L"<decision result=\"1\"><DataModifications><EmailSubject value=\"" + param +
                                       L"\"/></DataModifications></decision>"));
        });
        const CConnectionManager manager;
        test_support::RunThreads(kCallers, [&](int caller) {
            answers[static_cast<std::size_t>(caller)] =
                manager.Inspect(L"caller " + std::to_wstring(caller))->GetSubjectLabel();
        });
    }
    CloseHandle(all);
    for (int caller = 0; caller < kCallers; ++caller) {
        EXPECT_EQ(answers[static_cast<std::size_t>(caller)], L"caller " + std::to_wstring(caller));
    }
}

TEST(ConnectionManager, TracesEachCall) {
    Agent agent;
    agent.SetResponder([](const stand_ins::Request&) { return Answer::Number(1); });
    const CConnectionManager manager;
    const test_support::LogCapture log;
    manager.GetExecutionMode(L"Email");
    const auto traces = log.Texts(L"TRACE");
    ASSERT_GE(traces.size(), 2U);
    EXPECT_EQ(traces.front(), L"Entered");
    EXPECT_EQ(traces.back(), L"Left");
}

TEST(ConnectionManager, SaysWhenItEnds) {
    auto manager = std::make_unique<CConnectionManager>();
    const test_support::LogCapture log;
    manager.reset();
    EXPECT_THAT(log.Texts(L"DEBUG"), ElementsAre(L"CConnection manager instance destructed"));
}
