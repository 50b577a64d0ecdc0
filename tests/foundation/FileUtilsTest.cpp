#include "foundation/FileUtils.h"

#include <filesystem>
#include <vector>

#include <gtest/gtest.h>

#include "foundation/Exception.h"
#include "foundation/File.h"
#include "tests/support/ExpectFailure.h"
#include "tests/support/NetworkShare.h"
#include "tests/support/ReplacedImport.h"
#include "tests/support/TemporaryFolder.h"

using test_support::ExpectFailure;
using test_support::ReadBytes;
using test_support::TemporaryFolder;
using test_support::WriteBytes;
using vorlek::Exception;
using vorlek::FileUtils;
using vorlek::IOException;

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

TEST(FileUtils, MovesFromOneVolumeToAnother) {
    std::vector<DWORD> flags;
    test_support::ReplacedImport<"MoveFileExW", decltype(MoveFileExW)> move(
        [&](LPCWSTR source, LPCWSTR target, DWORD how) {
            flags.push_back(how);
            return move.Original(source, target, how);
        });
    const TemporaryFolder folder;
    WriteBytes(folder / L"from", "x");
    FileUtils::MoveFileW(folder / L"from", folder / L"to", false);
    FileUtils::MoveFileW(folder / L"to", folder / L"from", true);
    EXPECT_EQ((std::vector<DWORD>{2, 3}), flags);
}

TEST(FileUtils, MovesBeyondTheSystemsLimit) {
    const TemporaryFolder folder;
    WriteBytes(folder / L"from", "x");
    const std::wstring part(150, L'p');
    const std::wstring to = folder / (part + L'\\' + part);
    std::filesystem::create_directory(folder / part);
    FileUtils::MoveFileW(folder / L"from", to, false);
    EXPECT_TRUE(FileUtils::Exists(to));
    FileUtils::MoveFileW(to, folder / L"back", false);
    EXPECT_EQ("x", ReadBytes(folder / L"back"));
}

TEST(FileUtils, WorksOnTheNetwork) {
    const test_support::NetworkShare share;
    const TemporaryFolder folder;
    WriteBytes(folder / L"file", "12345");
    const std::wstring path = share.Path() + L"\\file";
    FileUtils::CopyFileW(folder / L"file", path, false);
    EXPECT_TRUE(FileUtils::Exists(path));
    FileUtils::SetAttributes(path, FILE_ATTRIBUTE_READONLY);
    FileUtils::RemoveFile(path);
    EXPECT_FALSE(FileUtils::Exists(path));
    FileUtils::MoveFileW(folder / L"file", path, false);
    EXPECT_EQ(4096u, FileUtils::GetTreeSize(share.Path()));
    FileUtils::RemoveAllFiles(share.Path(), false);
    EXPECT_EQ(0u, FileUtils::GetTreeSize(share.Path()));
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

TEST(FileUtils, SumsATreeDeeperThanTheSystemsLimit) {
    const TemporaryFolder folder;
    const std::wstring part(150, L'p');
    const std::wstring deep = L"\\\\?\\" + folder.Path().wstring() + L'\\' + part + L'\\' + part;
    std::filesystem::create_directory(folder / part);
    ASSERT_TRUE(CreateDirectoryW(deep.c_str(), nullptr));
    WriteBytes(folder / L"file", std::string(5000, 'x'));
    FileUtils::CopyFileW(folder / L"file", deep + L"\\file", false);
    EXPECT_EQ(10000u, FileUtils::GetTreeSize(folder.Path()));
    FileUtils::RemoveAllFiles(folder.Path(), false);
}

TEST(FileUtils, SumsFilesBeyondFourGigabytes) {
    const TemporaryFolder folder;
    {
        vorlek::File file(folder / L"file", GENERIC_WRITE, 0, CREATE_NEW, FILE_ATTRIBUTE_NORMAL);
        file.Seek(0x1'4000'0001, FILE_BEGIN);
        file.Write("x", 1); // all before it is a hole
    }
    EXPECT_EQ(0x1'4000'0002u, FileUtils::GetTreeSize(folder.Path()));
}

TEST(FileUtils, SumOfAMissingTreeRaises) {
    const TemporaryFolder folder;
    const std::wstring path = folder / L"none";
    ExpectFailure<Exception>([&] { FileUtils::GetTreeSize(path); }, L"vorlek::DirUtils::GetDirectoryItems",
                             L"Error locating files at path: " + path + L", FindFirstFile has failed with: 3");
}
