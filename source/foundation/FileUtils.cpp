#include "foundation/FileUtils.h"

#include <algorithm>
#include <ios>
#include <vector>

#include "foundation/DirUtils.h"
#include "foundation/Exception.h"
#include "foundation/FileRemoval.h"
#include "foundation/PathUtils.h"
#include "foundation/Throw.h"
#include "foundation/TreeRemoval.h"

namespace vorlek {

void FileUtils::RemoveFile(const std::wstring& path) {
    RemoveFileFrom(L"vorlek::FileUtils::RemoveFile", path);
}

void FileUtils::DelayedRemoveFile(const std::wstring& path) {
    if (MoveFileExW(PathUtils::FixLongPath(path).c_str(), nullptr, MOVEFILE_DELAY_UNTIL_REBOOT)) {
        return;
    }
    // No second attempt here: the attributes stay as they are.
    if (const DWORD error = GetLastError(); error != ERROR_FILE_NOT_FOUND && error != ERROR_PATH_NOT_FOUND) {
        RaiseRemovalFailure(L"vorlek::FileUtils::DelayedRemoveFile", path, error);
    }
}

void FileUtils::RemoveFileOrDelay(const std::wstring& path) {
    try {
        RemoveFile(path);
    } catch (const IOException&) {
        DelayedRemoveFile(path);
    }
}

void FileUtils::RemoveAllFiles(const std::wstring& path, bool includePath) {
    RemoveTree(path, includePath);
}

void FileUtils::RemovePath(const std::wstring& path) {
    RemovePathFrom(L"vorlek::FileUtils::RemovePath", path);
}

void FileUtils::CopyFileW(const std::wstring& source, const std::wstring& target, bool overwrite) {
    if (!::CopyFileW(source.c_str(), target.c_str(), !overwrite)) {
        const DWORD error = GetLastError();
        Throw<IOException>(L"vorlek::FileUtils::CopyFileW", L"Failed to copy file ", source, L" to ", target,
                           L". Error: 0x", std::hex, error);
    }
}

void FileUtils::MoveFileW(const std::wstring& source, const std::wstring& target, bool overwrite) {
    const DWORD flags = MOVEFILE_COPY_ALLOWED | (overwrite ? MOVEFILE_REPLACE_EXISTING : 0);
    if (!MoveFileExW(PathUtils::FixLongPath(source).c_str(), PathUtils::FixLongPath(target).c_str(), flags)) {
        const DWORD error = GetLastError();
        // No blank before the path: others match these words as they are.
        Throw<IOException>(L"vorlek::FileUtils::MoveFileW", L"Failed to move file", source, L" to ", target,
                           L". Error: 0x", std::hex, error);
    }
}

void FileUtils::SetAttributes(const std::wstring& path, DWORD attributes) {
    if (!SetFileAttributesW(PathUtils::FixLongPath(path).c_str(), attributes)) {
        const DWORD error = GetLastError();
        Throw(L"vorlek::FileUtils::SetAttributes", L"SetFileAttributes failed with: ", error);
    }
}

bool FileUtils::Exists(const std::wstring& path) {
    return GetFileAttributesW(PathUtils::FixLongPath(path).c_str()) != INVALID_FILE_ATTRIBUTES;
}

ULONGLONG FileUtils::GetTreeSize(const std::wstring& path) {
    constexpr ULONGLONG kCluster = 4096; // what even the smallest file takes on the disk
    ULONGLONG sum = 0;
    for (const WIN32_FIND_DATAW& item : DirUtils::GetDirectoryItems(path)) {
        if ((item.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0) {
            sum += GetTreeSize(PathUtils::Combine(path, item.cFileName));
        } else {
            const ULONGLONG size = static_cast<ULONGLONG>(item.nFileSizeHigh) << 32 | item.nFileSizeLow;
            sum += std::max(size, kCluster);
        }
    }
    return sum;
}

} // namespace vorlek
