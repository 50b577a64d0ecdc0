#pragma once
#include <optional>
#include <string>
#include <vector>

#include "platform/Windows.h"

#include <tlhelp32.h>

namespace vorlek {

/// Looks into processes, starts and ends them. Operations on a process named by its id raise
/// ProcessUtilsException with the system's error unless their own line says otherwise.
class ProcessUtils {
public:
    /// The executable, as "C:\x.exe".
    static std::wstring GetProcessFilePath(DWORD pid);
    /// As the process holds it in its memory at this moment; it may have rewritten it.
    static std::wstring GetProcessCommandLine(DWORD pid);

    /// The modules of both widths. Raises Exception if they cannot be listed, NotImplementedException for a
    /// 32-bit process before Windows Vista, whose modules that system does not tell.
    static std::vector<HMODULE> GetProcessModules(DWORD pid);
    /// The base name of a module, null for the executable. Raises Exception.
    static std::wstring GetProcessModule(DWORD pid, HMODULE module = nullptr);

    /// All processes of the machine.
    static std::vector<PROCESSENTRY32W> GetProcessSnapshot();

    /// Ends the process with exit code 0 and waits until it is gone, at most 5,000 ms.
    static void TerminateProcessById(DWORD pid);
    /// Asks every window of the process to close, then waits for its end. Returns whether it ended in time.
    static bool TerminateApplicationById(DWORD pid, DWORD timeoutMs);

    /// The following ones raise Exception.
    static bool IsCurrentProcessElevated();
    /// Whether it is a 32-bit process on a 64-bit system.
    static bool IsWOW64Process(HANDLE process = GetCurrentProcess());
    static bool Is64Process(DWORD pid);

    /// Starts a program by its command line. wait: until it ends, however long. Returns the exit code, if
    /// there was a wait.
    static std::optional<DWORD> Execute(const std::wstring& commandLine, bool wait);
    /// Opens a file as Explorer does on a double click, without any box on failure. A file that a running
    /// program takes over starts no process: there is nothing to wait for then, and no exit code.
    static std::optional<DWORD> ExecuteShell(const std::wstring& file, const std::wstring& parameters, bool wait);
};

/// Where a process keeps its environment block (PEB), an address of that process. The handle needs the right
/// to query. Raises ProcessUtilsException, with the NTSTATUS as a signed number.
void* GetPebAddress(HANDLE process);

} // namespace vorlek
