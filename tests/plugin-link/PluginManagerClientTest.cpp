#include "plugin-link/PluginManagerClient.h"

#include <gmock/gmock.h>

#include "plugin-link/Exceptions.h"
#include "plugin-link/ServicePort.h"
#include "plugin-link/WinsockInit.h"
#include "stand-ins/agent/Agent.h"
#include "tests/plugin-link/SocketPair.h"
#include "tests/plugin-link/SystemCalls.h"
#include "tests/plugin-link/Throws.h"
#include "tests/support/LogCapture.h"

namespace {

using namespace plugin_link_tests;
using stand_ins::Agent;
using stand_ins::Answer;
using stand_ins::Misbehaviour;
using vorlek::Message;
using vorlek::MessageType;
using vorlek::PluginManagerClient;

constexpr wchar_t kPlugin[] = L"DataControlPlugin";
constexpr wchar_t kSite[] = L"vorlek::PluginManagerClient::ReceiveResponse";

/// An agent that gives every request the same answer.
class Answering {
public:
    explicit Answering(Answer answer) {
        agent_.SetResponder([answer](const stand_ins::Request&) { return answer; });
    }
    /// This message, as it is.
    explicit Answering(const Message& message) : Answering(Answer::Bytes(Bytes(message.ToString() + L"###@@@###"))) {}

    Agent& GetAgent() { return agent_; }

private:
    Agent agent_;
};

std::wstring Call() {
    std::wstring result;
    vorlek::CallWithStringResult(kPlugin, L"Inspect", {L"param", false}, result);
    return result;
}

void ExpectRefused(const Message& answer, const std::wstring& words) {
    const Answering agent(answer);
    const auto failure = Thrown<vorlek::Exception>(Call);
    EXPECT_EQ(failure.GetMessage(), words);
    EXPECT_EQ(failure.GetLocation(), kSite);
}

} // namespace

TEST(PluginManagerClient, AsksAPlugInsMethodAndBringsItsAnswer) {
    Answering agent(Answer::Text(L"<a>&\u00fc</a>"));
    EXPECT_EQ(Call(), L"<a>&\u00fc</a>");
    const auto requests = agent.GetAgent().Requests();
    ASSERT_EQ(requests.size(), 1U);
    EXPECT_EQ(requests[0].plugin, kPlugin);
    EXPECT_EQ(requests[0].method, L"Inspect");
    EXPECT_EQ(requests[0].param, L"param");
    EXPECT_EQ(requests[0].type, L"Request");
    EXPECT_EQ(requests[0].pid, GetCurrentProcessId());
}

TEST(PluginManagerClient, BringsANumber) {
    const Answering agent(Answer::Number(-3));
    std::int32_t result = 0;
    vorlek::CallWithIntResult(kPlugin, L"GetExecutionMode", {L"Email", false}, result);
    EXPECT_EQ(result, -3);
}

TEST(PluginManagerClient, DoesNotWaitForAnAnswerThatItDoesNotWant) {
    Agent agent;
    agent.Misbehave(Misbehaviour::Silent);
    vorlek::CallWithoutResult(kPlugin, L"BeginInspect", {L"param", false});
    EXPECT_TRUE(agent.WaitForRequests(1));
    EXPECT_EQ(agent.Requests()[0].method, L"BeginInspect");
}

TEST(PluginManagerClient, MarksAHiddenParameter) {
    Answering agent(Answer::Text(L""));
    const test_support::LogCapture log;
    std::wstring result;
    vorlek::CallWithStringResult(kPlugin, L"Inspect", {L"secret", true}, result);
    EXPECT_EQ(agent.GetAgent().Requests().at(0).param, L"secret");
    for (const std::wstring& line : log.Texts(L"TRACE")) {
        EXPECT_EQ(line.find(L"secret"), std::wstring::npos) << line;
    }
    EXPECT_EQ(log.Texts(L"TRACE").size(), 3U) << "connected, sent, received";
}

TEST(PluginManagerClient, RefusesEmptyNamesBeforeItConnects) {
    const Listener listener;
    const vorlek::ServicePort port(L"QLTPluginService", listener.Port());
    for (const auto& [plugin, method] : {std::pair(L"", L"Inspect"), {L"DataControlPlugin", L""}}) {
        const SystemCalls calls;
        const auto failure = Thrown<vorlek::Exception>([&] { PluginManagerClient client(plugin, method); });
        EXPECT_EQ(failure.GetMessage(), L"Invalid parameters!");
        EXPECT_EQ(failure.GetLocation(), L"vorlek::PluginManagerClient::PluginManagerClient");
        EXPECT_EQ(calls.Count("connect"), 0U);
        EXPECT_EQ(calls.Count("socket"), 1U) << "the port was read";
    }
}

TEST(PluginManagerClient, NamesAServiceThatIsDownBeforeAnEmptyName) {
    const auto failure = Thrown<vorlek::Exception>([] { PluginManagerClient client(L"", L""); });
    EXPECT_EQ(failure.GetMessage(), L"OpenFileMapping failed with: 2");
}

TEST(PluginManagerClient, NamesAServiceThatDoesNotListen) {
    Agent agent;
    agent.Misbehave(Misbehaviour::Refuse);
    EXPECT_EQ(Thrown<vorlek::Exception>(Call).GetMessage(), L"connect failed with: 10061");
}

TEST(PluginManagerClient, RaisesTheServicesOwnAccount) {
    const Answering agent(Answer::Error(L"The policy is not there: <none>"));
    const auto failure = Thrown<vorlek::RemoteException>(Call);
    EXPECT_EQ(failure.GetMessage(), L"The policy is not there: <none>");
    EXPECT_EQ(failure.GetLocation(), kSite);
}

TEST(PluginManagerClient, RefusesAnAnswerWithoutItsKey) {
    ExpectRefused(Message(MessageType::Response, 1), L"Result doesn't exist!");
    ExpectRefused(Message(MessageType::Error, 1), L"Error doesn't exist!");
}

TEST(PluginManagerClient, RefusesAMessageThatIsNoAnswer) {
    Message answer(MessageType::Test, 1);
    answer.Set(L"Result", L"x", false);
    ExpectRefused(answer, L"Unexpected response type: 3");
    ExpectRefused(Message(MessageType::Request, 1), L"Unexpected response type: 0");
}

TEST(PluginManagerClient, RefusesNoMessageAtAll) {
    const Answering agent(Answer::Bytes(Bytes(L"###@@@###")));
    const auto failure = Thrown<vorlek::Exception>(Call);
    EXPECT_EQ(failure.GetMessage(), L"Couldn't receive any response messages!");
    EXPECT_EQ(failure.GetLocation(), kSite);
}

TEST(PluginManagerClient, RefusesAResultOfAnotherType) {
    {
        const Answering agent(Answer::Text(L"1"));
        std::int32_t result = 0;
        const auto failure = Thrown<vorlek::ArgumentException>([&] {
            vorlek::CallWithIntResult(kPlugin, L"GetExecutionMode", {L"Email", false}, result);
        });
        EXPECT_EQ(failure.GetMessage(), L"Invalid requested type for value \"Result\". Requested: int, actual: string");
    }
    const Answering agent(Answer::Number(1));
    EXPECT_EQ(Thrown<vorlek::ArgumentException>(Call).GetMessage(),
              L"Invalid requested type for value \"Result\". Requested: string, actual: int");
}

TEST(PluginManagerClient, TakesTheFirstOfTwoMessagesAndWarns) {
    Message first(MessageType::Response, 1);
    first.Set(L"Result", L"first", false);
    Message second(MessageType::Response, 1);
    second.Set(L"Result", L"second", false);
    const Answering agent(Answer::Bytes(Bytes(first.ToString() + L"###@@@###" + second.ToString() + L"###@@@###")));
    const test_support::LogCapture log;
    EXPECT_EQ(Call(), L"first");
    EXPECT_THAT(
        log.Texts(L"WARN"),
        testing::ElementsAre(L"Received more than a single message! Only single message is currently supported!"));
}

TEST(PluginManagerClient, PassesOnWhatTheTransportReports) {
    Agent agent;
    const auto terminated = [&](const Misbehaviour& kind) {
        agent.Misbehave(kind);
        return Thrown<vorlek::ConnectionTerminatedException>(Call).GetMessage();
    };
    EXPECT_EQ(terminated(Misbehaviour::CloseMidMessage), L"recv failed!");
    EXPECT_EQ(terminated(Misbehaviour::Reset), L"recv failed!");
    agent.Misbehave(Misbehaviour::Garbage);
    EXPECT_THROW(Call(), vorlek::Exception);
}

TEST(PluginManagerClient, ReceivesAnAnswerInOddPieces) {
    Agent agent;
    agent.SetResponder([](const stand_ins::Request&) { return Answer::Text(L"\u4e2d\U0001F600"); });
    for (const Misbehaviour& kind : {Misbehaviour::ByteByByte, Misbehaviour::OddSplit}) {
        agent.Misbehave(kind);
        EXPECT_EQ(Call(), L"\u4e2d\U0001F600");
    }
}

TEST(PluginManagerClient, MakesTheCallsOfAWholeExchangeInTheirOrder) {
    const Answering agent(Answer::Text(L""));
    vorlek::WinsockInit();
    const SystemCalls calls;
    Call();
    std::vector<std::string> names = calls.Names();
    // However many reads the answer took, a wait stands between each two.
    for (std::size_t index = 0; index + 1 < names.size();) {
        if (names[index] == "recv" && names[index + 1] == "select") {
            const auto pair = names.begin() + static_cast<std::ptrdiff_t>(index);
            names.erase(pair, pair + 2);
        } else {
            ++index;
        }
    }
    EXPECT_THAT(names, testing::ElementsAre("GetAddrInfoW", "WSAAddressToStringW", "socket", "shutdown", "closesocket",
                                            "FreeAddrInfoW", "GetAddrInfoW", "WSAAddressToStringW", "socket", "connect",
                                            "send", "recv", "shutdown", "closesocket", "FreeAddrInfoW"));
}

TEST(PluginManagerClient, CallsAtOnceFromManyThreadsEachWithItsConnection) {
    Answering agent(Answer::Text(L"done"));
    std::vector<HANDLE> threads(8);
    for (HANDLE& thread : threads) {
        thread = CreateThread(
            nullptr, 0, [](void*) -> DWORD { return Call() == L"done" ? 1 : 0; }, nullptr, 0, nullptr);
    }
    DWORD done = 0;
    for (const HANDLE thread : threads) {
        DWORD result = 0;
        WaitForSingleObject(thread, INFINITE);
        GetExitCodeThread(thread, &result);
        done += result;
        CloseHandle(thread);
    }
    EXPECT_EQ(done, 8U);
    EXPECT_EQ(agent.GetAgent().Requests().size(), 8U);
}
