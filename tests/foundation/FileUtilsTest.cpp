#include "foundation/FileUtils.h"

#include <filesystem>
#include <sstream>

#include <gtest/gtest.h>

#include "foundation/Exception.h"
#include "tests/support/ExpectFailure.h"
#include "tests/support/TemporaryFolder.h"

using test_support::ExpectFailure;
using test_support::ReadBytes;
using test_support::TemporaryFolder;
using test_support::WriteBytes;
using vorlek::Exception;
using vorlek::FileUtils;
using vorlek::IOException;
using vorlek::UnauthorizedAccessException;

namespace {

/// Keeps a file from being deleted or moved while it lives.
class Held_ {
public:
    explicit Held_(const std::wstring& path)
        : handle_(CreateFileW(path.c_str(), GENERIC_READ, FILE_SHARE_READ, nullptr, OPEN_EXISTING, 0, nullptr)) {
        EXPECT_NE(INVALID_HANDLE_VALUE, handle_);
    }
    ~Held_() { CloseHandle(handle_); }

private:
    HANDLE handle_;
};

} // namespace

TEST(FileUtils, RemovesAFile) {
    const TemporaryFolder folder;
    WriteBytes(folder / L"file", "x");
    FileUtils::RemoveFile(folder / L"file");
    EXPECT_FALSE(FileUtils::Exists(folder / L"file"));
}

TEST(FileUtils, RemovesAReadOnlyFile) {
    const TemporaryFolder folder;
    WriteBytes(folder / L"file", "x");
    FileUtils::SetAttributes(folder / L"file", FILE_ATTRIBUTE_READONLY);
    FileUtils::RemoveFile(folder / L"file");
    EXPECT_FALSE(FileUtils::Exists(folder / L"file"));
}

TEST(FileUtils, MissingFileCountsAsRemoved) {
    const TemporaryFolder folder;
    FileUtils::RemoveFile(folder / L"none");
    FileUtils::RemoveFile(folder / L"none\\file");
    FileUtils::DelayedRemoveFile(folder / L"none");
    FileUtils::DelayedRemoveFile(folder / L"none\\file");
    FileUtils::RemovePath(folder / L"none");
}

TEST(FileUtils, FileThatIsADirectoryIsNotRemoved) {
    const TemporaryFolder folder;
    const std::wstring path = folder / L"sub";
    std::filesystem::create_directory(path);
    ExpectFailure<UnauthorizedAccessException>([&] { FileUtils::RemoveFile(path); }, L"vorlek::FileUtils::RemoveFile",
                                               L"Failed to remove file <" + path + L">");
}

TEST(FileUtils, FileInUseIsNotRemoved) {
    const TemporaryFolder folder;
    const std::wstring path = folder / L"file";
    WriteBytes(path, "x");
    const Held_ held(path);
    ExpectFailure<IOException>([&] { FileUtils::RemoveFile(path); }, L"vorlek::FileUtils::RemoveFile",
                               L"Failed to remove file <" + path + L"> error: 32");
}

TEST(FileUtils, FileInUseGoesAtTheNextRestart) {
    const TemporaryFolder folder;
    const std::wstring path = folder / L"file";
    WriteBytes(path, "x");
    const Held_ held(path);
    FileUtils::RemoveFileOrDelay(path);
    EXPECT_TRUE(FileUtils::Exists(path));
    HKEY key = nullptr;
    ASSERT_EQ(ERROR_SUCCESS, RegOpenKeyExW(HKEY_LOCAL_MACHINE, L"SYSTEM\\CurrentControlSet\\Control\\Session Manager",
                                           0, KEY_READ | KEY_WRITE, &key));
    std::wstring pending(64 * 1024, L'\0');
    DWORD size = static_cast<DWORD>(pending.size() * sizeof(wchar_t));
    EXPECT_EQ(ERROR_SUCCESS, RegQueryValueExW(key, L"PendingFileRenameOperations", nullptr, nullptr,
                                              reinterpret_cast<BYTE*>(pending.data()), &size));
    EXPECT_NE(std::wstring::npos, pending.find(path + L'\0'));
    RegDeleteValueW(key, L"PendingFileRenameOperations"); // of the test's own prefix
    RegCloseKey(key);
}

TEST(FileUtils, DelayedRemovalOfAReadOnlyFileDoesNotTouchItsAttributes) {
    const TemporaryFolder folder;
    const std::wstring path = folder / L"file";
    WriteBytes(path, "x");
    FileUtils::SetAttributes(path, FILE_ATTRIBUTE_READONLY);
    const bool able = MoveFileExW(path.c_str(), nullptr, MOVEFILE_DELAY_UNTIL_REBOOT);
    if (able) {
        FileUtils::DelayedRemoveFile(path);
    } else {
        ExpectFailure<UnauthorizedAccessException>([&] { FileUtils::DelayedRemoveFile(path); },
                                                   L"vorlek::FileUtils::DelayedRemoveFile",
                                                   L"Failed to remove file <" + path + L">");
    }
    EXPECT_NE(0u, GetFileAttributesW(path.c_str()) & FILE_ATTRIBUTE_READONLY);
    FileUtils::SetAttributes(path, FILE_ATTRIBUTE_NORMAL);
}

TEST(FileUtils, RemovesATreeOrAFileByPath) {
    const TemporaryFolder folder;
    std::filesystem::create_directories(folder / L"tree\\sub");
    WriteBytes(folder / L"tree\\sub\\file", "x");
    WriteBytes(folder / L"file", "x");
    FileUtils::RemovePath((folder / L"tree").wstring() + L"\\");
    EXPECT_FALSE(FileUtils::Exists(folder / L"tree"));
    FileUtils::RemovePath(folder / L"file");
    EXPECT_FALSE(FileUtils::Exists(folder / L"file"));
}

TEST(FileUtils, TreeInUseIsNotRemoved) {
    const TemporaryFolder folder;
    std::filesystem::create_directories(folder / L"tree");
    WriteBytes(folder / L"tree\\file", "x");
    const Held_ held(folder / L"tree\\file");
    try {
        FileUtils::RemovePath(folder / L"tree");
        ADD_FAILURE() << "Nothing was raised";
    } catch (const IOException& failure) {
        EXPECT_EQ(L"vorlek::FileUtils::RemovePath", failure.GetLocation());
        EXPECT_TRUE(
            failure.GetMessage().starts_with(L"Failed to remove path <" + (folder / L"tree").wstring() + L"> error: "))
            << testing::PrintToString(failure.GetMessage());
    }
    EXPECT_TRUE(FileUtils::Exists(folder / L"tree\\file"));
}

TEST(FileUtils, Copies) {
    const TemporaryFolder folder;
    WriteBytes(folder / L"from", "new");
    WriteBytes(folder / L"to", "old");
    FileUtils::CopyFileW(folder / L"from", folder / L"to", true);
    EXPECT_EQ("new", ReadBytes(folder / L"to"));
    EXPECT_EQ("new", ReadBytes(folder / L"from"));
}

TEST(FileUtils, CopyKeepsWhatIsThereUnlessToldOtherwise) {
    const TemporaryFolder folder;
    const std::wstring from = folder / L"from";
    const std::wstring to = folder / L"to";
    WriteBytes(from, "new");
    WriteBytes(to, "old");
    ExpectFailure<IOException>([&] { FileUtils::CopyFileW(from, to, false); }, L"vorlek::FileUtils::CopyFileW",
                               L"Failed to copy file " + from + L" to " + to + L". Error: 0x50");
    EXPECT_EQ("old", ReadBytes(to));
}

TEST(FileUtils, Moves) {
    const TemporaryFolder folder;
    WriteBytes(folder / L"from", "new");
    WriteBytes(folder / L"to", "old");
    FileUtils::MoveFileW(folder / L"from", folder / L"to", true);
    EXPECT_EQ("new", ReadBytes(folder / L"to"));
    EXPECT_FALSE(FileUtils::Exists(folder / L"from"));
}

TEST(FileUtils, MoveKeepsWhatIsThereUnlessToldOtherwise) {
    const TemporaryFolder folder;
    const std::wstring from = folder / L"from";
    const std::wstring to = folder / L"to";
    WriteBytes(from, "new");
    WriteBytes(to, "old");
    ExpectFailure<IOException>([&] { FileUtils::MoveFileW(from, to, false); }, L"vorlek::FileUtils::MoveFileW",
                               L"Failed to move file" + from + L" to " + to + L". Error: 0xb7");
    EXPECT_EQ("old", ReadBytes(to));
    EXPECT_EQ("new", ReadBytes(from));
}

TEST(FileUtils, BackupCopyCopiesOverWhatIsThere) {
    const TemporaryFolder folder;
    WriteBytes(folder / L"from", "new");
    WriteBytes(folder / L"to", "old");
    FileUtils::BackupCopy(folder / L"from", folder / L"to");
    EXPECT_EQ("new", ReadBytes(folder / L"to"));
}

TEST(FileUtils, BackupCopyOfAMissingFileRaises) {
    const TemporaryFolder folder;
    const std::wstring from = folder / L"none";
    ExpectFailure<IOException>([&] { FileUtils::BackupCopy(from, folder / L"to"); }, L"vorlek::FileUtils::BackupCopy",
                               L"Failed to open " + from + L". Error: 2");
}

TEST(FileUtils, BackupCopyGoesOnWhereThePlainCopyFails) {
    const TemporaryFolder folder;
    const std::wstring from = folder / L"directory"; // which only the second road can open
    std::filesystem::create_directory(from);
    const HANDLE directory = CreateFileW(from.c_str(), GENERIC_READ, FILE_SHARE_READ, nullptr, OPEN_EXISTING,
                                         FILE_FLAG_BACKUP_SEMANTICS, nullptr);
    BYTE buffer[1024];
    DWORD read = 0;
    void* context = nullptr;
    const bool able = BackupRead(directory, buffer, sizeof buffer, &read, FALSE, TRUE, &context);
    const DWORD error = GetLastError();
    CloseHandle(directory);
    if (able) {
        FileUtils::BackupCopy(from, folder / L"to");
    } else {
        ExpectFailure<IOException>([&] { FileUtils::BackupCopy(from, folder / L"to"); },
                                   L"vorlek::FileUtils::BackupCopy",
                                   L"BackupRead failed with " + std::to_wstring(error));
    }
}

TEST(FileUtils, SetsAttributes) {
    const TemporaryFolder folder;
    WriteBytes(folder / L"file", "x");
    FileUtils::SetAttributes(folder / L"file", FILE_ATTRIBUTE_HIDDEN);
    EXPECT_NE(0u, GetFileAttributesW((folder / L"file").c_str()) & FILE_ATTRIBUTE_HIDDEN);
    ExpectFailure<Exception>([&] { FileUtils::SetAttributes(folder / L"none", FILE_ATTRIBUTE_NORMAL); },
                             L"vorlek::FileUtils::SetAttributes", L"SetFileAttributes failed with: 2");
}

TEST(FileUtils, KnowsWhetherSomethingIsThere) {
    const TemporaryFolder folder;
    WriteBytes(folder / L"file", "");
    EXPECT_TRUE(FileUtils::Exists(folder / L"file"));
    EXPECT_TRUE(FileUtils::Exists(folder.Path()));
    EXPECT_FALSE(FileUtils::Exists(folder / L"none"));
    EXPECT_FALSE(FileUtils::Exists(L""));
}

TEST(FileUtils, SumsATreeWithAtLeast4096BytesAFile) {
    const TemporaryFolder folder;
    EXPECT_EQ(0u, FileUtils::GetTreeSize(folder.Path()));
    WriteBytes(folder / L"empty", "");
    WriteBytes(folder / L"large", std::string(5000, 'x'));
    std::filesystem::create_directories(folder / L"sub\\sub");
    WriteBytes(folder / L"sub\\exact", std::string(4096, 'x'));
    WriteBytes(folder / L"sub\\sub\\small", "x");
    EXPECT_EQ(4096u + 5000u + 4096u + 4096u, FileUtils::GetTreeSize(folder.Path()));
}
