#include "tests/outlook/RedemptionLibrary.h"

#include <stdexcept>
#include <string>

#include "foundation/RegistryKey.h"
#include "stand-ins/redemption/ClassFactory.h"
#include "stand-ins/redemption/Redemption.h"

namespace outlook_tests {
namespace {

using stand_ins::redemption::Coclass;
using stand_ins::redemption::kCoclasses;

std::wstring KeyOf(const Coclass& coclass) {
    return std::wstring(L"SOFTWARE\\Classes\\") + coclass.progId;
}

} // namespace

RedemptionLibrary::RedemptionLibrary() {
    CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED); // a restart of Outlook must not end the registrations
    for (std::size_t i = 0; i < kCoclasses.size(); ++i) {
        wchar_t text[39];
        StringFromGUID2(kCoclasses[i].id, text, 39);
        RegistryKey::GetLocalMachine()
            .CreateSubKey(KeyOf(kCoclasses[i]), true)
            ->CreateSubKey(L"CLSID", true)
            ->SetValue(L"", std::wstring(text) + L'\0'); // some readers want the terminator
        auto* const factory = new stand_ins::redemption::ClassFactory(kCoclasses[i].id, stand_ins::redemption::Make);
        const HRESULT result = CoRegisterClassObject(kCoclasses[i].id, factory, CLSCTX_INPROC_SERVER,
                                                     REGCLS_MULTIPLEUSE, &registrations_[i]);
        factory->Release();
        if (FAILED(result)) {
            throw std::runtime_error("CoRegisterClassObject failed");
        }
    }
}

RedemptionLibrary::~RedemptionLibrary() {
    for (const DWORD registration : registrations_) {
        CoRevokeClassObject(registration);
    }
    Forget();
    CoUninitialize();
}

void RedemptionLibrary::Forget() {
    for (const Coclass& coclass : kCoclasses) {
        RegistryKey::GetLocalMachine().DeleteSubKeyTree(KeyOf(coclass));
    }
}

} // namespace outlook_tests
