#include "foundation/FileRemoval.h"

#include <io.h>

#include "foundation/Exception.h"
#include "foundation/PathUtils.h"
#include <shellapi.h>

namespace vorlek {

void RemoveFileFrom(ThrowSite site, const std::wstring& path) {
    const std::wstring fixed = PathUtils::FixLongPath(path);
    if (DeleteFileW(fixed.c_str())) {
        return;
    }
    switch (const DWORD error = GetLastError()) {
    case ERROR_FILE_NOT_FOUND:
    case ERROR_PATH_NOT_FOUND:
        return;
    case ERROR_ACCESS_DENIED: {
        const DWORD attributes = GetFileAttributesW(fixed.c_str());
        if (attributes == INVALID_FILE_ATTRIBUTES ||
            !SetFileAttributesW(fixed.c_str(), attributes & ~static_cast<DWORD>(FILE_ATTRIBUTE_READONLY)) ||
            !DeleteFileW(fixed.c_str())) {
            RaiseRemovalFailure(site, path, ERROR_ACCESS_DENIED);
        }
        return;
    }
    default:
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
