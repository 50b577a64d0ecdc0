#include "foundation/File.h"

#include <string>

#include <gtest/gtest.h>

#include <winioctl.h>

#include "tests/support/ExpectFailure.h"
#include "tests/support/TemporaryFolder.h"

using test_support::ExpectFailure;
using test_support::ReadBytes;
using test_support::TemporaryFolder;
using test_support::WriteBytes;
using vorlek::Exception;
using vorlek::File;

TEST(File, WritesAndReads) {
    const TemporaryFolder folder;
    const std::wstring path = folder / L"file";
    {
        File file(path, GENERIC_WRITE, 0, CREATE_NEW, FILE_ATTRIBUTE_NORMAL);
        EXPECT_EQ(5u, file.Write("hello", 5));
        EXPECT_EQ(6u, file.Write(" world", 6));
    }
    EXPECT_EQ("hello world", ReadBytes(path));
    File file(path, GENERIC_READ, FILE_SHARE_READ, OPEN_EXISTING, 0);
    char buffer[32] = {};
    EXPECT_EQ(5u, file.Read(buffer, 5));
    EXPECT_EQ(6u, file.Read(buffer + 5, 27));
    EXPECT_STREQ("hello world", buffer);
    EXPECT_EQ(0u, file.Read(buffer, 32));
}

TEST(File, KnowsAndMovesItsPosition) {
    const TemporaryFolder folder;
    const std::wstring path = folder / L"file";
    WriteBytes(path, "0123456789");
    File file(path, GENERIC_READ, FILE_SHARE_READ, OPEN_EXISTING, 0);
    EXPECT_EQ(0, file.GetPosition());
    EXPECT_EQ(4, file.Seek(4, FILE_BEGIN));
    EXPECT_EQ(6, file.Seek(2, FILE_CURRENT));
    EXPECT_EQ(6, file.GetPosition());
    EXPECT_EQ(9, file.Seek(-1, FILE_END));
    char digit = 0;
    EXPECT_EQ(1u, file.Read(&digit, 1));
    EXPECT_EQ('9', digit);
    EXPECT_EQ(0x1'0000'0000, file.Seek(0x1'0000'0000, FILE_BEGIN));
    ExpectFailure<Exception>([&] { file.Seek(-1, FILE_BEGIN); }, L"vorlek::File::Seek",
                             L"SetFilePointerEx failed with: 131");
}

TEST(File, ReadingWithoutTheRightRaises) {
    const TemporaryFolder folder;
    File file(folder / L"file", GENERIC_WRITE, 0, CREATE_NEW, FILE_ATTRIBUTE_NORMAL);
    char buffer[1] = {};
    ExpectFailure<Exception>([&] { file.Read(buffer, 1); }, L"vorlek::File::Read", L"ReadFile failed with: 5");
}

TEST(File, WritingWithoutTheRightRaises) {
    const TemporaryFolder folder;
    WriteBytes(folder / L"file", "x");
    File file(folder / L"file", GENERIC_READ, 0, OPEN_EXISTING, 0);
    ExpectFailure<Exception>([&] { file.Write("x", 1); }, L"vorlek::File::Write", L"WriteFile failed with: 5");
}

TEST(File, OverlappedFileIsOpenedSo) {
    const TemporaryFolder folder;
    WriteBytes(folder / L"file", "x");
    File file(folder / L"file", GENERIC_READ, 0, OPEN_EXISTING, 0, true);
    char buffer[1] = {};
    // An overlapped file has no position of its own: a plain read is refused.
    ExpectFailure<Exception>([&] { file.Read(buffer, 1); }, L"vorlek::File::Read", L"ReadFile failed with: 87");
}

TEST(File, ControlCodeReachesTheDevice) {
    const TemporaryFolder folder;
    File file(folder / L"file", GENERIC_READ | GENERIC_WRITE, 0, CREATE_NEW, FILE_ATTRIBUTE_NORMAL);
    EXPECT_EQ(0u, file.SendIoControl(FSCTL_SET_SPARSE, nullptr, 0, nullptr, 0));
}

TEST(File, ControlCodeThatTheDeviceDoesNotKnowRaises) {
    const TemporaryFolder folder;
    const std::wstring path = folder / L"file";
    File file(path, GENERIC_READ, FILE_SHARE_READ, CREATE_NEW, FILE_ATTRIBUTE_NORMAL);
    const HANDLE raw = CreateFileW(path.c_str(), GENERIC_READ, FILE_SHARE_READ, nullptr, OPEN_EXISTING, 0, nullptr);
    DWORD returned = 0;
    ASSERT_FALSE(DeviceIoControl(raw, 0xFFFF0000, nullptr, 0, nullptr, 0, &returned, nullptr));
    const DWORD error = GetLastError();
    CloseHandle(raw);
    ExpectFailure<Exception>([&] { file.SendIoControl(0xFFFF0000, nullptr, 0, nullptr, 0); },
                             L"vorlek::File::SendIoControl", L"DeviceIoControl failed with: " + std::to_wstring(error));
}
