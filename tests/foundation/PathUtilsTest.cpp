#include "foundation/PathUtils.h"

#include <filesystem>

#include <gtest/gtest.h>

#include "tests/support/ExpectFailure.h"
#include "tests/support/ReplacedImport.h"
#include "tests/support/TemporaryFolder.h"

using test_support::ExpectFailure;
using test_support::FailingImport;
using test_support::FailingLaterCalls;
using test_support::ReplacedImport;
using test_support::TemporaryFolder;
using test_support::WriteBytes;
using vorlek::Exception;
using vorlek::PathUtils;

TEST(PathUtils, PathOf260CharactersGetsNoPrefixOneOf261Does) {
    const std::wstring path = L"C:\\" + std::wstring(257, L'x');
    ASSERT_EQ(260u, path.size());
    EXPECT_EQ(path, PathUtils::FixLongPath(path));
    EXPECT_EQ(L"\\\\?\\" + path + L"y", PathUtils::FixLongPath(path + L"y"));
}

TEST(PathUtils, PrefixedAndRelativePathsStayAsTheyAre) {
    const std::wstring prefixed = L"\\\\?\\C:\\" + std::wstring(300, L'x');
    EXPECT_EQ(prefixed, PathUtils::FixLongPath(prefixed));
    const std::wstring relative = L".\\" + std::wstring(300, L'x');
    EXPECT_EQ(relative, PathUtils::FixLongPath(relative));
    EXPECT_EQ(L"", PathUtils::FixLongPath(L""));
}

TEST(PathUtils, CombinesWithExactlyOneBackslash) {
    EXPECT_EQ(L"C:\\a\\b", PathUtils::Combine(L"C:\\a", L"b"));
    EXPECT_EQ(L"C:\\a\\b", PathUtils::Combine(L"C:\\a\\", L"b"));
    EXPECT_EQ(L"\\b", PathUtils::Combine(L"", L"b"));
    EXPECT_EQ(L"a\\", PathUtils::Combine(L"a", L""));
}

TEST(PathUtils, LongAndShortPathsNameTheSameFile) {
    const TemporaryFolder folder;
    const std::wstring path = folder / L"a long file name.extension";
    WriteBytes(path, "x");
    const std::wstring shortPath = PathUtils::GetShortPath(path);
    EXPECT_TRUE(std::filesystem::equivalent(path, shortPath));
    EXPECT_EQ(PathUtils::GetLongPath(path), PathUtils::GetLongPath(shortPath));
    EXPECT_TRUE(PathUtils::GetLongPath(shortPath).ends_with(L"\\a long file name.extension"));
}

TEST(PathUtils, PathThatIsNotThereHasNeitherForm) {
    const TemporaryFolder folder;
    ExpectFailure<Exception>([&] { PathUtils::GetLongPath(folder / L"none"); }, L"vorlek::PathUtils::GetLongPath",
                             L"GetLongPathNameW failed with: 2");
    ExpectFailure<Exception>([&] { PathUtils::GetShortPath(folder / L"none"); }, L"vorlek::PathUtils::GetShortPath",
                             L"GetShortPathNameW failed with: 2");
}

TEST(PathUtils, PathThatGoesInBetweenHasNeitherForm) {
    const TemporaryFolder folder;
    const FailingLaterCalls<"GetLongPathNameW", decltype(GetLongPathNameW)> longPath(ERROR_FILE_NOT_FOUND);
    ExpectFailure<Exception>([&] { PathUtils::GetLongPath(folder.Path()); }, L"vorlek::PathUtils::GetLongPath",
                             L"GetLongPathNameW failed with: 2");
    const FailingLaterCalls<"GetShortPathNameW", decltype(GetShortPathNameW)> shortPath(ERROR_FILE_NOT_FOUND);
    ExpectFailure<Exception>([&] { PathUtils::GetShortPath(folder.Path()); }, L"vorlek::PathUtils::GetShortPath",
                             L"GetShortPathNameW failed with: 2");
}

TEST(PathUtils, TextThatGrowsBetweenTheCallsIsReadWhole) {
    const std::wstring grown(50, L'g');
    ReplacedImport<"ExpandEnvironmentStringsW", decltype(ExpandEnvironmentStringsW)> expand(
        [&](LPCWSTR, LPWSTR buffer, DWORD room) -> DWORD {
            if (room > grown.size()) {
                buffer[grown.copy(buffer, grown.size())] = L'\0';
            }
            return room == 0 ? 10 : static_cast<DWORD>(grown.size() + 1);
        });
    EXPECT_EQ(grown, PathUtils::ExpandPath(L"%any%"));
    EXPECT_EQ(3, expand.Calls());
}

TEST(PathUtils, ExpansionThatFailsRaises) {
    const auto raises = [] {
        ExpectFailure<Exception>([] { PathUtils::ExpandPath(L"%any%"); }, L"vorlek::PathUtils::ExpandPath",
                                 L"ExpandEnvironmentStringsW failed with: 14");
    };
    {
        const FailingImport<"ExpandEnvironmentStringsW", decltype(ExpandEnvironmentStringsW)> all(ERROR_OUTOFMEMORY);
        raises();
    }
    const FailingLaterCalls<"ExpandEnvironmentStringsW", decltype(ExpandEnvironmentStringsW)> later(ERROR_OUTOFMEMORY);
    raises();
}

TEST(PathUtils, DrivesThatTheSystemDoesNotTellRaise) {
    const auto raises = [] {
        ExpectFailure<Exception>([] { PathUtils::CanonizePath(L"\\Device\\None\\a"); },
                                 L"vorlek::PathUtils::CanonizePath", L"GetLogicalDriveStrings failed with: 14");
    };
    {
        const FailingImport<"GetLogicalDriveStringsW", decltype(GetLogicalDriveStringsW)> all(ERROR_OUTOFMEMORY);
        raises();
    }
    const FailingLaterCalls<"GetLogicalDriveStringsW", decltype(GetLogicalDriveStringsW)> later(ERROR_OUTOFMEMORY);
    raises();
}

TEST(PathUtils, EachDriveIsAskedForItsDevice) {
    ReplacedImport<"GetLogicalDriveStringsW", decltype(GetLogicalDriveStringsW)> drives(
        [](DWORD room, LPWSTR buffer) -> DWORD {
            const std::wstring roots(L"A:\\\0D:\\\0E:\\\0", 12);
            if (room == 0) {
                return 13;
            }
            roots.copy(buffer, room);
            return 12;
        });
    std::wstring asked;
    ReplacedImport<"QueryDosDeviceW", decltype(QueryDosDeviceW)> query(
        [&](LPCWSTR drive, LPWSTR device, DWORD room) -> DWORD {
            asked += drive + std::to_wstring(room) + L" ";
            const std::wstring name = drive == std::wstring(L"D:") ? L"\\Device\\Disk1" : L"\\Device\\Disk10";
            device[name.copy(device, name.size())] = L'\0';
            return drive == std::wstring(L"A:") ? 0 : 1; // a drive without a medium
        });
    EXPECT_EQ(L"E:\\a", PathUtils::CanonizePath(L"\\Device\\Disk10\\a"));
    EXPECT_EQ(L"A:1024 D:1024 E:1024 ", asked);
    EXPECT_EQ(L"D:\\a", PathUtils::CanonizePath(L"\\Device\\Disk1\\a"));
}

TEST(PathUtils, ExpandsVariablesOfTheEnvironment) {
    SetEnvironmentVariableW(L"PathUtilsTest", std::wstring(1000, L'v').c_str());
    EXPECT_EQ(L"a\\" + std::wstring(1000, L'v') + L"\\%none%", PathUtils::ExpandPath(L"a\\%PathUtilsTest%\\%none%"));
    SetEnvironmentVariableW(L"PathUtilsTest", nullptr);
    EXPECT_EQ(L"plain", PathUtils::ExpandPath(L"plain"));
    EXPECT_EQ(L"", PathUtils::ExpandPath(L""));
}

TEST(PathUtils, DevicePathBecomesADrivesPath) {
    wchar_t device[1024] = {};
    ASSERT_NE(0u, QueryDosDeviceW(L"C:", device, 1024));
    EXPECT_EQ(L"C:\\a\\b.txt", PathUtils::CanonizePath(std::wstring(device) + L"\\a\\b.txt"));
    EXPECT_EQ(L"C:", PathUtils::CanonizePath(device));
}

TEST(PathUtils, PathOfNoDriveComesBackAsItIs) {
    wchar_t device[1024] = {};
    ASSERT_NE(0u, QueryDosDeviceW(L"C:", device, 1024));
    const std::wstring longer = std::wstring(device) + L"0\\a"; // volume 1 is no volume 10
    EXPECT_EQ(longer, PathUtils::CanonizePath(longer));
    EXPECT_EQ(L"\\Device\\None\\a", PathUtils::CanonizePath(L"\\Device\\None\\a"));
    EXPECT_EQ(L"C:\\a", PathUtils::CanonizePath(L"C:\\a"));
    EXPECT_EQ(L"", PathUtils::CanonizePath(L""));
}
