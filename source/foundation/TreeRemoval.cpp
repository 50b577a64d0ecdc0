#include "foundation/TreeRemoval.h"

#include <cstdarg>
#include <cstdio>

#include "foundation/FindHandle.h"
#include "foundation/PathUtils.h"
#include "foundation/StringUtils.h"
#include "foundation/Throw.h"
#include "platform/Windows.h"

namespace vorlek {

namespace {

/// A line for a debugger, cut at 255 characters; the log is not used, since it may lie in the tree.
void Trail_(const char* format, ...) {
    char line[256];
    va_list arguments;
    va_start(arguments, format);
    _vsnprintf_s(line, sizeof line, _TRUNCATE, format, arguments);
    va_end(arguments);
    OutputDebugStringA(line);
}

void RemoveSingleItem_(const std::wstring& path, const WIN32_FIND_DATAW& item, DWORD attributes) {
    if (IsDots(item)) {
        return;
    }
    if ((attributes & FILE_ATTRIBUTE_DIRECTORY) != 0) {
        RemoveTree(path, true);
        return;
    }
    SetFileAttributesW(path.c_str(), FILE_ATTRIBUTE_NORMAL);
    Trail_("Removesinglefile =%S\n", path.c_str());
    const BOOL deleted = DeleteFileW(path.c_str());
    const DWORD error = deleted ? ERROR_SUCCESS : GetLastError();
    Trail_("After status=%x,GetLastError=%d,Removesinglefile =%S\n", deleted, error, path.c_str());
    if (!deleted) {
        Trail_("DeleteFile FAILED:After status=%x,GetLastError=%d,Removesinglefile =%S\n", deleted, error,
               path.c_str());
    }
}

void RemoveItem_(const std::wstring& path, const WIN32_FIND_DATAW& item) {
    // A path with the long prefix must not end in a dot: there the listing answers.
    const DWORD attributes = IsDots(item) ? item.dwFileAttributes : GetFileAttributesW(path.c_str());
    if (attributes == INVALID_FILE_ATTRIBUTES) {
        const DWORD error = GetLastError();
        Throw(L"vorlek::FileUtils::RemoveAllFiles", L"GetFileAttributesW has failed with: ", error);
    }
    if ((attributes & FILE_ATTRIBUTE_SYSTEM) != 0) {
        Trail_("secret:RemoveAllFiles FILE_ATTRIBUTE.  Not removing path =%S\n", path.c_str());
        return;
    }
    Trail_("secret:RemoveAllFiles call RemoveSingleItem with file=%S\n", path.c_str());
    RemoveSingleItem_(path, item, attributes);
    std::string narrow;
    StringUtils::WString2String(path, narrow, CP_ACP);
    Trail_("RemoveAllFiles after removedfile=%s\n", narrow.c_str());
}

} // namespace

void RemoveTree(std::wstring path, bool includePath) {
    if (path.empty()) {
        return;
    }
    if (!path.ends_with(L'\\') && !path.ends_with(L'/')) {
        path += L'\\';
    }
    const std::wstring pattern = PathUtils::FixLongPath(path + L'*');
    WIN32_FIND_DATAW item = {};
    Trail_("RemoveAllFiles FindFirstFile looking for file=.%S.,path=%S\n", pattern.c_str(), path.c_str());
    FindHandle find(FindFirstFileW(pattern.c_str(), &item));
    if (find.IsValid()) {
        do {
            RemoveItem_(PathUtils::FixLongPath(path + item.cFileName), item);
        } while (FindNextFileW(find.Get(), &item));
        find = INVALID_HANDLE_VALUE; // an open listing would keep the directory
        if (!includePath) {
            Trail_("secret:RemoveAllFiles: got !include  returning\n");
            return;
        }
    } else if (const DWORD error = GetLastError(); error != ERROR_NO_MORE_FILES && error != ERROR_FILE_NOT_FOUND) {
        Trail_("RemoveAllFiles FindFirstFile has failed with %d.  Do a throw\n", error);
        Throw(L"vorlek::FileUtils::RemoveAllFiles", L"FindFirstFile has failed with: ", error);
    }
    if (includePath) {
        const std::wstring directory = PathUtils::FixLongPath(path);
        SetFileAttributesW(directory.c_str(), FILE_ATTRIBUTE_NORMAL);
        RemoveDirectoryW(directory.c_str());
        Trail_("RemoveAllFiles removed the path =%S\n", path.c_str());
    }
}

} // namespace vorlek
