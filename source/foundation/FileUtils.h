#pragma once
#include <string>

#include "platform/Windows.h"

namespace vorlek {

/// Whole files and trees. Failures raise IOException, or UnauthorizedAccessException for a removal
/// that access rights forbid, unless an operation says otherwise.
class FileUtils {
public:
    /// A file that is not there counts as removed; the read-only attribute is no obstacle.
    static void RemoveFile(const std::wstring& path);
    /// The file goes at the next restart of the machine.
    static void DelayedRemoveFile(const std::wstring& path);
    /// Now if that can be done, else at the next restart.
    static void RemoveFileOrDelay(const std::wstring& path);
    /// Empties the directory, and removes it with includePath. System files stay, and so does what
    /// cannot be deleted, silently. Raises Exception when the directory cannot be listed.
    static void RemoveAllFiles(const std::wstring& path, bool includePath);
    /// A file or a whole tree; one that is not there counts as removed.
    static void RemovePath(const std::wstring& path);

    static void CopyFileW(const std::wstring& source, const std::wstring& target, bool overwrite);
    /// Also from one volume to another.
    static void MoveFileW(const std::wstring& source, const std::wstring& target, bool overwrite);
    /// Copies, overwriting; what cannot be copied plainly goes with its security and streams.
    static void BackupCopy(const std::wstring& source, const std::wstring& target);

    /// Raises Exception.
    static void SetAttributes(const std::wstring& path, DWORD attributes);
    static bool Exists(const std::wstring& path);
    /// The sizes of all files of the tree, in bytes, each counted as at least 4,096. Raises Exception.
    static ULONGLONG GetTreeSize(const std::wstring& path);
};

} // namespace vorlek
