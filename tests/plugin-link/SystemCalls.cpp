#include "tests/plugin-link/SystemCalls.h"

#include <algorithm>

using plugin_link_tests::SystemCalls;

namespace {

thread_local SystemCalls* current = nullptr;

int Enter(const char* name) {
    return current == nullptr ? 0 : current->Enter_(name);
}

} // namespace

// The linker sends every call of the program here, and leaves the system's own under the second name.
extern "C" {
#define WRAPPED(call)                                                                                                  \
    extern decltype(&call) real_##call __asm__("__real___imp_" #call);                                                 \
    extern decltype(&call) wrap_##call __asm__("__wrap___imp_" #call)
WRAPPED(socket);
WRAPPED(shutdown);
WRAPPED(closesocket);
WRAPPED(connect);
WRAPPED(send);
WRAPPED(recv);
WRAPPED(select);
WRAPPED(WSAStartup);
WRAPPED(GetAddrInfoW);
WRAPPED(FreeAddrInfoW);
WRAPPED(WSAAddressToStringW);
#undef WRAPPED
}

namespace {

template <class Result>
Result Failed(int error, Result result) {
    WSASetLastError(error);
    return result;
}

SOCKET WSAAPI Socket(int family, int type, int protocol) {
    const int error = Enter("socket");
    return error != 0 ? Failed(error, INVALID_SOCKET) : real_socket(family, type, protocol);
}
int WSAAPI Shutdown(SOCKET socket, int how) {
    const int error = Enter("shutdown");
    return error != 0 ? Failed(error, SOCKET_ERROR) : real_shutdown(socket, how);
}
int WSAAPI Closesocket(SOCKET socket) {
    const int error = Enter("closesocket");
    return error != 0 ? Failed(error, SOCKET_ERROR) : real_closesocket(socket);
}
int WSAAPI Connect(SOCKET socket, const sockaddr* address, int length) {
    const int error = Enter("connect");
    return error != 0 ? Failed(error, SOCKET_ERROR) : real_connect(socket, address, length);
}
int WSAAPI Send(SOCKET socket, const char* data, int length, int flags) {
    const int error = Enter("send");
    return error != 0 ? Failed(error, SOCKET_ERROR) : real_send(socket, data, length, flags);
}
int WSAAPI Recv(SOCKET socket, char* data, int length, int flags) {
    const int error = Enter("recv");
    return error != 0 ? Failed(error, SOCKET_ERROR) : real_recv(socket, data, length, flags);
}
int WSAAPI Select(int count, fd_set* read, fd_set* write, fd_set* exception, const PTIMEVAL limit) {
    const int error = Enter("select");
    if (current != nullptr) {
        current->selection = {.read = read != nullptr,
                              .write = write != nullptr,
                              .exception = exception != nullptr,
                              .hasLimit = limit != nullptr,
                              .limit = limit == nullptr ? timeval{} : *limit,
                              .chosen = read != nullptr        ? *read
                                        : write != nullptr     ? *write
                                        : exception != nullptr ? *exception
                                                               : fd_set{}};
        if (current->HasSelectResult_()) {
            return current->SelectResult_();
        }
    }
    return error != 0 ? Failed(error, SOCKET_ERROR) : real_select(count, read, write, exception, limit);
}
int WSAAPI Startup(WORD version, WSADATA* data) {
    const int error = Enter("WSAStartup");
    return error != 0 ? error : real_WSAStartup(version, data);
}
INT WSAAPI Resolve(PCWSTR host, PCWSTR service, const ADDRINFOW* hints, PADDRINFOW* list) {
    const int error = Enter("GetAddrInfoW");
    return error != 0 ? error : real_GetAddrInfoW(host, service, hints, list);
}
void WSAAPI FreeResolved(PADDRINFOW list) {
    Enter("FreeAddrInfoW");
    real_FreeAddrInfoW(list);
}
INT WSAAPI AddressToString(LPSOCKADDR address, DWORD length, LPWSAPROTOCOL_INFOW protocol, LPWSTR text, LPDWORD size) {
    const int error = Enter("WSAAddressToStringW");
    return error != 0 ? Failed(error, SOCKET_ERROR) : real_WSAAddressToStringW(address, length, protocol, text, size);
}

} // namespace

extern "C" {
decltype(&socket) wrap_socket = Socket;
decltype(&shutdown) wrap_shutdown = Shutdown;
decltype(&closesocket) wrap_closesocket = Closesocket;
decltype(&connect) wrap_connect = Connect;
decltype(&send) wrap_send = Send;
decltype(&recv) wrap_recv = Recv;
decltype(&select) wrap_select = Select;
decltype(&WSAStartup) wrap_WSAStartup = Startup;
decltype(&GetAddrInfoW) wrap_GetAddrInfoW = Resolve;
decltype(&FreeAddrInfoW) wrap_FreeAddrInfoW = FreeResolved;
decltype(&WSAAddressToStringW) wrap_WSAAddressToStringW = AddressToString;
}

namespace plugin_link_tests {

SystemCalls::SystemCalls() {
    current = this;
}

SystemCalls::~SystemCalls() {
    current = nullptr;
}

std::size_t SystemCalls::Count(const std::string& name) const {
    return static_cast<std::size_t>(std::count(names_.begin(), names_.end(), name));
}

void SystemCalls::Fail(const std::string& name, int error) {
    failures_.emplace_back(name, error);
}

int SystemCalls::Enter_(const std::string& name) {
    names_.push_back(name);
    const auto failure =
        std::find_if(failures_.begin(), failures_.end(), [&](const auto& each) { return each.first == name; });
    return failure == failures_.end() ? 0 : failure->second;
}

SystemCalls* SystemCalls::Current_() {
    return current;
}

} // namespace plugin_link_tests
