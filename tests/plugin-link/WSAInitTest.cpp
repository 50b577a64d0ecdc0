#include "plugin-link/WSAInit.h"

#include <gtest/gtest.h>

#include "foundation/Exception.h"
#include "tests/plugin-link/SystemCalls.h"
#include "tests/plugin-link/Throws.h"

using vorlek::WSAInit;

TEST(WSAInit, KeepsWinsockStartedWhileItLives) {
    {
        const WSAInit winsock;
        const SOCKET handle = ::socket(AF_INET, SOCK_STREAM, IPPROTO_TCP);
        EXPECT_NE(handle, INVALID_SOCKET);
        ::closesocket(handle);
    }
    EXPECT_EQ(WSAInit::kVersion, 514);
}

TEST(WSAInit, TellsWhyWinsockDoesNotStart) {
    const auto failure = plugin_link_tests::Thrown<vorlek::Exception>([] { WSAInit winsock(0); });
    EXPECT_EQ(failure.GetMessage(), L"WSAStartup failed with: 10092");
    EXPECT_EQ(failure.GetLocation(), L"vorlek::WSAInit::WSAInit");
}
