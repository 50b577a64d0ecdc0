#include "plugin-link/WSAInit.h"

#include "foundation/Throw.h"

namespace vorlek {

WSAInit::WSAInit(WORD version) {
    WSADATA data{};
    if (const int error = WSAStartup(version, &data); error != 0) {
        Throw(L"vorlek::WSAInit::WSAInit", L"WSAStartup failed with: ", error);
    }
}

WSAInit::~WSAInit() {
    WSACleanup();
}

} // namespace vorlek
