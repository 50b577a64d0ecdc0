#include "foundation/NamedMutex.h"

#include "foundation/Throw.h"

namespace vorlek {
namespace {

HANDLE CreateAnonymous_() {
    const HANDLE mutex = CreateMutexW(nullptr, FALSE, nullptr);
    if (mutex == nullptr) {
        Throw(L"vorlek::NamedMutex::NamedMutex", L"Failed to create mutex with: ", GetLastError());
    }
    return mutex;
}

HANDLE CreateNamed_(const std::wstring& name, const std::wstring& fullName) {
    HANDLE mutex = CreateMutexW(nullptr, FALSE, fullName.c_str());
    if (mutex != nullptr) {
        return mutex;
    }
    if (const DWORD error = GetLastError(); error != ERROR_ACCESS_DENIED) {
        Throw(L"vorlek::NamedMutex::NamedMutex", L"Failed to create named mutex \"", name, L"\" with: ", error);
    }
    // Another user made it and keeps the rest of us out of full access; to wait needs less.
    mutex = OpenMutexW(SYNCHRONIZE, FALSE, fullName.c_str());
    if (mutex == nullptr) {
        Throw(L"vorlek::NamedMutex::NamedMutex", L"Failed to open named mutex \"", name, L"\" with: ", GetLastError());
    }
    return mutex;
}

} // namespace

NamedMutex::NamedMutex(const std::wstring& name, bool global)
    : mutex_(name.empty() ? CreateAnonymous_() : CreateNamed_(name, NamedMutex::GetMutexName(name, global))) {}

NamedMutex::~NamedMutex() {
    if (mutex_ != nullptr) {
        CloseHandle(mutex_);
    }
}

void NamedMutex::Lock() {
    const DWORD result = WaitForSingleObject(mutex_, INFINITE);
    if (result != WAIT_OBJECT_0 && result != WAIT_ABANDONED) {
        Throw(L"vorlek::NamedMutex::Lock", L"WaitForSingleObject failed, return code: ", result);
    }
}

void NamedMutex::Unlock() {
    if (!ReleaseMutex(mutex_)) {
        Throw(L"vorlek::NamedMutex::Unlock", L"ReleaseMutex failed with error: ", GetLastError());
    }
}

std::wstring NamedMutex::GetMutexName(const std::wstring& name, bool global) const {
    return global ? L"Global\\" + name : name;
}

} // namespace vorlek
