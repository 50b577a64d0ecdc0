#include "foundation/ProcessUtils.h"

#define PSAPI_VERSION 1 // from psapi.dll, where every version of Windows has them
#include <psapi.h>
#include <shellapi.h>
#include <versionhelpers.h>

#include "foundation/PathUtils.h"
#include "foundation/ProcessHandle.h"

namespace vorlek {
namespace {

constexpr DWORD kTerminationMs = 5000;

/// Lists into an array that grows until it holds all.
template <class Enumerate>
std::vector<HMODULE> ListModules_(const wchar_t* words, Enumerate enumerate) {
    std::vector<HMODULE> modules(64);
    for (;;) {
        const auto room = static_cast<DWORD>(modules.size() * sizeof(HMODULE));
        DWORD needed = 0;
        if (!enumerate(modules.data(), room, &needed)) {
            Throw(L"vorlek::ProcessUtils::GetProcessModules", words, GetLastError());
        }
        modules.resize(needed / sizeof(HMODULE));
        if (needed <= room) {
            return modules;
        }
    }
}

std::vector<HMODULE> ListModulesOfBothWidths_(HANDLE process) {
    // Found at run time: a system that lacks it could not load the program otherwise.
    const auto enumerate = reinterpret_cast<decltype(&::EnumProcessModulesEx)>(
        reinterpret_cast<void*>(GetProcAddress(GetModuleHandleW(L"psapi.dll"), "EnumProcessModulesEx")));
    if (enumerate == nullptr) {
        Throw(L"vorlek::ProcessUtils::GetProcessModules", L"GetProcAddress failed on EnumProcessModulesEx with: ",
              GetLastError());
    }
    return ListModules_(L"EnumProcessModulesEx failed with: ", [&](HMODULE* modules, DWORD room, DWORD* needed) {
        return enumerate(process, modules, room, needed, LIST_MODULES_ALL);
    });
}

DWORD WaitForExitCode_(ThrowSite site, HANDLE process) {
    if (WaitForSingleObject(process, INFINITE) != WAIT_OBJECT_0) {
        Throw(site, L"WaitForSingleObject failed with: ", GetLastError());
    }
    DWORD exitCode = 0;
    if (!GetExitCodeProcess(process, &exitCode)) {
        Throw(site, L"GetExitCodeProcess failed with: ", GetLastError());
    }
    return exitCode;
}

BOOL CALLBACK PostClose_(HWND window, LPARAM pid) {
    DWORD owner = 0;
    GetWindowThreadProcessId(window, &owner);
    if (owner == static_cast<DWORD>(pid)) {
        PostMessageW(window, WM_CLOSE, 0, 0);
    }
    return TRUE;
}

} // namespace

std::wstring ProcessUtils::GetProcessFilePath(DWORD pid) {
    PrepareToInspect(pid);
    const FileHandle process =
        OpenProcessById<ProcessUtilsException>(L"vorlek::ProcessUtils::GetProcessFilePath", GetQueryAccess(), pid);
    wchar_t path[MAX_PATH + 1] = {};
    if (GetProcessImageFileNameW(process.Get(), path, MAX_PATH + 1) == 0) {
        Throw<ProcessUtilsException>(L"vorlek::ProcessUtils::GetProcessFilePath", L"GetModuleFileNameEx failed with: ",
                                     GetLastError());
    }
    return PathUtils::CanonizePath(path);
}

std::vector<HMODULE> ProcessUtils::GetProcessModules(DWORD pid) {
    const FileHandle process = OpenProcessById<ProcessUtilsException>(L"vorlek::ProcessUtils::GetProcessModules",
                                                                      PROCESS_QUERY_INFORMATION | PROCESS_VM_READ, pid);
    if (IsWindowsVistaOrGreater()) {
        return ListModulesOfBothWidths_(process.Get());
    }
    if (IsWOW64Process(process.Get())) {
        Throw<NotImplementedException>(L"vorlek::ProcessUtils::GetProcessModules",
                                       L"EnumProcessModules doesn't retrieve 32bits modules on XP64bit OS");
    }
    return ListModules_(L"EnumProcessModules failed with: ", [&](HMODULE* modules, DWORD room, DWORD* needed) {
        return EnumProcessModules(process.Get(), modules, room, needed);
    });
}

std::wstring ProcessUtils::GetProcessModule(DWORD pid, HMODULE module) {
    const FileHandle process = OpenProcessById<Exception>(L"vorlek::ProcessUtils::GetProcessModule",
                                                          PROCESS_QUERY_INFORMATION | PROCESS_VM_READ, pid);
    wchar_t name[MAX_PATH] = {};
    if (GetModuleBaseNameW(process.Get(), module, name, MAX_PATH) == 0) {
        Throw(L"vorlek::ProcessUtils::GetProcessModule", L"GetModuleBaseName failed with: ", GetLastError());
    }
    return name;
}

std::vector<PROCESSENTRY32W> ProcessUtils::GetProcessSnapshot() {
    const FileHandle snapshot(CreateToolhelp32Snapshot(TH32CS_SNAPPROCESS, 0));
    if (!snapshot.IsValid()) {
        Throw<ProcessUtilsException>(L"vorlek::ProcessUtils::GetProcessSnapshot",
                                     L"CreateToolhelp32Snapshot failed with: ", GetLastError());
    }
    std::vector<PROCESSENTRY32W> processes;
    PROCESSENTRY32W entry = {};
    entry.dwSize = sizeof(entry);
    for (BOOL found = Process32FirstW(snapshot.Get(), &entry); found; found = Process32NextW(snapshot.Get(), &entry)) {
        processes.push_back(entry);
    }
    return processes;
}

void ProcessUtils::TerminateProcessById(DWORD pid) {
    const FileHandle process = OpenProcessById<ProcessUtilsException>(L"vorlek::ProcessUtils::TerminateProcessById",
                                                                      PROCESS_TERMINATE | SYNCHRONIZE, pid);
    if (!TerminateProcess(process.Get(), 0)) {
        Throw<ProcessUtilsException>(L"vorlek::ProcessUtils::TerminateProcessById", L"TerminateProcess failed with: ",
                                     GetLastError());
    }
    WaitForSingleObject(process.Get(), kTerminationMs);
}

bool ProcessUtils::TerminateApplicationById(DWORD pid, DWORD timeoutMs) {
    const FileHandle process =
        OpenProcessById<ProcessUtilsException>(L"vorlek::ProcessUtils::TerminateApplicationById", SYNCHRONIZE, pid);
    EnumWindows(PostClose_, static_cast<LPARAM>(pid));
    return WaitForSingleObject(process.Get(), timeoutMs) == WAIT_OBJECT_0;
}

bool ProcessUtils::IsCurrentProcessElevated() {
    HANDLE opened = nullptr;
    if (!OpenProcessToken(GetCurrentProcess(), TOKEN_QUERY, &opened)) {
        Throw(L"vorlek::ProcessUtils::IsCurrentProcessElevated", L"OpenProcessToken failed with: ", GetLastError());
    }
    const FileHandle token(opened);
    TOKEN_ELEVATION elevation = {};
    DWORD size = 0;
    if (!GetTokenInformation(token.Get(), TokenElevation, &elevation, sizeof(elevation), &size)) {
        Throw(L"vorlek::ProcessUtils::IsCurrentProcessElevated", L"GetTokenInformation failed with: ", GetLastError());
    }
    return elevation.TokenIsElevated != 0;
}

bool ProcessUtils::IsWOW64Process(HANDLE process) {
    BOOL isWow64 = FALSE;
    if (!IsWow64Process(process, &isWow64)) {
        Throw(L"vorlek::ProcessUtils::IsWOW64Process", L"IsWow64Process failed with: ", GetLastError());
    }
    return isWow64 != FALSE;
}

bool ProcessUtils::Is64Process(DWORD pid) {
    // This program is a 64-bit one, and so is the system under it.
    const FileHandle process = OpenProcessById<Exception>(L"vorlek::ProcessUtils::Is64Process", GetQueryAccess(), pid);
    return !IsWOW64Process(process.Get());
}

std::optional<DWORD> ProcessUtils::Execute(const std::wstring& commandLine, bool wait) {
    std::wstring writable = commandLine; // the system writes into it
    STARTUPINFOW startup = {};
    startup.cb = sizeof(startup);
    PROCESS_INFORMATION started = {};
    if (!CreateProcessW(nullptr, writable.data(), nullptr, nullptr, FALSE, 0, nullptr, nullptr, &startup, &started)) {
        Throw(L"vorlek::ProcessUtils::Execute", L"CreateProcess failed with: ", GetLastError());
    }
    const FileHandle thread(started.hThread);
    const FileHandle process(started.hProcess);
    if (!wait) {
        return std::nullopt;
    }
    return WaitForExitCode_(L"vorlek::ProcessUtils::Execute", process.Get());
}

std::optional<DWORD> ProcessUtils::ExecuteShell(const std::wstring& file, const std::wstring& parameters, bool wait) {
    SHELLEXECUTEINFOW info = {};
    info.cbSize = sizeof(info);
    info.fMask = SEE_MASK_NOCLOSEPROCESS | SEE_MASK_NOASYNC | SEE_MASK_FLAG_NO_UI;
    info.lpFile = file.c_str();
    info.lpParameters = parameters.c_str();
    info.nShow = SW_SHOWNORMAL;
    if (!ShellExecuteExW(&info)) {
        Throw(L"vorlek::ProcessUtils::ExecuteShell", L"ShellExecuteEx failed with: ", GetLastError());
    }
    const FileHandle process(info.hProcess);
    if (!wait || !process.IsValid()) {
        return std::nullopt;
    }
    return WaitForExitCode_(L"vorlek::ProcessUtils::ExecuteShell", process.Get());
}

} // namespace vorlek
