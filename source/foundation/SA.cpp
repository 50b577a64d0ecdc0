#include "foundation/SA.h"

#include <sddl.h>

#include "foundation/Throw.h"

SA::SA(const DACL& dacl, bool inheritHandle) : SA(dacl, SACL(), inheritHandle) {}

SA::SA(const DACL& dacl, const SACL& sacl, bool inheritHandle)
    : attributes_{sizeof(SECURITY_ATTRIBUTES), nullptr, inheritHandle}, dacl_(dacl), sacl_(sacl) {
    Init();
}

SA::~SA() {
    LocalFree(attributes_.lpSecurityDescriptor);
}

void SA::Init() {
    const std::wstring text = dacl_.ToString() + sacl_.ToString();
    if (!ConvertStringSecurityDescriptorToSecurityDescriptorW(text.c_str(), SDDL_REVISION_1,
                                                              &attributes_.lpSecurityDescriptor, nullptr)) {
        vorlek::Throw(L"SA::Init", L"ConvertStringSecurityDescriptorToSecurityDescriptor failed with:", GetLastError());
    }
}
