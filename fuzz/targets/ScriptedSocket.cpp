#include "fuzz/targets/ScriptedSocket.h"

#include <algorithm>

namespace fuzz {
namespace {

constexpr SOCKET kSocket = 4711;

ScriptedSocket* current = nullptr;

int WSAAPI Receive(SOCKET, char* data, int room, int) {
    return current->Receive_(data, static_cast<std::size_t>(room));
}
int WSAAPI Send(SOCKET, const char* data, int size, int) {
    return current->Send_(data, static_cast<std::size_t>(size));
}
int WSAAPI Select(int, fd_set*, fd_set*, fd_set*, PTIMEVAL) {
    return 1;
}
int WSAAPI Close(SOCKET) {
    return 0;
}

} // namespace

// The linker sends the program's calls here.
extern "C" {
extern decltype(&recv) wrapRecv __asm__("__wrap___imp_recv");
extern decltype(&send) wrapSend __asm__("__wrap___imp_send");
extern decltype(&select) wrapSelect __asm__("__wrap___imp_select");
extern decltype(&closesocket) wrapClose __asm__("__wrap___imp_closesocket");
decltype(&recv) wrapRecv = Receive;
decltype(&send) wrapSend = Send;
decltype(&select) wrapSelect = Select;
decltype(&closesocket) wrapClose = Close;
}

ScriptedSocket::ScriptedSocket(std::string incoming, std::vector<std::size_t> cuts)
    : incoming_(std::move(incoming)), cuts_(std::move(cuts)), socket_(kSocket) {
    current = this;
}

ScriptedSocket::~ScriptedSocket() {
    current = nullptr;
}

int ScriptedSocket::Receive_(char* data, std::size_t room) {
    const auto cut = std::ranges::upper_bound(cuts_, received_);
    const std::size_t end = std::min(cut == cuts_.end() ? incoming_.size() : *cut, incoming_.size());
    const std::size_t size = std::min(room, end - received_);
    incoming_.copy(data, size, received_);
    received_ += size;
    return static_cast<int>(size);
}

int ScriptedSocket::Send_(const char* data, std::size_t size) {
    sent_.append(data, size);
    return static_cast<int>(size);
}

} // namespace fuzz
