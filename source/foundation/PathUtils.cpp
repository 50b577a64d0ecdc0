#include "foundation/PathUtils.h"

#include <string_view>

#include "foundation/Exception.h"
#include "foundation/QueryText.h"

namespace vorlek {

std::wstring PathUtils::FixLongPath(const std::wstring& path) {
    constexpr std::wstring_view kPrefix = L"\\\\?\\";
    if (path.size() <= MAX_PATH || path.starts_with(kPrefix) || path.starts_with(L'.')) {
        return path;
    }
    return kPrefix.data() + path;
}

std::wstring PathUtils::Combine(const std::wstring& left, const std::wstring& right) {
    return left.ends_with(L'\\') ? left + right : left + L'\\' + right;
}

std::wstring PathUtils::GetLongPath(const std::wstring& path) {
    return QueryText<Exception>(
        L"vorlek::PathUtils::GetLongPath",
        [&](wchar_t* buffer, DWORD room) { return GetLongPathNameW(path.c_str(), buffer, room); },
        L"GetLongPathNameW failed with: ", L"GetLongPathNameW failed with: ");
}

std::wstring PathUtils::GetShortPath(const std::wstring& path) {
    return QueryText<Exception>(
        L"vorlek::PathUtils::GetShortPath",
        [&](wchar_t* buffer, DWORD room) { return GetShortPathNameW(path.c_str(), buffer, room); },
        L"GetShortPathNameW failed with: ", L"GetShortPathNameW failed with: ");
}

std::wstring PathUtils::ExpandPath(const std::wstring& path) {
    return QueryText<Exception>(
        L"vorlek::PathUtils::ExpandPath",
        [&](wchar_t* buffer, DWORD room) { return ExpandEnvironmentStringsW(path.c_str(), buffer, room); },
        L"ExpandEnvironmentStringsW failed with: ", L"ExpandEnvironmentStringsW failed with: ");
}

namespace {

/// The roots of all drives, such as "C:\", each with its terminator.
std::wstring GetDriveStrings_() {
    const DWORD room = GetLogicalDriveStringsW(0, nullptr);
    std::wstring drives(room, L'\0');
    if (room == 0 || GetLogicalDriveStringsW(room, drives.data()) == 0) {
        const DWORD error = GetLastError();
        Throw(L"vorlek::PathUtils::CanonizePath", L"GetLogicalDriveStrings failed with: ", error);
    }
    return drives;
}

} // namespace

std::wstring PathUtils::CanonizePath(const std::wstring& path) {
    const std::wstring drives = GetDriveStrings_();
    for (const wchar_t* root = drives.c_str(); *root != L'\0'; root += wcslen(root) + 1) {
        const std::wstring drive = {root[0], L':'};
        wchar_t device[1024] = {};
        if (QueryDosDeviceW(drive.c_str(), device, 1024) == 0 || !path.starts_with(device)) {
            continue;
        }
        // "\Device\HarddiskVolume1" is the beginning of "\Device\HarddiskVolume10\x", but not its device.
        const std::wstring rest = path.substr(wcslen(device));
        if (rest.empty() || rest.starts_with(L'\\')) {
            return drive + rest;
        }
    }
    return path;
}

} // namespace vorlek
