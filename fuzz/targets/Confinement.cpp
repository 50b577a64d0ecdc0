#include "fuzz/targets/Confinement.h"

#include "platform/Windows.h"

namespace {

bool isConfined = false;
bool doWritesFail = false;
HANDLE scratchFile = nullptr;

} // namespace

// The linker sends every call of the program here, and leaves the system's own under the second name.
extern "C" {
#define WRAPPED(call)                                                                                                  \
    extern decltype(&call) real_##call __asm__("__real___imp_" #call);                                                 \
    extern decltype(&call) wrap_##call __asm__("__wrap___imp_" #call)
WRAPPED(CreateFileW);
WRAPPED(WriteFile);
WRAPPED(CreateDirectoryW);
WRAPPED(RemoveDirectoryW);
WRAPPED(DeleteFileW);
WRAPPED(MoveFileExW);
WRAPPED(SetFileAttributesW);
WRAPPED(CreateProcessW);
WRAPPED(RegCreateKeyExW);
WRAPPED(RegisterEventSourceW);
#undef WRAPPED
}

namespace {

template <class Result>
Result Refused(Result result) {
    SetLastError(ERROR_ACCESS_DENIED);
    return result;
}

/// Another handle of the scratch file, which is empty now.
HANDLE OpenScratchFile() {
    HANDLE file = INVALID_HANDLE_VALUE;
    SetFilePointer(scratchFile, 0, nullptr, FILE_BEGIN);
    SetEndOfFile(scratchFile);
    DuplicateHandle(GetCurrentProcess(), scratchFile, GetCurrentProcess(), &file, 0, FALSE, DUPLICATE_SAME_ACCESS);
    return file;
}

HANDLE WINAPI CreateFile_(const wchar_t* name, DWORD access, DWORD share, SECURITY_ATTRIBUTES* security,
                          DWORD disposition, DWORD flags, HANDLE model) {
    return isConfined ? OpenScratchFile() : real_CreateFileW(name, access, share, security, disposition, flags, model);
}
BOOL WINAPI WriteFile_(HANDLE file, const void* data, DWORD size, DWORD* written, OVERLAPPED* overlapped) {
    if (doWritesFail) {
        SetLastError(ERROR_DISK_FULL);
        return FALSE;
    }
    return real_WriteFile(file, data, size, written, overlapped);
}
BOOL WINAPI CreateDirectory_(const wchar_t* name, SECURITY_ATTRIBUTES* security) {
    return isConfined ? Refused(FALSE) : real_CreateDirectoryW(name, security);
}
BOOL WINAPI RemoveDirectory_(const wchar_t* name) {
    return isConfined ? Refused(FALSE) : real_RemoveDirectoryW(name);
}
BOOL WINAPI DeleteFile_(const wchar_t* name) {
    return isConfined ? Refused(FALSE) : real_DeleteFileW(name);
}
BOOL WINAPI MoveFile_(const wchar_t* from, const wchar_t* to, DWORD flags) {
    return isConfined ? Refused(FALSE) : real_MoveFileExW(from, to, flags);
}
BOOL WINAPI SetAttributes_(const wchar_t* name, DWORD attributes) {
    return isConfined ? Refused(FALSE) : real_SetFileAttributesW(name, attributes);
}
BOOL WINAPI CreateProcess_(const wchar_t* program, wchar_t* line, SECURITY_ATTRIBUTES* process,
                           SECURITY_ATTRIBUTES* thread, BOOL inherit, DWORD flags, void* environment,
                           const wchar_t* folder, STARTUPINFOW* startup, PROCESS_INFORMATION* started) {
    return isConfined ? Refused(FALSE)
                      : real_CreateProcessW(program, line, process, thread, inherit, flags, environment, folder,
                                            startup, started);
}
LSTATUS WINAPI CreateKey_(HKEY key, const wchar_t* name, DWORD reserved, wchar_t* kind, DWORD options, REGSAM access,
                          SECURITY_ATTRIBUTES* security, HKEY* created, DWORD* disposition) {
    return isConfined
               ? ERROR_ACCESS_DENIED
               : real_RegCreateKeyExW(key, name, reserved, kind, options, access, security, created, disposition);
}
HANDLE WINAPI RegisterEventSource_(const wchar_t* server, const wchar_t* source) {
    return isConfined ? Refused<HANDLE>(nullptr) : real_RegisterEventSourceW(server, source);
}

} // namespace

extern "C" {
decltype(&CreateFileW) wrap_CreateFileW = CreateFile_;
decltype(&WriteFile) wrap_WriteFile = WriteFile_;
decltype(&CreateDirectoryW) wrap_CreateDirectoryW = CreateDirectory_;
decltype(&RemoveDirectoryW) wrap_RemoveDirectoryW = RemoveDirectory_;
decltype(&DeleteFileW) wrap_DeleteFileW = DeleteFile_;
decltype(&MoveFileExW) wrap_MoveFileExW = MoveFile_;
decltype(&SetFileAttributesW) wrap_SetFileAttributesW = SetAttributes_;
decltype(&CreateProcessW) wrap_CreateProcessW = CreateProcess_;
decltype(&RegCreateKeyExW) wrap_RegCreateKeyExW = CreateKey_;
decltype(&RegisterEventSourceW) wrap_RegisterEventSourceW = RegisterEventSource_;
}

namespace fuzz {

void Confine() {
    if (isConfined) {
        return;
    }
    wchar_t folder[MAX_PATH] = L"";
    wchar_t path[MAX_PATH] = L"";
    GetTempPathW(MAX_PATH, folder);
    GetTempFileNameW(folder, L"fuz", 0, path);
    scratchFile = CreateFileW(path, GENERIC_READ | GENERIC_WRITE | DELETE, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr,
                              CREATE_ALWAYS, FILE_FLAG_DELETE_ON_CLOSE, nullptr);
    isConfined = true;
}

void LetWritesFail(bool fail) {
    doWritesFail = fail;
}

} // namespace fuzz
