#pragma once
#include "foundation/FileBase.h"

namespace vorlek {

/// An open file, read and written. Every operation raises Exception with the system's error.
class File : public FileBase {
public:
    /// As CreateFileW; overlapped adds FILE_FLAG_OVERLAPPED. Raises FileNotFoundException,
    /// FileAlreadyExist, or Exception for any other error.
    File(const std::wstring& path, DWORD access, DWORD shareMode, DWORD creationDisposition, DWORD attributes,
         bool overlapped = false);

    /// Returns the bytes read, 0 at the end of the file.
    DWORD Read(void* buffer, DWORD size);
    /// Returns the bytes written.
    DWORD Write(const void* buffer, DWORD size);

    /// In bytes from the beginning.
    LONGLONG GetPosition() const;
    /// origin: FILE_BEGIN, FILE_CURRENT or FILE_END. Returns the new position.
    LONGLONG Seek(LONGLONG offset, DWORD origin);

    /// As DeviceIoControl. Returns the bytes put into the output.
    DWORD SendIoControl(DWORD code, void* input, DWORD inputSize, void* output, DWORD outputSize);
};

} // namespace vorlek
