#include "foundation/TreeRemoval.h"

#include <algorithm>
#include <filesystem>

#include <gtest/gtest.h>

#include "foundation/FileUtils.h"
#include "foundation/StringUtils.h"
#include "tests/support/DebugOutput.h"
#include "tests/support/ExpectFailure.h"
#include "tests/support/ReplacedImport.h"
#include "tests/support/TemporaryFolder.h"

using test_support::DebugOutput;
using test_support::ExpectFailure;
using test_support::FailingImport;
using test_support::ReplacedImport;
using test_support::TemporaryFolder;
using test_support::WriteBytes;
using vorlek::Exception;
using vorlek::FileUtils;
using vorlek::StringUtils;

namespace {

/// The lines that tell of one path, in order.
std::vector<std::string> About_(const DebugOutput& output, const std::string& path) {
    std::vector<std::string> lines;
    for (const std::string& line : output.Lines()) {
        if (line.ends_with(path + "\n")) {
            lines.push_back(line);
        }
    }
    return lines;
}

} // namespace

TEST(TreeRemoval, EmptiesADirectoryAndKeepsIt) {
    const TemporaryFolder folder;
    std::filesystem::create_directories(folder / L"a\\b");
    WriteBytes(folder / L"file", "x");
    WriteBytes(folder / L"a\\b\\file", "x");
    FileUtils::RemoveAllFiles(folder.Path(), false);
    EXPECT_TRUE(std::filesystem::is_empty(folder.Path()));
}

TEST(TreeRemoval, RemovesTheDirectoryAsWell) {
    const TemporaryFolder folder;
    std::filesystem::create_directories(folder / L"a\\b");
    WriteBytes(folder / L"a\\file", "x");
    FileUtils::SetAttributes(folder / L"a\\file", FILE_ATTRIBUTE_READONLY);
    FileUtils::RemoveAllFiles((folder / L"a").wstring() + L"/", true);
    EXPECT_FALSE(FileUtils::Exists(folder / L"a"));
}

TEST(TreeRemoval, SystemFileStaysAndTheDirectoryWithIt) {
    const TemporaryFolder folder;
    std::filesystem::create_directories(folder / L"a");
    WriteBytes(folder / L"a\\plain", "x");
    WriteBytes(folder / L"a\\system", "x");
    FileUtils::SetAttributes(folder / L"a\\system", FILE_ATTRIBUTE_SYSTEM);
    ASSERT_NE(0u, GetFileAttributesW((folder / L"a\\system").c_str()) & FILE_ATTRIBUTE_SYSTEM);
    FileUtils::RemoveAllFiles(folder / L"a", true);
    EXPECT_TRUE(FileUtils::Exists(folder / L"a\\system"));
    EXPECT_FALSE(FileUtils::Exists(folder / L"a\\plain"));
}

TEST(TreeRemoval, SystemDirectoryStaysWithAllItHolds) {
    const TemporaryFolder folder;
    std::filesystem::create_directories(folder / L"system");
    WriteBytes(folder / L"system\\file", "x");
    FileUtils::SetAttributes(folder / L"system", FILE_ATTRIBUTE_SYSTEM);
    ASSERT_NE(0u, GetFileAttributesW((folder / L"system").c_str()) & FILE_ATTRIBUTE_SYSTEM);
    FileUtils::RemoveAllFiles(folder.Path(), false);
    EXPECT_TRUE(FileUtils::Exists(folder / L"system\\file"));
}

TEST(TreeRemoval, ReadOnlyDirectoryGoes) {
    const TemporaryFolder folder;
    std::vector<std::pair<std::wstring, DWORD>> set;
    ReplacedImport<"SetFileAttributesW", decltype(SetFileAttributesW)> change([&](LPCWSTR path, DWORD attributes) {
        set.emplace_back(path, attributes);
        return change.Original(path, attributes);
    });
    std::filesystem::create_directories(folder / L"a");
    FileUtils::RemoveAllFiles(folder / L"a", true);
    EXPECT_FALSE(FileUtils::Exists(folder / L"a"));
    EXPECT_EQ((std::vector<std::pair<std::wstring, DWORD>>{{(folder / L"a\\").wstring(), 128}}), set);
}

TEST(TreeRemoval, FileOfAnyNameGoes) {
    const TemporaryFolder folder;
    std::filesystem::create_directory(folder / L"\x017C\x00F3\x0142w");
    WriteBytes(folder / L"\x017C\x00F3\x0142w\\\x05D0\xD83D\xDE00 %s%n", "x");
    FileUtils::RemoveAllFiles(folder.Path(), false);
    EXPECT_TRUE(std::filesystem::is_empty(folder.Path()));
}

TEST(TreeRemoval, FileInUseIsLeftAndTheRestGoes) {
    const TemporaryFolder folder;
    for (const wchar_t* name : {L"a", L"b", L"c"}) {
        WriteBytes(folder / name, "x");
    }
    const HANDLE held =
        CreateFileW((folder / L"b").c_str(), GENERIC_READ, FILE_SHARE_READ, nullptr, OPEN_EXISTING, 0, nullptr);
    FileUtils::RemoveAllFiles(folder.Path(), false);
    CloseHandle(held);
    EXPECT_FALSE(FileUtils::Exists(folder / L"a"));
    EXPECT_TRUE(FileUtils::Exists(folder / L"b"));
    EXPECT_FALSE(FileUtils::Exists(folder / L"c"));
}

TEST(TreeRemoval, EmptyPathIsNothingToDo) {
    const DebugOutput output;
    FileUtils::RemoveAllFiles(L"", true);
    EXPECT_TRUE(output.Lines().empty());
}

TEST(TreeRemoval, MissingDirectoryRaises) {
    const TemporaryFolder folder;
    const DebugOutput output;
    ExpectFailure<Exception>([&] { FileUtils::RemoveAllFiles(folder / L"none", true); },
                             L"vorlek::FileUtils::RemoveAllFiles", L"FindFirstFile has failed with: 3");
    EXPECT_EQ("RemoveAllFiles FindFirstFile has failed with 3.  Do a throw\n", output.Lines().back());
}

TEST(TreeRemoval, AttributesThatCannotBeReadRaise) {
    const TemporaryFolder folder;
    WriteBytes(folder / L"file", "x");
    {
        const FailingImport<"GetFileAttributesW", decltype(GetFileAttributesW)> ask(ERROR_ACCESS_DENIED,
                                                                                    INVALID_FILE_ATTRIBUTES);
        ExpectFailure<Exception>([&] { FileUtils::RemoveAllFiles(folder.Path(), true); },
                                 L"vorlek::FileUtils::RemoveAllFiles", L"GetFileAttributesW has failed with: 5");
    }
    EXPECT_TRUE(FileUtils::Exists(folder / L"file"));
}

TEST(TreeRemoval, ListingWithoutAnyEntryEndsQuietly) {
    for (const DWORD none : {ERROR_NO_MORE_FILES, ERROR_FILE_NOT_FOUND}) {
        const TemporaryFolder folder;
        std::filesystem::create_directory(folder / L"a");
        const FailingImport<"FindFirstFileW", decltype(FindFirstFileW)> first(none, INVALID_HANDLE_VALUE);
        EXPECT_NO_THROW(FileUtils::RemoveAllFiles(folder / L"a", false));
        EXPECT_TRUE(FileUtils::Exists(folder / L"a"));
        EXPECT_NO_THROW(FileUtils::RemoveAllFiles(folder / L"a", true));
        EXPECT_FALSE(FileUtils::Exists(folder / L"a"));
    }
}

TEST(TreeRemoval, RemovesATreeDeeperThanTheSystemsLimit) {
    const TemporaryFolder folder;
    const std::wstring part(120, L'd');
    std::wstring path = L"\\\\?\\" + folder.Path().wstring();
    for (int depth = 0; depth < 3; ++depth) {
        path += L'\\' + part;
        ASSERT_TRUE(CreateDirectoryW(path.c_str(), nullptr)) << GetLastError();
    }
    const HANDLE file = CreateFileW((path + L"\\file").c_str(), GENERIC_WRITE, 0, nullptr, CREATE_NEW, 0, nullptr);
    ASSERT_NE(INVALID_HANDLE_VALUE, file);
    CloseHandle(file);
    const DebugOutput output;
    FileUtils::RemoveAllFiles(folder.Path(), false);
    EXPECT_TRUE(std::filesystem::is_empty(folder.Path()));
    const auto longest = std::ranges::max_element(output.Lines(), {}, &std::string::size);
    EXPECT_EQ(255u, longest->size()) << "the trail is cut, not the process ended";
}

TEST(TreeRemoval, LeavesATrailForADebugger) {
    const TemporaryFolder folder;
    std::filesystem::create_directory(folder / L"a");
    WriteBytes(folder / L"a\\file", "x");
    WriteBytes(folder / L"a\\system", "x");
    FileUtils::SetAttributes(folder / L"a\\system", FILE_ATTRIBUTE_SYSTEM);
    const std::string path = StringUtils::ToUtf8((folder / L"a").wstring());
    const DebugOutput output;
    FileUtils::RemoveAllFiles(folder / L"a", true);
    EXPECT_EQ("RemoveAllFiles FindFirstFile looking for file=." + path + "\\*.,path=" + path + "\\\n",
              output.Lines().front());
    EXPECT_EQ("RemoveAllFiles removed the path =" + path + "\\\n", output.Lines().back());
    EXPECT_EQ((std::vector<std::string>{
                  "secret:RemoveAllFiles call RemoveSingleItem with file=" + path + "\\file\n",
                  "Removesinglefile =" + path + "\\file\n",
                  "After status=1,GetLastError=0,Removesinglefile =" + path + "\\file\n",
                  "RemoveAllFiles after removedfile=" + path + "\\file\n",
              }),
              About_(output, path + "\\file"));
    EXPECT_EQ((std::vector<std::string>{
                  "secret:RemoveAllFiles FILE_ATTRIBUTE.  Not removing path =" + path + "\\system\n",
              }),
              About_(output, path + "\\system"));
}

TEST(TreeRemoval, TrailTellsOfAKeptDirectoryAndOfAFileInUse) {
    const TemporaryFolder folder;
    WriteBytes(folder / L"file", "x");
    const HANDLE held =
        CreateFileW((folder / L"file").c_str(), GENERIC_READ, FILE_SHARE_READ, nullptr, OPEN_EXISTING, 0, nullptr);
    const std::string path = StringUtils::ToUtf8((folder / L"file").wstring());
    const DebugOutput output;
    FileUtils::RemoveAllFiles(folder.Path(), false);
    CloseHandle(held);
    EXPECT_EQ("secret:RemoveAllFiles: got !include  returning\n", output.Lines().back());
    const std::vector<std::string> about = About_(output, path);
    ASSERT_EQ(5u, about.size());
    EXPECT_EQ("After status=0,GetLastError=32,Removesinglefile =" + path + "\n", about[2]);
    EXPECT_EQ("DeleteFile FAILED:After status=0,GetLastError=32,Removesinglefile =" + path + "\n", about[3]);
}
