#include "foundation/EnviornmentUtils.h"

#include <filesystem>

#include <gtest/gtest.h>

#include "tests/support/ExpectFailure.h"
#include "tests/support/TemporaryFolder.h"

using test_support::ExpectFailure;
using test_support::TemporaryFolder;
using test_support::WriteBytes;
using vorlek::IOException;
using vorlek::UnauthorizedAccessException;
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

TEST(EnviornmentUtils, FailuresNameThisFamily) {
    const TemporaryFolder folder;
    const std::wstring path = folder / L"sub";
    std::filesystem::create_directory(path);
    ExpectFailure<UnauthorizedAccessException>([&] { EnviornmentUtils::RemoveFile(path); },
                                               L"vorlek::PluginUtils::EnviornmentUtils::RemoveFile",
                                               L"Failed to remove file <" + path + L">");
}
