#include "foundation/UserUtils.h"

#include <utility>
#include <vector>

#include <sddl.h>
#include <wtsapi32.h>

#include "foundation/AutoHandle.h"
#include "foundation/ConversionsUtils.h"
#include "foundation/EnvUtils.h"
#include "foundation/Log.h"
#include "foundation/Log4CxxHelper.h"
#include "foundation/PathUtils.h"
#include "foundation/RegistryKey.h"
#include "foundation/Throw.h"

using vorlek::AutoHandle;
using vorlek::FileHandle;
using vorlek::Throw;

namespace UserUtils {
namespace {

using LocalSid = AutoHandle<PSID, 0, LocalFree>;
using AllocatedSid = AutoHandle<PSID, 0, FreeSid>;

vorlek::LoggerHolder logger_;

[[noreturn]] void RaiseLookupFailure_(DWORD error) {
    if (error == ERROR_TRUSTED_RELATIONSHIP_FAILURE) {
        Throw<TrustedRelationshipFailure>(L"UserUtils::GetSidInfo", L"LookupAccountSid failed!");
    }
    Throw(L"UserUtils::GetSidInfo", L"LookupAccountSid failed with: ", error);
}

FileHandle OpenSessionToken_(DWORD sessionId) {
    HANDLE token = nullptr;
    if (!WTSQueryUserToken(sessionId, &token)) {
        // Nothing between the words and the number: others match them as they are.
        Throw(L"UserUtils::GetProfileDir", L"WTSQueryUserToken has failed with", GetLastError());
    }
    return FileHandle(token);
}

FileHandle DuplicateForQuery_(const FileHandle& token) {
    HANDLE duplicate = nullptr;
    if (!DuplicateTokenEx(token.Get(), TOKEN_QUERY, nullptr, SecurityDelegation, TokenImpersonation, &duplicate)) {
        Throw(L"UserUtils::GetProfileDir", L"DuplicateTokenEx has failed with: ", GetLastError());
    }
    return FileHandle(duplicate);
}

std::wstring GetUserSid_(const FileHandle& token) {
    DWORD size = 0;
    std::vector<BYTE> user;
    while (!GetTokenInformation(token.Get(), TokenUser, user.data(), size, &size)) {
        const DWORD error = GetLastError();
        if (error != ERROR_INSUFFICIENT_BUFFER || size <= user.size()) {
            Throw(L"UserUtils::GetProfileDir", L"GetTokenInformation has failed with: ", error);
        }
        user.resize(size);
    }
    return vorlek::ConversionsUtils::SidToString(reinterpret_cast<const TOKEN_USER*>(user.data())->User.Sid);
}

} // namespace

void GetSidInfo(const std::wstring& sidText, std::wstring& account, std::wstring& domain) {
    PSID converted = nullptr;
    if (!ConvertStringSidToSidW(sidText.c_str(), &converted)) {
        Throw(L"UserUtils::GetSidInfo", L"ConvertStringSidToSid failed with: ", GetLastError());
    }
    const LocalSid sid(converted);
    DWORD accountSize = 0;
    DWORD domainSize = 0;
    SID_NAME_USE use = SidTypeUnknown;
    if (!LookupAccountSidW(nullptr, sid.Get(), nullptr, &accountSize, nullptr, &domainSize, &use)) {
        if (const DWORD error = GetLastError(); error != ERROR_INSUFFICIENT_BUFFER) {
            RaiseLookupFailure_(error);
        }
    }
    std::wstring accountText(accountSize, L'\0');
    std::wstring domainText(domainSize, L'\0');
    if (!LookupAccountSidW(nullptr, sid.Get(), accountText.data(), &accountSize, domainText.data(), &domainSize,
                           &use)) {
        RaiseLookupFailure_(GetLastError());
    }
    // The first call counts the terminators, the second does not.
    accountText.resize(accountSize);
    domainText.resize(domainSize);
    account = std::move(accountText);
    domain = std::move(domainText);
}

bool IsLocalUser(const std::wstring& sidText) {
    vorlek::InitLogger(logger_, "UserUtils::IsLocalUser", false);
    std::wstring account;
    std::wstring domain;
    try {
        GetSidInfo(sidText, account, domain);
    } catch (const TrustedRelationshipFailure& failure) {
        LOG_WARN(logger_, L"No trust to the domain of " << sidText << L": " << failure.ToString());
        return false;
    }
    return CompareStringOrdinal(domain.c_str(), -1, EnvUtils::GetMachineName().c_str(), -1, TRUE) == CSTR_EQUAL;
}

bool IsAdministrator() {
    SID_IDENTIFIER_AUTHORITY authority = SECURITY_NT_AUTHORITY;
    PSID allocated = nullptr;
    if (!AllocateAndInitializeSid(&authority, 2, SECURITY_BUILTIN_DOMAIN_RID, DOMAIN_ALIAS_RID_ADMINS, 0, 0, 0, 0, 0, 0,
                                  &allocated)) {
        // The words name another call; others match them as they are.
        Throw(L"UserUtils::IsAdministrator", L"LookupPrivilegeValue failed with ", GetLastError());
    }
    const AllocatedSid administrators(allocated);
    BOOL isMember = FALSE;
    if (!CheckTokenMembership(nullptr, administrators.Get(), &isMember)) {
        Throw(L"UserUtils::IsAdministrator", L"CheckTokenMembership failed with ", GetLastError());
    }
    return isMember != FALSE;
}

std::wstring GetProfileDir(DWORD sessionId) {
    const FileHandle sessionToken = OpenSessionToken_(sessionId);
    const FileHandle token = DuplicateForQuery_(sessionToken);
    const auto profile = RegistryKey::GetLocalMachine().CreateSubKey(
        L"SOFTWARE\\Microsoft\\Windows NT\\CurrentVersion\\ProfileList\\" + GetUserSid_(token), true);
    std::wstring path;
    profile->GetValue(L"ProfileImagePath", path);
    return vorlek::PathUtils::ExpandPath(path);
}

} // namespace UserUtils
