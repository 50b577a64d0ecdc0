#include "foundation/DirUtils.h"

#include <shellapi.h>

#include <algorithm>

#include "foundation/Exception.h"
#include "foundation/FindHandle.h"
#include "foundation/PathUtils.h"
#include "foundation/QueryText.h"

namespace vorlek {

namespace {

/// Runs of backslashes become one, but for the two at the beginning of a network path.
std::wstring CollapseBackslashes_(std::wstring path) {
    const bool isNetworkPath = path.starts_with(L"\\\\");
    const auto last = std::unique(path.begin(), path.end(),
                                  [](wchar_t left, wchar_t right) { return left == L'\\' && right == L'\\'; });
    path.erase(last, path.end());
    return isNetworkPath ? L'\\' + path : PathUtils::FixLongPath(path);
}

/// Empty when there is none left.
std::wstring GetParent_(const std::wstring& path) {
    const std::size_t name = path.find_last_not_of(L"\\/");
    const std::size_t separator = name == path.npos ? path.npos : path.find_last_of(L"\\/", name);
    return separator == path.npos ? std::wstring() : path.substr(0, separator);
}

} // namespace

bool DirUtils::CreateDir(const std::wstring& path, SECURITY_ATTRIBUTES* security) {
    if (path.empty()) {
        Throw<FileCreateException>(L"vorlek::DirUtils::CreateDir", L"Invalid path!");
    }
    const std::wstring directory = CollapseBackslashes_(path);
    if (CreateDirectoryW(directory.c_str(), security)) {
        return true;
    }
    DWORD error = GetLastError();
    if (error == ERROR_PATH_NOT_FOUND) {
        if (const std::wstring parent = GetParent_(directory); !parent.empty()) {
            CreateDir(parent, security);
            if (CreateDirectoryW(directory.c_str(), security)) {
                return true;
            }
            error = GetLastError();
        }
    }
    if (error != ERROR_ALREADY_EXISTS) {
        Throw<FileCreateException>(L"vorlek::DirUtils::CreateDir", L"Failed to create a directory <", path,
                                   L"> Error: ", error);
    }
    return false;
}

std::vector<WIN32_FIND_DATAW> DirUtils::GetDirectoryItems(const std::wstring& path) {
    std::vector<WIN32_FIND_DATAW> items;
    WIN32_FIND_DATAW item = {};
    const FindHandle find(FindFirstFileW(PathUtils::FixLongPath(PathUtils::Combine(path, L"*")).c_str(), &item));
    if (!find.IsValid()) {
        const DWORD error = GetLastError();
        if (error == ERROR_FILE_NOT_FOUND || error == ERROR_NO_MORE_FILES) { // the root of an empty drive
            return items;
        }
        Throw(L"vorlek::DirUtils::GetDirectoryItems", L"Error locating files at path: ", path,
              L", FindFirstFile has failed with: ", error);
    }
    do {
        if (!IsDots(item)) {
            items.push_back(item);
        }
    } while (FindNextFileW(find.Get(), &item));
    const DWORD error = GetLastError();
    if (error != ERROR_NO_MORE_FILES) {
        Throw(L"vorlek::DirUtils::GetDirectoryItems", L"Error listing files at path: ", path,
              L", FindNextFile has failed with: ", error);
    }
    return items;
}

std::wstring DirUtils::GetCurrentDirectoryW() {
    return QueryText<IOException>(
        L"vorlek::DirUtils::GetCurrentDirectoryW",
        [](wchar_t* buffer, DWORD room) { return ::GetCurrentDirectoryW(room, buffer); },
        L"Failed to get size of current path. Error: ", L"Failed to get current path. Error: ");
}

void DirUtils::SetCurrentDirectoryW(const std::wstring& path) {
    if (!::SetCurrentDirectoryW(path.c_str())) {
        const DWORD error = GetLastError();
        Throw<IOException>(L"vorlek::DirUtils::SetCurrentDirectoryW", L"Failed to set current path with: ", error);
    }
}

std::wstring DirUtils::GetSystemDirectoryW() {
    const std::wstring path = QueryText<IOException>(L"vorlek::DirUtils::GetSystemDirectoryW", ::GetSystemDirectoryW,
                                                     L"Failed to get size of system directory path. Error: ",
                                                     L"Failed to get system directory path. Error: ");
    return PathUtils::Combine(path, {});
}

std::wstring DirUtils::GetWindowsDirectoryW() {
    const std::wstring path = QueryText<IOException>(L"vorlek::DirUtils::GetWindowsDirectoryW", ::GetWindowsDirectoryW,
                                                     L"Failed to get size of windows directory path. Error: ",
                                                     L"Failed to get windows directory path. Error: ");
    return PathUtils::Combine(path, {});
}

void DirUtils::CopyDir(const std::wstring& source, const std::wstring& target) {
    // Lists of paths, each with its own terminator, and one more behind the last.
    const std::wstring from = source + L'\0';
    const std::wstring to = target + L'\0';
    SHFILEOPSTRUCTW operation = {};
    operation.wFunc = FO_COPY;
    operation.pFrom = from.c_str();
    operation.pTo = to.c_str();
    operation.fFlags = FOF_SILENT | FOF_NOCONFIRMATION | FOF_NOCONFIRMMKDIR | FOF_NOERRORUI;
    if (const int error = SHFileOperationW(&operation); error != 0) {
        Throw<IOException>(L"vorlek::DirUtils::CopyDir", L"SHFileOperation failed with: ", error);
    }
}

} // namespace vorlek
