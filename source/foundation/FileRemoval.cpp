#include "foundation/FileRemoval.h"

#include <io.h>

#include "foundation/Exception.h"
#include "foundation/PathUtils.h"
#include <shellapi.h>

namespace vorlek {

namespace {

/// Returns the system's error. A file that is not there counts as deleted.
DWORD Delete_(const std::wstring& path) {
    const DWORD error = DeleteFileW(path.c_str()) ? ERROR_SUCCESS : GetLastError();
    return error == ERROR_FILE_NOT_FOUND || error == ERROR_PATH_NOT_FOUND ? ERROR_SUCCESS : error;
}

} // namespace

void RemoveFileFrom(ThrowSite site, const std::wstring& path) {
    const std::wstring fixed = PathUtils::FixLongPath(path);
    DWORD error = Delete_(fixed);
    if (error == ERROR_ACCESS_DENIED) {
        if (const DWORD attributes = GetFileAttributesW(fixed.c_str()); attributes != INVALID_FILE_ATTRIBUTES) {
            SetFileAttributesW(fixed.c_str(), attributes & ~static_cast<DWORD>(FILE_ATTRIBUTE_READONLY));
        }
        // Whatever the second attempt meets, unless the file went meanwhile, access is what was denied.
        error = Delete_(fixed) == ERROR_SUCCESS ? ERROR_SUCCESS : ERROR_ACCESS_DENIED;
    }
    if (error != ERROR_SUCCESS) {
        RaiseRemovalFailure(site, path, error);
    }
}

void RemovePathFrom(ThrowSite site, const std::wstring& path) {
    std::wstring fixed = PathUtils::FixLongPath(path);
    if (_waccess(fixed.c_str(), 0) != 0) {
        return;
    }
    if (fixed.ends_with(L'\\') || fixed.ends_with(L'/')) {
        fixed.pop_back();
    }
    fixed += L'\0'; // and the string's own: a list of one path
    SHFILEOPSTRUCTW operation = {};
    operation.wFunc = FO_DELETE;
    operation.pFrom = fixed.c_str();
    operation.fFlags = FOF_SILENT | FOF_NOCONFIRMATION | FOF_NOERRORUI;
    if (SHFileOperationW(&operation) == 0) {
        return;
    }
    const DWORD error = GetLastError();
    if (error == ERROR_ACCESS_DENIED) {
        Throw<UnauthorizedAccessException>(site, L"Failed to remove file <", path);
    }
    Throw<IOException>(site, L"Failed to remove path <", path, L"> error: ", error);
}

void RaiseRemovalFailure(ThrowSite site, const std::wstring& path, DWORD error) {
    if (error == ERROR_ACCESS_DENIED) {
        Throw<UnauthorizedAccessException>(site, L"Failed to remove file <", path, L">");
    }
    Throw<IOException>(site, L"Failed to remove file <", path, L"> error: ", error);
}

} // namespace vorlek
