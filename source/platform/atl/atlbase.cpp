#include "platform/atl/atlbase.h"

#include <comdef.h>

#include <array>

#include "platform/atl/statreg.h"

namespace ATL {
namespace {

_COM_SMARTPTR_TYPEDEF(IConnectionPointContainer, __uuidof(IConnectionPointContainer));
_COM_SMARTPTR_TYPEDEF(IConnectionPoint, __uuidof(IConnectionPoint));
_COM_SMARTPTR_TYPEDEF(ITypeLib, __uuidof(ITypeLib));

bool perUserRegistration_ = false;

HRESULT FindConnectionPoint_(IUnknown* source, REFIID iid, IConnectionPoint** point) {
    if (source == nullptr) {
        return E_INVALIDARG;
    }
    IConnectionPointContainerPtr container;
    const HRESULT result = source->QueryInterface(IID_PPV_ARGS(&container));
    return FAILED(result) ? result : container->FindConnectionPoint(iid, point);
}

/// Runs the body; its HRESULT, or that of the CAtlException it raised, is the result.
template <class Body>
HRESULT ToHresult_(Body&& body) noexcept {
    try {
        return body();
    } catch (const CAtlException& failure) {
        return failure;
    } catch (const std::bad_alloc&) {
        return E_OUTOFMEMORY;
    }
}

/// OLEAUT32's function of that name, which the import libraries do not know.
template <class Function>
Function* OleAutomationFunction_(const char* name) {
    const HMODULE library = GetModuleHandleW(L"OLEAUT32.DLL");
    const FARPROC function = library == nullptr ? nullptr : GetProcAddress(library, name);
    if (function == nullptr) {
        AtlThrow(HRESULT_FROM_WIN32(ERROR_PROC_NOT_FOUND));
    }
    return reinterpret_cast<Function*>(reinterpret_cast<void*>(function));
}

ITypeLibPtr LoadTypeLib_(const std::wstring& path) {
    ITypeLibPtr library;
    const HRESULT result = LoadTypeLibEx(path.c_str(), REGKIND_NONE, &library);
    if (FAILED(result)) {
        AtlThrow(result);
    }
    return library;
}

} // namespace

HRESULT AtlAdvise(IUnknown* source, IUnknown* sink, REFIID iid, DWORD* cookie) {
    IConnectionPointPtr point;
    const HRESULT result = FindConnectionPoint_(source, iid, &point);
    return FAILED(result) ? result : point->Advise(sink, cookie);
}

HRESULT AtlUnadvise(IUnknown* source, REFIID iid, DWORD cookie) {
    IConnectionPointPtr point;
    const HRESULT result = FindConnectionPoint_(source, iid, &point);
    return FAILED(result) ? result : point->Unadvise(cookie);
}

void AtlSetPerUserRegistration(bool enable) noexcept {
    perUserRegistration_ = enable;
}

bool AtlGetPerUserRegistration() noexcept {
    return perUserRegistration_;
}

std::wstring AtlModulePath(HINSTANCE module) {
    std::wstring path(MAX_PATH, L'\0');
    for (;;) {
        const DWORD length = GetModuleFileNameW(module, path.data(), static_cast<DWORD>(path.size()));
        if (length == 0) {
            AtlThrow(HRESULT_FROM_WIN32(GetLastError()));
        }
        if (length < path.size()) {
            path.resize(length);
            return path;
        }
        path.resize(path.size() * 2);
    }
}

HRESULT AtlRegisterTypeLib(HINSTANCE module) noexcept {
    return ToHresult_([&] {
        std::wstring path = AtlModulePath(module);
        const ITypeLibPtr library = LoadTypeLib_(path);
        std::wstring folder = path.substr(0, path.rfind(L'\\'));
        const auto enroll = perUserRegistration_
                                ? OleAutomationFunction_<decltype(RegisterTypeLib)>("RegisterTypeLibForUser")
                                : &RegisterTypeLib;
        return enroll(library, path.data(), folder.data());
    });
}

HRESULT AtlUnRegisterTypeLib(HINSTANCE module) noexcept {
    return ToHresult_([&] {
        const ITypeLibPtr library = LoadTypeLib_(AtlModulePath(module));
        TLIBATTR* attributes = nullptr;
        if (const HRESULT result = library->GetLibAttr(&attributes); FAILED(result)) {
            return result;
        }
        const TLIBATTR identity = *attributes;
        library->ReleaseTLibAttr(attributes);
        const auto remove = perUserRegistration_
                                ? OleAutomationFunction_<decltype(UnRegisterTypeLib)>("UnRegisterTypeLibForUser")
                                : &UnRegisterTypeLib;
        return remove(identity.guid, identity.wMajorVerNum, identity.wMinorVerNum, identity.lcid, identity.syskind);
    });
}

HRESULT AtlUpdateRegistryFromResource(HINSTANCE module, UINT resource, bool enroll) noexcept {
    return ToHresult_([&] {
        CRegObject registrar;
        registrar.AddReplacement(L"MODULE", AtlModulePath(module));
        return enroll ? registrar.ResourceRegister(module, resource, L"REGISTRY")
                      : registrar.ResourceUnregister(module, resource, L"REGISTRY");
    });
}

_ATL_OBJMAP_ENTRY::_ATL_OBJMAP_ENTRY(REFCLSID classId, _ATL_UPDATEREGISTRYFUNC* updateRegistry,
                                     _ATL_CREATORFUNC* getClassObject, _ATL_CREATORFUNC* createInstance)
    : clsid(classId),
      pfnUpdateRegistry(updateRegistry),
      pfnGetClassObject(getClassObject),
      pfnCreateInstance(createInstance) {
    _ATL_OBJMAP_ENTRY** end = &first;
    while (*end != nullptr) {
        end = &(*end)->next;
    }
    *end = this;
}

_ATL_OBJMAP_ENTRY::~_ATL_OBJMAP_ENTRY() {
    if (pCF != nullptr) {
        pCF->Release();
    }
    _ATL_OBJMAP_ENTRY** link = &first;
    while (*link != this) {
        link = &(*link)->next;
    }
    *link = next;
}

CAtlModule::CAtlModule() noexcept {
    if (InitializeCriticalSectionAndSpinCount(&factories_, 0) == FALSE) {
        CAtlBaseModule::m_bInitFailed = true;
    }
    _pAtlModule = this;
}

CAtlModule::~CAtlModule() {
    _pAtlModule = nullptr;
    DeleteCriticalSection(&factories_);
}

HRESULT CAtlModule::GetClassObject(REFCLSID classId, REFIID iid, void** object) noexcept {
    if (object == nullptr) {
        return E_POINTER;
    }
    *object = nullptr;
    for (auto* entry = _ATL_OBJMAP_ENTRY::first; entry != nullptr; entry = entry->next) {
        if (!IsEqualCLSID(entry->clsid, classId)) {
            continue;
        }
        HRESULT result = S_OK;
        EnterCriticalSection(&factories_);
        if (entry->pCF == nullptr) {
            result = entry->pfnGetClassObject(reinterpret_cast<void*>(entry->pfnCreateInstance), IID_IUnknown,
                                              reinterpret_cast<void**>(&entry->pCF));
        }
        LeaveCriticalSection(&factories_);
        return FAILED(result) ? result : entry->pCF->QueryInterface(iid, object);
    }
    return CLASS_E_CLASSNOTAVAILABLE;
}

HRESULT CAtlModule::RegisterServer(bool withTypeLibrary) noexcept {
    for (const auto* entry = _ATL_OBJMAP_ENTRY::first; entry != nullptr; entry = entry->next) {
        if (const HRESULT result = entry->pfnUpdateRegistry(TRUE); FAILED(result)) {
            return result;
        }
    }
    return withTypeLibrary ? AtlRegisterTypeLib(_AtlBaseModule.GetModuleInstance()) : S_OK;
}

HRESULT CAtlModule::UnregisterServer(bool withTypeLibrary) noexcept {
    for (const auto* entry = _ATL_OBJMAP_ENTRY::first; entry != nullptr; entry = entry->next) {
        if (const HRESULT result = entry->pfnUpdateRegistry(FALSE); FAILED(result)) {
            return result;
        }
    }
    return withTypeLibrary ? AtlUnRegisterTypeLib(_AtlBaseModule.GetModuleInstance()) : S_OK;
}

} // namespace ATL
