// Exchanges between the add-in (as process 5120) and an agent (as process 1288), kept as the bytes that went over the
// connection. What the client sends today is compared with them byte for byte, and what the agent said is said again.
#include <functional>

#include <gmock/gmock.h>

#include "plugin-link/ConnectionManager.h"
#include "plugin-link/Exceptions.h"
#include "tests/plugin-link/Service.h"
#include "tests/plugin-link/SocketPair.h"
#include "tests/plugin-link/Throws.h"
#include "tests/support/TemporaryFolder.h"

namespace {

using namespace plugin_link_tests;
using vorlek::PluginUtils::CConnectionManager;

std::string Captured(const std::string& name) {
    return test_support::ReadBytes(TEST_DATA "/" + name + ".bin");
}

/// The captured request as this process sends it.
std::string RequestOf(const std::string& method) {
    std::string request = Captured(method + "-request");
    const std::string captured = Bytes(L"pid=\"5120\"");
    const std::size_t pid = request.find(captured);
    EXPECT_NE(pid, std::string::npos);
    return request.replace(pid, captured.size(), Bytes(L"pid=\"" + std::to_wstring(GetCurrentProcessId()) + L"\""));
}

vorlek::CInspectorMessage Document() {
    vorlek::CInspectorMessage message(L"Email");
    message.AddContextItem(L"EmailSubject", L"Pl\u00e4ne & \U0001F4C8");
    return message;
}

/// Makes the call to a service that gives the captured answer, and compares what it was sent.
template <class Call>
auto Exchange(const std::string& method, const std::string& answer, Call&& call) {
    const Service service([&](SOCKET connection) {
        EXPECT_EQ(ReadMessage(connection), RequestOf(method)) << method;
        Write(connection, Captured(answer));
    });
    return call(CConnectionManager());
}

} // namespace

TEST(CapturedExchange, OfInspect) {
    const auto inspect = [](const CConnectionManager& manager) { return manager.Inspect(Document()); };
    const auto decision = Exchange("inspect", "inspect-answer", inspect);
    EXPECT_EQ(decision->GetResult(), 1);
    EXPECT_EQ(decision->GetSubjectLabel(), L"[Vertraulich] Pl\u00e4ne & \U0001F4C8");
}

TEST(CapturedExchange, OfBeginInspect) {
    // The agent's answer comes to a connection that is closed.
    Exchange("begin-inspect", "begin-inspect-answer",
             [](const CConnectionManager& manager) { manager.BeginInspect(Document()); });
}

TEST(CapturedExchange, OfHandleAppLaunchFileAccess) {
    Exchange("handle-app-launch-file-access", "handle-app-launch-file-access-answer",
             [](const CConnectionManager& manager) { manager.HandleAppLaunchFileAccess(Document()); });
}

TEST(CapturedExchange, OfProcessExit) {
    Exchange("process-exit", "process-exit-answer",
             [](const CConnectionManager& manager) { manager.ProcessExit(Document()); });
}

TEST(CapturedExchange, OfGetExecutionMode) {
    const auto ask = [](const CConnectionManager& manager) { return manager.GetExecutionMode(L"Email"); };
    EXPECT_EQ(Exchange("get-execution-mode", "get-execution-mode-answer", ask), 1);
}

TEST(CapturedExchange, OfStartAppMgrIdentifyChannels) {
    const auto ask = [](const CConnectionManager& manager) { return manager.StartAppMgrIdentifyChannels(Document()); };
    const auto channels = Exchange("start-app-mgr-identify-channels", "start-app-mgr-identify-channels-answer", ask);
    EXPECT_TRUE(channels->IsChannelActivated(3));
    EXPECT_TRUE(channels->IsChannelActivated(9));
    EXPECT_FALSE(channels->IsChannelActivated(0));
    EXPECT_TRUE(channels->IsLaunchInspectionOff());
}

TEST(CapturedExchange, OfACallThatTheAgentCannotServe) {
    const auto failure = Thrown<vorlek::RemoteException>([] {
        Exchange("get-execution-mode", "error-answer",
                 [](const CConnectionManager& manager) { manager.GetExecutionMode(L"Email"); });
    });
    EXPECT_EQ(failure.GetMessage(), L"No policy for <Email> & \u00e9");
}
