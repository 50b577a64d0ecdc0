#include "foundation/ProcessUtils.h"

#include <cstddef>

#include <winternl.h>

#include "foundation/ProcessHandle.h"

namespace vorlek {
namespace {

// What 64-bit Windows keeps where: the reading depends on it.
static_assert(offsetof(PEB, ProcessParameters) == 32);
static_assert(offsetof(RTL_USER_PROCESS_PARAMETERS, CommandLine) == 112);
static_assert(sizeof(UNICODE_STRING) == 16);

struct ReadWords_ {
    const wchar_t* failed;
    const wchar_t* readLess;
};

/// address: in the process. size: in bytes.
void Read_(const FileHandle& process, const void* address, void* data, SIZE_T size, const ReadWords_& words) {
    SIZE_T read = 0;
    if (!ReadProcessMemory(process.Get(), address, data, size, &read)) {
        Throw<ProcessUtilsException>(L"vorlek::ProcessUtils::GetProcessCommandLine", words.failed, GetLastError());
    }
    if (read != size) {
        Throw<ProcessUtilsException>(L"vorlek::ProcessUtils::GetProcessCommandLine", words.readLess);
    }
}

} // namespace

void* GetPebAddress(HANDLE process) {
    const auto query = reinterpret_cast<decltype(&NtQueryInformationProcess)>(
        reinterpret_cast<void*>(GetProcAddress(GetModuleHandleW(L"ntdll.dll"), "NtQueryInformationProcess")));
    if (query == nullptr) {
        Throw<ProcessUtilsException>(L"vorlek::GetPebAddress", L"Failed to get NtQueryInformationProcess pointer");
    }
    PROCESS_BASIC_INFORMATION information = {};
    const NTSTATUS status = query(process, ProcessBasicInformation, &information, sizeof(information), nullptr);
    if (!NT_SUCCESS(status)) {
        Throw<ProcessUtilsException>(L"vorlek::GetPebAddress", L"NtQueryInformationProcess failed with: ", status);
    }
    return information.PebBaseAddress;
}

std::wstring ProcessUtils::GetProcessCommandLine(DWORD pid) {
    PrepareToInspect(pid);
    const FileHandle process = OpenProcessById<ProcessUtilsException>(L"vorlek::ProcessUtils::GetProcessCommandLine",
                                                                      GetQueryAccess() | PROCESS_VM_READ, pid);
    const auto* const peb = static_cast<const BYTE*>(GetPebAddress(process.Get()));
    if (peb == nullptr) {
        Throw<ProcessUtilsException>(L"vorlek::ProcessUtils::GetProcessCommandLine", L"PEB structure is NULL");
    }
    const BYTE* parameters = nullptr;
    Read_(process, peb + offsetof(PEB, ProcessParameters), &parameters, sizeof(parameters),
          {L"ReadProcessMemory (PROCESS_PARAMETERS) failed with: ", L"ReadProcessMemory (PROCESS_PARAMETERS) failed!"});
    UNICODE_STRING text = {};
    Read_(
        process, parameters + offsetof(RTL_USER_PROCESS_PARAMETERS, CommandLine), &text, sizeof(text),
        {L"ReadProcessMemory (COMMAND_LINE_STRUCT) failed with: ", L"ReadProcessMemory (COMMAND_LINE_STRUCT) failed!"});
    std::wstring commandLine(text.Length / sizeof(wchar_t), L'\0');
    if (!commandLine.empty()) {
        Read_(process, text.Buffer, commandLine.data(), commandLine.size() * sizeof(wchar_t),
              {L"ReadProcessMemory (COMMAND_LINE) failed with: ", L"ReadProcessMemory (COMMAND_LINE) failed"});
    }
    return commandLine;
}

} // namespace vorlek
