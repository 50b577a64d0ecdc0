#include "foundation/UserUtils.h"

#include <cstring>
#include <vector>

#include <gtest/gtest.h>
#include <sddl.h>
#include <shlobj.h>
#include <wtsapi32.h>

#include "foundation/AutoHandle.h"
#include "foundation/EnvUtils.h"
#include "foundation/RegistryKey.h"
#include "tests/support/ExpectFailure.h"
#include "tests/support/LogCapture.h"
#include "tests/support/OpenHandles.h"
#include "tests/support/ReplacedImport.h"

using test_support::ExpectFailure;
using test_support::FailingImport;
using test_support::ReplacedImport;
using UserUtils::TrustedRelationshipFailure;
using vorlek::Exception;
using vorlek::FileHandle;

namespace {

constexpr wchar_t kSystemSid[] = L"S-1-5-18";

std::wstring Account_(const std::wstring& sid) {
    std::wstring account = L"before";
    std::wstring domain = L"before";
    UserUtils::GetSidInfo(sid, account, domain);
    return domain + L"\\" + account;
}

/// The account under which the tests run.
std::wstring OwnSid_() {
    HANDLE opened = nullptr;
    OpenProcessToken(GetCurrentProcess(), TOKEN_QUERY, &opened);
    const FileHandle token(opened);
    alignas(TOKEN_USER) BYTE data[256] = {};
    DWORD size = 0;
    GetTokenInformation(token.Get(), TokenUser, data, sizeof(data), &size);
    wchar_t* text = nullptr;
    ConvertSidToStringSidW(reinterpret_cast<TOKEN_USER*>(data)->User.Sid, &text);
    std::wstring result = text;
    LocalFree(text);
    return result;
}

using Lookup_ = ReplacedImport<"LookupAccountSidW", decltype(LookupAccountSidW)>;

/// Looks accounts up until that call, which fails with the error.
class FailingLookup_ {
public:
    FailingLookup_(int call, DWORD error)
        : lookup_([this, call, error](const wchar_t* system, PSID sid, wchar_t* name, DWORD* nameSize, wchar_t* domain,
                                      DWORD* domainSize, SID_NAME_USE* use) {
              if (lookup_.Calls() == call) {
                  SetLastError(error);
                  return FALSE;
              }
              return lookup_.Original(system, sid, name, nameSize, domain, domainSize, use);
          }) {}

private:
    Lookup_ lookup_;
};

constexpr wchar_t kSidLocation[] = L"UserUtils::GetSidInfo";
constexpr wchar_t kProfileLocation[] = L"UserUtils::GetProfileDir";

/// Held by one process at a time: there is one such key for all tests.
class ProfileTurn_ {
public:
    ProfileTurn_() { EXPECT_EQ(WAIT_OBJECT_0, WaitForSingleObject(mutex_.Get(), 20000)); }
    ~ProfileTurn_() { ReleaseMutex(mutex_.Get()); }
    ProfileTurn_(const ProfileTurn_&) = delete;
    ProfileTurn_& operator=(const ProfileTurn_&) = delete;

private:
    vorlek::FileHandle mutex_{CreateMutexW(nullptr, FALSE, L"Local\\UserUtilsProfile")};
};

/// The profile of the own account in the registry, back as it was at the end.
class Profile_ {
public:
    Profile_() : hadKey_(HasKey_()) {
        if (hadKey_) {
            const auto key = RegistryKey::GetLocalMachine().OpenSubKey(Name_());
            hadPath_ = key->ValueExists(kValue_);
            if (hadPath_) {
                key->GetValue(kValue_, path_);
            }
        }
        Remove();
    }
    ~Profile_() {
        Remove();
        if (hadPath_) {
            Set(path_, true);
        } else if (hadKey_) {
            RegistryKey::GetLocalMachine().CreateSubKey(Name_(), true);
        }
    }
    void Remove() { RegistryKey::GetLocalMachine().DeleteSubKeyTree(Name_()); }
    void Set(const std::wstring& path, bool expandable) {
        RegistryKey::GetLocalMachine().CreateSubKey(Name_(), true)->SetValue(kValue_, path, expandable);
    }
    bool HasKey_() const {
        try {
            RegistryKey::GetLocalMachine().OpenSubKey(Name_());
            return true;
        } catch (const RegistryKeyException&) {
            return false;
        }
    }
    /// No lasting key can be made below a passing one.
    bool IsLasting() const {
        try {
            RegistryKey::GetLocalMachine().CreateSubKey(Name_() + L"\\below", true);
            return true;
        } catch (const RegistryKeyException&) {
            return false;
        }
    }

private:
    static std::wstring Name_() {
        return L"SOFTWARE\\Microsoft\\Windows NT\\CurrentVersion\\ProfileList\\" + OwnSid_();
    }

    static constexpr const wchar_t* kValue_ = L"ProfileImagePath";
    ProfileTurn_ turn_;
    bool hadKey_;
    bool hadPath_ = false;
    std::wstring path_;
};

} // namespace

TEST(UserUtils, SidInfoNamesAccountAndDomain) {
    EXPECT_EQ(L"NT AUTHORITY\\SYSTEM", Account_(kSystemSid));
    EXPECT_EQ(L"BUILTIN\\Administrators", Account_(L"S-1-5-32-544"));
}

TEST(UserUtils, SidInfoHasAnEmptyDomainWhereThereIsNone) {
    EXPECT_EQ(L"\\Everyone", Account_(L"S-1-1-0"));
}

TEST(UserUtils, SidInfoNamesTheOwnAccount) {
    wchar_t name[256] = {};
    DWORD size = 256;
    ASSERT_TRUE(GetUserNameW(name, &size));
    EXPECT_EQ(EnvUtils::GetMachineName() + L"\\" + name, Account_(OwnSid_()));
}

TEST(UserUtils, SidInfoAsksForTheSizesFirst) {
    std::vector<DWORD> sizes;
    Lookup_ lookup([&](const wchar_t* system, PSID sid, wchar_t* name, DWORD* nameSize, wchar_t* domain,
                       DWORD* domainSize, SID_NAME_USE* use) {
        sizes.insert(sizes.end(), {*nameSize, *domainSize});
        return lookup.Original(system, sid, name, nameSize, domain, domainSize, use);
    });
    Account_(kSystemSid);
    EXPECT_EQ((std::vector<DWORD>{0, 0, 7, 13}), sizes);
}

TEST(UserUtils, TextThatIsNoSidRaises) {
    ExpectFailure<Exception>([] { Account_(L"no sid"); }, kSidLocation, L"ConvertStringSidToSid failed with: 1337");
}

TEST(UserUtils, UnknownSidRaises) {
    ExpectFailure<Exception>([] { Account_(L"S-1-5-21-1-2-3-4"); }, kSidLocation,
                             L"LookupAccountSid failed with: 1332");
}

TEST(UserUtils, AccountThatGoesBetweenTheLookupsRaises) {
    const FailingLookup_ lookup(2, ERROR_NONE_MAPPED);
    ExpectFailure<Exception>([] { Account_(kSystemSid); }, kSidLocation, L"LookupAccountSid failed with: 1332");
}

TEST(UserUtils, LostTrustRaisesAFailureOfItsOwn) {
    const FailingLookup_ lookup(1, ERROR_TRUSTED_RELATIONSHIP_FAILURE);
    ExpectFailure<TrustedRelationshipFailure>([] { Account_(kSystemSid); }, kSidLocation, L"LookupAccountSid failed!");
}

TEST(UserUtils, TrustLostBetweenTheLookupsRaisesAFailureOfItsOwn) {
    const FailingLookup_ lookup(2, ERROR_TRUSTED_RELATIONSHIP_FAILURE);
    ExpectFailure<TrustedRelationshipFailure>([] { Account_(kSystemSid); }, kSidLocation, L"LookupAccountSid failed!");
}

TEST(UserUtils, FailedLookupLeavesTheNamesAlone) {
    std::wstring account = L"account";
    std::wstring domain = L"domain";
    const FailingLookup_ lookup(2, ERROR_NONE_MAPPED);
    EXPECT_THROW(UserUtils::GetSidInfo(kSystemSid, account, domain), Exception);
    EXPECT_EQ(L"account", account);
    EXPECT_EQ(L"domain", domain);
}

TEST(UserUtils, LocalUserIsAnAccountOfThisMachine) {
    EXPECT_TRUE(UserUtils::IsLocalUser(OwnSid_()));
    EXPECT_FALSE(UserUtils::IsLocalUser(kSystemSid));
}

TEST(UserUtils, AccountBehindALostTrustIsNotLocal) {
    const FailingLookup_ lookup(1, ERROR_TRUSTED_RELATIONSHIP_FAILURE);
    const test_support::LogCapture log;
    EXPECT_FALSE(UserUtils::IsLocalUser(OwnSid_()));
    ASSERT_EQ(1u, log.Lines().size());
    EXPECT_EQ(L"WARN", log.Lines()[0].level);
    EXPECT_EQ(L"UserUtils", log.Lines()[0].logger);
    EXPECT_TRUE(log.Lines()[0].text.starts_with(L"No trust to the domain of " + OwnSid_() + L": UserUtils.cpp("));
    EXPECT_TRUE(log.Lines()[0].text.ends_with(
        L"): UserUtils::GetSidInfo: TrustedRelationshipFailure: LookupAccountSid failed!"));
}

TEST(UserUtils, LocalUserOfAnUnknownSidRaises) {
    ExpectFailure<Exception>([] { UserUtils::IsLocalUser(L"S-1-5-21-1-2-3-4"); }, kSidLocation,
                             L"LookupAccountSid failed with: 1332");
}

TEST(UserUtils, AdministratorIsWhoTheShellTakesForOne) {
    EXPECT_EQ(IsUserAnAdmin() != FALSE, UserUtils::IsAdministrator());
}

TEST(UserUtils, ThreadWithoutTheAdministratorsGroupIsNone) {
    ASSERT_TRUE(UserUtils::IsAdministrator());
    BYTE sid[SECURITY_MAX_SID_SIZE] = {};
    DWORD size = sizeof(sid);
    ASSERT_TRUE(CreateWellKnownSid(WinBuiltinAdministratorsSid, nullptr, sid, &size));
    SID_AND_ATTRIBUTES group = {sid, 0};
    HANDLE opened = nullptr;
    ASSERT_TRUE(OpenProcessToken(GetCurrentProcess(), TOKEN_ALL_ACCESS, &opened));
    const FileHandle own(opened);
    ASSERT_TRUE(CreateRestrictedToken(own.Get(), 0, 1, &group, 0, nullptr, 0, nullptr, &opened));
    const FileHandle restricted(opened);
    ASSERT_TRUE(ImpersonateLoggedOnUser(restricted.Get()));
    const bool isAdministrator = UserUtils::IsAdministrator();
    RevertToSelf();
    EXPECT_FALSE(isAdministrator);
}

TEST(UserUtils, AdministratorsAreTheirWellKnownGroup) {
    std::vector<BYTE> asked;
    ReplacedImport<"CheckTokenMembership", decltype(CheckTokenMembership)> check(
        [&](HANDLE token, PSID sid, BOOL* isMember) {
            EXPECT_EQ(nullptr, token);
            asked.assign(static_cast<BYTE*>(sid), static_cast<BYTE*>(sid) + GetLengthSid(sid));
            return check.Original(token, sid, isMember);
        });
    UserUtils::IsAdministrator();
    // Revision 1, 2 sub-authorities, authority 5, then 32 and 544.
    EXPECT_EQ((std::vector<BYTE>{1, 2, 0, 0, 0, 0, 0, 5, 32, 0, 0, 0, 32, 2, 0, 0}), asked);
}

TEST(UserUtils, GroupThatCannotBeBuiltRaises) {
    const FailingImport<"AllocateAndInitializeSid", decltype(AllocateAndInitializeSid)> allocate(ERROR_OUTOFMEMORY);
    ExpectFailure<Exception>([] { UserUtils::IsAdministrator(); }, L"UserUtils::IsAdministrator",
                             L"LookupPrivilegeValue failed with 14");
}

TEST(UserUtils, MembershipThatCannotBeCheckedRaises) {
    const FailingImport<"CheckTokenMembership", decltype(CheckTokenMembership)> check(ERROR_ACCESS_DENIED);
    ExpectFailure<Exception>([] { UserUtils::IsAdministrator(); }, L"UserUtils::IsAdministrator",
                             L"CheckTokenMembership failed with 5");
}

class UserUtilsProfile : public testing::Test {
protected:
    static std::wstring ProfileDir_() {
        DWORD session = 0;
        ProcessIdToSessionId(GetCurrentProcessId(), &session);
        return UserUtils::GetProfileDir(session);
    }

    Profile_ profile_;
};

TEST_F(UserUtilsProfile, IsWhatTheRegistrySaysExpanded) {
    wchar_t windows[MAX_PATH] = {};
    GetEnvironmentVariableW(L"SystemRoot", windows, MAX_PATH);
    profile_.Set(L"%SystemRoot%\\profiles\\one", true);
    EXPECT_EQ(windows + std::wstring(L"\\profiles\\one"), ProfileDir_());
    profile_.Set(L"C:\\users\\two", false);
    EXPECT_EQ(L"C:\\users\\two", ProfileDir_());
}

TEST_F(UserUtilsProfile, ThatIsMissingGetsALastingKeyAndRaises) {
    ASSERT_FALSE(profile_.HasKey_());
    EXPECT_THROW(ProfileDir_(), RegistryKeyException);
    EXPECT_TRUE(profile_.HasKey_());
    EXPECT_TRUE(profile_.IsLasting());
}

TEST_F(UserUtilsProfile, SessionWithoutAUserRaises) {
    DWORD asked = 0;
    const ReplacedImport<"WTSQueryUserToken", decltype(WTSQueryUserToken)> query([&](ULONG session, HANDLE*) {
        asked = session;
        SetLastError(ERROR_NO_TOKEN);
        return FALSE;
    });
    ExpectFailure<Exception>([] { UserUtils::GetProfileDir(77); }, kProfileLocation,
                             L"WTSQueryUserToken has failed with1008");
    EXPECT_EQ(77u, asked);
}

TEST_F(UserUtilsProfile, TokenIsDuplicatedToQueryAsADelegate) {
    profile_.Set(L"C:\\users\\one", false);
    ReplacedImport<"DuplicateTokenEx", decltype(DuplicateTokenEx)> duplicate(
        [&](HANDLE token, DWORD access, SECURITY_ATTRIBUTES* attributes, SECURITY_IMPERSONATION_LEVEL level,
            TOKEN_TYPE type, HANDLE* result) {
            EXPECT_EQ(8u, access);
            EXPECT_EQ(3, level);
            EXPECT_EQ(2, type);
            return duplicate.Original(token, access, attributes, level, type, result);
        });
    EXPECT_EQ(L"C:\\users\\one", ProfileDir_());
    EXPECT_EQ(1, duplicate.Calls());
}

TEST_F(UserUtilsProfile, TokenThatCannotBeDuplicatedRaises) {
    const FailingImport<"DuplicateTokenEx", decltype(DuplicateTokenEx)> duplicate(ERROR_ACCESS_DENIED);
    ExpectFailure<Exception>([] { ProfileDir_(); }, kProfileLocation, L"DuplicateTokenEx has failed with: 5");
}

TEST_F(UserUtilsProfile, TokenThatDoesNotTellItsUserRaises) {
    const ReplacedImport<"GetTokenInformation", decltype(GetTokenInformation)> information(
        [](HANDLE, TOKEN_INFORMATION_CLASS, void*, DWORD, DWORD* size) {
            *size = 64; // told, but this is not a matter of room
            SetLastError(ERROR_ACCESS_DENIED);
            return FALSE;
        });
    ExpectFailure<Exception>([] { ProfileDir_(); }, kProfileLocation, L"GetTokenInformation has failed with: 5");
    EXPECT_EQ(1, information.Calls());
}

TEST_F(UserUtilsProfile, TokenThatTellsItsSizeButNotItsUserRaises) {
    ReplacedImport<"GetTokenInformation", decltype(GetTokenInformation)> information(
        [&](HANDLE token, TOKEN_INFORMATION_CLASS kind, void* data, DWORD room, DWORD* size) {
            if (information.Calls() == 2) {
                SetLastError(ERROR_INVALID_HANDLE);
                return FALSE;
            }
            return information.Original(token, kind, data, room, size);
        });
    ExpectFailure<Exception>([] { ProfileDir_(); }, kProfileLocation, L"GetTokenInformation has failed with: 6");
}

TEST_F(UserUtilsProfile, TokensAreClosed) {
    profile_.Set(L"C:\\users\\one", false);
    ProfileDir_();
    const DWORD before = test_support::CountOpenHandles();
    ProfileDir_();
    EXPECT_EQ(before, test_support::CountOpenHandles());
}
