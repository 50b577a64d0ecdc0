#include "foundation/SecUtils.h"

#include <aclapi.h>
#include <versionhelpers.h>

#include "foundation/Throw.h"

namespace SecUtils {
namespace {

constexpr bool kInheritHandle = false;

SACL OpenToLowIntegrity_() {
    if (!IsWindowsVistaOrGreater()) {
        return SACL(); // mandatory labels came with Vista
    }
    return SACL({MACE(ACERights::NoWriteUp, ACESubject::LowIntegrity)});
}

} // namespace

std::shared_ptr<SA> GenSA(std::uint32_t kind) {
    switch (kind) {
    case 0:
        return std::make_shared<SA>(DACL(), kInheritHandle);
    case 1:
        return std::make_shared<SA>(DACL({AACE(ACERights::GenericReadWriteExecute, ACESubject::AuthenticatedUsers),
                                          AACE(ACERights::GenericAll, ACESubject::BuiltInUsers)}),
                                    kInheritHandle);
    case 2:
        return std::make_shared<SA>(DACL({AACE(ACERights::GenericAll, ACESubject::LocalSystem),
                                          AACE(ACERights::GenericRead, ACESubject::Everyone),
                                          AACE(ACERights::GenericRead, ACESubject::RestrictedCode)}),
                                    kInheritHandle);
    case 3:
        return std::make_shared<SA>(DACL({AACE(ACERights::GenericAll, ACESubject::Everyone),
                                          AACE(ACERights::GenericAll, ACESubject::RestrictedCode)}),
                                    OpenToLowIntegrity_(), kInheritHandle);
    default:
        vorlek::Throw(L"SecUtils::GenSA", L"Unsupported SA type: ", kind);
    }
}

void SetObjectSecurity(SE_OBJECT_TYPE objectType, const std::wstring& objectName, SA& attributes) {
    BOOL present = FALSE;
    BOOL defaulted = FALSE;
    ACL* dacl = nullptr;
    if (!GetSecurityDescriptorDacl(attributes.GetSecurityAttributes()->lpSecurityDescriptor, &present, &dacl,
                                   &defaulted) ||
        !present) {
        vorlek::Throw(L"SecUtils::SetObjectSecurity", L"GetSecurityDescriptorDacl failed with: ", GetLastError());
    }
    std::wstring name = objectName; // the system's function takes it writable
    const DWORD result =
        SetNamedSecurityInfoW(name.data(), objectType, DACL_SECURITY_INFORMATION, nullptr, nullptr, dacl, nullptr);
    if (result == ERROR_FILE_NOT_FOUND) {
        vorlek::Throw<vorlek::FileNotFoundException>(L"SecUtils::SetObjectSecurity",
                                                     L"SetNamedSecurityInfoW failed with: ", result);
    }
    if (result != ERROR_SUCCESS) {
        vorlek::Throw(L"SecUtils::SetObjectSecurity", L"SetNamedSecurityInfoW failed with: ", result);
    }
}

} // namespace SecUtils
