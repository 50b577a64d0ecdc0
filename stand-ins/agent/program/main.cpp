// agent.exe: an agent until it is told to stop.
#include <exception>
#include <string>
#include <vector>

#include "platform/Windows.h"
#include "stand-ins/agent/Agent.h"
#include "stand-ins/agent/CommandLine.h"
#include "stand-ins/agent/Text.h"

namespace {

using namespace stand_ins;
using namespace stand_ins::agent;

enum Status { kEnded = 0, kFailed = 1, kMisused = 2 };

/// One write for each text, so that lines of several threads do not mix.
void Print_(DWORD stream, const std::wstring& text) {
    const std::string bytes = ToUtf8(text);
    DWORD written = 0;
    WriteFile(GetStdHandle(stream), bytes.data(), static_cast<DWORD>(bytes.size()), &written, nullptr);
}

/// A named object of this session that other programs find by the service's name.
class NamedObject_ {
public:
    explicit NamedObject_(HANDLE handle) : handle_(handle) {}
    ~NamedObject_() {
        if (handle_ != nullptr) {
            CloseHandle(handle_);
        }
    }
    NamedObject_(const NamedObject_&) = delete;
    NamedObject_& operator=(const NamedObject_&) = delete;
    HANDLE Get() const { return handle_; }

private:
    HANDLE handle_;
};

std::wstring StopName_(const std::wstring& service) {
    return L"Local\\agent-stop-" + service;
}

/// Held by the agent as long as it runs.
std::wstring RunningName_(const std::wstring& service) {
    return L"Local\\agent-running-" + service;
}

int Stop_(const CommandLine& line) {
    const NamedObject_ running(OpenMutexW(SYNCHRONIZE, FALSE, RunningName_(line.service).c_str()));
    const NamedObject_ stop(OpenEventW(EVENT_MODIFY_STATE, FALSE, StopName_(line.service).c_str()));
    if (running.Get() == nullptr || stop.Get() == nullptr) {
        Print_(STD_ERROR_HANDLE, L"agent: no agent runs as " + line.service + L"\n");
        return kFailed;
    }
    SetEvent(stop.Get());
    // The mutex comes free, or is left behind, when the agent has ended.
    WaitForSingleObject(running.Get(), INFINITE);
    return kEnded;
}

int Run_(const CommandLine& line) {
    const NamedObject_ stop(CreateEventW(nullptr, TRUE, FALSE, StopName_(line.service).c_str()));
    const NamedObject_ inspected(CreateEventW(nullptr, TRUE, FALSE, nullptr));
    const NamedObject_ running(CreateMutexW(nullptr, FALSE, RunningName_(line.service).c_str()));

    AgentOptions options;
    if (!line.policyFile.empty()) {
        options.policy = Policy::FromFile(line.policyFile);
    }
    options.service = line.service;
    options.port = line.port;
    options.workFolder = line.workFolder;
    options.recordFolder = line.recordFolder;
    options.keepsRequests = false;
    options.misbehaviour = line.misbehaviour;
    options.log = [](const std::wstring& text) { Print_(STD_OUTPUT_HANDLE, text + L"\n"); };
    options.inspected = [&] { SetEvent(inspected.Get()); };
    const Agent agent(std::move(options));
    // Only the agent that is published answers to --stop.
    WaitForSingleObject(running.Get(), INFINITE);
    ResetEvent(stop.Get());

    const std::wstring ready =
        L"listening on 127.0.0.1:" + std::to_wstring(agent.Port()) + L" as " + line.service + L"\n";
    Print_(STD_OUTPUT_HANDLE, ready);
    if (!line.readyFile.empty()) {
        WriteWholeFile(line.readyFile, ToUtf8(ready));
    }
    const HANDLE ends[] = {stop.Get(), inspected.Get()};
    WaitForMultipleObjects(line.once ? 2 : 1, ends, FALSE, line.seconds == 0 ? INFINITE : line.seconds * 1000);
    Print_(STD_OUTPUT_HANDLE, agent.Numbers().ToText() + L"\n");
    return kEnded;
}

} // namespace

int wmain(int count, wchar_t** arguments) {
    CommandLine line;
    try {
        line = CommandLine::FromArguments({arguments + 1, arguments + count});
    } catch (const std::exception& failure) {
        Print_(STD_ERROR_HANDLE, L"agent: " + FromUtf8(failure.what()) + L"\n");
        return kMisused;
    }
    try {
        if (line.help) {
            Print_(STD_OUTPUT_HANDLE, CommandLine::Usage());
            return kEnded;
        }
        return line.stop ? Stop_(line) : Run_(line);
    } catch (const std::exception& failure) {
        Print_(STD_ERROR_HANDLE, L"agent: " + FromUtf8(failure.what()) + L"\n");
        return kFailed;
    }
}
