#pragma once
// COM objects: reference counts, the interface map, class factories, IDispatch over a type library.
#include "platform/atl/atlbase.h"
#include "platform/atl/atldispevent.h"

#include <comdef.h>

#include <new>

namespace ATL {

/// One interface of the class T: its identifier, and the way from the object to it.
template <class T>
struct _ATL_INTMAP_ENTRY {
    const IID* iid;
    IUnknown* (*interfaceOf)(T& object);
};

// clang-format off
#define BEGIN_COM_MAP(class)                                       \
public:                                                            \
    HRESULT _InternalQueryInterface(REFIID iid, void** result) {   \
        using ComMapClass = class;                                 \
        static constexpr ATL::_ATL_INTMAP_ENTRY<class> entries[] = {
#define COM_INTERFACE_ENTRY(name) \
    {&__uuidof(name), [](ComMapClass& object) -> IUnknown* { return static_cast<name*>(&object); }},
#define END_COM_MAP()                                               \
        };                                                          \
        return InternalQueryInterface(*this, entries, iid, result); \
    }
// clang-format on

/// The reference count and the interface look-up of a COM class; the count starts at 0.
template <class ThreadModel>
class CComObjectRootEx {
public:
    CComObjectRootEx() = default;
    CComObjectRootEx(const CComObjectRootEx&) = delete;
    CComObjectRootEx& operator=(const CComObjectRootEx&) = delete;

    /// For the creator's parameter, which most classes have no use for.
    void SetVoid(void*) noexcept {}

    ULONG InternalAddRef() noexcept { return ThreadModel::Increment(&m_dwRef); }
    ULONG InternalRelease() noexcept { return ThreadModel::Decrement(&m_dwRef); }

protected:
    ~CComObjectRootEx() = default;

    /// IUnknown is the first entry's; an identifier without entry gives null and E_NOINTERFACE.
    template <class T, std::size_t Size>
    static HRESULT InternalQueryInterface(T& object, const _ATL_INTMAP_ENTRY<T> (&entries)[Size], REFIID iid,
                                          void** result) {
        if (result == nullptr) {
            return E_POINTER;
        }
        *result = nullptr;
        for (const auto& entry : entries) {
            if (IsEqualIID(iid, *entry.iid) || IsEqualIID(iid, IID_IUnknown)) {
                IUnknown* found = entry.interfaceOf(object);
                found->AddRef();
                *result = found;
                return S_OK;
            }
        }
        return E_NOINTERFACE;
    }

    LONG m_dwRef = 0;
};

/// The concrete object of a COM class: lives as long as it is referred to, and keeps the module loaded.
template <class Base>
class CComObject final : public Base {
public:
    CComObject() noexcept(false) { _pAtlModule->Lock(); }
    ~CComObject() override { _pAtlModule->Unlock(); }

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** result) override {
        return this->_InternalQueryInterface(iid, result);
    }
    ULONG STDMETHODCALLTYPE AddRef() override { return this->InternalAddRef(); }
    ULONG STDMETHODCALLTYPE Release() override {
        const ULONG count = this->InternalRelease();
        if (count == 0) {
            delete this;
        }
        return count;
    }
};

/// The concrete object of a class that the module itself holds with one reference: only further ones
/// keep the module loaded.
template <class Base>
class CComObjectCached final : public Base {
public:
    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** result) override {
        return this->_InternalQueryInterface(iid, result);
    }
    ULONG STDMETHODCALLTYPE AddRef() override {
        const ULONG count = this->InternalAddRef();
        if (count == 2) {
            _pAtlModule->Lock();
        }
        return count;
    }
    ULONG STDMETHODCALLTYPE Release() override {
        const ULONG count = this->InternalRelease();
        if (count == 0) {
            delete this;
        } else if (count == 1) {
            _pAtlModule->Unlock();
        }
        return count;
    }
};

/// Makes an object of the concrete class T and hands out its interface. Nothing that a constructor
/// throws gets through to the program that asked.
template <class T>
struct CComCreator {
    static HRESULT CreateInstance(void* parameter, REFIID iid, void** result) noexcept {
        if (result == nullptr) {
            return E_POINTER;
        }
        *result = nullptr;
        try {
            T* object = new T;
            object->SetVoid(parameter);
            const HRESULT queried = object->QueryInterface(iid, result);
            if (FAILED(queried)) {
                delete object;
            }
            return queried;
        } catch (const std::bad_alloc&) {
            return E_OUTOFMEMORY;
        } catch (const CAtlException& failure) {
            return failure;
        } catch (...) {
            return E_FAIL;
        }
    }
};

/// The class object of a COM class; its creator parameter is the creator of the class.
class CComClassFactory : public IClassFactory, public CComObjectRootEx<CComMultiThreadModel> {
public:
    BEGIN_COM_MAP(CComClassFactory)
    COM_INTERFACE_ENTRY(IClassFactory)
    END_COM_MAP()

    void SetVoid(void* creator) noexcept { m_pfnCreateInstance = reinterpret_cast<_ATL_CREATORFUNC*>(creator); }

    HRESULT STDMETHODCALLTYPE CreateInstance(IUnknown* outer, REFIID iid, void** result) override {
        if (result == nullptr) {
            return E_POINTER;
        }
        *result = nullptr;
        return outer != nullptr ? CLASS_E_NOAGGREGATION : m_pfnCreateInstance(nullptr, iid, result);
    }
    HRESULT STDMETHODCALLTYPE LockServer(BOOL lock) override {
        if (lock != FALSE) {
            _pAtlModule->Lock();
        } else {
            _pAtlModule->Unlock();
        }
        return S_OK;
    }

protected:
    ~CComClassFactory() = default;

private:
    _ATL_CREATORFUNC* m_pfnCreateInstance = nullptr;
};

/// What makes the class T creatable under a class identifier.
template <class T, const CLSID* classId>
class CComCoClass {
public:
    using _ClassFactoryCreatorClass = CComCreator<CComObjectCached<CComClassFactory>>;
    using _CreatorClass = CComCreator<CComObject<T>>;

    static const CLSID& GetObjectCLSID() noexcept { return *classId; }
};

/// The class registers itself with the registrar script of that resource.
#define DECLARE_REGISTRY_RESOURCEID(id)                                                                                \
    static HRESULT UpdateRegistry(BOOL enroll) noexcept {                                                              \
        return ATL::AtlUpdateRegistryFromResource(ATL::_AtlBaseModule.GetModuleInstance(), id, enroll != FALSE);       \
    }

/// IDispatch of the dual interface T, answered from its registered type library. Where that is not
/// registered, each operation returns what the system says to it; the vtable works all the same.
template <class T, const IID* iid, const GUID* libraryId, WORD major, WORD minor>
class IDispatchImpl : public T {
public:
    HRESULT STDMETHODCALLTYPE GetTypeInfoCount(UINT* count) override {
        if (count == nullptr) {
            return E_POINTER;
        }
        *count = 1;
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE GetTypeInfo(UINT index, LCID locale, ITypeInfo** info) override {
        if (info == nullptr) {
            return E_POINTER;
        }
        *info = nullptr;
        return index == 0 ? LoadTypeInfo_(locale, info) : DISP_E_BADINDEX;
    }
    HRESULT STDMETHODCALLTYPE GetIDsOfNames(REFIID, LPOLESTR* names, UINT count, LCID locale, DISPID* ids) override {
        TypeInfoPtr_ info;
        const HRESULT loaded = LoadTypeInfo_(locale, &info);
        return FAILED(loaded) ? loaded : info->GetIDsOfNames(names, count, ids);
    }
    HRESULT STDMETHODCALLTYPE Invoke(DISPID id, REFIID, LCID locale, WORD flags, DISPPARAMS* parameters,
                                     VARIANT* result, EXCEPINFO* failure, UINT* wrongArgument) override {
        TypeInfoPtr_ info;
        const HRESULT loaded = LoadTypeInfo_(locale, &info);
        return FAILED(loaded)
                   ? loaded
                   : info->Invoke(static_cast<T*>(this), id, flags, parameters, result, failure, wrongArgument);
    }

protected:
    ~IDispatchImpl() = default;

private:
    using TypeInfoPtr_ = _com_ptr_t<_com_IIID<ITypeInfo, &__uuidof(ITypeInfo)>>;
    using TypeLibPtr_ = _com_ptr_t<_com_IIID<ITypeLib, &__uuidof(ITypeLib)>>;

    static HRESULT LoadTypeInfo_(LCID locale, ITypeInfo** info) {
        TypeLibPtr_ library;
        const HRESULT loaded = LoadRegTypeLib(*libraryId, major, minor, locale, &library);
        return FAILED(loaded) ? loaded : library->GetTypeInfoOfGuid(*iid, info);
    }
};

} // namespace ATL
