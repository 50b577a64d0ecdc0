#pragma once
#include <string>
#include <vector>

#include "platform/Windows.h"

namespace vorlek {

/// Directories. Failures raise IOException unless an operation says otherwise.
class DirUtils {
public:
    /// Creates the directory and every missing parent, all with the same security (null: inherited).
    /// Returns whether it created the last one: false when it exists. Raises FileCreateException.
    static bool CreateDir(const std::wstring& path, SECURITY_ATTRIBUTES* security);

    /// What the directory holds, "." and ".." left out. Raises Exception.
    static std::vector<WIN32_FIND_DATAW> GetDirectoryItems(const std::wstring& path);

    static std::wstring GetCurrentDirectoryW();
    static void SetCurrentDirectoryW(const std::wstring& path);
    /// With a backslash at the end.
    static std::wstring GetSystemDirectoryW();
    static std::wstring GetWindowsDirectoryW();

    /// Copies the directory with all it holds, without asking the user anything.
    static void CopyDir(const std::wstring& source, const std::wstring& target);
};

} // namespace vorlek
