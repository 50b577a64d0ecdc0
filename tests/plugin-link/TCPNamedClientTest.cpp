#include "plugin-link/TCPNamedClient.h"

#include <memory>

#include <gmock/gmock.h>

#include "foundation/Exception.h"
#include "plugin-link/ServicePort.h"
#include "tests/plugin-link/SocketPair.h"
#include "tests/plugin-link/SystemCalls.h"
#include "tests/plugin-link/Throws.h"

namespace {

using namespace plugin_link_tests;
using vorlek::ServicePort;
using vorlek::TCPNamedClient;

const std::wstring kService = L"TCPNamedClientTest";

} // namespace

TEST(TCPNamedClient, ConnectsToThePublishedPort) {
    const Listener listener;
    const ServicePort port(kService, listener.Port());
    TCPNamedClient client(L"127.0.0.1", kService);
    client.Connect();
    EXPECT_TRUE(vorlek::Socket(listener.Accept()).IsValid());
}

TEST(TCPNamedClient, MakesNoSocketForAServiceWithoutASection) {
    const SystemCalls calls;
    const auto failure = Thrown<vorlek::Exception>([] { TCPNamedClient(L"127.0.0.1", kService); });
    EXPECT_EQ(failure.GetMessage(), L"OpenFileMapping failed with: 2");
    EXPECT_THAT(calls.Names(), testing::IsEmpty());
}

TEST(TCPNamedClient, CannotConnectToPortNull) {
    const ServicePort port(kService, 0);
    TCPNamedClient client(L"127.0.0.1", kService);
    const auto failure = Thrown<vorlek::Exception>([&] { client.Connect(); });
    EXPECT_THAT(failure.GetMessage(), testing::StartsWith(L"connect failed with: "));
}

TEST(TCPNamedClient, ReadsThePortOnce) {
    const Listener listener;
    auto port = std::make_unique<ServicePort>(kService, listener.Port());
    TCPNamedClient client(L"127.0.0.1", kService);
    port.reset();
    port = std::make_unique<ServicePort>(kService, std::uint16_t{1});
    client.Connect();
    EXPECT_TRUE(vorlek::Socket(listener.Accept()).IsValid());
}

TEST(TCPNamedClient, LetsGoOfTheSectionAtOnce) {
    const Listener listener;
    auto port = std::make_unique<ServicePort>(kService, listener.Port());
    const TCPNamedClient client(L"127.0.0.1", kService);
    port.reset();
    EXPECT_NO_THROW(port = std::make_unique<ServicePort>(kService, std::uint16_t{1}));
}

TEST(TCPNamedClient, FailsOnAStalePortInConnectOnly) {
    Listener listener;
    const ServicePort port(kService, listener.Port());
    listener.Close();
    TCPNamedClient client(L"127.0.0.1", kService);
    EXPECT_EQ(Thrown<vorlek::Exception>([&] { client.Connect(); }).GetMessage(), L"connect failed with: 10061");
}
