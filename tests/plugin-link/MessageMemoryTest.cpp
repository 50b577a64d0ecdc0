// What a message of n bytes takes while it is received and sent, measured in a process of its own.
#include <gtest/gtest.h>

#include "plugin-link/MessageCommon.h"
#include "tests/plugin-link/Memory.h"
#include "tests/plugin-link/Service.h"
#include "tests/plugin-link/SocketPair.h"
#include "tests/support/ChildProcess.h"
#include "tests/support/Threads.h"

namespace {

using namespace plugin_link_tests;

constexpr std::size_t kPieces = 4'096;
const std::wstring kPiece(2'048, L'x');
constexpr double kBytes = 2.0 * 2'048 * kPieces; // 16 MB

/// The most that a multiple of the message may come to, with what a process takes beside it.
constexpr double kTwice = 2.5;
#ifdef _GLIBCXX_ASSERTIONS
constexpr double kFourTimes = 5.5; // this build's heap cannot let a block grow where it is
#else
constexpr double kFourTimes = 4.5;
#endif

/// Runs the body beside one that does the peer's part; returns what was added to the process at the most, in bytes.
std::wstring Measure(const std::function<void(const vorlek::Socket&)>& body, const std::function<void(SOCKET)>& peer) {
    SocketPair pair;
    const std::size_t before = PeakBytes();
    test_support::RunThreads(2, [&](int thread) { thread == 0 ? body(pair.near_) : peer(pair.far_.Get()); });
    return std::to_wstring(PeakBytes() - before);
}

std::wstring ReceiveMuch(const std::wstring&) {
    return Measure(
        [](const vorlek::Socket& socket) {
            std::vector<std::unique_ptr<vorlek::Message>> messages;
            vorlek::MessageCommon::Receive(socket, messages);
        },
        [](SOCKET socket) {
            Write(socket,
                  Bytes(L"<Msg version=\"1\" type=\"Response\" pid=\"1\"><Key name=\"a\" type=\"string\" size=\"1\">"));
            const std::string piece = Bytes(kPiece);
            for (std::size_t count = 0; count < kPieces; ++count) {
                Write(socket, piece);
            }
            Write(socket, Bytes(L"</Key></Msg>###@@@###"));
        });
}

std::wstring SendMuch(const std::wstring&) {
    return Measure(
        [](const vorlek::Socket& socket) {
            vorlek::Message message(vorlek::MessageType::Request, 1);
            message.Set(L"Param", std::wstring(kPiece.size() * kPieces, L'x'), false);
            vorlek::MessageCommon::Send(socket, message);
            ::shutdown(socket.Get(), SD_BOTH);
        },
        [](SOCKET socket) {
            std::string chunk(1 << 16, '\0');
            while (::recv(socket, chunk.data(), static_cast<int>(chunk.size()), 0) > 0) {
            }
        });
}

const test_support::ChildRoleName kReceive(L"ReceiveMuch", ReceiveMuch);
const test_support::ChildRoleName kSend(L"SendMuch", SendMuch);

double FactorOf(const wchar_t* role) {
    return std::stod(test_support::ChildProcess(role).Result()) / kBytes;
}

} // namespace

// The text, the value, and what the reader holds of them; the bytes are never there as a whole.
TEST(MessageMemory, OfReceivingIsFourTimesTheMessage) {
    EXPECT_LT(FactorOf(L"ReceiveMuch"), kFourTimes);
}

// The value and the text, whose bytes are sent as they are.
TEST(MessageMemory, OfSendingIsTwiceTheMessage) {
    EXPECT_LT(FactorOf(L"SendMuch"), kTwice);
}
