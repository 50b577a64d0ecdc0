#include "tests/support/ChildProcess.h"

#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
#include <stdexcept>
#include <vector>

#include <shellapi.h>

#include "tests/support/Offspring.h"

namespace test_support {
namespace {

constexpr const wchar_t* kOption = L"--play-child-role";

std::map<std::wstring, ChildRole>& Roles_() {
    static std::map<std::wstring, ChildRole> roles;
    return roles;
}

std::vector<std::wstring> CommandLine_() {
    int count = 0;
    wchar_t** arguments = CommandLineToArgvW(GetCommandLineW(), &count);
    std::vector<std::wstring> result(arguments, arguments + count);
    LocalFree(arguments);
    return result;
}

std::wstring Quoted_(const std::wstring& argument) {
    return L" \"" + argument + L"\"";
}

/// A new empty file; its name also names the event.
std::wstring NewResultPath_() {
    wchar_t path[MAX_PATH];
    GetTempFileNameW(std::filesystem::temp_directory_path().c_str(), L"chi", 0, path);
    return path;
}

std::wstring ReadyEventName_(const std::wstring& resultPath) {
    return L"ready-" + std::filesystem::path(resultPath).filename().wstring();
}

} // namespace

ChildRoleName::ChildRoleName(const wchar_t* name, ChildRole role) {
    Roles_()[name] = role;
}

ChildProcess::ChildProcess(const std::wstring& role, const std::wstring& argument, const std::wstring& program)
    : resultPath_(NewResultPath_()), ready_(CreateEventW(nullptr, TRUE, FALSE, ReadyEventName_(resultPath_).c_str())) {
    wchar_t own[MAX_PATH] = L"";
    GetModuleFileNameW(nullptr, own, MAX_PATH);
    commandLine_ = Quoted_(program.empty() ? own : program).substr(1) + L" " + kOption + Quoted_(role) +
                   Quoted_(resultPath_) + Quoted_(argument);
    std::wstring command = commandLine_; // the system writes into it
    STARTUPINFOW startup{};
    startup.cb = sizeof(startup);
    PROCESS_INFORMATION started{};
    if (!CreateProcessW(nullptr, command.data(), nullptr, nullptr, FALSE, 0, nullptr, nullptr, &startup, &started)) {
        throw std::runtime_error("the test program does not start again: " + std::to_string(GetLastError()));
    }
    CloseHandle(started.hThread);
    process_ = started.hProcess;
    EndWithThisProcess(process_);
}

ChildProcess::~ChildProcess() {
    Terminate();
    CloseHandle(process_);
    CloseHandle(ready_);
    DeleteFileW(resultPath_.c_str());
}

void ChildProcess::WaitUntilReady() {
    const HANDLE either[] = {ready_, process_};
    if (WaitForMultipleObjects(2, either, FALSE, INFINITE) != WAIT_OBJECT_0) {
        throw std::runtime_error("the child process ended before it was ready");
    }
}

std::wstring ChildProcess::Result() {
    WaitForSingleObject(process_, INFINITE);
    DWORD status = 0;
    GetExitCodeProcess(process_, &status);
    if (status != 0) {
        throw std::runtime_error("the child process ended with " + std::to_string(status));
    }
    std::ifstream file(std::filesystem::path(resultPath_), std::ios::binary);
    const std::string bytes(std::istreambuf_iterator<char>(file), {});
    std::wstring result(bytes.size() / sizeof(wchar_t), L'\0');
    bytes.copy(reinterpret_cast<char*>(result.data()), result.size() * sizeof(wchar_t));
    return result;
}

void ChildProcess::Terminate() {
    TerminateProcess(process_, 1);
    WaitForSingleObject(process_, INFINITE);
}

void SayReady() {
    const HANDLE ready = OpenEventW(EVENT_MODIFY_STATE, FALSE, ReadyEventName_(CommandLine_().at(3)).c_str());
    SetEvent(ready);
    CloseHandle(ready);
}

void WaitToBeKilled() {
    for (;;) {
        Sleep(INFINITE);
    }
}

std::optional<int> PlayChildRole() {
    const std::vector<std::wstring> arguments = CommandLine_();
    if (arguments.size() < 5 || arguments[1] != kOption) {
        return std::nullopt;
    }
    const std::wstring result = Roles_().at(arguments[2])(arguments[4]);
    std::ofstream file(std::filesystem::path(arguments[3]), std::ios::binary);
    file.write(reinterpret_cast<const char*>(result.data()),
               static_cast<std::streamsize>(result.size() * sizeof(wchar_t)));
    return 0;
}

} // namespace test_support
