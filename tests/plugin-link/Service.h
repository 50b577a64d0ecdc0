#pragma once
#include <functional>
#include <string>
#include <string_view>

#include "platform/Windows.h"
#include "plugin-link/ServicePort.h"
#include "tests/plugin-link/SocketPair.h"

namespace plugin_link_tests {

/// The service that the add-in calls, in this process. It says and does on each connection what the test
/// wants, on a thread of its own, and closes the connection afterwards.
class Service {
public:
    using Body = std::function<void(SOCKET connection)>;

    explicit Service(Body serve);
    /// Takes no more connections, and waits for the end of those that there are.
    ~Service();
    Service(const Service&) = delete;
    Service& operator=(const Service&) = delete;

private:
    static DWORD WINAPI Run_(void* self);
    static DWORD WINAPI Serve_(void* connection);

    Listener listener_;
    vorlek::ServicePort port_;
    Body serve_;
    HANDLE stopping_;
    HANDLE thread_;
};

/// Everything up to the delimiter, that included; less if the peer closes before.
std::string ReadMessage(SOCKET connection);
/// The text of bytes from the wire, without the delimiter.
std::wstring TextOf(const std::string& message);
/// The parameter of a request.
std::wstring ParamOf(const std::string& request);
/// The bytes of an answer with a result, of one with a number, of one that reports a failure.
std::string AnswerOf(const std::wstring& result);
std::string NumberOf(std::int32_t result);
std::string ErrorOf(const std::wstring& words);
/// All of the bytes, in as many calls as it takes.
void Write(SOCKET connection, std::string_view bytes);
/// The connection will end with a reset, in the place of an orderly close.
void EndWithAReset(SOCKET connection);

} // namespace plugin_link_tests
