#pragma once
#include "foundation/AutoHandle.h"
#include "platform/Windows.h"

namespace vorlek {

/// Owner of one socket; a handle of 0 counts as none. Starts Winsock when first made.
class Socket : public AutoHandle<SOCKET, -1, closesocket> {
public:
    using Handle = AutoHandle<SOCKET, -1, closesocket>;

    Socket();
    explicit Socket(SOCKET socket);
    using Handle::operator=;
};

} // namespace vorlek
