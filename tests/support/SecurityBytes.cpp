#include "tests/support/SecurityBytes.h"

#include <sddl.h>
#include <stdexcept>

namespace test_support {

std::vector<BYTE> SecurityBytes(PSECURITY_DESCRIPTOR descriptor) {
    const auto* bytes = static_cast<const BYTE*>(descriptor);
    return {bytes, bytes + GetSecurityDescriptorLength(descriptor)};
}

std::vector<BYTE> SecurityBytes(const std::wstring& text) {
    PSECURITY_DESCRIPTOR descriptor = nullptr;
    if (!ConvertStringSecurityDescriptorToSecurityDescriptorW(text.c_str(), SDDL_REVISION_1, &descriptor, nullptr)) {
        throw std::runtime_error("no descriptor: " + std::to_string(GetLastError()));
    }
    std::vector<BYTE> bytes = SecurityBytes(descriptor);
    LocalFree(descriptor);
    return bytes;
}

std::wstring SecurityText(PSECURITY_DESCRIPTOR descriptor) {
    wchar_t* text = nullptr;
    if (!ConvertSecurityDescriptorToStringSecurityDescriptorW(descriptor, SDDL_REVISION_1, DACL_SECURITY_INFORMATION,
                                                              &text, nullptr)) {
        throw std::runtime_error("no text: " + std::to_string(GetLastError()));
    }
    std::wstring result = text;
    LocalFree(text);
    return result;
}

} // namespace test_support
