#include "foundation/PrivilegeUtils.h"

#include <vector>

#include <gtest/gtest.h>

#include "foundation/AutoHandle.h"
#include "tests/support/ExpectFailure.h"
#include "tests/support/ReplacedImport.h"

using test_support::ExpectFailure;
using test_support::FailingImport;
using test_support::ReplacedImport;
using vorlek::Exception;
using vorlek::FileHandle;
using vorlek::PrivilegeUtils;

namespace {

constexpr wchar_t kLocation[] = L"vorlek::PrivilegeUtils::SetPrivilege";

HANDLE ThreadToken_() {
    HANDLE token = nullptr;
    OpenThreadToken(GetCurrentThread(), TOKEN_QUERY, FALSE, &token);
    return token;
}

HANDLE ProcessToken_() {
    HANDLE token = nullptr;
    OpenProcessToken(GetCurrentProcess(), TOKEN_QUERY, &token);
    return token;
}

/// The names of the privileges that are switched on, in the system's order.
std::vector<std::wstring> Enabled_(const FileHandle& token) {
    DWORD size = 0;
    GetTokenInformation(token.Get(), TokenPrivileges, nullptr, 0, &size);
    std::vector<BYTE> data(size);
    EXPECT_TRUE(GetTokenInformation(token.Get(), TokenPrivileges, data.data(), size, &size));
    const auto* privileges = reinterpret_cast<const TOKEN_PRIVILEGES*>(data.data());
    std::vector<std::wstring> names;
    for (DWORD i = 0; i < privileges->PrivilegeCount; ++i) {
        LUID_AND_ATTRIBUTES privilege = privileges->Privileges[i];
        wchar_t name[64] = {};
        DWORD length = 64;
        if ((privilege.Attributes & SE_PRIVILEGE_ENABLED) != 0 &&
            LookupPrivilegeNameW(nullptr, &privilege.Luid, name, &length)) {
            names.emplace_back(name);
        }
    }
    return names;
}

std::vector<std::wstring> EnabledInThread_() {
    return Enabled_(FileHandle(ThreadToken_()));
}

std::vector<std::wstring> EnabledInProcess_() {
    return Enabled_(FileHandle(ProcessToken_()));
}

bool Has_(const std::vector<std::wstring>& names, const std::wstring& name) {
    return std::find(names.begin(), names.end(), name) != names.end();
}

/// The thread has no token of its own, neither before nor after.
class PrivilegeUtilsTest : public testing::Test {
protected:
    PrivilegeUtilsTest() { RevertToSelf(); }
    ~PrivilegeUtilsTest() override { RevertToSelf(); }
};

struct Named {
    const char* shortName;
    const wchar_t* name;
    void (*enable)();
    void (*disable)();
};

void PrintTo(const Named& named, std::ostream* stream) {
    *stream << named.shortName;
}

class PrivilegeUtilsByName : public PrivilegeUtilsTest, public testing::WithParamInterface<Named> {};

} // namespace

TEST_P(PrivilegeUtilsByName, EnableAndDisableSwitchThatPrivilegeAlone) {
    const std::vector<std::wstring> before = EnabledInProcess_();
    ASSERT_FALSE(Has_(before, GetParam().name));
    GetParam().enable();
    const std::vector<std::wstring> enabled = EnabledInThread_();
    EXPECT_TRUE(Has_(enabled, GetParam().name));
    EXPECT_EQ(before.size() + 1, enabled.size());
    GetParam().disable();
    EXPECT_EQ(before, EnabledInThread_());
}

INSTANTIATE_TEST_SUITE_P(All, PrivilegeUtilsByName,
                         testing::Values(Named{"Shutdown", L"SeShutdownPrivilege",
                                               PrivilegeUtils::EnableShutdownPrivilege,
                                               PrivilegeUtils::DisableShutdownPrivilege},
                                         Named{"Backup", L"SeBackupPrivilege", PrivilegeUtils::EnableBackupPrivilege,
                                               PrivilegeUtils::DisableBackupPrivilege},
                                         Named{"Restore", L"SeRestorePrivilege", PrivilegeUtils::EnableRestorePrivilege,
                                               PrivilegeUtils::DisableRestorePrivilege},
                                         Named{"Debug", L"SeDebugPrivilege", PrivilegeUtils::EnableDebugPrivilege,
                                               PrivilegeUtils::DisableDebugPrivilege}),
                         [](const testing::TestParamInfo<Named>& info) { return std::string(info.param.shortName); });

TEST_F(PrivilegeUtilsTest, ChangesTheCallingThreadAndNotTheProcess) {
    const std::vector<std::wstring> before = EnabledInProcess_();
    PrivilegeUtils::SetPrivilege(L"SeBackupPrivilege", true);
    EXPECT_TRUE(Has_(EnabledInThread_(), L"SeBackupPrivilege"));
    EXPECT_EQ(before, EnabledInProcess_());
}

TEST_F(PrivilegeUtilsTest, AsksForTheThreadsTokenAsTheThreadToAdjustAndQuery) {
    std::vector<DWORD> access;
    std::vector<BOOL> asProcess;
    {
        ReplacedImport<"OpenThreadToken", decltype(OpenThreadToken)> open(
            [&](HANDLE thread, DWORD desired, BOOL openAsSelf, HANDLE* token) {
                access.push_back(desired);
                asProcess.push_back(openAsSelf);
                return open.Original(thread, desired, openAsSelf, token);
            });
        PrivilegeUtils::SetPrivilege(L"SeBackupPrivilege", true);
    }
    EXPECT_EQ((std::vector<DWORD>{40, 40}), access);
    EXPECT_EQ((std::vector<BOOL>{FALSE, FALSE}), asProcess);
}

TEST_F(PrivilegeUtilsTest, ThreadWithATokenKeepsIt) {
    PrivilegeUtils::SetPrivilege(L"SeBackupPrivilege", true);
    const FailingImport<"ImpersonateSelf", decltype(ImpersonateSelf)> impersonate(ERROR_ACCESS_DENIED);
    PrivilegeUtils::SetPrivilege(L"SeRestorePrivilege", true);
    EXPECT_EQ(0, impersonate.Calls());
    EXPECT_TRUE(Has_(EnabledInThread_(), L"SeBackupPrivilege"));
    EXPECT_TRUE(Has_(EnabledInThread_(), L"SeRestorePrivilege"));
}

TEST_F(PrivilegeUtilsTest, TokenThatCannotBeOpenedRaises) {
    const FailingImport<"OpenThreadToken", decltype(OpenThreadToken)> open(ERROR_ACCESS_DENIED);
    ExpectFailure<Exception>([] { PrivilegeUtils::SetPrivilege(L"SeBackupPrivilege", true); }, kLocation,
                             L"OpenProcessToken failed with 5");
    EXPECT_EQ(1, open.Calls());
}

TEST_F(PrivilegeUtilsTest, TokenThatIsMissingAfterImpersonationRaises) {
    const ReplacedImport<"ImpersonateSelf", decltype(ImpersonateSelf)> impersonate(
        [](SECURITY_IMPERSONATION_LEVEL level) { return level == SecurityImpersonation; });
    ExpectFailure<Exception>([] { PrivilegeUtils::SetPrivilege(L"SeBackupPrivilege", true); }, kLocation,
                             L"OpenProcessToken failed with 1008");
    EXPECT_EQ(1, impersonate.Calls());
}

TEST_F(PrivilegeUtilsTest, ImpersonationThatFailsRaises) {
    const FailingImport<"ImpersonateSelf", decltype(ImpersonateSelf)> impersonate(ERROR_ACCESS_DENIED);
    ExpectFailure<Exception>([] { PrivilegeUtils::SetPrivilege(L"SeBackupPrivilege", true); }, kLocation,
                             L"ImpersonateSelf failed with 5");
}

TEST_F(PrivilegeUtilsTest, PrivilegeIsLookedUpOnThisMachine) {
    ReplacedImport<"LookupPrivilegeValueW", decltype(LookupPrivilegeValueW)> lookup(
        [&](const wchar_t* system, const wchar_t* name, LUID* privilege) {
            EXPECT_EQ(nullptr, system);
            EXPECT_STREQ(L"SeBackupPrivilege", name);
            return lookup.Original(system, name, privilege);
        });
    PrivilegeUtils::SetPrivilege(L"SeBackupPrivilege", true);
    EXPECT_EQ(1, lookup.Calls());
}

TEST_F(PrivilegeUtilsTest, UnknownPrivilegeRaises) {
    ExpectFailure<Exception>([] { PrivilegeUtils::SetPrivilege(L"SeNoSuchPrivilege", true); }, kLocation,
                             L"LookupPrivilegeValue failed with 1313");
}

TEST_F(PrivilegeUtilsTest, AdjustmentThatFailsRaises) {
    const FailingImport<"AdjustTokenPrivileges", decltype(AdjustTokenPrivileges)> adjust(ERROR_ACCESS_DENIED);
    ExpectFailure<Exception>([] { PrivilegeUtils::SetPrivilege(L"SeBackupPrivilege", true); }, kLocation,
                             L"AdjustTokenPrivileges failed with 5");
}

TEST_F(PrivilegeUtilsTest, PrivilegeThatTheAccountDoesNotHoldRaises) {
    ExpectFailure<Exception>([] { PrivilegeUtils::SetPrivilege(L"SeCreateTokenPrivilege", true); }, kLocation,
                             L"AdjustTokenPrivileges failed with 1300");
}
