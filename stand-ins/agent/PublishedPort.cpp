#include "stand-ins/agent/PublishedPort.h"

#include <stdexcept>

#include <sddl.h>

#include "stand-ins/agent/Text.h"

namespace stand_ins::agent {
namespace {

/// The system may do everything, everyone may read, also with a restricted token. The creator writes through the view
/// that it has from the beginning.
constexpr const wchar_t* kAccess = L"D:(A;OICI;GA;;;SY)(A;OICI;GR;;;WD)(A;OICI;GR;;;RC)";
constexpr DWORD kSize = 2;

bool Exists_(const std::wstring& name) {
    const HANDLE section = OpenFileMappingW(FILE_MAP_READ, FALSE, name.c_str());
    if (section != nullptr) {
        CloseHandle(section);
    }
    return section != nullptr;
}

std::runtime_error Failure_(const std::wstring& service, const std::wstring& name, DWORD error) {
    // Nobody but the system may open an existing section for writing: creating it once more is denied.
    if (error == ERROR_ALREADY_EXISTS || (error == ERROR_ACCESS_DENIED && Exists_(name))) {
        return std::runtime_error("The service " + ToUtf8(service) + " is published already by another process");
    }
    return std::runtime_error("Cannot publish the service " + ToUtf8(service) + ": error " + std::to_string(error));
}

} // namespace

PublishedPort::PublishedPort(const std::wstring& service, std::uint16_t port) {
    const std::wstring name = L"Global\\59EB6F8B-7F42-4CB9-B741-ED434F426458_" + service;
    SECURITY_ATTRIBUTES attributes{sizeof attributes, nullptr, FALSE};
    if (!ConvertStringSecurityDescriptorToSecurityDescriptorW(kAccess, SDDL_REVISION_1,
                                                              &attributes.lpSecurityDescriptor, nullptr)) {
        throw Failure_(service, name, GetLastError());
    }
    section_ = CreateFileMappingW(INVALID_HANDLE_VALUE, &attributes, PAGE_READWRITE, 0, kSize, name.c_str());
    DWORD error = GetLastError();
    LocalFree(attributes.lpSecurityDescriptor);
    if (section_ != nullptr && error != ERROR_ALREADY_EXISTS) {
        view_ = static_cast<unsigned char*>(MapViewOfFile(section_, FILE_MAP_WRITE, 0, 0, kSize));
        error = GetLastError();
    }
    if (view_ == nullptr) {
        if (section_ != nullptr) {
            CloseHandle(section_);
        }
        throw Failure_(service, name, error);
    }
    Set(port);
}

PublishedPort::~PublishedPort() {
    UnmapViewOfFile(view_);
    CloseHandle(section_);
}

void PublishedPort::Set(std::uint16_t port) {
    view_[0] = static_cast<unsigned char>(port & 0xFF);
    view_[1] = static_cast<unsigned char>(port >> 8);
}

} // namespace stand_ins::agent
