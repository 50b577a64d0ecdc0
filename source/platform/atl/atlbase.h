#pragma once
// The module of an in-process COM server, its object map, and the small helpers around them.
#include <string>

#include "platform/Windows.h"

#include <ocidl.h>
#include <olectl.h>

namespace ATL {

/// A failing HRESULT, on its way to the nearest border. Related to no other exception class.
class CAtlException {
public:
    explicit CAtlException(HRESULT hr = E_FAIL) noexcept : m_hr(hr) {}
    operator HRESULT() const noexcept { return m_hr; }

    HRESULT m_hr;
};

[[noreturn]] inline void AtlThrow(HRESULT hr) {
    throw CAtlException(hr);
}

/// The failure of a Win32 call as an HRESULT; S_OK for ERROR_SUCCESS.
inline HRESULT AtlHresultFromWin32(LSTATUS error) noexcept {
    return HRESULT_FROM_WIN32(static_cast<DWORD>(error));
}

/// Connects sink to source's connection point iid. Any of the chain's failures is the result.
HRESULT AtlAdvise(IUnknown* source, IUnknown* sink, REFIID iid, DWORD* cookie);
HRESULT AtlUnadvise(IUnknown* source, REFIID iid, DWORD cookie);

/// Whether registration goes to the current user's classes instead of the machine's. Off at first.
void AtlSetPerUserRegistration(bool enable) noexcept;
bool AtlGetPerUserRegistration() noexcept;

/// The full path of a module. Throws CAtlException.
std::wstring AtlModulePath(HINSTANCE module);

/// Registers or removes the type library in the module's resources, per user or for the machine.
HRESULT AtlRegisterTypeLib(HINSTANCE module) noexcept;
HRESULT AtlUnRegisterTypeLib(HINSTANCE module) noexcept;

/// Runs the registrar script of type REGISTRY in the module's resources, forwards or backwards.
HRESULT AtlUpdateRegistryFromResource(HINSTANCE module, UINT resource, bool enroll) noexcept;

/// Counting for objects that live in one apartment only.
struct CComSingleThreadModel {
    static ULONG Increment(LONG* count) noexcept { return static_cast<ULONG>(++*count); }
    static ULONG Decrement(LONG* count) noexcept { return static_cast<ULONG>(--*count); }
};

/// Counting for objects that any thread may hold.
struct CComMultiThreadModel {
    static ULONG Increment(LONG* count) noexcept { return static_cast<ULONG>(InterlockedIncrement(count)); }
    static ULONG Decrement(LONG* count) noexcept { return static_cast<ULONG>(InterlockedDecrement(count)); }
};

/// The process's part of every ATL module: where it lies, and whether it could be set up at all.
class CAtlBaseModule {
public:
    HINSTANCE GetModuleInstance() const noexcept { return m_hInst; }

    inline static bool m_bInitFailed = false;
    HINSTANCE m_hInst = nullptr;
};

inline CAtlBaseModule _AtlBaseModule;

using _ATL_CREATORFUNC = HRESULT(void* parameter, REFIID iid, void** object) noexcept;
using _ATL_UPDATEREGISTRYFUNC = HRESULT(BOOL enroll) noexcept;

/// One creatable class; all of a module form a list in the order of their construction.
class _ATL_OBJMAP_ENTRY {
public:
    _ATL_OBJMAP_ENTRY(REFCLSID classId, _ATL_UPDATEREGISTRYFUNC* updateRegistry, _ATL_CREATORFUNC* getClassObject,
                      _ATL_CREATORFUNC* createInstance);
    ~_ATL_OBJMAP_ENTRY();
    _ATL_OBJMAP_ENTRY(const _ATL_OBJMAP_ENTRY&) = delete;
    _ATL_OBJMAP_ENTRY& operator=(const _ATL_OBJMAP_ENTRY&) = delete;

    const CLSID clsid;
    _ATL_UPDATEREGISTRYFUNC* const pfnUpdateRegistry;
    _ATL_CREATORFUNC* const pfnGetClassObject;
    _ATL_CREATORFUNC* const pfnCreateInstance;
    IUnknown* pCF = nullptr; ///< the class factory once it was asked for
    _ATL_OBJMAP_ENTRY* next = nullptr;

    inline static _ATL_OBJMAP_ENTRY* first = nullptr;
};

#define OBJECT_ENTRY_AUTO(clsid, class)                                                                                \
    ATL::_ATL_OBJMAP_ENTRY __objMap_##class(clsid, class ::UpdateRegistry,                                             \
                                            class ::_ClassFactoryCreatorClass::CreateInstance,                         \
                                            class ::_CreatorClass::CreateInstance);

/// The count of everything that keeps the module loaded. One of a process part, from construction on.
class CAtlModule {
public:
    CAtlModule() noexcept;
    CAtlModule(const CAtlModule&) = delete;
    CAtlModule& operator=(const CAtlModule&) = delete;
    ~CAtlModule();

    LONG Lock() noexcept { return InterlockedIncrement(&m_nLockCnt); }
    LONG Unlock() noexcept { return InterlockedDecrement(&m_nLockCnt); }
    LONG GetLockCount() const noexcept { return m_nLockCnt; }

    HRESULT GetClassObject(REFCLSID classId, REFIID iid, void** object) noexcept;
    HRESULT RegisterServer(bool withTypeLibrary) noexcept;
    HRESULT UnregisterServer(bool withTypeLibrary) noexcept;

private:
    CRITICAL_SECTION factories_;
    LONG m_nLockCnt = 0;
};

inline CAtlModule* _pAtlModule = nullptr;

/// The module of a DLL: what its entry point and its four exports pass on to.
template <class T>
class CAtlDllModuleT : public CAtlModule {
public:
    BOOL DllMain(DWORD reason, LPVOID) noexcept {
        return reason != DLL_PROCESS_ATTACH || !CAtlBaseModule::m_bInitFailed;
    }
    HRESULT DllCanUnloadNow() const noexcept { return GetLockCount() == 0 ? S_OK : S_FALSE; }
    HRESULT DllGetClassObject(REFCLSID classId, REFIID iid, void** object) noexcept {
        return GetClassObject(classId, iid, object);
    }
    HRESULT DllRegisterServer(bool withTypeLibrary = true) noexcept {
        const SystemLocale_ scope;
        return RegisterServer(withTypeLibrary);
    }
    HRESULT DllUnregisterServer(bool withTypeLibrary = true) noexcept {
        const SystemLocale_ scope;
        return UnregisterServer(withTypeLibrary);
    }

private:
    /// What registration writes must not depend on the locale of the thread that asks for it.
    struct SystemLocale_ {
        SystemLocale_() noexcept { SetThreadLocale(LOCALE_SYSTEM_DEFAULT); }
        ~SystemLocale_() { SetThreadLocale(earlier); }
        const LCID earlier = GetThreadLocale();
    };
};

} // namespace ATL
