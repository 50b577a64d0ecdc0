#pragma once
#include <string>

#include "foundation/AutoHandle.h"
#include "platform/Windows.h"

namespace vorlek {

/// An open file. Except for the constructor, every operation raises Exception with the system's error.
class FileBase {
public:
    virtual ~FileBase() = default;
    FileBase(const FileBase&) = delete;
    FileBase& operator=(const FileBase&) = delete;

    /// Raises Exception if the file is not open.
    void ValidateHandle() const;

    void SetEFSEncryption(bool encrypt);
    DWORD GetAttributes() const;
    void SetAttributes(DWORD attributes);
    /// In bytes.
    LONGLONG GetSize() const;
    void FlushFileBuffers();

    const std::wstring& GetPath() const { return path_; }

protected:
    /// As CreateFileW. Raises FileNotFoundException, FileAlreadyExist, or Exception for any other error.
    FileBase(const std::wstring& path, DWORD access, DWORD shareMode, DWORD creationDisposition, DWORD attributes,
             bool overlapped);

    std::wstring path_; // as given
    FileHandle handle_;
};

} // namespace vorlek
