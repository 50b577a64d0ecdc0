// redemption.dll: the classes by which the library is known and registered. The objects themselves work inside
// Outlook's memory, so Outlook makes them.
#include <iterator>
#include <string>

#include "stand-ins/redemption/ClassFactory.h"

#include <olectl.h>

namespace {

using namespace stand_ins::redemption;

constexpr wchar_t kClasses[] = L"SOFTWARE\\Classes\\";

HINSTANCE instance_ = nullptr;

std::wstring TextOf(const GUID& id) {
    wchar_t text[39] = L"";
    StringFromGUID2(id, text, static_cast<int>(std::size(text)));
    return text;
}

std::wstring ClassKey(const Coclass& coclass) {
    return std::wstring(kClasses) + L"CLSID\\" + TextOf(coclass.id);
}

bool Write(const std::wstring& key, const wchar_t* name, const std::wstring& value) {
    const auto bytes = static_cast<DWORD>((value.size() + 1) * sizeof(wchar_t));
    return RegSetKeyValueW(HKEY_LOCAL_MACHINE, key.c_str(), name, REG_SZ, value.c_str(), bytes) == ERROR_SUCCESS;
}

bool Remove(const std::wstring& key) {
    const LSTATUS result = RegDeleteTreeW(HKEY_LOCAL_MACHINE, key.c_str());
    return result == ERROR_SUCCESS || result == ERROR_FILE_NOT_FOUND;
}

} // namespace

BOOL WINAPI DllMain(HINSTANCE instance, DWORD, void*) {
    instance_ = instance;
    return TRUE;
}

STDAPI DllGetClassObject(REFCLSID classId, REFIID interfaceId, void** object) {
    // In another program than Outlook there is nothing to show.
    const auto make = reinterpret_cast<MakeObject>(
        reinterpret_cast<void*>(GetProcAddress(GetModuleHandleW(nullptr), kMakeObjectExport)));
    for (const Coclass& coclass : kCoclasses) {
        if (coclass.id == classId && make != nullptr) {
            auto* const factory = new ClassFactory(classId, make);
            const HRESULT result = factory->QueryInterface(interfaceId, object);
            factory->Release();
            return result;
        }
    }
    return CLASS_E_CLASSNOTAVAILABLE;
}

STDAPI DllCanUnloadNow() {
    return ClassFactory::Living() == 0 ? S_OK : S_FALSE;
}

STDAPI DllRegisterServer() {
    wchar_t path[MAX_PATH] = L"";
    GetModuleFileNameW(instance_, path, MAX_PATH);
    for (const Coclass& coclass : kCoclasses) {
        const std::wstring server = ClassKey(coclass) + L"\\InprocServer32";
        if (!Write(std::wstring(kClasses) + coclass.progId + L"\\CLSID", nullptr, TextOf(coclass.id)) ||
            !Write(ClassKey(coclass), nullptr, coclass.progId) || !Write(server, nullptr, path) ||
            !Write(server, L"ThreadingModel", L"Apartment")) {
            return SELFREG_E_CLASS;
        }
    }
    return S_OK;
}

STDAPI DllUnregisterServer() {
    bool removed = true;
    for (const Coclass& coclass : kCoclasses) {
        removed = Remove(ClassKey(coclass)) && removed;
        removed = Remove(std::wstring(kClasses) + coclass.progId) && removed;
    }
    return removed ? S_OK : SELFREG_E_CLASS;
}
