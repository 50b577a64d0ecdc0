// What a peer on the other end of the connection can do, and what becomes of the call.
#include <atomic>
#include <cwchar>

#include <gmock/gmock.h>

#include "plugin-link/Exceptions.h"
#include "plugin-link/MessageCommon.h"
#include "plugin-link/PluginManagerClient.h"
#include "tests/plugin-link/Service.h"
#include "tests/plugin-link/SocketPair.h"
#include "tests/plugin-link/Throws.h"
#include "tests/support/Threads.h"

namespace {

using namespace plugin_link_tests;
using testing::StartsWith;
using vorlek::ConnectionTerminatedException;

using Messages = std::vector<std::unique_ptr<vorlek::Message>>;

constexpr wchar_t kReceiveFailed[] = L"ConnectionTerminatedException: recv failed!";
constexpr wchar_t kReadFailed[] = L"Exception: Read failed with: ";
// For text without an element some readers report a failure, others the end of the input.
const auto kNotUnderstood =
    testing::AnyOf(StartsWith(kReadFailed), L"Exception: Invalid message header! Type: none, value: ");

std::wstring Call(const std::wstring& param) {
    std::wstring result;
    vorlek::CallWithStringResult(L"DataControlPlugin", L"Inspect", {param, false}, result);
    return result;
}

std::wstring ResultOf(const vorlek::Message& message) {
    std::wstring result;
    message.Get(L"Result", result);
    return result;
}

/// What receiving ends with when the bytes come in one piece, and then the end of the connection: the results of all
/// messages, or the failure.
std::wstring Outcome(const std::string& bytes) {
    SocketPair pair;
    const PieceWriter writer(pair, {bytes}, true);
    Messages messages;
    try {
        vorlek::MessageCommon::Receive(pair.near_, messages);
    } catch (const vorlek::Exception& failure) {
        return failure.GetExceptionName() + L": " + failure.GetMessage();
    }
    std::wstring results;
    for (const auto& message : messages) {
        results += ResultOf(*message) + L"|";
    }
    return results;
}

} // namespace

TEST(HostilePeer, ThatClosesOrResetsAtAnyByteOfItsAnswerIsGone) {
    const std::string answer = AnswerOf(L"x");
    for (const bool reset : {false, true}) {
        std::atomic<std::size_t> length = 0;
        const Service service([&](SOCKET connection) {
            ReadMessage(connection);
            Write(connection, std::string_view(answer).substr(0, length));
            if (reset) {
                EndWithAReset(connection);
            }
        });
        for (; length < answer.size(); ++length) {
            EXPECT_EQ(Thrown<ConnectionTerminatedException>([] { Call(L"param"); }).GetMessage(), L"recv failed!")
                << length << " bytes";
        }
    }
}

TEST(HostilePeer, ThatClosesAtAnyByteOfTheRequestIsGone) {
    std::atomic<std::size_t> length = 1;
    std::atomic<bool> cut = true;
    const Service service([&](SOCKET connection) {
        std::string start(length, '\0');
        cut =
            ::recv(connection, start.data(), static_cast<int>(start.size()), MSG_WAITALL) == static_cast<int>(length) &&
            !start.ends_with(Bytes(L"###@@@###"));
    });
    for (; cut; ++length) {
        EXPECT_EQ(Thrown<ConnectionTerminatedException>([] { Call(L"param"); }).GetMessage(), L"recv failed!")
            << length << " bytes";
    }
    EXPECT_GT(length, 500U) << "the whole of the request";
}

TEST(HostilePeer, ThatClosesInTheMiddleOfALongRequestIsGone) {
    const Service service([](SOCKET connection) {
        char chunk[4096]; // Wine's MSG_WAITALL may wait for ever
        for (int left = 1'000'000, count = 1; left > 0 && count > 0; left -= count) {
            count = ::recv(connection, chunk, sizeof chunk, 0);
        }
    });
    std::wstring param;
    param.resize(20'000'000, L'x');
    EXPECT_THAT(Thrown<ConnectionTerminatedException>([&] { Call(param); }).GetMessage(),
                testing::AnyOf(L"send failed!", L"recv failed!"));
}

// The delimiter comes in two pieces as well, at each of its places.
TEST(HostilePeer, ThatStallsAtAnyByteIsWaitedFor) {
    const std::string answer = AnswerOf(L"\u4e2d\U0001F600");
    for (std::size_t length = 1; length < answer.size(); ++length) {
        SocketPair pair;
        const PieceWriter writer(pair, {answer.substr(0, length), answer.substr(length)});
        Messages messages;
        vorlek::MessageCommon::Receive(pair.near_, messages);
        ASSERT_EQ(messages.size(), 1U) << length;
        EXPECT_EQ(ResultOf(*messages.front()), L"\u4e2d\U0001F600") << length;
    }
}

TEST(HostilePeer, ThatSendsGarbageBeforeADelimiterIsNotUnderstood) {
    const std::string answer = AnswerOf(L"x");
    EXPECT_THAT(Outcome(Bytes(L"garbage") + answer), kNotUnderstood);
    EXPECT_THAT(Outcome(Bytes(L"garbage###@@@###") + answer), kNotUnderstood);
    EXPECT_THAT(Outcome(Bytes(std::wstring(5000, L'\0') + L"###@@@###")), kNotUnderstood);
    EXPECT_THAT(Outcome(Bytes(L"<###@@@###")), kNotUnderstood);
}

TEST(HostilePeer, ThatSendsGarbageInsideADelimiterHasNotEndedItsMessage) {
    const std::string text = AnswerOf(L"x").substr(0, AnswerOf(L"x").size() - Bytes(L"###@@@###").size());
    for (const wchar_t* spoilt : {L"###@garbage@@###", L"## #@@@###", L"###@@@##", L"##@@@##", L"###@@@###x"}) {
        EXPECT_EQ(Outcome(text + Bytes(spoilt)), kReceiveFailed) << spoilt;
        EXPECT_THAT(Outcome(text + Bytes(spoilt) + Bytes(L"###@@@###")), kNotUnderstood) << spoilt;
    }
}

TEST(HostilePeer, ThatSendsGarbageAfterADelimiterIsNotUnderstood) {
    const std::string answer = AnswerOf(L"x");
    EXPECT_EQ(Outcome(answer + Bytes(L"garbage")), kReceiveFailed);
    EXPECT_THAT(Outcome(answer + Bytes(L"garbage###@@@###")), kNotUnderstood);
    // Two delimiters that share their middle are one, and a rest.
    EXPECT_THAT(Outcome(answer + Bytes(L"@@@###")), kNotUnderstood);
    EXPECT_EQ(Outcome(answer + Bytes(L"###@@@###")), L"x|");
}

TEST(HostilePeer, ThatSendsAnOddNumberOfBytesHasNotEndedItsMessage) {
    const std::string answer = AnswerOf(L"x");
    EXPECT_EQ(Outcome(answer + '#'), kReceiveFailed);
    EXPECT_EQ(Outcome('#' + answer), kReceiveFailed);
    EXPECT_EQ(Outcome(answer.substr(0, answer.size() - 1)), kReceiveFailed);
    EXPECT_EQ(Outcome(std::string("<Msg version=\"1\" type=\"Response\" pid=\"1\"/>###@@@###")), kReceiveFailed)
        << "bytes of eight bits";
}

// Windows' reader refuses half a pair, others hand it on.
TEST(HostilePeer, ThatSendsHalfASurrogateIsRefusedOrTakenAtItsWord) {
    const std::wstring text =
        L"<Msg version=\"1\" type=\"Response\" pid=\"1\"><Key name=\"Result\" type=\"string\" size=\"2\">";
    for (const wchar_t half : {L'\xD83D', L'\xDE00'}) {
        EXPECT_THAT(Outcome(Bytes(text + half + L"</Key></Msg>###@@@###")),
                    testing::AnyOf(StartsWith(kReadFailed), std::wstring{half, L'|'}));
    }
}

TEST(HostilePeer, ThatSendsAHundredMegabytesInSmallPiecesIsReadToTheEnd) {
    constexpr std::size_t kPieces = 25'600;
    const std::wstring piece = std::wstring(1023, L'x') + L"\u4e2d" + std::wstring(1024, L'y');
    const std::wstring answer = TextOf(AnswerOf(L"@")) + L"###@@@###";
    const std::size_t place = answer.find(L'>' + std::wstring(L"@")) + 1;
    SocketPair pair;
    Messages messages;
    test_support::RunThreads(2, [&](int thread) {
        if (thread == 0) {
            vorlek::MessageCommon::Receive(pair.near_, messages);
            return;
        }
        Write(pair.far_.Get(), Bytes(answer.substr(0, place)));
        const std::string bytes = Bytes(piece);
        for (std::size_t count = 0; count < kPieces; ++count) {
            Write(pair.far_.Get(), bytes);
        }
        Write(pair.far_.Get(), Bytes(answer.substr(place + 1)));
    });
    ASSERT_EQ(messages.size(), 1U);
    const std::wstring result = ResultOf(*messages.front());
    ASSERT_EQ(result.size(), kPieces * piece.size());
    for (std::size_t count = 0; count < kPieces; ++count) {
        ASSERT_EQ(std::wmemcmp(result.data() + count * piece.size(), piece.data(), piece.size()), 0) << count;
    }
}
