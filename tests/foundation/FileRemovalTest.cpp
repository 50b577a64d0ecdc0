#include "foundation/FileRemoval.h"

#include <filesystem>

#include <gtest/gtest.h>

#include <shellapi.h>

#include "foundation/AutoHandle.h"
#include "foundation/DirUtils.h"
#include "foundation/EnviornmentUtils.h"
#include "foundation/FileUtils.h"
#include "foundation/RegistryKey.h"
#include "tests/support/ChildProcess.h"
#include "tests/support/ExpectFailure.h"
#include "tests/support/ReplacedImport.h"
#include "tests/support/TemporaryFolder.h"

// The removals, under whichever name a class offers them.

using test_support::ChildProcess;
using test_support::ExpectFailure;
using test_support::FailingImport;
using test_support::ReplacedImport;
using test_support::TemporaryFolder;
using test_support::WriteBytes;
using vorlek::FileUtils;
using vorlek::IOException;
using vorlek::UnauthorizedAccessException;
using vorlek::PluginUtils::EnviornmentUtils;

namespace {

constexpr wchar_t kRemoveFile[] = L"vorlek::FileUtils::RemoveFile";
constexpr wchar_t kDelayedRemoveFile[] = L"vorlek::FileUtils::DelayedRemoveFile";
constexpr wchar_t kRemovePath[] = L"vorlek::FileUtils::RemovePath";

void Hold_(const std::wstring& path, DWORD share) {
    vorlek::FileHandle file;
    file = CreateFileW(path.c_str(), GENERIC_READ, share, nullptr, OPEN_EXISTING, 0, nullptr);
    if (file.IsValid()) {
        test_support::SayReady();
        test_support::WaitToBeKilled();
    }
}

std::wstring HoldFile_(const std::wstring& path) {
    Hold_(path, FILE_SHARE_READ);
    return {};
}

std::wstring HoldFileThatMayGo_(const std::wstring& path) {
    Hold_(path, FILE_SHARE_READ | FILE_SHARE_DELETE);
    return {};
}

const test_support::ChildRoleName holdFile(L"HoldFile", HoldFile_);
const test_support::ChildRoleName holdFileThatMayGo(L"HoldFileThatMayGo", HoldFileThatMayGo_);

/// What the system will remove at its next start, empty at the end. Only of the test's own prefix.
class PendingRemovals_ {
public:
    ~PendingRemovals_() { Key_()->DeleteValue(kName); }

    bool Has(const std::wstring& path) const {
        std::vector<BYTE> data;
        DWORD type = REG_NONE;
        Key_()->GetValue(kName, data, type);
        const std::wstring text(reinterpret_cast<const wchar_t*>(data.data()), data.size() / sizeof(wchar_t));
        return text.find(path + L'\0') != text.npos;
    }

private:
    static constexpr wchar_t kName[] = L"PendingFileRenameOperations";
    static std::shared_ptr<RegistryKey> Key_() {
        return RegistryKey::GetLocalMachine().OpenSubKey(L"SYSTEM\\CurrentControlSet\\Control\\Session Manager",
                                                         KEY_READ | KEY_WRITE);
    }
};

std::wstring NewFile_(const TemporaryFolder& folder) {
    WriteBytes(folder / L"file", "x");
    return folder / L"file";
}

} // namespace

TEST(RemoveFile, RemovesAFile) {
    const TemporaryFolder folder;
    const std::wstring path = NewFile_(folder);
    FileUtils::RemoveFile(path);
    EXPECT_FALSE(FileUtils::Exists(path));
}

TEST(RemoveFile, RemovesAReadOnlyFileByItsSecondAttempt) {
    const TemporaryFolder folder;
    const std::wstring path = NewFile_(folder);
    constexpr DWORD kKept = FILE_ATTRIBUTE_HIDDEN | FILE_ATTRIBUTE_SYSTEM;
    FileUtils::SetAttributes(path, kKept | FILE_ATTRIBUTE_READONLY);
    std::vector<DWORD> set;
    ReplacedImport<"SetFileAttributesW", decltype(SetFileAttributesW)> change([&](LPCWSTR file, DWORD attributes) {
        set.push_back(attributes & (kKept | FILE_ATTRIBUTE_READONLY));
        return change.Original(file, attributes);
    });
    FileUtils::RemoveFile(path);
    EXPECT_FALSE(FileUtils::Exists(path));
    EXPECT_EQ(std::vector<DWORD>{kKept}, set);
}

TEST(RemoveFile, RemovesBeyondTheSystemsLimit) {
    const TemporaryFolder folder;
    const std::wstring part(150, L'p');
    const std::wstring path = folder / (part + L'\\' + part);
    std::filesystem::create_directory(folder / part);
    FileUtils::MoveFileW(NewFile_(folder), path, false);
    FileUtils::SetAttributes(path, FILE_ATTRIBUTE_READONLY);
    FileUtils::RemoveFile(path);
    EXPECT_FALSE(FileUtils::Exists(path));
}

TEST(RemoveFile, MissingFileCountsAsRemoved) {
    const TemporaryFolder folder;
    EXPECT_NO_THROW(FileUtils::RemoveFile(folder / L"none"));
    EXPECT_NO_THROW(FileUtils::RemoveFile(folder / L"none\\file"));
}

TEST(RemoveFile, FileThatGoesInBetweenCountsAsRemoved) {
    const TemporaryFolder folder;
    const std::wstring path = NewFile_(folder);
    FileUtils::SetAttributes(path, FILE_ATTRIBUTE_READONLY);
    ReplacedImport<"GetFileAttributesW", decltype(GetFileAttributesW)> ask([&](LPCWSTR file) {
        EXPECT_TRUE(SetFileAttributesW(file, FILE_ATTRIBUTE_NORMAL));
        EXPECT_TRUE(DeleteFileW(file));
        return ask.Original(file);
    });
    EXPECT_NO_THROW(FileUtils::RemoveFile(path));
    EXPECT_EQ(1, ask.Calls());
}

TEST(RemoveFile, FileThatGoesBeforeTheSecondAttemptCountsAsRemoved) {
    const TemporaryFolder folder;
    const std::wstring path = NewFile_(folder);
    FileUtils::SetAttributes(path, FILE_ATTRIBUTE_READONLY);
    ReplacedImport<"SetFileAttributesW", decltype(SetFileAttributesW)> change([&](LPCWSTR file, DWORD attributes) {
        const BOOL changed = change.Original(file, attributes);
        EXPECT_TRUE(DeleteFileW(file));
        return changed;
    });
    EXPECT_NO_THROW(FileUtils::RemoveFile(path));
    EXPECT_EQ(1, change.Calls());
}

TEST(RemoveFile, FileOpenElsewhereThatMayGoGoes) {
    const TemporaryFolder folder;
    const std::wstring path = NewFile_(folder);
    ChildProcess elsewhere(L"HoldFileThatMayGo", path);
    elsewhere.WaitUntilReady();
    EXPECT_NO_THROW(FileUtils::RemoveFile(path));
    elsewhere.Terminate();
    EXPECT_FALSE(FileUtils::Exists(path));
}

TEST(RemoveFile, FileOpenElsewhereRaises) {
    const TemporaryFolder folder;
    const std::wstring path = NewFile_(folder);
    ChildProcess elsewhere(L"HoldFile", path);
    elsewhere.WaitUntilReady();
    ExpectFailure<IOException>([&] { FileUtils::RemoveFile(path); }, kRemoveFile,
                               L"Failed to remove file <" + path + L"> error: 32");
    elsewhere.Terminate();
    EXPECT_NO_THROW(FileUtils::RemoveFile(path));
    EXPECT_FALSE(FileUtils::Exists(path));
}

TEST(RemoveFile, DirectoryRaises) {
    const TemporaryFolder folder;
    const std::wstring path = folder.Path();
    ExpectFailure<UnauthorizedAccessException>([&] { FileUtils::RemoveFile(path); }, kRemoveFile,
                                               L"Failed to remove file <" + path + L">");
}

TEST(RemoveFile, SecondAttemptThatFailsForAnotherReasonRaisesTheSame) {
    ReplacedImport<"DeleteFileW", decltype(DeleteFileW)> remove([&](LPCWSTR) {
        SetLastError(remove.Calls() == 1 ? ERROR_ACCESS_DENIED : ERROR_SHARING_VIOLATION);
        return FALSE;
    });
    ExpectFailure<UnauthorizedAccessException>([&] { FileUtils::RemoveFile(L"C:\\none"); }, kRemoveFile,
                                               L"Failed to remove file <C:\\none>");
    EXPECT_EQ(2, remove.Calls());
}

TEST(RemoveFile, GoesByTheNameOfItsClass) {
    const TemporaryFolder folder;
    const std::wstring path = NewFile_(folder);
    FileUtils::SetAttributes(path, FILE_ATTRIBUTE_READONLY);
    EnviornmentUtils::RemoveFile(path);
    EXPECT_FALSE(FileUtils::Exists(path));
    EXPECT_NO_THROW(EnviornmentUtils::RemoveFile(path));
    const FailingImport<"DeleteFileW", decltype(DeleteFileW)> remove(ERROR_WRITE_PROTECT);
    ExpectFailure<IOException>([&] { EnviornmentUtils::RemoveFile(path); },
                               L"vorlek::PluginUtils::EnviornmentUtils::RemoveFile",
                               L"Failed to remove file <" + path + L"> error: 19");
}

TEST(DelayedRemoveFile, LeavesTheFileToTheNextStart) {
    const TemporaryFolder folder;
    const std::wstring path = NewFile_(folder);
    const PendingRemovals_ pending;
    FileUtils::DelayedRemoveFile(path);
    EXPECT_TRUE(FileUtils::Exists(path));
    EXPECT_TRUE(pending.Has(path));
}

TEST(DelayedRemoveFile, AsksForTheNextStart) {
    const std::wstring path = L"C:\\" + std::wstring(300, L'x');
    std::wstring asked;
    const ReplacedImport<"MoveFileExW", decltype(MoveFileExW)> move([&](LPCWSTR source, LPCWSTR target, DWORD flags) {
        asked = source + (target == nullptr ? L", " + std::to_wstring(flags) : L", a target");
        return TRUE;
    });
    FileUtils::DelayedRemoveFile(path);
    EXPECT_EQ(L"\\\\?\\" + path + L", 4", asked);
}

TEST(DelayedRemoveFile, MissingFileCountsAsRemoved) {
    for (const DWORD missing : {ERROR_FILE_NOT_FOUND, ERROR_PATH_NOT_FOUND}) {
        const FailingImport<"MoveFileExW", decltype(MoveFileExW)> move(missing);
        EXPECT_NO_THROW(FileUtils::DelayedRemoveFile(L"C:\\none"));
        EXPECT_EQ(1, move.Calls());
    }
}

TEST(DelayedRemoveFile, DeniedFileRaisesAndKeepsItsAttributes) {
    const TemporaryFolder folder;
    const std::wstring path = NewFile_(folder);
    FileUtils::SetAttributes(path, FILE_ATTRIBUTE_READONLY);
    {
        const FailingImport<"MoveFileExW", decltype(MoveFileExW)> move(ERROR_ACCESS_DENIED);
        ExpectFailure<UnauthorizedAccessException>([&] { FileUtils::DelayedRemoveFile(path); }, kDelayedRemoveFile,
                                                   L"Failed to remove file <" + path + L">");
        EXPECT_EQ(1, move.Calls());
    }
    EXPECT_NE(0u, GetFileAttributesW(path.c_str()) & FILE_ATTRIBUTE_READONLY);
    FileUtils::RemoveFile(path);
}

TEST(DelayedRemoveFile, AnyOtherFailureRaisesWithItsNumber) {
    const FailingImport<"MoveFileExW", decltype(MoveFileExW)> move(ERROR_WRITE_PROTECT);
    ExpectFailure<IOException>([&] { FileUtils::DelayedRemoveFile(L"C:\\file"); }, kDelayedRemoveFile,
                               L"Failed to remove file <C:\\file> error: 19");
}

TEST(RemoveFileOrDelay, RemovesAtOnceWhatItCan) {
    const TemporaryFolder folder;
    const std::wstring path = NewFile_(folder);
    const FailingImport<"MoveFileExW", decltype(MoveFileExW)> move(ERROR_ACCESS_DENIED);
    EXPECT_NO_THROW(FileUtils::RemoveFileOrDelay(path));
    EXPECT_FALSE(FileUtils::Exists(path));
    EXPECT_EQ(0, move.Calls());
}

TEST(RemoveFileOrDelay, FileOpenElsewhereGoesAtTheNextStart) {
    const TemporaryFolder folder;
    const std::wstring path = NewFile_(folder);
    const PendingRemovals_ pending;
    ChildProcess elsewhere(L"HoldFile", path);
    elsewhere.WaitUntilReady();
    EXPECT_NO_THROW(FileUtils::RemoveFileOrDelay(path));
    EXPECT_TRUE(pending.Has(path));
}

TEST(RemoveFileOrDelay, DeniedFileGoesAtTheNextStart) {
    const FailingImport<"DeleteFileW", decltype(DeleteFileW)> remove(ERROR_ACCESS_DENIED);
    const ReplacedImport<"MoveFileExW", decltype(MoveFileExW)> move([](LPCWSTR, LPCWSTR, DWORD) { return TRUE; });
    EXPECT_NO_THROW(FileUtils::RemoveFileOrDelay(L"C:\\none"));
    EXPECT_EQ(1, move.Calls());
}

TEST(RemoveFileOrDelay, FileThatCannotEvenBeDelayedRaises) {
    const FailingImport<"DeleteFileW", decltype(DeleteFileW)> remove(ERROR_SHARING_VIOLATION);
    const FailingImport<"MoveFileExW", decltype(MoveFileExW)> move(ERROR_ACCESS_DENIED);
    ExpectFailure<UnauthorizedAccessException>([] { FileUtils::RemoveFileOrDelay(L"C:\\file"); }, kDelayedRemoveFile,
                                               L"Failed to remove file <C:\\file>");
}

TEST(RemovePath, RemovesATreeOrAFile) {
    const TemporaryFolder folder;
    std::filesystem::create_directories(folder / L"tree\\sub");
    WriteBytes(folder / L"tree\\sub\\file", "x");
    FileUtils::RemovePath(folder / L"tree");
    EXPECT_FALSE(FileUtils::Exists(folder / L"tree"));
    const std::wstring path = NewFile_(folder);
    FileUtils::RemovePath(path);
    EXPECT_FALSE(FileUtils::Exists(path));
}

TEST(RemovePath, MissingPathCountsAsRemoved) {
    const TemporaryFolder folder;
    const FailingImport<"SHFileOperationW", decltype(SHFileOperationW)> operation(ERROR_ACCESS_DENIED, 1);
    EXPECT_NO_THROW(FileUtils::RemovePath(folder / L"none"));
    EXPECT_EQ(0, operation.Calls());
}

TEST(RemovePath, IsOneCallThatAsksTheUserNothing) {
    const TemporaryFolder folder;
    const std::wstring path = folder.Path();
    for (const wchar_t* end : {L"", L"\\", L"/"}) {
        std::wstring removed;
        SHFILEOPSTRUCTW asked = {};
        const ReplacedImport<"SHFileOperationW", decltype(SHFileOperationW)> operation([&](SHFILEOPSTRUCTW* what) {
            asked = *what;
            removed.assign(what->pFrom, path.size() + 2);
            return 0;
        });
        FileUtils::RemovePath(path + end);
        EXPECT_EQ(1, operation.Calls());
        EXPECT_EQ(static_cast<UINT>(FO_DELETE), asked.wFunc);
        EXPECT_EQ(FOF_SILENT | FOF_NOCONFIRMATION | FOF_NOERRORUI, asked.fFlags);
        EXPECT_EQ(path + std::wstring(2, L'\0'), removed);
    }
}

TEST(RemovePath, GetsThePrefixBeyondTheSystemsLimit) {
    const TemporaryFolder folder;
    const std::wstring part(150, L'p');
    const std::wstring path = folder / (part + L'\\' + part);
    ASSERT_TRUE(vorlek::DirUtils::CreateDir(path, nullptr));
    std::wstring removed;
    const ReplacedImport<"SHFileOperationW", decltype(SHFileOperationW)> operation([&](SHFILEOPSTRUCTW* what) {
        removed = what->pFrom;
        return 0;
    });
    FileUtils::RemovePath(path);
    EXPECT_EQ(L"\\\\?\\" + path, removed);
    FileUtils::RemoveAllFiles(folder.Path(), false);
}

TEST(RemovePath, TreeOpenElsewhereRaises) {
    const TemporaryFolder folder;
    std::filesystem::create_directories(folder / L"tree");
    WriteBytes(folder / L"tree\\file", "x");
    ChildProcess elsewhere(L"HoldFile", folder / L"tree\\file");
    elsewhere.WaitUntilReady();
    EXPECT_THROW(FileUtils::RemovePath(folder / L"tree"), IOException);
    EXPECT_TRUE(FileUtils::Exists(folder / L"tree\\file"));
}

TEST(RemovePath, FailureSaysWhatTheSystemSaid) {
    const TemporaryFolder folder;
    const std::wstring path = folder.Path();
    {
        const FailingImport<"SHFileOperationW", decltype(SHFileOperationW)> denied(ERROR_ACCESS_DENIED, 0x78);
        ExpectFailure<UnauthorizedAccessException>([&] { FileUtils::RemovePath(path); }, kRemovePath,
                                                   L"Failed to remove file <" + path);
        ExpectFailure<UnauthorizedAccessException>([&] { EnviornmentUtils::RemovePath(path); },
                                                   L"vorlek::PluginUtils::EnviornmentUtils::RemovePath",
                                                   L"Failed to remove file <" + path);
    }
    const FailingImport<"SHFileOperationW", decltype(SHFileOperationW)> failed(ERROR_WRITE_PROTECT, 0x78);
    ExpectFailure<IOException>([&] { FileUtils::RemovePath(path); }, kRemovePath,
                               L"Failed to remove path <" + path + L"> error: 19");
    ExpectFailure<IOException>([&] { EnviornmentUtils::RemovePath(path); },
                               L"vorlek::PluginUtils::EnviornmentUtils::RemovePath",
                               L"Failed to remove path <" + path + L"> error: 19");
}
