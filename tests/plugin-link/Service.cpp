#include "tests/plugin-link/Service.h"

#include <cstring>
#include <memory>
#include <vector>

#include "plugin-link/Message.h"

namespace plugin_link_tests {
namespace {

constexpr wchar_t kDelimiter[] = L"###@@@###";

struct Connection {
    const Service::Body* serve;
    SOCKET socket;
};

template <class Value>
std::string AnswerOf_(vorlek::MessageType type, const std::wstring& key, const Value& value) {
    vorlek::Message answer(type, 1288);
    answer.Set(key, value, false);
    return Bytes(answer.ToString() + kDelimiter);
}

} // namespace

Service::Service(Body serve)
    : port_(L"QLTPluginService", listener_.Port()),
      serve_(std::move(serve)),
      stopping_(CreateEventW(nullptr, TRUE, FALSE, nullptr)),
      thread_(CreateThread(nullptr, 0, Run_, this, 0, nullptr)) {}

Service::~Service() {
    SetEvent(stopping_);
    ::closesocket(Connect(listener_.Port())); // so that the wait for the next connection ends
    WaitForSingleObject(thread_, INFINITE);
    CloseHandle(thread_);
    CloseHandle(stopping_);
}

DWORD Service::Run_(void* self) {
    const auto& service = *static_cast<Service*>(self);
    std::vector<HANDLE> threads;
    for (;;) {
        const SOCKET accepted = service.listener_.Accept();
        if (WaitForSingleObject(service.stopping_, 0) == WAIT_OBJECT_0) {
            ::closesocket(accepted);
            break;
        }
        auto connection = std::make_unique<Connection>(Connection{&service.serve_, accepted});
        threads.push_back(CreateThread(nullptr, 0, Serve_, connection.release(), 0, nullptr));
    }
    for (const HANDLE thread : threads) {
        WaitForSingleObject(thread, INFINITE);
        CloseHandle(thread);
    }
    return 0;
}

DWORD Service::Serve_(void* connection) {
    const std::unique_ptr<Connection> served(static_cast<Connection*>(connection));
    const vorlek::Socket socket(served->socket);
    (*served->serve)(socket.Get());
    return 0;
}

std::wstring TextOf(const std::string& message) {
    std::wstring text(message.size() / sizeof(wchar_t), L'\0');
    std::memcpy(text.data(), message.data(), text.size() * sizeof(wchar_t));
    return text.substr(0, text.rfind(kDelimiter));
}

std::wstring ParamOf(const std::string& request) {
    std::wstring param;
    vorlek::Message::FromString(TextOf(request))->Get(L"Param", param);
    return param;
}

std::string AnswerOf(const std::wstring& result) {
    return AnswerOf_(vorlek::MessageType::Response, L"Result", result);
}

std::string NumberOf(std::int32_t result) {
    return AnswerOf_(vorlek::MessageType::Response, L"Result", result);
}

std::string ErrorOf(const std::wstring& words) {
    return AnswerOf_(vorlek::MessageType::Error, L"Error", words);
}

std::string ReadMessage(SOCKET connection) {
    const std::string delimiter = Bytes(kDelimiter);
    std::string message;
    char chunk[4096];
    while (!message.ends_with(delimiter)) {
        const int count = ::recv(connection, chunk, sizeof chunk, 0);
        if (count <= 0) {
            break;
        }
        message.append(chunk, static_cast<std::size_t>(count));
    }
    return message;
}

void Write(SOCKET connection, std::string_view bytes) {
    while (!bytes.empty()) {
        const int count = ::send(connection, bytes.data(), static_cast<int>(bytes.size()), 0);
        if (count <= 0) {
            return;
        }
        bytes.remove_prefix(static_cast<std::size_t>(count));
    }
}

void EndWithAReset(SOCKET connection) {
    const linger none = {1, 0};
    ::setsockopt(connection, SOL_SOCKET, SO_LINGER, reinterpret_cast<const char*>(&none), sizeof none);
}

} // namespace plugin_link_tests
