#include "foundation/ProcessUtils.h"

#include <algorithm>
#include <filesystem>

#include <gtest/gtest.h>
#include <psapi.h>
#include <shellapi.h>

#include "foundation/AutoHandle.h"
#include "tests/support/ChildProcess.h"
#include "tests/support/ExpectFailure.h"
#include "tests/support/OpenHandles.h"
#include "tests/support/ProgramOnXp.h"
#include "tests/support/ReplacedImport.h"
#include "tests/support/TemporaryFolder.h"

using test_support::ChildProcess;
using test_support::ExpectFailure;
using test_support::FailingImport;
using test_support::ReplacedImport;
using vorlek::Exception;
using vorlek::ProcessUtils;
using vorlek::ProcessUtilsException;

namespace {

constexpr DWORD kNoProcess = 0xFFFFFFF0;
constexpr DWORD kSoonMs = 20000; // only a fault takes so long

std::wstring OwnPath_() {
    wchar_t path[MAX_PATH] = {};
    GetModuleFileNameW(nullptr, path, MAX_PATH);
    return path;
}

std::wstring OwnName_() {
    return std::filesystem::path(OwnPath_()).filename();
}

bool IsRunning_(const ChildProcess& child) {
    return WaitForSingleObject(child.Handle(), 0) == WAIT_TIMEOUT;
}

DWORD ExitCode_(const ChildProcess& child) {
    DWORD code = 0;
    GetExitCodeProcess(child.Handle(), &code);
    return code;
}

std::wstring Idle_(const std::wstring& /*argument*/) {
    test_support::SayReady();
    test_support::WaitToBeKilled();
}

const test_support::ChildRoleName idle(L"Idle", Idle_);

LRESULT CALLBACK CountClose_(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    if (message != WM_CLOSE) {
        return DefWindowProcW(window, message, wParam, lParam);
    }
    const LONG_PTR left = GetWindowLongPtrW(window, GWLP_USERDATA) - 1;
    SetWindowLongPtrW(window, GWLP_USERDATA, left);
    if (left == 0) {
        PostQuitMessage(0);
    }
    return 0;
}

/// Has a window, and ends at the close message of the number that the argument tells.
std::wstring CloseAt_(const std::wstring& argument) {
    WNDCLASSW windowClass = {};
    windowClass.lpfnWndProc = CountClose_;
    windowClass.lpszClassName = L"CloseAt";
    RegisterClassW(&windowClass);
    const HWND window = CreateWindowW(L"CloseAt", L"", 0, 0, 0, 0, 0, nullptr, nullptr, nullptr, nullptr);
    SetWindowLongPtrW(window, GWLP_USERDATA, std::stol(argument));
    test_support::SayReady();
    MSG message = {};
    while (GetMessageW(&message, nullptr, 0, 0) > 0) {
        DispatchMessageW(&message);
    }
    return L"closed";
}

const test_support::ChildRoleName closeAt(L"CloseAt", CloseAt_);

bool HasModule_(const std::vector<HMODULE>& modules, HMODULE module) {
    return std::find(modules.begin(), modules.end(), module) != modules.end();
}

/// What happens to the modules of a process on the older system.
std::wstring ModulesOnXp_(const std::wstring& which) {
    ReplacedImport<"IsWow64Process", decltype(IsWow64Process)> isWow64([&](HANDLE process, BOOL* result) {
        const BOOL done = isWow64.Original(process, result);
        *result = *result || which == L"32 bits";
        return done;
    });
    ReplacedImport<"EnumProcessModules", decltype(EnumProcessModules)> enumerate(
        [&](HANDLE process, HMODULE* modules, DWORD room, DWORD* needed) {
            SetLastError(ERROR_ACCESS_DENIED);
            return which == L"refused" ? FALSE : enumerate.Original(process, modules, room, needed);
        });
    try {
        const std::vector<HMODULE> modules = ProcessUtils::GetProcessModules(GetCurrentProcessId());
        const bool isComplete =
            HasModule_(modules, GetModuleHandleW(nullptr)) && HasModule_(modules, GetModuleHandleW(L"ntdll.dll"));
        return (isComplete ? L"complete, calls: " : L"incomplete, calls: ") + std::to_wstring(enumerate.Calls());
    } catch (const Exception& failure) {
        return failure.GetExceptionName() + L": " + failure.GetLocation() + L": " + failure.GetMessage();
    }
}

const test_support::ChildRoleName modulesOnXp(L"ModulesOnXp", ModulesOnXp_);

/// A process of 100 modules, asked through the call that programs look up at run time.
class ManyModules_ {
public:
    inline static DWORD error = ERROR_SUCCESS;
    inline static std::vector<DWORD> rooms;
    inline static std::vector<DWORD> filters;
    inline static bool isExported = true;

    ManyModules_() {
        error = ERROR_SUCCESS;
        rooms.clear();
        filters.clear();
        isExported = true;
    }

private:
    static BOOL WINAPI Enumerate_(HANDLE, HMODULE* modules, DWORD room, DWORD* needed, DWORD filter) {
        rooms.push_back(room);
        filters.push_back(filter);
        *needed = 100 * sizeof(HMODULE);
        for (DWORD i = 0; i < std::min(room, *needed) / sizeof(HMODULE); ++i) {
            modules[i] = reinterpret_cast<HMODULE>(static_cast<ULONG_PTR>(i + 1));
        }
        SetLastError(error);
        return error == ERROR_SUCCESS;
    }

    ReplacedImport<"GetProcAddress", decltype(GetProcAddress)> find_{[](HMODULE, const char* name) {
        EXPECT_STREQ("EnumProcessModulesEx", name);
        SetLastError(ERROR_PROC_NOT_FOUND);
        return isExported ? reinterpret_cast<FARPROC>(reinterpret_cast<void*>(Enumerate_)) : nullptr;
    }};
};

/// The thread has no token of its own, neither before nor after: looking into others gives it one.
class ProcessUtilsTest : public testing::Test {
protected:
    ProcessUtilsTest() { RevertToSelf(); }
    ~ProcessUtilsTest() override { RevertToSelf(); }
};

} // namespace

TEST_F(ProcessUtilsTest, FilePathIsThatOfTheExecutableWithItsDrive) {
    EXPECT_EQ(OwnPath_(), ProcessUtils::GetProcessFilePath(GetCurrentProcessId()));
}

TEST_F(ProcessUtilsTest, FilePathOfAChildInAnotherFolder) {
    const test_support::TemporaryFolder folder;
    const std::wstring program = folder / L"\u0434\u0440\u0443\u0433\u0430\u044f program.exe";
    ASSERT_TRUE(CopyFileW(OwnPath_().c_str(), program.c_str(), TRUE));
    const ChildProcess child(L"Idle", L"", program);
    EXPECT_EQ(std::filesystem::canonical(program).wstring(), ProcessUtils::GetProcessFilePath(child.Id()));
}

TEST_F(ProcessUtilsTest, FilePathOfAChildTakesTheDebugPrivilege) {
    const ChildProcess child(L"Idle");
    const FailingImport<"LookupPrivilegeValueW", decltype(LookupPrivilegeValueW)> lookup(ERROR_NO_SUCH_PRIVILEGE);
    EXPECT_EQ(OwnPath_(), ProcessUtils::GetProcessFilePath(child.Id()));
    EXPECT_EQ(1, lookup.Calls());
}

TEST_F(ProcessUtilsTest, FilePathOfNoProcessRaises) {
    ExpectFailure<ProcessUtilsException>([] { ProcessUtils::GetProcessFilePath(kNoProcess); },
                                         L"vorlek::ProcessUtils::GetProcessFilePath", L"OpenProcess failed with: 87");
}

TEST_F(ProcessUtilsTest, FilePathThatTheSystemDoesNotTellRaises) {
    DWORD asked = 0;
    const ReplacedImport<"GetProcessImageFileNameW", decltype(GetProcessImageFileNameW)> query(
        [&](HANDLE, wchar_t*, DWORD room) -> DWORD {
            asked = room;
            SetLastError(ERROR_INSUFFICIENT_BUFFER);
            return 0;
        });
    ExpectFailure<ProcessUtilsException>([] { ProcessUtils::GetProcessFilePath(GetCurrentProcessId()); },
                                         L"vorlek::ProcessUtils::GetProcessFilePath",
                                         L"GetModuleFileNameEx failed with: 122");
    EXPECT_EQ(261u, asked);
}

TEST_F(ProcessUtilsTest, ModulesAreThoseThatTheLoaderKnows) {
    const std::vector<HMODULE> modules = ProcessUtils::GetProcessModules(GetCurrentProcessId());
    EXPECT_EQ(GetModuleHandleW(nullptr), modules.at(0));
    EXPECT_TRUE(HasModule_(modules, GetModuleHandleW(L"ntdll.dll")));
    EXPECT_TRUE(HasModule_(modules, GetModuleHandleW(L"wtsapi32.dll")));
    EXPECT_FALSE(HasModule_(modules, nullptr));
}

TEST_F(ProcessUtilsTest, ModulesOfAChildBeginWithItsExecutable) {
    ChildProcess child(L"Idle");
    child.WaitUntilReady();
    const std::vector<HMODULE> modules = ProcessUtils::GetProcessModules(child.Id());
    ASSERT_LT(2u, modules.size());
    EXPECT_EQ(OwnName_(), ProcessUtils::GetProcessModule(child.Id(), modules[0]));
}

TEST_F(ProcessUtilsTest, ModulesOfBothWidthsAreListedHoweverManyThereAre) {
    const ManyModules_ many;
    const std::vector<HMODULE> modules = ProcessUtils::GetProcessModules(GetCurrentProcessId());
    ASSERT_EQ(100u, modules.size());
    for (ULONG_PTR i = 0; i < 100; ++i) {
        EXPECT_EQ(reinterpret_cast<HMODULE>(i + 1), modules[i]);
    }
    EXPECT_EQ((std::vector<DWORD>{64 * sizeof(HMODULE), 100 * sizeof(HMODULE)}), ManyModules_::rooms);
    EXPECT_EQ((std::vector<DWORD>{LIST_MODULES_ALL, LIST_MODULES_ALL}), ManyModules_::filters);
}

TEST_F(ProcessUtilsTest, ModulesOfNoProcessRaise) {
    ExpectFailure<ProcessUtilsException>([] { ProcessUtils::GetProcessModules(kNoProcess); },
                                         L"vorlek::ProcessUtils::GetProcessModules", L"OpenProcess failed with: 87");
}

TEST_F(ProcessUtilsTest, ModulesRaiseWhereTheCallIsMissing) {
    const ManyModules_ many;
    ManyModules_::isExported = false;
    ExpectFailure<Exception>([] { ProcessUtils::GetProcessModules(GetCurrentProcessId()); },
                             L"vorlek::ProcessUtils::GetProcessModules",
                             L"GetProcAddress failed on EnumProcessModulesEx with: 127");
}

TEST_F(ProcessUtilsTest, ModulesRaiseWhereTheCallFails) {
    const ManyModules_ many;
    ManyModules_::error = ERROR_PARTIAL_COPY;
    ExpectFailure<Exception>([] { ProcessUtils::GetProcessModules(GetCurrentProcessId()); },
                             L"vorlek::ProcessUtils::GetProcessModules", L"EnumProcessModulesEx failed with: 299");
}

TEST_F(ProcessUtilsTest, ModulesBeforeVistaAreThoseThatTheOldCallTells) {
    const test_support::ProgramOnXp program;
    EXPECT_EQ(L"complete, calls: 1", ChildProcess(L"ModulesOnXp", L"64 bits", program.Path()).Result());
    EXPECT_EQ(L"Exception: vorlek::ProcessUtils::GetProcessModules: EnumProcessModules failed with: 5",
              ChildProcess(L"ModulesOnXp", L"refused", program.Path()).Result());
}

TEST_F(ProcessUtilsTest, ModulesOf32BitsBeforeVistaRaise) {
    const test_support::ProgramOnXp program;
    EXPECT_EQ(L"NotImplementedException: vorlek::ProcessUtils::GetProcessModules: "
              L"EnumProcessModules doesn't retrieve 32bits modules on XP64bit OS",
              ChildProcess(L"ModulesOnXp", L"32 bits", program.Path()).Result());
}

TEST_F(ProcessUtilsTest, ModuleNameIsItsBaseName) {
    const DWORD own = GetCurrentProcessId();
    EXPECT_EQ(OwnName_(), ProcessUtils::GetProcessModule(own));
    EXPECT_EQ(L"ntdll.dll", ProcessUtils::GetProcessModule(own, GetModuleHandleW(L"ntdll.dll")));
}

TEST_F(ProcessUtilsTest, ModuleNameOfNoProcessRaises) {
    ExpectFailure<Exception>([] { ProcessUtils::GetProcessModule(kNoProcess); },
                             L"vorlek::ProcessUtils::GetProcessModule", L"OpenProcess failed with: 87");
}

TEST_F(ProcessUtilsTest, ModuleNameOfNoModuleRaises) {
    ExpectFailure<Exception>(
        [] { ProcessUtils::GetProcessModule(GetCurrentProcessId(), reinterpret_cast<HMODULE>(0x10)); },
        L"vorlek::ProcessUtils::GetProcessModule", L"GetModuleBaseName failed with: 6");
}

TEST_F(ProcessUtilsTest, SnapshotHasAChildUnderItsParent) {
    const ChildProcess child(L"Idle");
    const std::vector<PROCESSENTRY32W> processes = ProcessUtils::GetProcessSnapshot();
    const auto isIt = [](DWORD pid) {
        return [pid](const PROCESSENTRY32W& each) { return each.th32ProcessID == pid; };
    };
    EXPECT_EQ(1, std::count_if(processes.begin(), processes.end(), isIt(GetCurrentProcessId())));
    const auto found = std::find_if(processes.begin(), processes.end(), isIt(child.Id()));
    ASSERT_NE(processes.end(), found);
    EXPECT_EQ(GetCurrentProcessId(), found->th32ParentProcessID);
    EXPECT_EQ(OwnName_(), found->szExeFile);
}

TEST_F(ProcessUtilsTest, SnapshotThatFailsRaises) {
    const FailingImport<"CreateToolhelp32Snapshot", decltype(CreateToolhelp32Snapshot)> create(ERROR_NOT_ENOUGH_MEMORY,
                                                                                               INVALID_HANDLE_VALUE);
    ExpectFailure<ProcessUtilsException>([] { ProcessUtils::GetProcessSnapshot(); },
                                         L"vorlek::ProcessUtils::GetProcessSnapshot",
                                         L"CreateToolhelp32Snapshot failed with: 8");
}

TEST_F(ProcessUtilsTest, SnapshotWithoutProcessesIsEmpty) {
    const FailingImport<"Process32FirstW", decltype(Process32FirstW)> first(ERROR_NO_MORE_FILES);
    EXPECT_TRUE(ProcessUtils::GetProcessSnapshot().empty());
}

TEST_F(ProcessUtilsTest, TerminatedProcessHasEndedWithCodeZero) {
    ChildProcess child(L"CloseAt", L"1000000");
    child.WaitUntilReady();
    ProcessUtils::TerminateProcessById(child.Id());
    EXPECT_FALSE(IsRunning_(child));
    EXPECT_EQ(0u, ExitCode_(child));
}

TEST_F(ProcessUtilsTest, TerminationAsksForNoMoreThanItNeeds) {
    const ChildProcess child(L"Idle");
    DWORD asked = 0;
    ReplacedImport<"OpenProcess", decltype(OpenProcess)> open([&](DWORD access, BOOL inherit, DWORD pid) {
        asked = access;
        return open.Original(access, inherit, pid);
    });
    ProcessUtils::TerminateProcessById(child.Id());
    EXPECT_EQ(static_cast<DWORD>(PROCESS_TERMINATE | SYNCHRONIZE), asked);
}

TEST_F(ProcessUtilsTest, TerminationReturnsAfterFiveSecondsThoughTheProcessLives) {
    const ChildProcess child(L"Idle");
    const ReplacedImport<"TerminateProcess", decltype(TerminateProcess)> terminate([](HANDLE, UINT) { return TRUE; });
    DWORD waited = 0;
    const ReplacedImport<"WaitForSingleObject", decltype(WaitForSingleObject)> wait([&](HANDLE, DWORD milliseconds) {
        waited += milliseconds;
        return DWORD{WAIT_TIMEOUT}; // as if that time had passed
    });
    ProcessUtils::TerminateProcessById(child.Id());
    EXPECT_EQ(5000u, waited);
    EXPECT_EQ(static_cast<DWORD>(STILL_ACTIVE), ExitCode_(child));
}

TEST_F(ProcessUtilsTest, TerminationOfNoProcessRaises) {
    ExpectFailure<ProcessUtilsException>([] { ProcessUtils::TerminateProcessById(kNoProcess); },
                                         L"vorlek::ProcessUtils::TerminateProcessById", L"OpenProcess failed with: 87");
}

TEST_F(ProcessUtilsTest, TerminationThatFailsRaises) {
    const ChildProcess child(L"Idle");
    {
        const FailingImport<"TerminateProcess", decltype(TerminateProcess)> terminate(ERROR_ACCESS_DENIED);
        ExpectFailure<ProcessUtilsException>([&] { ProcessUtils::TerminateProcessById(child.Id()); },
                                             L"vorlek::ProcessUtils::TerminateProcessById",
                                             L"TerminateProcess failed with: 5");
    }
    EXPECT_TRUE(IsRunning_(child));
}

TEST_F(ProcessUtilsTest, ApplicationEndsAtItsCloseMessage) {
    ChildProcess child(L"CloseAt", L"1");
    child.WaitUntilReady();
    ASSERT_TRUE(ProcessUtils::TerminateApplicationById(child.Id(), kSoonMs));
    EXPECT_EQ(L"closed", child.Result());
}

TEST_F(ProcessUtilsTest, ApplicationThatIgnoresItsCloseMessageGoesOn) {
    ChildProcess child(L"CloseAt", L"2");
    child.WaitUntilReady();
    EXPECT_FALSE(ProcessUtils::TerminateApplicationById(child.Id(), 100));
    EXPECT_TRUE(IsRunning_(child));
    // The first message has come: the second is the one that it obeys.
    ASSERT_TRUE(ProcessUtils::TerminateApplicationById(child.Id(), kSoonMs));
    EXPECT_EQ(L"closed", child.Result());
}

TEST_F(ProcessUtilsTest, CloseMessageGoesToThatProcessAlone) {
    ChildProcess asked(L"CloseAt", L"1");
    ChildProcess other(L"CloseAt", L"1");
    asked.WaitUntilReady();
    other.WaitUntilReady();
    std::vector<DWORD> owners;
    ReplacedImport<"PostMessageW", decltype(PostMessageW)> post(
        [&](HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
            EXPECT_EQ(static_cast<UINT>(WM_CLOSE), message);
            GetWindowThreadProcessId(window, &owners.emplace_back());
            return post.Original(window, message, wParam, lParam);
        });
    EXPECT_TRUE(ProcessUtils::TerminateApplicationById(asked.Id(), kSoonMs));
    ASSERT_FALSE(owners.empty());
    EXPECT_EQ(std::vector<DWORD>(owners.size(), asked.Id()), owners);
    EXPECT_TRUE(IsRunning_(other));
}

TEST_F(ProcessUtilsTest, ApplicationIsWaitedForAsLongAsTheCallerSays) {
    const ChildProcess child(L"Idle");
    DWORD waited = 0;
    DWORD asked = 0;
    ReplacedImport<"OpenProcess", decltype(OpenProcess)> open([&](DWORD access, BOOL inherit, DWORD pid) {
        asked = access;
        return open.Original(access, inherit, pid);
    });
    ReplacedImport<"WaitForSingleObject", decltype(WaitForSingleObject)> wait([&](HANDLE handle, DWORD milliseconds) {
        waited = milliseconds;
        return wait.Original(handle, 0);
    });
    EXPECT_FALSE(ProcessUtils::TerminateApplicationById(child.Id(), 1234567));
    EXPECT_EQ(1234567u, waited);
    EXPECT_EQ(static_cast<DWORD>(SYNCHRONIZE), asked);
}

TEST_F(ProcessUtilsTest, ApplicationOfNoProcessRaises) {
    ExpectFailure<ProcessUtilsException>([] { ProcessUtils::TerminateApplicationById(kNoProcess, 0); },
                                         L"vorlek::ProcessUtils::TerminateApplicationById",
                                         L"OpenProcess failed with: 87");
}

TEST_F(ProcessUtilsTest, ElevationIsThatOfTheToken) {
    HANDLE opened = nullptr;
    ASSERT_TRUE(OpenProcessToken(GetCurrentProcess(), TOKEN_QUERY, &opened));
    const vorlek::FileHandle token(opened);
    TOKEN_ELEVATION_TYPE type = {};
    DWORD size = 0;
    ASSERT_TRUE(GetTokenInformation(token.Get(), TokenElevationType, &type, sizeof(type), &size));
    EXPECT_EQ(type == TokenElevationTypeFull, ProcessUtils::IsCurrentProcessElevated());
}

TEST_F(ProcessUtilsTest, TokenThatIsNotElevatedIsTold) {
    const ReplacedImport<"GetTokenInformation", decltype(GetTokenInformation)> information(
        [](HANDLE, TOKEN_INFORMATION_CLASS kind, void* data, DWORD room, DWORD* size) {
            EXPECT_EQ(TokenElevation, kind);
            *size = room;
            static_cast<TOKEN_ELEVATION*>(data)->TokenIsElevated = 0;
            return TRUE;
        });
    EXPECT_FALSE(ProcessUtils::IsCurrentProcessElevated());
}

TEST_F(ProcessUtilsTest, ElevationOfAClosedTokenRaises) {
    const FailingImport<"OpenProcessToken", decltype(OpenProcessToken)> open(ERROR_ACCESS_DENIED);
    ExpectFailure<Exception>([] { ProcessUtils::IsCurrentProcessElevated(); },
                             L"vorlek::ProcessUtils::IsCurrentProcessElevated", L"OpenProcessToken failed with: 5");
}

TEST_F(ProcessUtilsTest, ElevationThatTheTokenDoesNotTellRaises) {
    const FailingImport<"GetTokenInformation", decltype(GetTokenInformation)> information(ERROR_INVALID_PARAMETER);
    ExpectFailure<Exception>([] { ProcessUtils::IsCurrentProcessElevated(); },
                             L"vorlek::ProcessUtils::IsCurrentProcessElevated", L"GetTokenInformation failed with: 87");
}

TEST_F(ProcessUtilsTest, ProgramsOfThisBuildHave64Bits) {
    const ChildProcess child(L"Idle");
    EXPECT_FALSE(ProcessUtils::IsWOW64Process());
    EXPECT_FALSE(ProcessUtils::IsWOW64Process(child.Handle()));
    EXPECT_TRUE(ProcessUtils::Is64Process(GetCurrentProcessId()));
    EXPECT_TRUE(ProcessUtils::Is64Process(child.Id()));
}

TEST_F(ProcessUtilsTest, ProcessUnderTheEmulationHas32Bits) {
    const ReplacedImport<"IsWow64Process", decltype(IsWow64Process)> isWow64([](HANDLE, BOOL* result) {
        *result = TRUE;
        return TRUE;
    });
    EXPECT_TRUE(ProcessUtils::IsWOW64Process());
    EXPECT_FALSE(ProcessUtils::Is64Process(GetCurrentProcessId()));
}

TEST_F(ProcessUtilsTest, WidthOfAHandleThatIsNoneRaises) {
    ExpectFailure<Exception>([] { ProcessUtils::IsWOW64Process(reinterpret_cast<HANDLE>(0x7770)); },
                             L"vorlek::ProcessUtils::IsWOW64Process", L"IsWow64Process failed with: 6");
}

TEST_F(ProcessUtilsTest, WidthOfNoProcessRaises) {
    ExpectFailure<Exception>([] { ProcessUtils::Is64Process(kNoProcess); }, L"vorlek::ProcessUtils::Is64Process",
                             L"OpenProcess failed with: 87");
}

TEST_F(ProcessUtilsTest, LookingKeepsNoHandle) {
    const DWORD own = GetCurrentProcessId();
    const auto look = [own] {
        ProcessUtils::GetProcessFilePath(own);
        ProcessUtils::GetProcessCommandLine(own);
        ProcessUtils::GetProcessModules(own);
        ProcessUtils::GetProcessModule(own);
        ProcessUtils::GetProcessSnapshot();
        ProcessUtils::IsCurrentProcessElevated();
        ProcessUtils::Is64Process(own);
    };
    look(); // the first time the system opens things of its own
    const DWORD before = test_support::CountOpenHandles();
    look();
    EXPECT_EQ(before, test_support::CountOpenHandles());
}

TEST_F(ProcessUtilsTest, ExecuteWaitsForTheExitCodeOnRequest) {
    EXPECT_EQ(7u, ProcessUtils::Execute(L"cmd.exe /c exit 7", true));
}

TEST_F(ProcessUtilsTest, ExecuteReturnsAtOnceOtherwise) {
    const ReplacedImport<"WaitForSingleObject", decltype(WaitForSingleObject)> wait(
        [](HANDLE, DWORD) { return DWORD{WAIT_OBJECT_0}; });
    EXPECT_EQ(std::nullopt, ProcessUtils::Execute(L"cmd.exe /c exit 7", false));
    EXPECT_EQ(0, wait.Calls());
}

TEST_F(ProcessUtilsTest, ExecuteOfNoProgramRaises) {
    ExpectFailure<Exception>([] { ProcessUtils::Execute(L"C:\\no_such_program.exe", true); },
                             L"vorlek::ProcessUtils::Execute", L"CreateProcess failed with: 2");
}

TEST_F(ProcessUtilsTest, ExecuteRaisesWhereTheWaitOrTheCodeFails) {
    {
        const FailingImport<"WaitForSingleObject", decltype(WaitForSingleObject)> wait(ERROR_INVALID_HANDLE,
                                                                                       WAIT_FAILED);
        ExpectFailure<Exception>([] { ProcessUtils::Execute(L"cmd.exe /c exit 7", true); },
                                 L"vorlek::ProcessUtils::Execute", L"WaitForSingleObject failed with: 6");
    }
    const FailingImport<"GetExitCodeProcess", decltype(GetExitCodeProcess)> code(ERROR_ACCESS_DENIED);
    ExpectFailure<Exception>([] { ProcessUtils::Execute(L"cmd.exe /c exit 7", true); },
                             L"vorlek::ProcessUtils::Execute", L"GetExitCodeProcess failed with: 5");
}

TEST_F(ProcessUtilsTest, ExecuteKeepsNoHandle) {
    ProcessUtils::Execute(L"cmd.exe /c exit 7", true);
    const DWORD before = test_support::CountOpenHandles();
    ProcessUtils::Execute(L"cmd.exe /c exit 7", true);
    ProcessUtils::Execute(L"cmd.exe /c exit 7", false);
    EXPECT_EQ(before, test_support::CountOpenHandles());
}

TEST_F(ProcessUtilsTest, ExecuteShellWaitsForTheExitCodeOnRequest) {
    EXPECT_EQ(8u, ProcessUtils::ExecuteShell(L"cmd.exe", L"/c exit 8", true));
}

TEST_F(ProcessUtilsTest, ExecuteShellReturnsAtOnceOtherwise) {
    EXPECT_EQ(std::nullopt, ProcessUtils::ExecuteShell(L"cmd.exe", L"/c exit 8", false));
}

TEST_F(ProcessUtilsTest, ExecuteShellHasNothingToWaitForWithoutAProcess) {
    const ReplacedImport<"ShellExecuteExW", decltype(ShellExecuteExW)> execute([](SHELLEXECUTEINFOW* info) {
        EXPECT_STREQ(L"report.txt", info->lpFile);
        EXPECT_STREQ(L"", info->lpParameters);
        info->hProcess = nullptr; // a running program has taken it over
        return TRUE;
    });
    EXPECT_EQ(std::nullopt, ProcessUtils::ExecuteShell(L"report.txt", L"", true));
}

TEST_F(ProcessUtilsTest, ExecuteShellRaisesWhereTheWaitFails) {
    const FailingImport<"WaitForSingleObject", decltype(WaitForSingleObject)> wait(ERROR_INVALID_HANDLE, WAIT_FAILED);
    ExpectFailure<Exception>([] { ProcessUtils::ExecuteShell(L"cmd.exe", L"/c exit 8", true); },
                             L"vorlek::ProcessUtils::ExecuteShell", L"WaitForSingleObject failed with: 6");
}

TEST_F(ProcessUtilsTest, ExecuteShellOfNoFileRaises) {
    ExpectFailure<Exception>([] { ProcessUtils::ExecuteShell(L"C:\\no_such_program.exe", L"", true); },
                             L"vorlek::ProcessUtils::ExecuteShell", L"ShellExecuteEx failed with: 2");
}
