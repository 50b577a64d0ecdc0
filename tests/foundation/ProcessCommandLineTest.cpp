#include <cstddef>
#include <vector>

#include <gtest/gtest.h>

#include "foundation/ProcessUtils.h"
#include "tests/support/ChildProcess.h"
#include "tests/support/ExpectFailure.h"
#include "tests/support/ProgramOnXp.h"
#include "tests/support/ReplacedImport.h"

#include <winternl.h>

using test_support::ChildProcess;
using test_support::ExpectFailure;
using test_support::FailingImport;
using test_support::ReplacedImport;
using vorlek::ProcessUtils;
using vorlek::ProcessUtilsException;

namespace {

constexpr DWORD kNoProcess = 0xFFFFFFF0;
constexpr wchar_t kLocation[] = L"vorlek::ProcessUtils::GetProcessCommandLine";

/// As the system itself tells it.
PEB* OwnPeb_() {
    const auto tell = reinterpret_cast<PEB* (*)()>(
        reinterpret_cast<void*>(GetProcAddress(GetModuleHandleW(L"ntdll.dll"), "RtlGetCurrentPeb")));
    return tell();
}

std::wstring OwnCommandLine_() {
    return ProcessUtils::GetProcessCommandLine(GetCurrentProcessId());
}

std::wstring StayAlive_(const std::wstring& /*argument*/) {
    test_support::SayReady();
    test_support::WaitToBeKilled();
}

const test_support::ChildRoleName stayAlive(L"StayAlive", StayAlive_);

std::wstring LoseCommandLine_(const std::wstring& /*argument*/) {
    OwnPeb_()->ProcessParameters->CommandLine.Length = 0;
    test_support::SayReady();
    test_support::WaitToBeKilled();
}

const test_support::ChildRoleName loseCommandLine(L"LoseCommandLine", LoseCommandLine_);

/// A child that runs: one that is still being made has a command line in parts only.
class RunningChild : public ChildProcess {
public:
    explicit RunningChild(const std::wstring& argument = {}) : ChildProcess(L"StayAlive", argument) {
        WaitUntilReady();
    }
};

/// The access with which a command line is read.
std::wstring CommandLineAccess_(const std::wstring& /*argument*/) {
    DWORD asked = 0;
    ReplacedImport<"OpenProcess", decltype(OpenProcess)> open([&](DWORD access, BOOL inherit, DWORD pid) {
        asked = access;
        return open.Original(access, inherit, pid);
    });
    OwnCommandLine_();
    return std::to_wstring(asked);
}

const test_support::ChildRoleName commandLineAccess(L"CommandLineAccess", CommandLineAccess_);

/// The own process as it looks from outside, with parts put in place of the true ones.
class Disguise_ {
public:
    Disguise_() {
        pebAddress = &peb;
        peb.ProcessParameters = &parameters;
        parameters.CommandLine = {sizeof(text) - sizeof(wchar_t), sizeof(text), text};
    }

    wchar_t text[8] = L"disguis";
    RTL_USER_PROCESS_PARAMETERS parameters = {};
    PEB peb = {};

    inline static PEB* pebAddress = nullptr;
    inline static NTSTATUS status = 0;
    inline static bool isExported = true;

private:
    static NTSTATUS NTAPI Query_(HANDLE, PROCESSINFOCLASS kind, void* data, ULONG size, ULONG*) {
        EXPECT_EQ(ProcessBasicInformation, kind);
        EXPECT_EQ(sizeof(PROCESS_BASIC_INFORMATION), size);
        static_cast<PROCESS_BASIC_INFORMATION*>(data)->PebBaseAddress = pebAddress;
        return status;
    }

    ReplacedImport<"GetProcAddress", decltype(GetProcAddress)> find_{[](HMODULE module, const char* name) {
        EXPECT_EQ(GetModuleHandleW(L"ntdll.dll"), module);
        EXPECT_STREQ("NtQueryInformationProcess", name);
        return isExported ? reinterpret_cast<FARPROC>(reinterpret_cast<void*>(Query_)) : nullptr;
    }};
};

/// Reads memory until that call, which tells of one byte less than it was asked for.
class ShortRead_ {
public:
    explicit ShortRead_(int call)
        : read_([this, call](HANDLE process, const void* address, void* data, SIZE_T size, SIZE_T* done) {
              const BOOL result = read_.Original(process, address, data, size, done);
              *done -= read_.Calls() == call ? 1 : 0;
              return result;
          }) {}

private:
    ReplacedImport<"ReadProcessMemory", decltype(ReadProcessMemory)> read_;
};

} // namespace

TEST(ProcessCommandLine, OfTheOwnProcessIsTheSystemsAnswer) {
    EXPECT_EQ(GetCommandLineW(), OwnCommandLine_());
}

TEST(ProcessCommandLine, OfAChildIsWhatItWasStartedWith) {
    const RunningChild child(
        L"two words, \\\"quoted\\\", \u041f\u0440\u0438\u0432\u0435\u0442 \u6771\u4eac \U0001F512");
    EXPECT_EQ(child.CommandLine(), ProcessUtils::GetProcessCommandLine(child.Id()));
    RevertToSelf();
}

TEST(ProcessCommandLine, MayBeLong) {
    const RunningChild child(std::wstring(30000, L'\u044f'));
    EXPECT_EQ(child.CommandLine(), ProcessUtils::GetProcessCommandLine(child.Id()));
    RevertToSelf();
}

TEST(ProcessCommandLine, ThatIsEmptyIsReadWithoutItsBuffer) {
    ChildProcess child(L"LoseCommandLine");
    child.WaitUntilReady();
    std::vector<SIZE_T> sizes;
    ReplacedImport<"ReadProcessMemory", decltype(ReadProcessMemory)> read(
        [&](HANDLE process, const void* address, void* data, SIZE_T size, SIZE_T* done) {
            sizes.push_back(size);
            return read.Original(process, address, data, size, done);
        });
    EXPECT_EQ(L"", ProcessUtils::GetProcessCommandLine(child.Id()));
    EXPECT_EQ((std::vector<SIZE_T>{8, 16}), sizes);
    RevertToSelf();
}

TEST(ProcessCommandLine, ReadsTheAddressesOf64BitWindows) {
    const Disguise_ disguise;
    std::vector<const void*> addresses;
    ReplacedImport<"ReadProcessMemory", decltype(ReadProcessMemory)> read(
        [&](HANDLE process, const void* address, void* data, SIZE_T size, SIZE_T* done) {
            addresses.push_back(address);
            return read.Original(process, address, data, size, done);
        });
    EXPECT_EQ(L"disguis", OwnCommandLine_());
    EXPECT_EQ((std::vector<const void*>{reinterpret_cast<const BYTE*>(&disguise.peb) + 32,
                                        reinterpret_cast<const BYTE*>(&disguise.parameters) + 112, disguise.text}),
              addresses);
}

TEST(ProcessCommandLine, IsReadWithTheLimitedAccessSinceVista) {
    EXPECT_EQ(L"4112", CommandLineAccess_(L""));
}

TEST(ProcessCommandLine, IsReadWithTheFullAccessBeforeVista) {
    const test_support::ProgramOnXp program;
    EXPECT_EQ(L"1040", ChildProcess(L"CommandLineAccess", L"", program.Path()).Result());
}

TEST(ProcessCommandLine, OfTheOwnProcessTouchesNoPrivilege) {
    RevertToSelf();
    OwnCommandLine_();
    HANDLE token = nullptr;
    EXPECT_FALSE(OpenThreadToken(GetCurrentThread(), TOKEN_QUERY, FALSE, &token));
}

TEST(ProcessCommandLine, OfAChildTakesTheDebugPrivilege) {
    const RunningChild child;
    ReplacedImport<"LookupPrivilegeValueW", decltype(LookupPrivilegeValueW)> lookup(
        [&](const wchar_t* system, const wchar_t* name, LUID* privilege) {
            EXPECT_STREQ(L"SeDebugPrivilege", name);
            return lookup.Original(system, name, privilege);
        });
    EXPECT_EQ(child.CommandLine(), ProcessUtils::GetProcessCommandLine(child.Id()));
    EXPECT_EQ(1, lookup.Calls());
    RevertToSelf();
}

TEST(ProcessCommandLine, OfAChildIsReadWithoutThePrivilegeAsWell) {
    const RunningChild child;
    const FailingImport<"AdjustTokenPrivileges", decltype(AdjustTokenPrivileges)> adjust(ERROR_ACCESS_DENIED);
    EXPECT_EQ(child.CommandLine(), ProcessUtils::GetProcessCommandLine(child.Id()));
    EXPECT_EQ(1, adjust.Calls());
    RevertToSelf();
}

TEST(ProcessCommandLine, OfNoProcessRaises) {
    ExpectFailure<ProcessUtilsException>([] { ProcessUtils::GetProcessCommandLine(kNoProcess); }, kLocation,
                                         L"OpenProcess failed with: 87");
    RevertToSelf();
}

TEST(ProcessCommandLine, PebOfTheOwnProcessIsTheSystemsAnswer) {
    EXPECT_EQ(OwnPeb_(), vorlek::GetPebAddress(GetCurrentProcess()));
}

TEST(ProcessCommandLine, PebOfAHandleThatIsNoneRaisesTheStatus) {
    ExpectFailure<ProcessUtilsException>([] { vorlek::GetPebAddress(reinterpret_cast<HANDLE>(0x7770)); },
                                         L"vorlek::GetPebAddress",
                                         L"NtQueryInformationProcess failed with: -1073741816");
}

TEST(ProcessCommandLine, SystemWithoutTheQueryRaises) {
    const Disguise_ disguise;
    Disguise_::isExported = false;
    ExpectFailure<ProcessUtilsException>(OwnCommandLine_, L"vorlek::GetPebAddress",
                                         L"Failed to get NtQueryInformationProcess pointer");
    Disguise_::isExported = true;
}

TEST(ProcessCommandLine, MissingPebRaises) {
    const Disguise_ disguise;
    Disguise_::pebAddress = nullptr;
    ExpectFailure<ProcessUtilsException>(OwnCommandLine_, kLocation, L"PEB structure is NULL");
}

TEST(ProcessCommandLine, ParametersThatCannotBeReadRaise) {
    const Disguise_ disguise;
    Disguise_::pebAddress = reinterpret_cast<PEB*>(0x10);
    ExpectFailure<ProcessUtilsException>(OwnCommandLine_, kLocation,
                                         L"ReadProcessMemory (PROCESS_PARAMETERS) failed with: 998");
}

TEST(ProcessCommandLine, StructureThatCannotBeReadRaises) {
    Disguise_ disguise;
    disguise.peb.ProcessParameters = reinterpret_cast<RTL_USER_PROCESS_PARAMETERS*>(0x10);
    ExpectFailure<ProcessUtilsException>(OwnCommandLine_, kLocation,
                                         L"ReadProcessMemory (COMMAND_LINE_STRUCT) failed with: 998");
}

TEST(ProcessCommandLine, TextThatCannotBeReadRaises) {
    Disguise_ disguise;
    disguise.parameters.CommandLine.Buffer = reinterpret_cast<wchar_t*>(0x10);
    ExpectFailure<ProcessUtilsException>(OwnCommandLine_, kLocation,
                                         L"ReadProcessMemory (COMMAND_LINE) failed with: 998");
}

TEST(ProcessCommandLine, ParametersReadInPartRaise) {
    const ShortRead_ read(1);
    ExpectFailure<ProcessUtilsException>(OwnCommandLine_, kLocation, L"ReadProcessMemory (PROCESS_PARAMETERS) failed!");
}

TEST(ProcessCommandLine, StructureReadInPartRaises) {
    const ShortRead_ read(2);
    ExpectFailure<ProcessUtilsException>(OwnCommandLine_, kLocation,
                                         L"ReadProcessMemory (COMMAND_LINE_STRUCT) failed!");
}

TEST(ProcessCommandLine, TextReadInPartRaises) {
    const ShortRead_ read(3);
    ExpectFailure<ProcessUtilsException>(OwnCommandLine_, kLocation, L"ReadProcessMemory (COMMAND_LINE) failed");
}
