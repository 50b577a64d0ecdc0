#pragma once
#include <optional>
#include <string>

#include "platform/Windows.h"

namespace test_support {

/// What the test program does when it runs as another process: takes the argument, gives a result.
using ChildRole = std::wstring (*)(const std::wstring& argument);

/// Makes a role known by a name, at namespace scope: const ChildRoleName role(L"HoldMutex", HoldMutex_);
class ChildRoleName {
public:
    ChildRoleName(const wchar_t* name, ChildRole role);
};

/// The test program once more, as a process of its own that plays one role. It ends with the object.
class ChildProcess {
public:
    /// program: another copy of the test program; empty for this one.
    explicit ChildProcess(const std::wstring& role, const std::wstring& argument = {},
                          const std::wstring& program = {});
    ChildProcess(const ChildProcess&) = delete;
    ChildProcess& operator=(const ChildProcess&) = delete;
    ~ChildProcess();

    DWORD Id() const { return GetProcessId(process_); }
    HANDLE Handle() const { return process_; }
    /// What it was started with.
    const std::wstring& CommandLine() const { return commandLine_; }

    /// Until the role calls SayReady. Raises std::runtime_error if it ends without.
    void WaitUntilReady();
    /// Until the role has returned: what it returned. Raises std::runtime_error if it never did.
    std::wstring Result();
    /// Kills it at once, whatever it holds.
    void Terminate();

private:
    std::wstring resultPath_;
    HANDLE ready_;
    std::wstring commandLine_;
    HANDLE process_ = nullptr;
};

/// In a role: tells the parent to go on.
void SayReady();
/// In a role: stays until the parent kills it.
[[noreturn]] void WaitToBeKilled();

/// For the test main: plays the role that the command line asks for; nothing where it asks for none.
std::optional<int> PlayChildRole();

} // namespace test_support
