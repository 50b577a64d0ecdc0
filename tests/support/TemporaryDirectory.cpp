#include "tests/support/TemporaryDirectory.h"

#include <atomic>

#include <gtest/gtest.h>

#include "platform/Windows.h"

namespace test_support {

namespace {

void Remove_(const std::wstring& path) {
    SetFileAttributesW(path.c_str(), FILE_ATTRIBUTE_NORMAL);
    WIN32_FIND_DATAW item = {};
    const HANDLE find = FindFirstFileW((path + L"\\*").c_str(), &item);
    if (find == INVALID_HANDLE_VALUE) {
        DeleteFileW(path.c_str());
        return;
    }
    do {
        const std::wstring name = item.cFileName;
        if (name != L"." && name != L"..") {
            Remove_(path + L'\\' + name);
        }
    } while (FindNextFileW(find, &item));
    FindClose(find);
    RemoveDirectoryW(path.c_str());
}

} // namespace

TemporaryDirectory::TemporaryDirectory() {
    static std::atomic<unsigned> count = 0;
    wchar_t parent[MAX_PATH] = {};
    GetTempPathW(MAX_PATH, parent);
    path_ = std::wstring(parent) + L"test-" + std::to_wstring(GetCurrentProcessId()) + L'-' + std::to_wstring(++count);
    Remove_(path_); // what a killed process of the same number left
    EXPECT_TRUE(CreateDirectoryW(path_.c_str(), nullptr)) << GetLastError();
}

TemporaryDirectory::~TemporaryDirectory() {
    Remove_(L"\\\\?\\" + path_);
}

std::wstring TemporaryDirectory::MakeFile(const std::wstring& name, const std::string& bytes) const {
    const std::wstring path = *this / name;
    const HANDLE file = CreateFileW(path.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS, 0, nullptr);
    EXPECT_NE(INVALID_HANDLE_VALUE, file) << GetLastError();
    DWORD written = 0;
    EXPECT_TRUE(WriteFile(file, bytes.data(), static_cast<DWORD>(bytes.size()), &written, nullptr));
    CloseHandle(file);
    return path;
}

std::string ReadBytes(const std::wstring& path) {
    const HANDLE file = CreateFileW(path.c_str(), GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr,
                                    OPEN_EXISTING, 0, nullptr);
    EXPECT_NE(INVALID_HANDLE_VALUE, file) << GetLastError();
    if (file == INVALID_HANDLE_VALUE) {
        return {};
    }
    LARGE_INTEGER size = {};
    EXPECT_TRUE(GetFileSizeEx(file, &size));
    std::string bytes(static_cast<std::size_t>(size.QuadPart), '\0');
    DWORD read = 0;
    EXPECT_TRUE(ReadFile(file, bytes.data(), static_cast<DWORD>(bytes.size()), &read, nullptr));
    CloseHandle(file);
    return bytes;
}

} // namespace test_support
