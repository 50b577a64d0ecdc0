#include "foundation/File.h"

#include "foundation/Throw.h"

namespace vorlek {

namespace {

LONGLONG MovePointer_(HANDLE file, LONGLONG offset, DWORD origin, ThrowSite site) {
    LARGE_INTEGER distance = {};
    distance.QuadPart = offset;
    LARGE_INTEGER position = {};
    if (!SetFilePointerEx(file, distance, &position, origin)) {
        const DWORD error = GetLastError();
        Throw(site, L"SetFilePointerEx failed with: ", error);
    }
    return position.QuadPart;
}

} // namespace

File::File(const std::wstring& path, DWORD access, DWORD shareMode, DWORD creationDisposition, DWORD attributes,
           bool overlapped)
    : FileBase(path, access, shareMode, creationDisposition, attributes, overlapped) {}

DWORD File::Read(void* buffer, DWORD size) {
    ValidateHandle();
    DWORD read = 0;
    if (!ReadFile(handle_.Get(), buffer, size, &read, nullptr)) {
        const DWORD error = GetLastError();
        Throw(L"vorlek::File::Read", L"ReadFile failed with: ", error);
    }
    return read;
}

DWORD File::Write(const void* buffer, DWORD size) {
    ValidateHandle();
    DWORD written = 0;
    if (!WriteFile(handle_.Get(), buffer, size, &written, nullptr)) {
        const DWORD error = GetLastError();
        Throw(L"vorlek::File::Write", L"WriteFile failed with: ", error);
    }
    return written;
}

LONGLONG File::GetPosition() const {
    ValidateHandle();
    return MovePointer_(handle_.Get(), 0, FILE_CURRENT, L"vorlek::File::GetPosition");
}

LONGLONG File::Seek(LONGLONG offset, DWORD origin) {
    ValidateHandle();
    return MovePointer_(handle_.Get(), offset, origin, L"vorlek::File::Seek");
}

DWORD File::SendIoControl(DWORD code, void* input, DWORD inputSize, void* output, DWORD outputSize) {
    ValidateHandle();
    DWORD returned = 0;
    if (!DeviceIoControl(handle_.Get(), code, input, inputSize, output, outputSize, &returned, nullptr)) {
        const DWORD error = GetLastError();
        Throw(L"vorlek::File::SendIoControl", L"DeviceIoControl failed with: ", error);
    }
    return returned;
}

} // namespace vorlek
