#include "foundation/SharedMemory.h"

#include "foundation/Log.h"
#include "foundation/Log4CxxHelper.h"
#include "foundation/SecUtils.h"
#include "foundation/Throw.h"

vorlek::LoggerHolder SharedMemory::logger_;

SharedMemory::SharedMemory(const std::wstring& name, std::uint64_t size, std::uint32_t securityKind, bool readOnly)
    : name_(name), size_(size), securityKind_(securityKind), readOnly_(readOnly), openExisting_(false) {
    Init();
}

SharedMemory::SharedMemory(const std::wstring& name, bool readOnly)
    : name_(name), readOnly_(readOnly), openExisting_(true) {
    Init();
}

void SharedMemory::Init() {
    vorlek::InitLogger(logger_, "SharedMemory::SharedMemory", false);
    try {
        const DWORD access = readOnly_ ? FILE_MAP_READ : FILE_MAP_ALL_ACCESS;
        if (openExisting_) {
            Open_(access);
        } else {
            Create_();
        }
        Map_(access);
    } catch (const vorlek::Exception& failure) {
        LOG_ERROR(logger_, L"Init failed with: " << failure.ToString());
        throw;
    }
}

void SharedMemory::Open_(DWORD access) {
    mapping_ = OpenFileMappingW(access, FALSE, name_.c_str());
    if (!mapping_.IsValid()) {
        vorlek::Throw(L"SharedMemory::Init", L"OpenFileMapping failed with: ", GetLastError());
    }
}

void SharedMemory::Create_() {
    const auto attributes = SecUtils::GenSA(securityKind_);
    SetLastError(ERROR_SUCCESS);
    mapping_ = CreateFileMappingW(INVALID_HANDLE_VALUE, attributes->GetSecurityAttributes(),
                                  readOnly_ ? PAGE_READONLY : PAGE_READWRITE, static_cast<DWORD>(size_ >> 32),
                                  static_cast<DWORD>(size_), name_.c_str());
    const DWORD error = GetLastError();
    if (!mapping_.IsValid()) {
        vorlek::Throw(L"SharedMemory::Init", L"CreateFileMapping failed with: ", error);
    }
    if (error == ERROR_ALREADY_EXISTS) {
        vorlek::Throw(L"SharedMemory::Init", L"The specified section: ", name_, L" already exists!");
    }
}

void SharedMemory::Map_(DWORD access) {
    // An opened section has size 0 here, and the system takes this for the whole.
    view_ = static_cast<BYTE*>(MapViewOfFile(mapping_.Get(), access, 0, 0, static_cast<SIZE_T>(size_)));
    if (!view_.IsValid()) {
        vorlek::Throw(L"SharedMemory::Init", L"MapViewOfFile failed with: ", GetLastError());
    }
}
