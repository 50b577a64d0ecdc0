#include "benchmarks/link/Peer.h"

#include <map>
#include <string_view>

#include "benchmarks/link/RawSocket.h"
#include "plugin-link/Message.h"
#include "plugin-link/ServicePort.h"
#include "plugin-link/WSAInit.h"

namespace link_benchmarks {
namespace {

constexpr std::wstring_view kDelimiter = L"###@@@###";
constexpr wchar_t kDecision[] = L"<inspectionDecision result=\"1\"/>";
constexpr std::size_t kReceiveChunk = 1 << 22; // as much as is there, like the echo

std::string Bytes_(std::wstring_view text) {
    return {reinterpret_cast<const char*>(text.data()), text.size() * sizeof(wchar_t)};
}

std::string Response_(std::wstring result) {
    vorlek::Message response(vorlek::MessageType::Response);
    response.Set(L"Result", std::move(result), false);
    return Bytes_(response.ToString().append(kDelimiter));
}

void AnswerRequest_(SOCKET connection) {
    static const std::string delimiter = Bytes_(kDelimiter);
    static const std::string answer = Response_(kDecision);
    static std::string chunk(kReceiveChunk, '\0');
    std::string end;
    while (end != delimiter) {
        const int received = recv(connection, chunk.data(), static_cast<int>(chunk.size()), 0);
        if (received <= 0) {
            return;
        }
        end.append(chunk, 0, static_cast<std::size_t>(received));
        end.erase(0, end.size() - std::min(end.size(), delimiter.size()));
    }
    SendAll(connection, answer);
}

void Echo_(SOCKET connection) {
    static std::string bytes;
    for (std::size_t length = 0; ReceiveLength(connection, length);) {
        bytes.resize(length);
        if (!ReceiveAll(connection, bytes.data(), length)) {
            return;
        }
        SendAll(connection, bytes);
    }
}

void Give_(SOCKET connection) {
    static std::map<std::size_t, std::string> responses;
    for (std::size_t length = 0; ReceiveLength(connection, length);) {
        std::string& response = responses[length];
        if (response.empty()) {
            response = ResponseBytes(length);
        }
        SendAll(connection, response);
    }
}

/// Serves one connection after the other, on a thread of its own.
class Offer_ {
public:
    Offer_(const wchar_t* name, void (*serve)(SOCKET connection))
        : serve_(serve), listener_(Listen(port_)), published_(name, port_) {
        CloseHandle(CreateThread(nullptr, 0, Run_, this, 0, nullptr));
    }

private:
    static DWORD WINAPI Run_(void* self) {
        const auto& offer = *static_cast<const Offer_*>(self);
        for (;;) {
            const SOCKET connection = accept(offer.listener_, nullptr, nullptr);
            offer.serve_(connection);
            closesocket(connection);
        }
    }

    void (*serve_)(SOCKET connection);
    std::uint16_t port_ = 0;
    SOCKET listener_;
    vorlek::ServicePort published_;
};

std::wstring ReadyName_(DWORD parent) {
    return L"Local\\LinkBenchmark" + std::to_wstring(parent);
}

} // namespace

std::string ResponseBytes(std::size_t size) {
    return Response_(std::wstring(size / sizeof(wchar_t), L'x'));
}

void StartPeer() {
    static const bool started = [] {
        const DWORD self = GetCurrentProcessId();
        const HANDLE ready = CreateEventW(nullptr, TRUE, FALSE, ReadyName_(self).c_str());
        wchar_t program[MAX_PATH];
        GetModuleFileNameW(nullptr, program, MAX_PATH);
        std::wstring commandLine = L"\"" + std::wstring(program) + L"\" --peer " + std::to_wstring(self);
        STARTUPINFOW startup{};
        startup.cb = sizeof startup;
        PROCESS_INFORMATION process{};
        CreateProcessW(program, commandLine.data(), nullptr, nullptr, FALSE, 0, nullptr, nullptr, &startup, &process);
        const HANDLE either[] = {ready, process.hProcess};
        WaitForMultipleObjects(2, either, FALSE, INFINITE);
        CloseHandle(process.hThread);
        CloseHandle(process.hProcess);
        CloseHandle(ready);
        return true;
    }();
    static_cast<void>(started);
}

void ServeAsPeer(DWORD parent) {
    const vorlek::WSAInit winsock;
    const Offer_ service(kService, AnswerRequest_);
    const Offer_ echo(kEcho, Echo_);
    const Offer_ source(kSource, Give_);
    const HANDLE ready = OpenEventW(EVENT_MODIFY_STATE, FALSE, ReadyName_(parent).c_str());
    SetEvent(ready);
    CloseHandle(ready);
    const HANDLE process = OpenProcess(SYNCHRONIZE, FALSE, parent);
    WaitForSingleObject(process, INFINITE);
    CloseHandle(process);
    ExitProcess(0);
}

} // namespace link_benchmarks
