#include "stand-ins/outlook/AddIns.h"

#include <map>

#include "platform/outlook/Extensibility.h"
#include "stand-ins/outlook/Text.h"

namespace stand_ins {

namespace {

constexpr const wchar_t* kKey = L"SOFTWARE\\Microsoft\\Office\\Outlook\\Addins";
constexpr const wchar_t* kLoadBehavior = L"LoadBehavior";
constexpr DWORD kLoadAtStart = 3;
constexpr DWORD kNotLoaded = 2;

using AddInPtr = _com_ptr_t<_com_IIID<_IDTExtensibility2, &IID__IDTExtensibility2>>;

// The ProgIDs that are to be loaded at start, each with the hive that says so; a user's entry comes before the
// machine's.
std::map<std::wstring, HKEY> Registered() {
    std::map<std::wstring, HKEY> found;
    for (const HKEY hive : {HKEY_CURRENT_USER, HKEY_LOCAL_MACHINE}) {
        HKEY key = nullptr;
        if (RegOpenKeyExW(hive, kKey, 0, KEY_READ, &key) != ERROR_SUCCESS) {
            continue;
        }
        wchar_t name[256];
        for (DWORD i = 0, size = 256;
             RegEnumKeyExW(key, i, name, &size, nullptr, nullptr, nullptr, nullptr) == ERROR_SUCCESS; ++i, size = 256) {
            DWORD behaviour = 0;
            DWORD length = sizeof behaviour;
            if (RegGetValueW(key, name, kLoadBehavior, RRF_RT_REG_DWORD, nullptr, &behaviour, &length) ==
                    ERROR_SUCCESS &&
                behaviour == kLoadAtStart) {
                found.emplace(name, hive);
            }
        }
        RegCloseKey(key);
    }
    return found;
}

void Disable(const std::wstring& progId, HKEY hive) {
    const std::wstring key = std::wstring(kKey) + L"\\" + progId;
    RegSetKeyValueW(hive, key.c_str(), kLoadBehavior, REG_DWORD, &kNotLoaded, sizeof kNotLoaded);
}

// The loaded add-in, or null and the step that failed.
AddInPtr Connect(const std::wstring& progId, IDispatch* application, std::wstring& failure) {
    const auto check = [&](HRESULT result, const wchar_t* step) {
        if (FAILED(result)) {
            failure = std::wstring(step) + L" failed with " + Hex(result);
        }
        return SUCCEEDED(result);
    };
    CLSID classId{};
    AddInPtr addIn;
    SAFEARRAY* custom = SafeArrayCreateVector(VT_VARIANT, 1, 0);
    const bool loaded = check(CLSIDFromProgID(progId.c_str(), &classId), L"CLSIDFromProgID") &&
                        check(CoCreateInstance(classId, nullptr, CLSCTX_INPROC_SERVER, IID__IDTExtensibility2,
                                               reinterpret_cast<void**>(&addIn)),
                              L"CoCreateInstance") &&
                        check(addIn->OnConnection(application, ext_cm_Startup, nullptr, &custom), L"OnConnection");
    SafeArrayDestroy(custom);
    return loaded ? addIn : AddInPtr();
}

double Milliseconds() {
    LARGE_INTEGER count{};
    LARGE_INTEGER frequency{};
    QueryPerformanceCounter(&count);
    QueryPerformanceFrequency(&frequency);
    return 1000.0 * static_cast<double>(count.QuadPart) / static_cast<double>(frequency.QuadPart);
}

} // namespace

std::vector<AddInLoad> AddIns::Load(IDispatch* application) {
    std::vector<AddInLoad> loads;
    for (const auto& [progId, hive] : Registered()) {
        AddInLoad load{progId, false, {}, 0};
        const double start = Milliseconds();
        const AddInPtr addIn = Connect(progId, application, load.failure);
        load.milliseconds = Milliseconds() - start;
        load.loaded = addIn != nullptr;
        if (load.loaded) {
            loaded_.emplace_back(addIn.GetInterfacePtr());
        } else {
            Disable(progId, hive);
        }
        loads.push_back(std::move(load));
    }
    for (const AddInPtr addIn : loaded_) {
        SAFEARRAY* custom = nullptr;
        addIn->OnAddInsUpdate(&custom);
    }
    for (const AddInPtr addIn : loaded_) {
        SAFEARRAY* custom = nullptr;
        addIn->OnStartupComplete(&custom);
    }
    return loads;
}

void AddIns::TellShutdown() {
    for (const AddInPtr addIn : loaded_) {
        SAFEARRAY* custom = nullptr;
        addIn->OnBeginShutdown(&custom);
    }
    for (const AddInPtr addIn : loaded_) {
        SAFEARRAY* custom = nullptr;
        addIn->OnDisconnection(ext_dm_HostShutdown, &custom);
    }
    loaded_.clear();
}

} // namespace stand_ins
