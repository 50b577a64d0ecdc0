#include "foundation/DirUtils.h"

#include <algorithm>
#include <filesystem>

#include <gtest/gtest.h>

#include <aclapi.h>
#include <sddl.h>

#include "foundation/ConversionsUtils.h"
#include "tests/support/ExpectFailure.h"
#include "tests/support/TemporaryFolder.h"

using test_support::ExpectFailure;
using test_support::ReadBytes;
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

TEST(DirUtils, DirectoryOnAMissingDriveRaises) {
    EXPECT_THROW(DirUtils::CreateDir(L"Q:\\a\\b", nullptr), FileCreateException);
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

TEST(DirUtils, CopiesADirectoryWithAllItHolds) {
    const TemporaryFolder folder;
    std::filesystem::create_directories(folder / L"from\\sub");
    WriteBytes(folder / L"from\\file", "1");
    WriteBytes(folder / L"from\\sub\\file", "2");
    DirUtils::CopyDir(folder / L"from", folder / L"to");
    EXPECT_EQ("1", ReadBytes(folder / L"to\\file"));
    EXPECT_EQ("2", ReadBytes(folder / L"to\\sub\\file"));
}

TEST(DirUtils, CopyingAMissingDirectoryRaises) {
    const TemporaryFolder folder;
    EXPECT_THROW(DirUtils::CopyDir(folder / L"none", folder / L"to"), IOException);
}
