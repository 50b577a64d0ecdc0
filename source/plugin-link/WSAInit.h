#pragma once
#include "platform/Windows.h"

namespace vorlek {

/// Keeps Winsock started for as long as it lives.
class WSAInit {
public:
    static constexpr WORD kVersion = 0x0202;

    /// Throws Exception if this version of Winsock cannot be started.
    explicit WSAInit(WORD version = kVersion);
    WSAInit(const WSAInit&) = delete;
    WSAInit& operator=(const WSAInit&) = delete;
    virtual ~WSAInit();
};

} // namespace vorlek
