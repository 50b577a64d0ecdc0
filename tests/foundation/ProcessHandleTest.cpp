#include "foundation/ProcessHandle.h"

#include <stdexcept>

#include <gtest/gtest.h>

#include "tests/support/ChildProcess.h"
#include "tests/support/ExpectFailure.h"
#include "tests/support/ProgramOnXp.h"
#include "tests/support/ReplacedImport.h"

using test_support::ExpectFailure;
using test_support::ReplacedImport;
using vorlek::FileHandle;

namespace {

constexpr DWORD kNoProcess = 0xFFFFFFF0;

std::wstring QueryAccess_(const std::wstring& /*argument*/) {
    return std::to_wstring(vorlek::GetQueryAccess());
}

std::wstring Wait_(const std::wstring& /*argument*/) {
    test_support::WaitToBeKilled();
}

const test_support::ChildRoleName wait(L"Wait", Wait_);
const test_support::ChildRoleName queryAccess(L"QueryAccess", QueryAccess_);

bool ThreadHoldsDebugPrivilege_() {
    HANDLE opened = nullptr;
    if (!OpenThreadToken(GetCurrentThread(), TOKEN_QUERY, FALSE, &opened)) {
        return false;
    }
    const FileHandle token(opened);
    PRIVILEGE_SET required = {};
    required.PrivilegeCount = 1;
    LookupPrivilegeValueW(nullptr, L"SeDebugPrivilege", &required.Privilege[0].Luid);
    BOOL holds = FALSE;
    EXPECT_TRUE(PrivilegeCheck(token.Get(), &required, &holds));
    return holds != FALSE;
}

/// The thread has no token of its own, neither before nor after.
class ProcessHandle : public testing::Test {
protected:
    ProcessHandle() { RevertToSelf(); }
    ~ProcessHandle() override { RevertToSelf(); }
};

} // namespace

TEST_F(ProcessHandle, OpensTheProcessForWhatIsAsked) {
    const test_support::ChildProcess child(L"Wait");
    const FileHandle process = vorlek::OpenProcessById<vorlek::Exception>(L"Somewhere", SYNCHRONIZE, child.Id());
    EXPECT_EQ(static_cast<DWORD>(WAIT_TIMEOUT), WaitForSingleObject(process.Get(), 0));
    EXPECT_FALSE(TerminateProcess(process.Get(), 1));
}

TEST_F(ProcessHandle, MissingProcessRaisesTheFailureAskedForWhereItIsAskedFor) {
    ExpectFailure<vorlek::Exception>(
        [] { vorlek::OpenProcessById<vorlek::Exception>(L"Somewhere", SYNCHRONIZE, kNoProcess); }, L"Somewhere",
        L"OpenProcess failed with: 87");
    ExpectFailure<vorlek::ProcessUtilsException>(
        [] { vorlek::OpenProcessById<vorlek::ProcessUtilsException>(L"Elsewhere", SYNCHRONIZE, kNoProcess); },
        L"Elsewhere", L"OpenProcess failed with: 87");
}

TEST_F(ProcessHandle, OtherProcessTakesTheDebugPrivilege) {
    vorlek::PrepareToInspect(kNoProcess);
    EXPECT_TRUE(ThreadHoldsDebugPrivilege_());
}

TEST_F(ProcessHandle, OwnProcessTouchesNoPrivilege) {
    vorlek::PrepareToInspect(GetCurrentProcessId());
    HANDLE token = nullptr;
    EXPECT_FALSE(OpenThreadToken(GetCurrentThread(), TOKEN_QUERY, FALSE, &token));
}

TEST_F(ProcessHandle, PrivilegeThatIsRefusedIsDoneWithout) {
    const test_support::FailingImport<"AdjustTokenPrivileges", decltype(AdjustTokenPrivileges)> adjust(
        ERROR_ACCESS_DENIED);
    EXPECT_NO_THROW(vorlek::PrepareToInspect(kNoProcess));
    EXPECT_EQ(1, adjust.Calls());
}

TEST_F(ProcessHandle, FailureOfAnotherKindPasses) {
    const ReplacedImport<"AdjustTokenPrivileges", decltype(AdjustTokenPrivileges)> adjust(
        [](HANDLE, BOOL, TOKEN_PRIVILEGES*, DWORD, TOKEN_PRIVILEGES*, DWORD*) -> BOOL {
            throw std::runtime_error("out of order");
        });
    EXPECT_THROW(vorlek::PrepareToInspect(kNoProcess), std::runtime_error);
}

TEST_F(ProcessHandle, QueryAccessIsTheLimitedOneSinceVista) {
    EXPECT_EQ(static_cast<DWORD>(PROCESS_QUERY_LIMITED_INFORMATION), vorlek::GetQueryAccess());
}

TEST_F(ProcessHandle, QueryAccessIsTheFullOneBeforeVista) {
    const test_support::ProgramOnXp program;
    EXPECT_EQ(std::to_wstring(PROCESS_QUERY_INFORMATION),
              test_support::ChildProcess(L"QueryAccess", L"", program.Path()).Result());
}
