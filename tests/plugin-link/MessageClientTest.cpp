#include "plugin-link/MessageClient.h"

#include <gmock/gmock.h>

#include "foundation/Exception.h"
#include "plugin-link/ServicePort.h"
#include "tests/plugin-link/SocketPair.h"
#include "tests/plugin-link/Throws.h"
#include "tests/support/LogCapture.h"

namespace {

using namespace plugin_link_tests;
using vorlek::Message;
using vorlek::MessageClient;
using vorlek::MessageType;

const std::wstring kService = L"MessageClientTest";

} // namespace

TEST(MessageClient, SaysToWhomItIsConnected) {
    const Listener listener;
    const vorlek::ServicePort port(kService, listener.Port());
    const test_support::LogCapture log;
    MessageClient client(kService);
    EXPECT_THAT(log.Texts(L"TRACE"), testing::IsEmpty());
    client.Connect();
    EXPECT_THAT(log.Texts(L"TRACE"), testing::ElementsAre(L"Connected to: MessageClientTest"));
    EXPECT_THAT(log.Lines().back().logger, testing::EndsWith(L"vorlek.MessageClient"));
}

TEST(MessageClient, ExchangesMessages) {
    const Listener listener;
    const vorlek::ServicePort port(kService, listener.Port());
    MessageClient client(kService);
    client.Connect();
    const vorlek::Socket service(listener.Accept());
    const Message message(MessageType::Test, 5);
    const std::string wire = Bytes(message.ToString() + L"###@@@###");
    client.Send(message);
    std::string request(wire.size(), '\0');
    ::recv(service.Get(), request.data(), static_cast<int>(request.size()), MSG_WAITALL);
    EXPECT_EQ(request, wire);
    ::send(service.Get(), wire.data(), static_cast<int>(wire.size()), 0);
    std::vector<std::unique_ptr<Message>> messages;
    client.Receive(messages);
    ASSERT_EQ(messages.size(), 1U);
    EXPECT_EQ(messages.front()->GetPid(), 5U);
}

TEST(MessageClient, PassesOnThatTheServiceIsDown) {
    EXPECT_EQ(Thrown<vorlek::Exception>([] { MessageClient client(kService); }).GetMessage(),
              L"OpenFileMapping failed with: 2");
}
