#include "foundation/FileBase.h"

#include "foundation/Exception.h"
#include "foundation/PathUtils.h"
#include "foundation/Throw.h"

namespace vorlek {

namespace {

/// What stands for an error of CreateFileW.
[[noreturn]] void RaiseCreateFailure_(const std::wstring& path, DWORD error) {
    switch (error) {
    case ERROR_FILE_NOT_FOUND:
        Throw<FileNotFoundException>(L"vorlek::FileBase::FileBase", L"CreateFile on \"", path,
                                     L"\" failed with: ERROR_FILE_NOT_FOUND");
    case ERROR_PATH_NOT_FOUND:
        Throw<FileNotFoundException>(L"vorlek::FileBase::FileBase", L"CreateFile on \"", path,
                                     L"\" failed with: ERROR_PATH_NOT_FOUND");
    case ERROR_ALREADY_EXISTS:
        Throw<FileAlreadyExist>(L"vorlek::FileBase::FileBase", L"CreateFile on \"", path,
                                L"\" failed with: ERROR_ALREADY_EXISTS");
    default:
        Throw(L"vorlek::FileBase::FileBase", L"CreateFile on \"", path, L"\" failed with: ", error);
    }
}

} // namespace

FileBase::FileBase(const std::wstring& path, DWORD access, DWORD shareMode, DWORD creationDisposition, DWORD attributes,
                   bool overlapped)
    : path_(path) {
    handle_ = CreateFileW(PathUtils::FixLongPath(path).c_str(), access, shareMode, nullptr, creationDisposition,
                          overlapped ? attributes | FILE_FLAG_OVERLAPPED : attributes, nullptr);
    if (!handle_.IsValid()) {
        RaiseCreateFailure_(path, GetLastError());
    }
}

void FileBase::ValidateHandle() const {
    if (!handle_.IsValid()) {
        Throw(L"vorlek::FileBase::ValidateHandle", L"Handle is invalid!");
    }
}

void FileBase::SetEFSEncryption(bool encrypt) {
    ValidateHandle();
    const std::wstring path = PathUtils::FixLongPath(path_);
    if (encrypt && !EncryptFileW(path.c_str())) {
        const DWORD error = GetLastError();
        Throw(L"vorlek::FileBase::SetEFSEncryption", L"EncryptFile failed with: ", error);
    }
    if (!encrypt && !DecryptFileW(path.c_str(), 0)) {
        const DWORD error = GetLastError();
        Throw(L"vorlek::FileBase::SetEFSEncryption", L"DecryptFile failed with: ", error);
    }
}

DWORD FileBase::GetAttributes() const {
    ValidateHandle();
    const DWORD attributes = GetFileAttributesW(PathUtils::FixLongPath(path_).c_str());
    if (attributes == INVALID_FILE_ATTRIBUTES) {
        const DWORD error = GetLastError();
        Throw(L"vorlek::FileBase::GetAttributes", L"GetFileAttributes failed with: ", error);
    }
    return attributes;
}

void FileBase::SetAttributes(DWORD attributes) {
    ValidateHandle();
    if (!SetFileAttributesW(PathUtils::FixLongPath(path_).c_str(), attributes)) {
        const DWORD error = GetLastError();
        Throw(L"vorlek::FileBase::SetAttributes", L"SetFileAttributes failed with: ", error);
    }
}

LONGLONG FileBase::GetSize() const {
    ValidateHandle();
    LARGE_INTEGER size = {};
    if (!GetFileSizeEx(handle_.Get(), &size)) {
        const DWORD error = GetLastError();
        Throw(L"vorlek::FileBase::GetSize", L"GetFileSize failed with: ", error);
    }
    return size.QuadPart;
}

void FileBase::FlushFileBuffers() {
    ValidateHandle();
    if (!::FlushFileBuffers(handle_.Get())) {
        const DWORD error = GetLastError();
        Throw(L"vorlek::FileBase::FlushFileBuffers", L"FlushFileBuffers failed with: ", error);
    }
}

} // namespace vorlek
