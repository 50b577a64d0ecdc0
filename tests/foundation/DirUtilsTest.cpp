#include "foundation/DirUtils.h"

#include <algorithm>
#include <filesystem>

#include <gtest/gtest.h>

#include <aclapi.h>
#include <sddl.h>
#include <shellapi.h>

#include "foundation/ConversionsUtils.h"
#include "tests/support/ExpectFailure.h"
#include "tests/support/NetworkShare.h"
#include "tests/support/ReplacedImport.h"
#include "tests/support/TemporaryFolder.h"

using test_support::ExpectFailure;
using test_support::FailingImport;
using test_support::FailingLaterCalls;
using test_support::ReadBytes;
using test_support::ReplacedImport;
using test_support::TemporaryFolder;
using test_support::WriteBytes;
using vorlek::ConversionsUtils;
using vorlek::DirUtils;
using vorlek::Exception;
using vorlek::FileCreateException;
using vorlek::IOException;

namespace {

std::vector<std::wstring> Names_(const std::wstring& path) {
    std::vector<std::wstring> names;
    for (const WIN32_FIND_DATAW& item : DirUtils::GetDirectoryItems(path)) {
        names.emplace_back(item.cFileName);
    }
    std::ranges::sort(names);
    return names;
}

/// The discretionary list of a directory, as text.
std::wstring Security_(const std::wstring& path) {
    PSECURITY_DESCRIPTOR descriptor = nullptr;
    PACL list = nullptr;
    EXPECT_EQ(static_cast<DWORD>(ERROR_SUCCESS),
              GetNamedSecurityInfoW(path.c_str(), SE_FILE_OBJECT, DACL_SECURITY_INFORMATION, nullptr, nullptr, &list,
                                    nullptr, &descriptor));
    wchar_t* text = nullptr;
    EXPECT_TRUE(ConvertSecurityDescriptorToStringSecurityDescriptorW(descriptor, SDDL_REVISION_1,
                                                                     DACL_SECURITY_INFORMATION, &text, nullptr));
    std::wstring result = text;
    LocalFree(text);
    LocalFree(descriptor);
    return result;
}

} // namespace

TEST(DirUtils, CreatesADirectoryAndSaysSo) {
    const TemporaryFolder folder;
    EXPECT_TRUE(DirUtils::CreateDir(folder / L"new", nullptr));
    EXPECT_TRUE(std::filesystem::is_directory(folder / L"new"));
}

TEST(DirUtils, CreatingADirectoryThatExistsIsFalse) {
    const TemporaryFolder folder;
    EXPECT_FALSE(DirUtils::CreateDir(folder.Path(), nullptr));
}

TEST(DirUtils, CreatesEveryMissingLevel) {
    const TemporaryFolder folder;
    EXPECT_TRUE(DirUtils::CreateDir(folder / L"a\\b\\c\\d\\", nullptr));
    EXPECT_TRUE(std::filesystem::is_directory(folder / L"a\\b\\c\\d"));
}

TEST(DirUtils, CreatesEveryMissingLevelWithTheSameSecurity) {
    const TemporaryFolder folder;
    wchar_t user[256] = {};
    DWORD size = 256;
    ASSERT_TRUE(GetUserNameW(user, &size));
    const std::wstring mineAlone = L"D:P(A;OICI;FA;;;" + ConversionsUtils::UserStringToSID(user) + L")";
    SECURITY_ATTRIBUTES security = {sizeof security, nullptr, FALSE};
    ASSERT_TRUE(ConvertStringSecurityDescriptorToSecurityDescriptorW(mineAlone.c_str(), SDDL_REVISION_1,
                                                                     &security.lpSecurityDescriptor, nullptr));
    EXPECT_TRUE(DirUtils::CreateDir(folder / L"a\\b\\c", &security));
    LocalFree(security.lpSecurityDescriptor);
    const std::wstring first = Security_(folder / L"a");
    EXPECT_NE(Security_(folder.Path()), first);
    EXPECT_EQ(first, Security_(folder / L"a\\b"));
    EXPECT_EQ(first, Security_(folder / L"a\\b\\c"));
}

TEST(DirUtils, DoubledBackslashesCountAsOne) {
    const TemporaryFolder folder;
    EXPECT_TRUE(DirUtils::CreateDir(folder.Path().wstring() + L"\\\\a\\\\\\b", nullptr));
    EXPECT_TRUE(std::filesystem::is_directory(folder / L"a\\b"));
}

TEST(DirUtils, NetworkAndPrefixedPathsKeepTheirBeginning) {
    const TemporaryFolder folder;
    const std::wstring path = L"\\\\?\\" + (folder / L"a\\b").wstring();
    EXPECT_TRUE(DirUtils::CreateDir(path, nullptr));
    EXPECT_TRUE(std::filesystem::is_directory(folder / L"a\\b"));
}

TEST(DirUtils, CreatesDirectoriesOfTheNetwork) {
    const test_support::NetworkShare share;
    EXPECT_TRUE(DirUtils::CreateDir(share.Path() + L"\\a\\\\b", nullptr));
    EXPECT_FALSE(DirUtils::CreateDir(share.Path() + L"\\a\\b", nullptr));
    EXPECT_EQ((std::vector<std::wstring>{L"b"}), Names_(share.Path() + L"\\a"));
}

TEST(DirUtils, PathOfTheNetworkGetsNoPrefixHoweverLong) {
    std::wstring asked;
    const ReplacedImport<"CreateDirectoryW", decltype(CreateDirectoryW)> create(
        [&](LPCWSTR path, SECURITY_ATTRIBUTES*) -> BOOL {
            asked = path;
            return TRUE;
        });
    const std::wstring part(300, L'x');
    DirUtils::CreateDir(L"\\\\server\\\\share\\" + part, nullptr);
    EXPECT_EQ(L"\\\\server\\share\\" + part, asked);
    DirUtils::CreateDir(L"C:\\\\" + part, nullptr);
    EXPECT_EQ(L"\\\\?\\C:\\" + part, asked);
}

TEST(DirUtils, DirectoryThatAnotherMadeMeanwhileIsFalse) {
    const TemporaryFolder folder;
    const std::wstring path = folder / L"a\\b";
    ReplacedImport<"CreateDirectoryW", decltype(CreateDirectoryW)> create(
        [&](LPCWSTR wanted, SECURITY_ATTRIBUTES* security) {
            if (create.Calls() == 3) { // the second attempt at b
                create.Original(wanted, nullptr);
            }
            return create.Original(wanted, security);
        });
    EXPECT_FALSE(DirUtils::CreateDir(path, nullptr));
}

TEST(DirUtils, SecondAttemptThatFailsRaises) {
    ReplacedImport<"CreateDirectoryW", decltype(CreateDirectoryW)> create([&](LPCWSTR path, SECURITY_ATTRIBUTES*) {
        SetLastError(create.Calls() == 1 ? ERROR_PATH_NOT_FOUND : ERROR_DISK_FULL);
        return path == std::wstring(L"C:\\a") ? TRUE : FALSE;
    });
    ExpectFailure<FileCreateException>([] { DirUtils::CreateDir(L"C:\\a\\b", nullptr); },
                                       L"vorlek::DirUtils::CreateDir",
                                       L"Failed to create a directory <C:\\a\\b> Error: 112");
    EXPECT_EQ(3, create.Calls());
}

TEST(DirUtils, CreatesALongPath) {
    const TemporaryFolder folder;
    const std::wstring part(150, L'x');
    const std::wstring path = folder / (part + L'\\' + part);
    EXPECT_TRUE(DirUtils::CreateDir(path, nullptr));
    EXPECT_FALSE(DirUtils::CreateDir(path, nullptr));
    EXPECT_TRUE(RemoveDirectoryW((L"\\\\?\\" + path).c_str()));
}

TEST(DirUtils, EmptyPathRaises) {
    ExpectFailure<FileCreateException>([] { DirUtils::CreateDir(L"", nullptr); }, L"vorlek::DirUtils::CreateDir",
                                       L"Invalid path!");
}

TEST(DirUtils, DirectoryThatCannotBeCreatedRaises) {
    const TemporaryFolder folder;
    const std::wstring path = folder / L"a?b";
    ExpectFailure<FileCreateException>([&] { DirUtils::CreateDir(path, nullptr); }, L"vorlek::DirUtils::CreateDir",
                                       L"Failed to create a directory <" + path + L"> Error: 123");
}

TEST(DirUtils, LevelThatCannotBeCreatedRaisesForItself) {
    ASSERT_FALSE(CreateDirectoryW(L"Q:\\a", nullptr)); // there is no such drive
    const std::wstring error = std::to_wstring(GetLastError());
    ExpectFailure<FileCreateException>([&] { DirUtils::CreateDir(L"Q:\\a\\b", nullptr); },
                                       L"vorlek::DirUtils::CreateDir",
                                       L"Failed to create a directory <Q:\\a> Error: " + error);
}

TEST(DirUtils, ListsWhatADirectoryHolds) {
    const TemporaryFolder folder;
    WriteBytes(folder / L"file", "12345");
    std::filesystem::create_directory(folder / L"sub");
    EXPECT_EQ((std::vector<std::wstring>{L"file", L"sub"}), Names_(folder.Path()));
    EXPECT_EQ((std::vector<std::wstring>{L"file", L"sub"}), Names_(folder.Path().wstring() + L"\\"));
}

TEST(DirUtils, EmptyDirectoryIsNoFailure) {
    const TemporaryFolder folder;
    EXPECT_TRUE(DirUtils::GetDirectoryItems(folder.Path()).empty());
}

TEST(DirUtils, ListingAMissingDirectoryRaises) {
    const TemporaryFolder folder;
    const std::wstring path = folder / L"none";
    ExpectFailure<Exception>([&] { DirUtils::GetDirectoryItems(path); }, L"vorlek::DirUtils::GetDirectoryItems",
                             L"Error locating files at path: " + path + L", FindFirstFile has failed with: 3");
}

TEST(DirUtils, ListingThatBreaksOffRaises) {
    const TemporaryFolder folder;
    const std::wstring path = folder.Path();
    const FailingImport<"FindNextFileW", decltype(FindNextFileW)> next(ERROR_NO_MORE_ITEMS);
    ExpectFailure<Exception>([&] { DirUtils::GetDirectoryItems(path); }, L"vorlek::DirUtils::GetDirectoryItems",
                             L"Error listing files at path: " + path + L", FindNextFile has failed with: 259");
}

TEST(DirUtils, ListingWithoutAnyEntryIsNoFailure) {
    for (const DWORD none : {ERROR_FILE_NOT_FOUND, ERROR_NO_MORE_FILES}) {
        const FailingImport<"FindFirstFileW", decltype(FindFirstFileW)> first(none, INVALID_HANDLE_VALUE);
        EXPECT_TRUE(DirUtils::GetDirectoryItems(L"D:\\").empty());
    }
}

TEST(DirUtils, ListsADirectoryBelowTheSystemsLimit) {
    const TemporaryFolder folder;
    const std::wstring part(150, L'x');
    const std::wstring path = folder / (part + L'\\' + part);
    ASSERT_TRUE(DirUtils::CreateDir(path, nullptr));
    EXPECT_EQ((std::vector<std::wstring>{part}), Names_(folder / part));
    EXPECT_EQ((std::vector<std::wstring>{}), Names_(path));
    EXPECT_TRUE(RemoveDirectoryW((L"\\\\?\\" + path).c_str()));
}

TEST(DirUtils, KnowsAndChangesTheCurrentDirectory) {
    const TemporaryFolder folder;
    const std::wstring before = DirUtils::GetCurrentDirectoryW();
    EXPECT_EQ(std::filesystem::current_path().wstring(), before);
    DirUtils::SetCurrentDirectoryW(folder.Path());
    EXPECT_TRUE(std::filesystem::equivalent(folder.Path(), DirUtils::GetCurrentDirectoryW()));
    DirUtils::SetCurrentDirectoryW(before);
    ExpectFailure<IOException>([&] { DirUtils::SetCurrentDirectoryW(folder / L"none"); },
                               L"vorlek::DirUtils::SetCurrentDirectoryW", L"Failed to set current path with: 2");
}

TEST(DirUtils, SystemDirectoriesEndInABackslash) {
    wchar_t path[MAX_PATH] = {};
    ::GetSystemDirectoryW(path, MAX_PATH);
    EXPECT_EQ(path + std::wstring(L"\\"), DirUtils::GetSystemDirectoryW());
    ::GetWindowsDirectoryW(path, MAX_PATH);
    EXPECT_EQ(path + std::wstring(L"\\"), DirUtils::GetWindowsDirectoryW());
}

TEST(DirUtils, CurrentDirectoryThatTheSystemDoesNotTellRaises) {
    const auto raises = [](const std::wstring& words) {
        ExpectFailure<IOException>([] { DirUtils::GetCurrentDirectoryW(); }, L"vorlek::DirUtils::GetCurrentDirectoryW",
                                   words);
    };
    {
        const FailingImport<"GetCurrentDirectoryW", decltype(::GetCurrentDirectoryW)> all(ERROR_NOT_READY);
        raises(L"Failed to get size of current path. Error: 21");
    }
    const FailingLaterCalls<"GetCurrentDirectoryW", decltype(::GetCurrentDirectoryW)> later(ERROR_NOT_READY);
    raises(L"Failed to get current path. Error: 21");
}

TEST(DirUtils, SystemDirectoryThatTheSystemDoesNotTellRaises) {
    const auto raises = [](const std::wstring& words) {
        ExpectFailure<IOException>([] { DirUtils::GetSystemDirectoryW(); }, L"vorlek::DirUtils::GetSystemDirectoryW",
                                   words);
    };
    {
        const FailingImport<"GetSystemDirectoryW", decltype(::GetSystemDirectoryW)> all(ERROR_NOT_READY);
        raises(L"Failed to get size of system directory path. Error: 21");
    }
    const FailingLaterCalls<"GetSystemDirectoryW", decltype(::GetSystemDirectoryW)> later(ERROR_NOT_READY);
    raises(L"Failed to get system directory path. Error: 21");
}

TEST(DirUtils, WindowsDirectoryThatTheSystemDoesNotTellRaises) {
    const auto raises = [](const std::wstring& words) {
        ExpectFailure<IOException>([] { DirUtils::GetWindowsDirectoryW(); }, L"vorlek::DirUtils::GetWindowsDirectoryW",
                                   words);
    };
    {
        const FailingImport<"GetWindowsDirectoryW", decltype(::GetWindowsDirectoryW)> all(ERROR_NOT_READY);
        raises(L"Failed to get size of windows directory path. Error: 21");
    }
    const FailingLaterCalls<"GetWindowsDirectoryW", decltype(::GetWindowsDirectoryW)> later(ERROR_NOT_READY);
    raises(L"Failed to get windows directory path. Error: 21");
}

TEST(DirUtils, CopiesADirectoryWithAllItHolds) {
    const TemporaryFolder folder;
    std::filesystem::create_directories(folder / L"from\\sub");
    WriteBytes(folder / L"from\\file", "1");
    WriteBytes(folder / L"from\\sub\\file", "2");
    DirUtils::CopyDir(folder / L"from", folder / L"to");
    EXPECT_EQ("1", ReadBytes(folder / L"to\\file"));
    EXPECT_EQ("2", ReadBytes(folder / L"to\\sub\\file"));
}

TEST(DirUtils, CopyAsksTheUserNothing) {
    std::wstring from;
    std::wstring to;
    SHFILEOPSTRUCTW asked = {};
    const ReplacedImport<"SHFileOperationW", decltype(SHFileOperationW)> operation([&](SHFILEOPSTRUCTW* operation) {
        asked = *operation;
        from.assign(operation->pFrom, 7);
        to.assign(operation->pTo, 5);
        return ERROR_INVALID_FLAGS;
    });
    ExpectFailure<IOException>([] { DirUtils::CopyDir(L"C:\\ab", L"D:\\"); }, L"vorlek::DirUtils::CopyDir",
                               L"SHFileOperation failed with: 1004");
    EXPECT_EQ(static_cast<UINT>(FO_COPY), asked.wFunc);
    EXPECT_EQ(0x614, asked.fFlags);
    EXPECT_EQ(nullptr, asked.hwnd);
    EXPECT_EQ(std::wstring(L"C:\\ab\0\0", 7), from);
    EXPECT_EQ(std::wstring(L"D:\\\0\0", 5), to);
}

TEST(DirUtils, CopyingAMissingDirectoryRaises) {
    const TemporaryFolder folder;
    EXPECT_THROW(DirUtils::CopyDir(folder / L"none", folder / L"to"), IOException);
}
