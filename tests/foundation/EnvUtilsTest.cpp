#include "foundation/EnvUtils.h"

#include <filesystem>

#include <gtest/gtest.h>

#include "foundation/RegistryKey.h"
#include "platform/Windows.h"
#include "tests/support/ChildProcess.h"
#include "tests/support/ExpectFailure.h"
#include "tests/support/ProgramOnXp.h"
#include "tests/support/ReplacedImport.h"

using test_support::ExpectFailure;
using test_support::FailingImport;
using test_support::FailingLaterCalls;
using vorlek::Exception;

namespace {

/// A variable of this process, back as it was at the end.
class Variable_ {
public:
    Variable_(const wchar_t* name, const wchar_t* value) : name_(name) {
        wchar_t before[1024] = {};
        wasThere_ = GetEnvironmentVariableW(name, before, 1024) != 0;
        before_ = before;
        SetEnvironmentVariableW(name, value);
    }
    ~Variable_() { SetEnvironmentVariableW(name_, wasThere_ ? before_.c_str() : nullptr); }

private:
    const wchar_t* name_;
    bool wasThere_;
    std::wstring before_;
};

constexpr wchar_t kShellFolders[] = L"SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\Explorer\\Shell Folders";
constexpr wchar_t kLocalLow[] = L"{A520A1A4-1780-4FF6-BD18-167343C5AF16}";

/// The place of the low-integrity folder in the registry, back as it was at the end.
class LocalLow_ {
public:
    LocalLow_() : key_(RegistryKey::GetCurrentUser().CreateSubKey(kShellFolders, true)) {
        if (key_->ValueExists(kLocalLow)) {
            key_->GetValue(kLocalLow, before_);
        }
    }
    ~LocalLow_() {
        if (before_.empty()) {
            key_->DeleteValue(kLocalLow);
        } else {
            key_->SetValue(kLocalLow, before_);
        }
    }
    void Set(const std::wstring& path) { key_->SetValue(kLocalLow, path); }

private:
    std::shared_ptr<RegistryKey> key_;
    std::wstring before_;
};

std::wstring LocalLowTemp_(const std::wstring& /*argument*/) {
    return EnvUtils::GetLocalLowTempDirectory();
}

const test_support::ChildRoleName localLowTemp(L"LocalLowTemp", LocalLowTemp_);

} // namespace

TEST(EnvUtils, ReadsAVariable) {
    const Variable_ variable(L"EnvUtilsTest", std::wstring(1000, L'v').c_str());
    EXPECT_EQ(std::wstring(1000, L'v'), EnvUtils::GetVariable(L"EnvUtilsTest"));
}

TEST(EnvUtils, VariableMayBeEmpty) {
    const Variable_ variable(L"EnvUtilsTest", L"");
    EXPECT_EQ(L"", EnvUtils::GetVariable(L"EnvUtilsTest"));
}

TEST(EnvUtils, VariableThatIsNotThereRaises) {
    ExpectFailure<Exception>([] { EnvUtils::GetVariable(L"EnvUtilsTestNone"); }, L"EnvUtils::GetVariable",
                             L"Failed to get size of system variable: EnvUtilsTestNone, with: 203");
}

TEST(EnvUtils, VariableThatGoesInBetweenRaises) {
    const Variable_ variable(L"EnvUtilsTest", L"value");
    const FailingLaterCalls<"GetEnvironmentVariableW", decltype(GetEnvironmentVariableW)> get(ERROR_ENVVAR_NOT_FOUND);
    ExpectFailure<Exception>([] { EnvUtils::GetVariable(L"EnvUtilsTest"); }, L"EnvUtils::GetVariable",
                             L"Failed to open system variable: EnvUtilsTest, with: 203");
}

TEST(EnvUtils, TempDirectoryThatTheSystemDoesNotTellRaises) {
    const auto raises = [] {
        ExpectFailure<Exception>([] { EnvUtils::GetTempDirectory(); }, L"EnvUtils::GetTempDirectory",
                                 L"GetTempPath failed with: 21");
    };
    {
        const FailingImport<"GetTempPathW", decltype(GetTempPathW)> all(ERROR_NOT_READY);
        raises();
    }
    const FailingLaterCalls<"GetTempPathW", decltype(GetTempPathW)> later(ERROR_NOT_READY);
    raises();
}

TEST(EnvUtils, TempDirectoryFollowsTheEnvironmentAndEndsInABackslash) {
    const Variable_ variable(L"TMP", L"C:\\windows");
    EXPECT_EQ(L"C:\\windows\\", EnvUtils::GetTempDirectory());
}

TEST(EnvUtils, TempFileIsANewEmptyFileOfItsOwn) {
    const std::wstring first = EnvUtils::GetTempFile();
    const std::wstring second = EnvUtils::GetTempFile(L"abc");
    EXPECT_NE(first, second);
    EXPECT_EQ(0u, std::filesystem::file_size(first));
    EXPECT_TRUE(std::filesystem::path(second).filename().wstring().starts_with(L"abc"));
    EXPECT_TRUE(std::filesystem::remove(first));
    EXPECT_TRUE(std::filesystem::remove(second));
}

TEST(EnvUtils, TempFileInAMissingDirectoryRaises) {
    const Variable_ variable(L"TMP", L"C:\\no such directory");
    ExpectFailure<Exception>([] { EnvUtils::GetTempFile(); }, L"EnvUtils::GetTempFile",
                             L"GetTempFileName failed with: 267");
}

TEST(EnvUtils, MachineNameIsTheSystems) {
    wchar_t name[MAX_COMPUTERNAME_LENGTH + 1] = {};
    DWORD size = MAX_COMPUTERNAME_LENGTH + 1;
    ASSERT_TRUE(GetComputerNameW(name, &size));
    EXPECT_EQ(name, EnvUtils::GetMachineName());
}

TEST(EnvUtils, MachineNameThatTheSystemDoesNotTellRaises) {
    const FailingImport<"GetComputerNameExW", decltype(GetComputerNameExW)> get(ERROR_MORE_DATA);
    ExpectFailure<Exception>([] { EnvUtils::GetMachineName(); }, L"EnvUtils::GetMachineName",
                             L"GetComputerNameEx failed with: 234");
}

TEST(EnvUtils, CommonApplicationDataIsWhatTheRegistrySays) {
    std::wstring path;
    RegistryKey::GetLocalMachine().OpenSubKey(kShellFolders)->GetValue(L"Common AppData", path);
    EXPECT_FALSE(path.empty());
    EXPECT_EQ(path, EnvUtils::GetCommonAppDataDirectory());
}

TEST(EnvUtils, LowIntegrityDirectoryIsWhatTheRegistrySays) {
    LocalLow_ folder;
    folder.Set(L"C:\\windows");
    EXPECT_EQ(L"C:\\windows", EnvUtils::GetLocalLowTempDirectory());
}

TEST(EnvUtils, LowIntegrityDirectoryThatIsNotThereRaises) {
    LocalLow_ folder;
    folder.Set(L"C:\\no such directory");
    ExpectFailure<Exception>([] { EnvUtils::GetLocalLowTempDirectory(); }, L"EnvUtils::GetLocalLowTempDirectory",
                             L"\"C:\\no such directory\" doesn't exist!");
}

TEST(EnvUtils, LowIntegrityDirectoryIsTheTempDirectoryBeforeVista) {
    LocalLow_ folder;
    folder.Set(L"C:\\windows");
    const test_support::ProgramOnXp program;
    EXPECT_EQ(EnvUtils::GetTempDirectory(), test_support::ChildProcess(L"LocalLowTemp", L"", program.Path()).Result());
}
