#include "plugin-link/TCPClient.h"

#include <gmock/gmock.h>

#include "foundation/Exception.h"
#include "tests/plugin-link/SocketPair.h"
#include "tests/plugin-link/SystemCalls.h"
#include "tests/plugin-link/Throws.h"

namespace {

using namespace plugin_link_tests;

class CountingClient : public vorlek::TCPClient {
public:
    using TCPClient::TCPClient;
    void OnConnect() override { ++connected; }

    int connected = 0;
};

} // namespace

TEST(TCPClient, HasASocketButNoConnectionAtFirst) {
    const Listener listener;
    const CountingClient client(L"127.0.0.1", listener.Port());
    EXPECT_TRUE(client.GetSocket().IsValid());
    EXPECT_EQ(::send(client.GetSocket().Get(), "x", 1, 0), SOCKET_ERROR);
    EXPECT_EQ(client.connected, 0);
}

TEST(TCPClient, ConnectsAndSaysSo) {
    const Listener listener;
    CountingClient client(L"127.0.0.1", listener.Port());
    client.Connect();
    const vorlek::Socket accepted(listener.Accept());
    EXPECT_EQ(client.connected, 1);
    EXPECT_EQ(::send(client.GetSocket().Get(), "x", 1, 0), 1);
}

TEST(TCPClient, CanConnectAgain) {
    const Listener listener;
    CountingClient client(L"127.0.0.1", listener.Port());
    client.Connect();
    const vorlek::Socket first(listener.Accept());
    client.Connect();
    const vorlek::Socket second(listener.Accept());
    EXPECT_EQ(client.connected, 2);
    EXPECT_EQ(ReadAll(first.Get()), "") << "the first connection has ended";
    EXPECT_EQ(::send(client.GetSocket().Get(), "x", 1, 0), 1);
}

TEST(TCPClient, MakesItsCallsInTheRequiredOrder) {
    const Listener listener;
    const SystemCalls calls;
    {
        vorlek::TCPClient client(L"127.0.0.1", listener.Port());
        EXPECT_THAT(calls.Names(), testing::ElementsAre("GetAddrInfoW", "WSAAddressToStringW", "socket"));
        client.Connect();
    }
    EXPECT_THAT(calls.Names(),
                testing::ElementsAre("GetAddrInfoW", "WSAAddressToStringW", "socket", "shutdown", "closesocket",
                                     "FreeAddrInfoW", "GetAddrInfoW", "WSAAddressToStringW", "socket", "connect",
                                     "shutdown", "closesocket", "FreeAddrInfoW"));
}

TEST(TCPClient, EndsTheConnectionWithItself) {
    const Listener listener;
    auto client = std::make_unique<vorlek::TCPClient>(L"127.0.0.1", listener.Port());
    client->Connect();
    const vorlek::Socket accepted(listener.Accept());
    client.reset();
    EXPECT_EQ(ReadAll(accepted.Get()), "");
}

TEST(TCPClient, TellsByNumberWhyItCannotConnect) {
    Listener listener;
    CountingClient client(L"127.0.0.1", listener.Port());
    listener.Close();
    const auto failure = Thrown<vorlek::Exception>([&] { client.Connect(); });
    EXPECT_EQ(failure.GetMessage(), L"connect failed with: 10061");
    EXPECT_EQ(failure.GetLocation(), L"vorlek::TCPClient::Connect");
    EXPECT_EQ(client.connected, 0);
}

TEST(TCPClient, TellsByNumberWhyItHasNoSocket) {
    SystemCalls calls;
    calls.Fail("socket", WSAEMFILE);
    const auto failure = Thrown<vorlek::Exception>([] { vorlek::TCPClient(L"127.0.0.1", 1); });
    EXPECT_EQ(failure.GetMessage(), L"socket failed with: 10024");
    EXPECT_EQ(failure.GetLocation(), L"vorlek::TCPClient::Init");
}

TEST(TCPClient, PassesOnThatItsHostDoesNotResolve) {
    SystemCalls calls;
    calls.Fail("GetAddrInfoW", WSAHOST_NOT_FOUND);
    const auto failure = Thrown<vorlek::Exception>([] { vorlek::TCPClient(L"127.0.0.1", 1); });
    EXPECT_EQ(failure.GetMessage(), L"GetAddrInfo failed with: 11001");
    EXPECT_EQ(calls.Count("socket"), 0U);
}
