#include "plugin-link/Socket.h"

#include <gmock/gmock.h>

#include "tests/plugin-link/SystemCalls.h"

namespace {

using plugin_link_tests::SystemCalls;
using vorlek::Socket;

SOCKET NewHandle() {
    return ::socket(AF_INET, SOCK_STREAM, IPPROTO_TCP);
}

bool IsOpen(SOCKET socket) {
    int type = 0;
    int length = sizeof type;
    return ::getsockopt(socket, SOL_SOCKET, SO_TYPE, reinterpret_cast<char*>(&type), &length) == 0;
}

} // namespace

TEST(Socket, StartsWinsock) {
    const Socket socket;
    EXPECT_FALSE(socket.IsValid());
    const SOCKET handle = NewHandle();
    EXPECT_NE(handle, INVALID_SOCKET);
    ::closesocket(handle);
}

TEST(Socket, ClosesItsHandleAtTheEnd) {
    const Socket started;
    const SOCKET handle = NewHandle();
    {
        const Socket socket(handle);
        EXPECT_TRUE(IsOpen(handle));
    }
    EXPECT_FALSE(IsOpen(handle));
}

TEST(Socket, ClosesTheOldHandleForANewOne) {
    Socket socket;
    const SOCKET first = NewHandle();
    const SOCKET second = NewHandle();
    socket = first;
    socket = second;
    EXPECT_FALSE(IsOpen(first));
    EXPECT_TRUE(IsOpen(second));
    socket = second;
    EXPECT_TRUE(IsOpen(second));
}

TEST(Socket, HasNothingToCloseForNullAndMinusOne) {
    const SystemCalls calls;
    for (const SOCKET none : {SOCKET{0}, INVALID_SOCKET}) {
        const Socket socket(none);
        EXPECT_FALSE(socket.IsValid());
    }
    EXPECT_EQ(calls.Count("closesocket"), 0U);
}
