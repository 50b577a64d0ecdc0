#include "foundation/PrivilegeUtils.h"

#include "foundation/AutoHandle.h"
#include "foundation/Throw.h"

namespace vorlek {
namespace {

constexpr wchar_t kShutdown[] = L"SeShutdownPrivilege";
constexpr wchar_t kBackup[] = L"SeBackupPrivilege";
constexpr wchar_t kRestore[] = L"SeRestorePrivilege";
constexpr wchar_t kDebug[] = L"SeDebugPrivilege";

HANDLE OpenOwnToken_() {
    constexpr BOOL kAsProcess = FALSE;
    HANDLE token = nullptr;
    OpenThreadToken(GetCurrentThread(), TOKEN_ADJUST_PRIVILEGES | TOKEN_QUERY, kAsProcess, &token);
    return token;
}

/// The calling thread's token; a thread without one receives one first.
HANDLE OpenThreadToken_() {
    HANDLE token = OpenOwnToken_();
    if (token == nullptr && GetLastError() == ERROR_NO_TOKEN) {
        if (!ImpersonateSelf(SecurityImpersonation)) {
            Throw(L"vorlek::PrivilegeUtils::SetPrivilege", L"ImpersonateSelf failed with ", GetLastError());
        }
        token = OpenOwnToken_();
    }
    if (token == nullptr) {
        Throw(L"vorlek::PrivilegeUtils::SetPrivilege", L"OpenProcessToken failed with ", GetLastError());
    }
    return token;
}

} // namespace

void PrivilegeUtils::SetPrivilege(const std::wstring& name, bool enable) {
    const FileHandle token(OpenThreadToken_());
    TOKEN_PRIVILEGES privileges = {};
    privileges.PrivilegeCount = 1;
    LUID_AND_ATTRIBUTES& privilege = privileges.Privileges[0];
    if (!LookupPrivilegeValueW(nullptr, name.c_str(), &privilege.Luid)) {
        Throw(L"vorlek::PrivilegeUtils::SetPrivilege", L"LookupPrivilegeValue failed with ", GetLastError());
    }
    privilege.Attributes = enable ? SE_PRIVILEGE_ENABLED : 0;
    const BOOL isDone = AdjustTokenPrivileges(token.Get(), FALSE, &privileges, 0, nullptr, nullptr);
    // The call also succeeds for a privilege that the token lacks; only the error tells.
    if (const DWORD error = GetLastError(); !isDone || error == ERROR_NOT_ALL_ASSIGNED) {
        Throw(L"vorlek::PrivilegeUtils::SetPrivilege", L"AdjustTokenPrivileges failed with ", error);
    }
}

void PrivilegeUtils::EnableShutdownPrivilege() {
    SetPrivilege(kShutdown, true);
}

void PrivilegeUtils::DisableShutdownPrivilege() {
    SetPrivilege(kShutdown, false);
}

void PrivilegeUtils::EnableBackupPrivilege() {
    SetPrivilege(kBackup, true);
}

void PrivilegeUtils::DisableBackupPrivilege() {
    SetPrivilege(kBackup, false);
}

void PrivilegeUtils::EnableRestorePrivilege() {
    SetPrivilege(kRestore, true);
}

void PrivilegeUtils::DisableRestorePrivilege() {
    SetPrivilege(kRestore, false);
}

void PrivilegeUtils::EnableDebugPrivilege() {
    SetPrivilege(kDebug, true);
}

void PrivilegeUtils::DisableDebugPrivilege() {
    SetPrivilege(kDebug, false);
}

} // namespace vorlek
