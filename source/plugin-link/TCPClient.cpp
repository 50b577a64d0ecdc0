#include "plugin-link/TCPClient.h"

#include "foundation/Throw.h"

namespace vorlek {

TCPClient::TCPClient(const std::wstring& host, std::uint16_t port) : ip_(host, port) {
    Init();
}

TCPClient::~TCPClient() {
    ::shutdown(socket_.Get(), SD_BOTH);
}

void TCPClient::Init() {
    const ADDRINFOW& info = ip_.GetInfo();
    const SOCKET created = ::socket(info.ai_family, info.ai_socktype, info.ai_protocol);
    if (created == INVALID_SOCKET) {
        Throw(L"vorlek::TCPClient::Init", L"socket failed with: ", WSAGetLastError());
    }
    socket_ = created;
}

void TCPClient::Connect() {
    ::shutdown(socket_.Get(), SD_BOTH);
    socket_ = INVALID_SOCKET;
    ip_.Init();
    Init();
    const ADDRINFOW& info = ip_.GetInfo();
    if (::connect(socket_.Get(), info.ai_addr, static_cast<int>(info.ai_addrlen)) != 0) {
        Throw(L"vorlek::TCPClient::Connect", L"connect failed with: ", WSAGetLastError());
    }
    OnConnect();
}

} // namespace vorlek
