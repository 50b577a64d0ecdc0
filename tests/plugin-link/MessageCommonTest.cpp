#include "plugin-link/MessageCommon.h"

#include <gmock/gmock.h>

#include "plugin-link/Exceptions.h"
#include "tests/plugin-link/SocketPair.h"
#include "tests/plugin-link/SystemCalls.h"
#include "tests/plugin-link/Throws.h"
#include "tests/support/LogCapture.h"

namespace {

using namespace plugin_link_tests;
using vorlek::Message;
using vorlek::MessageType;
namespace MessageCommon = vorlek::MessageCommon;

using Messages = std::vector<std::unique_ptr<Message>>;

const std::wstring kDelimiter = L"###@@@###";

std::wstring Text(const std::wstring& result) {
    Message message(MessageType::Response, 1288);
    message.Set(L"Result", result, false);
    return message.ToString();
}

std::string Wire(const std::wstring& result) {
    return Bytes(Text(result) + kDelimiter);
}

std::vector<std::wstring> Results(const Messages& messages) {
    std::vector<std::wstring> results;
    for (const auto& message : messages) {
        message->Get(L"Result", results.emplace_back());
    }
    return results;
}

std::vector<std::wstring> Receive(std::vector<std::string> pieces) {
    SocketPair pair;
    const PieceWriter writer(pair, std::move(pieces));
    Messages messages;
    MessageCommon::Receive(pair.near_, messages);
    return Results(messages);
}

std::vector<std::string> Pieces(const std::string& bytes, std::size_t length) {
    std::vector<std::string> pieces;
    for (std::size_t begin = 0; begin < bytes.size(); begin += length) {
        pieces.push_back(bytes.substr(begin, length));
    }
    return pieces;
}

} // namespace

TEST(MessageCommon, SendsTheTextInUtf16WithTheDelimiterBehindIt) {
    SocketPair pair;
    Message message(MessageType::Request, 1);
    message.Set(L"Param", L"\u00e9\U0001F600", true);
    MessageCommon::Send(pair.near_, message);
    pair.near_ = INVALID_SOCKET;
    const std::string bytes = ReadAll(pair.far_.Get());
    EXPECT_EQ(bytes, Bytes(message.ToString() + kDelimiter));
    EXPECT_TRUE(bytes.starts_with(std::string("\x3C\0\x3F\0\x78\0\x6D\0\x6C\0", 10)));
    EXPECT_TRUE(bytes.ends_with(std::string("\x23\0\x23\0\x23\0\x40\0\x40\0\x40\0\x23\0\x23\0\x23\0", 18)));
}

TEST(MessageCommon, ADelimiterInsideAValueDoesNotEndTheMessage) {
    for (const std::wstring value : {L"###@@@###", L"a ###@@@###@@@### b", L"####@@@####", L"###@@@######@@@###"}) {
        SocketPair pair;
        Message sent(MessageType::Response, 1);
        sent.Set(L"Result", value, false);
        MessageCommon::Send(pair.far_, sent);
        Messages received;
        MessageCommon::Receive(pair.near_, received);
        EXPECT_EQ(Results(received), std::vector{value});
    }
}

TEST(MessageCommon, ADelimiterIsHiddenAtEachPlaceOfAText) {
    for (std::size_t place = 0; place < 2 * kDelimiter.size(); ++place) {
        SocketPair pair;
        Message sent(MessageType::Response, 1);
        sent.Set(L"Result", std::wstring(place, L'x') + kDelimiter, false);
        MessageCommon::Send(pair.far_, sent);
        pair.far_ = INVALID_SOCKET;
        const std::string bytes = ReadAll(pair.near_.Get());
        EXPECT_NE(bytes.find(Bytes(L"x>" + std::wstring(place, L'x') + L"&#35;##@@@###<").substr(4)), bytes.npos)
            << place;
        EXPECT_EQ(bytes.find(Bytes(kDelimiter)), bytes.size() - Bytes(kDelimiter).size()) << place;
    }
}

TEST(MessageCommon, SendsAMessageInOneCall) {
    SocketPair pair;
    const SystemCalls calls;
    MessageCommon::Send(pair.near_, Message(MessageType::Request, 1));
    EXPECT_THAT(calls.Names(), testing::ElementsAre("send"));
}

TEST(MessageCommon, LogsTheMaskedTextOfWhatItSends) {
    SocketPair pair;
    Message message(MessageType::Request, 1);
    message.Set(L"Param", L"secret", true);
    const test_support::LogCapture log;
    MessageCommon::Send(pair.near_, message);
    EXPECT_THAT(log.Texts(L"TRACE"), testing::ElementsAre(L"Sending to: " + std::to_wstring(pair.near_.Get()) +
                                                          L", message: " + message.ToLogString()));
    EXPECT_THAT(log.Lines().back().logger, testing::EndsWith(L"MessageCommon"));
}

TEST(MessageCommon, LogsWhatItReceivesAsItCame) {
    SocketPair pair;
    const std::wstring text = L"<Msg version=\"1\" type=\"Response\" pid=\"1\">"
                              L"<Key name=\"Result\" type=\"string\" size=\"2\" hidden=\"1\">secret</Key></Msg>";
    const PieceWriter writer(pair, {Bytes(text + kDelimiter)});
    const test_support::LogCapture log;
    Messages messages;
    MessageCommon::Receive(pair.near_, messages);
    EXPECT_THAT(log.Texts(L"TRACE"),
                testing::ElementsAre(L"Received from: " + std::to_wstring(pair.near_.Get()) + L", message: " + text));
}

TEST(MessageCommon, ReceivesTwoMessagesThatArriveTogether) {
    EXPECT_THAT(Receive({Wire(L"first") + Wire(L"second")}), testing::ElementsAre(L"first", L"second"));
}

TEST(MessageCommon, PartsMessagesOfEachLength) {
    std::string wire;
    std::vector<std::wstring> results;
    for (std::size_t length = 1; length <= 2 * kDelimiter.size(); ++length) {
        wire += Wire(results.emplace_back(length, L'x'));
    }
    EXPECT_EQ(Receive({wire}), results);
}

TEST(MessageCommon, KeepsReadingUntilAReadEndsOnADelimiter) {
    const std::string second = Wire(L"second");
    EXPECT_THAT(Receive({Wire(L"first") + second.substr(0, 30), second.substr(30)}),
                testing::ElementsAre(L"first", L"second"));
}

TEST(MessageCommon, AppendsToWhatTheCallerHas) {
    SocketPair pair;
    Messages messages;
    messages.push_back(Message::FromString(Text(L"before")));
    const PieceWriter writer(pair, {Wire(L"after")});
    MessageCommon::Receive(pair.near_, messages);
    EXPECT_THAT(Results(messages), testing::ElementsAre(L"before", L"after"));
}

TEST(MessageCommon, HoldsBackHalfACodeUnit) {
    const std::string wire = Wire(L"\u4e2d\U0001F600");
    EXPECT_THAT(Receive({wire.substr(0, 101), wire.substr(101)}), testing::ElementsAre(L"\u4e2d\U0001F600"));
    EXPECT_THAT(Receive({wire.substr(0, 1), wire.substr(1, 6), wire.substr(7)}),
                testing::ElementsAre(L"\u4e2d\U0001F600"));
    EXPECT_THAT(Receive({wire.substr(0, wire.size() - 1), wire.substr(wire.size() - 1)}),
                testing::ElementsAre(L"\u4e2d\U0001F600"));
}

TEST(MessageCommon, ReceivesOneByteAtATime) {
    EXPECT_THAT(Receive(Pieces(Wire(L"slow"), 1)), testing::ElementsAre(L"slow"));
}

TEST(MessageCommon, ReceivesADelimiterThatComesInPieces) {
    EXPECT_THAT(Receive({Bytes(Text(L"x") + L"###@@"), Bytes(L"@###")}), testing::ElementsAre(L"x"));
}

TEST(MessageCommon, MakesNoMessageOfADelimiterAlone) {
    EXPECT_THAT(Receive({Wire(L"only") + Bytes(kDelimiter)}), testing::ElementsAre(L"only"));
    EXPECT_THAT(Receive({Bytes(kDelimiter + kDelimiter)}), testing::IsEmpty());
}

TEST(MessageCommon, ReportsAPeerThatClosesBeforeTheDelimiter) {
    SocketPair pair;
    const PieceWriter writer(pair, {Bytes(Text(L"half"))}, true);
    Messages messages;
    const auto failure =
        Thrown<vorlek::ConnectionTerminatedException>([&] { MessageCommon::Receive(pair.near_, messages); });
    EXPECT_EQ(failure.GetMessage(), L"recv failed!");
    EXPECT_EQ(failure.GetLocation(), L"vorlek::TCPCommon::Recv");
    EXPECT_TRUE(messages.empty());
}

TEST(MessageCommon, ReportsAWaitThatFailsOrBringsNothing) {
    for (const int result : {SOCKET_ERROR, 0}) {
        SocketPair pair;
        const PieceWriter writer(pair, {Bytes(Text(L"half"))});
        SystemCalls calls;
        calls.AnswerSelect(result);
        Messages messages;
        const auto failure =
            Thrown<vorlek::ConnectionTerminatedException>([&] { MessageCommon::Receive(pair.near_, messages); });
        EXPECT_EQ(failure.GetMessage(), L"Connection terminated!");
        EXPECT_EQ(failure.GetLocation(), L"vorlek::MessageCommon::Receive");
    }
}

TEST(MessageCommon, WaitsWithoutALimitBetweenTwoReads) {
    SocketPair pair;
    const std::string wire = Wire(L"x");
    const PieceWriter writer(pair, {wire.substr(0, 50), wire.substr(50)});
    const SystemCalls calls;
    Messages messages;
    MessageCommon::Receive(pair.near_, messages);
    EXPECT_THAT(calls.Names(), testing::ElementsAre("recv", "select", "recv"));
    EXPECT_TRUE(calls.selection.read);
    EXPECT_FALSE(calls.selection.hasLimit);
}

TEST(MessageCommon, PassesOnWhatTheTextIsNot) {
    SocketPair pair;
    const PieceWriter writer(pair, {Wire(L"first") + Bytes(L"<Other/>" + kDelimiter)});
    Messages messages;
    const auto failure = Thrown<vorlek::Exception>([&] { MessageCommon::Receive(pair.near_, messages); });
    EXPECT_EQ(failure.GetMessage(), L"Invalid message header! Type: 0, value: Other");
}

TEST(MessageCommon, CarriesTenMegabytesBothWays) {
    SocketPair pair;
    std::wstring document(5'000'000, L'x');
    for (std::size_t index = 0; index < document.size(); index += 50) {
        document[index] = static_cast<wchar_t>(L'\u0100' + index % 5000);
    }
    const PieceWriter writer(pair, {Wire(document)});
    Messages messages;
    MessageCommon::Receive(pair.near_, messages);
    ASSERT_EQ(messages.size(), 1U);
    EXPECT_TRUE(Results(messages).front() == document);
}
