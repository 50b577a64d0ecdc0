#include "foundation/EnviornmentUtils.h"

#include <filesystem>

#include <gtest/gtest.h>

#include <shlobj.h>

#include "tests/support/ExpectFailure.h"
#include "tests/support/ReplacedImport.h"
#include "tests/support/TemporaryFolder.h"

using test_support::ExpectFailure;
using test_support::FailingImport;
using test_support::ReplacedImport;
using test_support::TemporaryFolder;
using test_support::WriteBytes;
using vorlek::IOException;
using vorlek::PluginUtils::EnviornmentUtils;

TEST(EnviornmentUtils, CreatesEveryMissingLevel) {
    const TemporaryFolder folder;
    EXPECT_TRUE(EnviornmentUtils::CreateDir(folder / L"a\\b\\c", nullptr));
    EXPECT_TRUE(std::filesystem::is_directory(folder / L"a\\b\\c"));
    EXPECT_FALSE(EnviornmentUtils::CreateDir(folder / L"a\\b\\c", nullptr));
}

TEST(EnviornmentUtils, DirectoryThatCannotBeCreatedRaises) {
    ExpectFailure<IOException>([] { EnviornmentUtils::CreateDir(L"", nullptr); },
                               L"vorlek::PluginUtils::EnviornmentUtils::CreateDir", L"Invalid path!");
    const TemporaryFolder folder;
    const std::wstring path = folder / L"a?b";
    ExpectFailure<IOException>([&] { EnviornmentUtils::CreateDir(path, nullptr); },
                               L"vorlek::PluginUtils::EnviornmentUtils::CreateDir",
                               L"Failed to create a directory <" + path + L"> Error: 123");
}

TEST(EnviornmentUtils, RemovesFilesAndTrees) {
    const TemporaryFolder folder;
    WriteBytes(folder / L"file", "x");
    std::filesystem::create_directories(folder / L"a\\b");
    EnviornmentUtils::RemoveFile(folder / L"file");
    EnviornmentUtils::RemoveFile(folder / L"none");
    EnviornmentUtils::RemovePath(folder / L"a");
    EnviornmentUtils::RemovePath(folder / L"none");
    EXPECT_TRUE(std::filesystem::is_empty(folder.Path()));
}

TEST(EnviornmentUtils, DirectoryThatExistsInAnyWordingOfTheSystemIsFalse) {
    for (const int exists : {ERROR_ALREADY_EXISTS, ERROR_FILE_EXISTS}) {
        const FailingImport<"SHCreateDirectoryExW", decltype(SHCreateDirectoryExW)> create(0, exists);
        EXPECT_FALSE(EnviornmentUtils::CreateDir(L"C:\\directory", nullptr));
    }
}

TEST(EnviornmentUtils, EveryLevelHasTheSecurityGiven) {
    SECURITY_ATTRIBUTES security = {};
    const SECURITY_ATTRIBUTES* asked = nullptr;
    const ReplacedImport<"SHCreateDirectoryExW", decltype(SHCreateDirectoryExW)> create(
        [&](HWND window, LPCWSTR, const SECURITY_ATTRIBUTES* attributes) {
            EXPECT_EQ(nullptr, window);
            asked = attributes;
            return ERROR_SUCCESS;
        });
    EXPECT_TRUE(EnviornmentUtils::CreateDir(L"C:\\directory", &security));
    EXPECT_EQ(&security, asked);
}
