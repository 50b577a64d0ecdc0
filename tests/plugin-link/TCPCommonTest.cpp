#include "plugin-link/TCPCommon.h"

#include <gmock/gmock.h>

#include "plugin-link/Exceptions.h"
#include "tests/plugin-link/SocketPair.h"
#include "tests/plugin-link/SystemCalls.h"
#include "tests/plugin-link/Throws.h"

namespace {

using namespace plugin_link_tests;
namespace TCPCommon = vorlek::TCPCommon;

const std::vector<BYTE> kHello = {'h', 'e', 'l', 'l', 'o'};

void ExpectInvalidParameter(const std::function<void()>& body, const wchar_t* location) {
    const SystemCalls calls;
    const auto failure = Thrown<vorlek::Exception>(body);
    EXPECT_EQ(failure.GetMessage(), L"Invalid parameter!");
    EXPECT_EQ(failure.GetLocation(), location);
    EXPECT_THAT(calls.Names(), testing::IsEmpty());
}

} // namespace

TEST(TCPCommon, SendsTheBytesAndCountsThem) {
    SocketPair pair;
    EXPECT_EQ(TCPCommon::Send(pair.near_, kHello), 5);
    pair.near_ = INVALID_SOCKET;
    EXPECT_EQ(ReadAll(pair.far_.Get()), "hello");
}

TEST(TCPCommon, ReadsAtMostTheVectorsSizeAndShrinksItToWhatCame) {
    SocketPair pair;
    ::send(pair.far_.Get(), "hello", 5, 0);
    std::vector<BYTE> two(2);
    TCPCommon::Recv(pair.near_, two);
    EXPECT_EQ(two, (std::vector<BYTE>{'h', 'e'}));
    std::vector<BYTE> many(100);
    TCPCommon::Recv(pair.near_, many);
    EXPECT_EQ(many, (std::vector<BYTE>{'l', 'l', 'o'}));
}

TEST(TCPCommon, RefusesAnInvalidSocketOrNoBytesWithoutTouchingTheSocket) {
    const SocketPair pair;
    const vorlek::Socket none;
    const vorlek::Socket null(0);
    std::vector<BYTE> empty;
    std::vector<BYTE> data = kHello;
    ExpectInvalidParameter([&] { TCPCommon::Send(none, data); }, L"vorlek::TCPCommon::Send");
    ExpectInvalidParameter([&] { TCPCommon::Send(null, data); }, L"vorlek::TCPCommon::Send");
    ExpectInvalidParameter([&] { TCPCommon::Send(pair.near_, empty); }, L"vorlek::TCPCommon::Send");
    ExpectInvalidParameter([&] { TCPCommon::Recv(none, data); }, L"vorlek::TCPCommon::Recv");
    ExpectInvalidParameter([&] { TCPCommon::Recv(pair.near_, empty); }, L"vorlek::TCPCommon::Recv");
}

TEST(TCPCommon, CallsABrokenConnectionTerminated) {
    for (const int error : {WSAEINTR, WSAECONNABORTED, WSAECONNRESET}) {
        const SocketPair pair;
        SystemCalls calls;
        calls.Fail("send", error);
        calls.Fail("recv", error);
        std::vector<BYTE> data = kHello;
        const auto sending = Thrown<vorlek::ConnectionTerminatedException>([&] { TCPCommon::Send(pair.near_, data); });
        EXPECT_EQ(sending.GetMessage(), L"send failed!");
        EXPECT_EQ(sending.GetLocation(), L"vorlek::TCPCommon::Send");
        const auto receiving =
            Thrown<vorlek::ConnectionTerminatedException>([&] { TCPCommon::Recv(pair.near_, data); });
        EXPECT_EQ(receiving.GetMessage(), L"recv failed!");
        EXPECT_EQ(receiving.GetLocation(), L"vorlek::TCPCommon::Recv");
    }
}

TEST(TCPCommon, TellsAnyOtherErrorByItsNumber) {
    const SocketPair pair;
    SystemCalls calls;
    calls.Fail("send", WSAENOBUFS);
    calls.Fail("recv", WSAETIMEDOUT);
    std::vector<BYTE> data = kHello;
    const auto sending = Thrown<vorlek::Exception>([&] { TCPCommon::Send(pair.near_, data); });
    EXPECT_EQ(sending.GetMessage(), L"send failed with: 10055");
    EXPECT_EQ(sending.GetLocation(), L"vorlek::TCPCommon::Send");
    const auto receiving = Thrown<vorlek::Exception>([&] { TCPCommon::Recv(pair.near_, data); });
    EXPECT_EQ(receiving.GetMessage(), L"recv failed with: 10060");
    EXPECT_EQ(receiving.GetLocation(), L"vorlek::TCPCommon::Recv");
}

TEST(TCPCommon, ReportsAPeerThatClosedLikeABrokenConnection) {
    SocketPair pair;
    pair.far_ = INVALID_SOCKET;
    std::vector<BYTE> data(10);
    EXPECT_EQ(Thrown<vorlek::ConnectionTerminatedException>([&] { TCPCommon::Recv(pair.near_, data); }).GetMessage(),
              L"recv failed!");
}

TEST(TCPCommon, SendsOnceEvenIfNotAllBytesWent) {
    const SocketPair pair;
    u_long on = 1;
    ::ioctlsocket(pair.near_.Get(), static_cast<long>(FIONBIO), &on);
    const std::vector<BYTE> much(100'000'000);
    const SystemCalls calls;
    const int sent = TCPCommon::Send(pair.near_, much);
    EXPECT_GT(sent, 0);
    EXPECT_EQ(calls.Count("send"), 1U);
}

TEST(TCPCommon, TellsWhetherThereIsSomethingToRead) {
    SocketPair pair;
    bool ready = true;
    EXPECT_TRUE(TCPCommon::WaitForRead(pair.near_, 0, ready));
    EXPECT_FALSE(ready);
    ::send(pair.far_.Get(), "x", 1, 0);
    EXPECT_TRUE(TCPCommon::WaitForRead(pair.near_, ready));
    EXPECT_TRUE(ready);
}

TEST(TCPCommon, TellsWhetherItCanBeWritten) {
    const SocketPair pair;
    bool ready = false;
    EXPECT_TRUE(TCPCommon::WaitForWrite(pair.near_, 0, ready));
    EXPECT_TRUE(ready);
}

TEST(TCPCommon, TellsWhetherAnythingIsExceptional) {
    const SocketPair pair;
    bool ready = true;
    EXPECT_TRUE(TCPCommon::WaitForException(pair.near_, 0, ready));
    EXPECT_FALSE(ready);
}

TEST(TCPCommon, WaitsForChosenConditionsOnly) {
    const SocketPair pair;
    for (int mask = 1; mask < 8; ++mask) {
        SystemCalls calls;
        calls.AnswerSelect(1);
        bool ready = false;
        EXPECT_TRUE(TCPCommon::Wait(pair.near_, 0, (mask & 1) != 0, (mask & 2) != 0, (mask & 4) != 0, ready));
        EXPECT_TRUE(ready);
        EXPECT_EQ(calls.selection.read, (mask & 1) != 0);
        EXPECT_EQ(calls.selection.write, (mask & 2) != 0);
        EXPECT_EQ(calls.selection.exception, (mask & 4) != 0);
        EXPECT_EQ(calls.selection.chosen.fd_count, 1U);
        EXPECT_EQ(calls.selection.chosen.fd_array[0], pair.near_.Get());
    }
}

TEST(TCPCommon, IsReadyForExactlyOneSocket) {
    const SocketPair pair;
    for (const auto& [result, expected] : {std::pair(0, false), {1, true}, {2, false}}) {
        SystemCalls calls;
        calls.AnswerSelect(result);
        bool ready = !expected;
        EXPECT_TRUE(TCPCommon::Wait(pair.near_, 0, true, true, false, ready));
        EXPECT_EQ(ready, expected) << result;
    }
}

TEST(TCPCommon, CannotWaitForNothingOrOnNoSocket) {
    const SocketPair pair;
    bool ready = true;
    EXPECT_FALSE(TCPCommon::Wait(pair.near_, 0, false, false, false, ready));
    EXPECT_FALSE(ready);
    EXPECT_FALSE(TCPCommon::WaitForRead(vorlek::Socket(), 0, ready));
}

TEST(TCPCommon, CutsALimitToWholeSeconds) {
    const SocketPair pair;
    for (const auto& [milliseconds, seconds] : {std::pair(0UL, 0L), {999UL, 0L}, {1000UL, 1L}, {2999UL, 2L}}) {
        SystemCalls calls;
        calls.AnswerSelect(0);
        bool ready = false;
        TCPCommon::WaitForRead(pair.near_, milliseconds, ready);
        EXPECT_TRUE(calls.selection.hasLimit);
        EXPECT_EQ(calls.selection.limit.tv_sec, seconds) << milliseconds;
        EXPECT_EQ(calls.selection.limit.tv_usec, 0);
    }
}

TEST(TCPCommon, DoesNotWaitForLessThanASecond) {
    const SocketPair pair;
    bool ready = true;
    const ULONGLONG before = GetTickCount64();
    EXPECT_TRUE(TCPCommon::WaitForRead(pair.near_, 999, ready));
    EXPECT_LT(GetTickCount64() - before, 900U);
    EXPECT_FALSE(ready);
}

TEST(TCPCommon, WaitsForEverWhenToldSo) {
    const SocketPair pair;
    SystemCalls calls;
    calls.AnswerSelect(1);
    bool ready = false;
    TCPCommon::WaitForRead(pair.near_, INFINITE, ready);
    EXPECT_FALSE(calls.selection.hasLimit);
    TCPCommon::WaitForRead(pair.near_, ready);
    EXPECT_FALSE(calls.selection.hasLimit);
}
