#include "plugin-link/IP.h"

#include <memory>

#include <gmock/gmock.h>

#include "foundation/Exception.h"
#include "tests/plugin-link/SystemCalls.h"
#include "tests/plugin-link/Throws.h"

namespace {

using plugin_link_tests::SystemCalls;
using plugin_link_tests::Thrown;
using vorlek::IP;

sockaddr_in Loopback(std::uint16_t port) {
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    address.sin_port = htons(port);
    return address;
}

const sockaddr* Generic(const sockaddr_in& address) {
    return reinterpret_cast<const sockaddr*>(&address);
}

const sockaddr_in& AddressOf(const IP& ip) {
    return *reinterpret_cast<const sockaddr_in*>(ip.GetInfo().ai_addr);
}

} // namespace

TEST(IP, ResolvesHostAndPort) {
    const IP ip(L"127.0.0.1", 4711);
    EXPECT_EQ(ip.GetAddress(), L"127.0.0.1:4711");
    EXPECT_EQ(ip.GetService(), L"4711");
    EXPECT_EQ(ip.GetInfo().ai_family, AF_INET);
    EXPECT_EQ(ip.GetInfo().ai_socktype, SOCK_STREAM);
    EXPECT_EQ(ip.GetInfo().ai_protocol, IPPROTO_TCP);
    EXPECT_EQ(AddressOf(ip).sin_port, htons(4711));
    EXPECT_EQ(AddressOf(ip).sin_addr.s_addr, htonl(INADDR_LOOPBACK));
}

TEST(IP, TakesPortNullForNoService) {
    const IP ip(L"127.0.0.1", 0);
    EXPECT_EQ(ip.GetService(), L"");
    EXPECT_EQ(ip.GetAddress(), L"127.0.0.1");
    EXPECT_EQ(AddressOf(ip).sin_port, 0);
}

TEST(IP, TakesTheLargestPort) {
    EXPECT_EQ(IP(L"127.0.0.1", 65535).GetAddress(), L"127.0.0.1:65535");
}

TEST(IP, IsMadeFromAnAddress) {
    const sockaddr_in address = Loopback(80);
    const IP ip(Generic(address), sizeof address);
    EXPECT_EQ(ip.GetHost(), L"127.0.0.1");
    EXPECT_EQ(ip.GetService(), L"80");
    EXPECT_EQ(ip.GetAddress(), L"127.0.0.1:80");
}

TEST(IP, RefusesANullAddress) {
    const sockaddr_in address = Loopback(80);
    for (const auto& make : {std::function([] { IP(nullptr, 16); }), std::function([&] { IP(Generic(address), 0); })}) {
        const auto failure = Thrown<vorlek::Exception>(make);
        EXPECT_EQ(failure.GetMessage(), L"Invalid parameter!");
        EXPECT_EQ(failure.GetLocation(), L"vorlek::IP::IP");
    }
}

TEST(IP, RefusesAnAddressWithoutAPort) {
    const sockaddr_in address = Loopback(0);
    const auto failure = Thrown<vorlek::Exception>([&] { IP(Generic(address), sizeof address); });
    EXPECT_EQ(failure.GetMessage(), L"Invalid address: \"127.0.0.1\"!");
    EXPECT_EQ(failure.GetLocation(), L"vorlek::IP::IP");
}

TEST(IP, TellsByNumberWhatDoesNotResolve) {
    const IP started(L"127.0.0.1", 1);
    ADDRINFOW hints{};
    hints.ai_socktype = SOCK_STREAM;
    hints.ai_protocol = IPPROTO_TCP;
    ADDRINFOW* list = nullptr;
    const int expected = GetAddrInfoW(L"127.0.0.1", L"no such service", &hints, &list);
    ASSERT_NE(expected, 0);
    const auto failure = Thrown<vorlek::Exception>([] { IP(L"127.0.0.1", L"no such service"); });
    EXPECT_EQ(failure.GetMessage(), L"GetAddrInfo failed with: " + std::to_wstring(expected));
    EXPECT_EQ(failure.GetLocation(), L"vorlek::IP::Init");
}

TEST(IP, TellsByNumberWhichAddressHasNoText) {
    const sockaddr_in address = Loopback(80);
    SystemCalls calls;
    calls.Fail("WSAAddressToStringW", WSAEFAULT);
    const auto failure = Thrown<vorlek::Exception>([&] { IP::AddressToString(Generic(address), sizeof address); });
    EXPECT_EQ(failure.GetMessage(), L"WSAAddressToString failed with: 10014");
    EXPECT_EQ(failure.GetLocation(), L"vorlek::IP::AddressToString");
}

TEST(IP, CopyOutlivesItsSource) {
    auto source = std::make_unique<IP>(L"127.0.0.1", 4711);
    const IP copy(*source);
    EXPECT_NE(copy.GetInfo().ai_addr, source->GetInfo().ai_addr);
    source.reset();
    EXPECT_EQ(copy.GetHost(), L"127.0.0.1");
    EXPECT_EQ(copy.GetService(), L"4711");
    EXPECT_EQ(copy.GetAddress(), L"127.0.0.1:4711");
    EXPECT_EQ(AddressOf(copy).sin_port, htons(4711));
    EXPECT_EQ(copy.GetInfo().ai_next, nullptr);
}

TEST(IP, AssignedCopyOutlivesItsSourceAndIsFreedByItself) {
    IP copy(L"127.0.0.1", 1);
    auto source = std::make_unique<IP>(L"127.0.0.1", 4711);
    SystemCalls calls;
    copy = *source;
    EXPECT_EQ(calls.Count("FreeAddrInfoW"), 1U) << "the list that was there before";
    source.reset();
    EXPECT_EQ(calls.Count("FreeAddrInfoW"), 2U);
    EXPECT_EQ(AddressOf(copy).sin_port, htons(4711));
    copy = IP(L"127.0.0.1", 3);
    EXPECT_EQ(calls.Count("FreeAddrInfoW"), 3U) << "the temporary's list, and not the private copy";
    const IP& self = copy;
    copy = self;
    EXPECT_EQ(AddressOf(copy).sin_port, htons(3));
}

TEST(IP, CopyCanBeResolvedAgain) {
    const IP source(L"127.0.0.1", 4711);
    IP copy(source);
    SystemCalls calls;
    copy.Init();
    EXPECT_EQ(calls.Count("GetAddrInfoW"), 1U);
    EXPECT_EQ(calls.Count("FreeAddrInfoW"), 0U);
    EXPECT_EQ(copy.GetAddress(), L"127.0.0.1:4711");
}
