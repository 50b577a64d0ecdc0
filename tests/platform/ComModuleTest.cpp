#include "platform/atl/atlcom.h"

#include <gtest/gtest.h>

#include <functional>
#include <stdexcept>
#include <string>
#include <vector>

#include "platform/outlook/Extensibility.h"

namespace {

constexpr CLSID kThing = {0x11111111, 0, 0, {0, 0, 0, 0, 0, 0, 0, 1}};
constexpr CLSID kOther = {0x11111111, 0, 0, {0, 0, 0, 0, 0, 0, 0, 2}};
constexpr CLSID kUnknown = {0x11111111, 0, 0, {0, 0, 0, 0, 0, 0, 0, 3}};
/// Registered nowhere.
constexpr GUID kLibrary = {0x11111111, 0, 0, {0, 0, 0, 0, 0, 0, 0, 4}};

int things = 0;
std::function<void()> onConstruction;
std::vector<std::string> registrations;
HRESULT registrationResult = S_OK;
LCID registrationLocale = 0;

class Thing : public ATL::CComObjectRootEx<ATL::CComSingleThreadModel>,
              public ATL::CComCoClass<Thing, &kThing>,
              public ATL::IDispatchImpl<_IDTExtensibility2, &IID__IDTExtensibility2, &kLibrary, 1, 0> {
public:
    BEGIN_COM_MAP(Thing)
    COM_INTERFACE_ENTRY(_IDTExtensibility2)
    COM_INTERFACE_ENTRY(IDispatch)
    END_COM_MAP()

    Thing() {
        if (onConstruction) {
            onConstruction();
        }
        ++things;
    }

    static HRESULT UpdateRegistry(BOOL enroll) noexcept {
        registrations.emplace_back(enroll ? "+Thing" : "-Thing");
        registrationLocale = GetThreadLocale();
        return registrationResult;
    }

    HRESULT STDMETHODCALLTYPE OnConnection(IDispatch*, ext_ConnectMode, IDispatch*, SAFEARRAY**) override {
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE OnDisconnection(ext_DisconnectMode, SAFEARRAY**) override { return S_OK; }
    HRESULT STDMETHODCALLTYPE OnAddInsUpdate(SAFEARRAY**) override { return S_OK; }
    HRESULT STDMETHODCALLTYPE OnStartupComplete(SAFEARRAY**) override { return S_OK; }
    HRESULT STDMETHODCALLTYPE OnBeginShutdown(SAFEARRAY**) override { return S_OK; }

protected:
    virtual ~Thing() { --things; }
};

class Other : public Thing {
public:
    using _CreatorClass = ATL::CComCreator<ATL::CComObject<Other>>;

    static HRESULT UpdateRegistry(BOOL enroll) noexcept {
        registrations.emplace_back(enroll ? "+Other" : "-Other");
        return S_OK;
    }
};

class Module : public ATL::CAtlDllModuleT<Module> {};

OBJECT_ENTRY_AUTO(kThing, Thing)
OBJECT_ENTRY_AUTO(kOther, Other)

_COM_SMARTPTR_TYPEDEF(IClassFactory, __uuidof(IClassFactory));
_COM_SMARTPTR_TYPEDEF(IDispatch, __uuidof(IDispatch));
_COM_SMARTPTR_TYPEDEF(_IDTExtensibility2, __uuidof(_IDTExtensibility2));

class ComModule : public testing::Test {
protected:
    ComModule() {
        onConstruction = nullptr;
        registrations.clear();
        registrationResult = S_OK;
    }

    IClassFactoryPtr Factory(REFCLSID classId = kThing) {
        IClassFactoryPtr factory;
        EXPECT_EQ(module_.DllGetClassObject(classId, IID_PPV_ARGS(&factory)), S_OK);
        return factory;
    }
    HRESULT Create() {
        IDispatchPtr object;
        return Factory()->CreateInstance(nullptr, IID_PPV_ARGS(&object));
    }

    Module module_;
};

TEST_F(ComModule, CreatesObjectsThatLiveAsLongAsTheyAreReferredTo) {
    _IDTExtensibility2Ptr object;
    ASSERT_EQ(Factory()->CreateInstance(nullptr, IID_PPV_ARGS(&object)), S_OK);
    EXPECT_EQ(things, 1);
    IDispatchPtr second = object;
    EXPECT_EQ(second.GetInterfacePtr(), object.GetInterfacePtr());
    object = nullptr;
    EXPECT_EQ(things, 1);
    second = nullptr;
    EXPECT_EQ(things, 0);
}

TEST_F(ComModule, CanBeUnloadedOnlyWhileNothingOfItIsInUse) {
    EXPECT_EQ(module_.DllCanUnloadNow(), S_OK);
    auto factory = Factory();
    EXPECT_EQ(module_.DllCanUnloadNow(), S_FALSE);
    IDispatchPtr object;
    ASSERT_EQ(factory->CreateInstance(nullptr, IID_PPV_ARGS(&object)), S_OK);
    factory = nullptr;
    EXPECT_EQ(module_.DllCanUnloadNow(), S_FALSE);
    object = nullptr;
    EXPECT_EQ(module_.DllCanUnloadNow(), S_OK);
}

TEST_F(ComModule, StaysWhileTheServerIsLocked) {
    Factory()->LockServer(TRUE);
    EXPECT_EQ(module_.DllCanUnloadNow(), S_FALSE);
    Factory()->LockServer(FALSE);
    EXPECT_EQ(module_.DllCanUnloadNow(), S_OK);
}

TEST_F(ComModule, KeepsOneFactoryForEachClass) {
    EXPECT_EQ(Factory().GetInterfacePtr(), Factory().GetInterfacePtr());
    EXPECT_NE(Factory(kThing).GetInterfacePtr(), Factory(kOther).GetInterfacePtr());
}

TEST_F(ComModule, KnowsItsOwnClassesOnly) {
    void* object = this;
    EXPECT_EQ(module_.DllGetClassObject(kUnknown, IID_IClassFactory, &object), CLASS_E_CLASSNOTAVAILABLE);
    EXPECT_EQ(object, nullptr);
    EXPECT_EQ(module_.DllGetClassObject(kThing, IID_IDispatch, &object), E_NOINTERFACE);
    EXPECT_EQ(module_.DllGetClassObject(kThing, IID_IClassFactory, nullptr), E_POINTER);
}

TEST_F(ComModule, RefusesAggregationAndForeignInterfaces) {
    const auto factory = Factory();
    void* object = this;
    EXPECT_EQ(factory->CreateInstance(factory, IID_IUnknown, &object), CLASS_E_NOAGGREGATION);
    EXPECT_EQ(object, nullptr);
    EXPECT_EQ(factory->CreateInstance(nullptr, IID_IClassFactory, &object), E_NOINTERFACE);
    EXPECT_EQ(object, nullptr);
    EXPECT_EQ(factory->CreateInstance(nullptr, IID_IUnknown, nullptr), E_POINTER);
    EXPECT_EQ(things, 0);
    EXPECT_EQ(module_.GetLockCount(), 1);
}

TEST_F(ComModule, TurnsWhatAConstructorThrowsIntoAResult) {
    onConstruction = [] { throw std::bad_alloc(); };
    EXPECT_EQ(Create(), E_OUTOFMEMORY);
    onConstruction = [] { ATL::AtlThrow(E_ACCESSDENIED); };
    EXPECT_EQ(Create(), E_ACCESSDENIED);
    onConstruction = [] { throw std::runtime_error("no"); };
    EXPECT_EQ(Create(), E_FAIL);
    EXPECT_EQ(things, 0);
    EXPECT_EQ(module_.DllCanUnloadNow(), S_OK);
}

TEST_F(ComModule, RegistersItsClassesInTheOrderOfTheirEntries) {
    EXPECT_EQ(module_.DllRegisterServer(false), S_OK);
    EXPECT_EQ(module_.DllUnregisterServer(false), S_OK);
    EXPECT_EQ(registrations, (std::vector<std::string>{"+Thing", "+Other", "-Thing", "-Other"}));
}

TEST_F(ComModule, ReturnsTheFirstFailureOfRegistrationAtOnce) {
    registrationResult = E_ACCESSDENIED;
    EXPECT_EQ(module_.DllRegisterServer(), E_ACCESSDENIED);
    EXPECT_EQ(module_.DllUnregisterServer(), E_ACCESSDENIED);
    EXPECT_EQ(registrations, (std::vector<std::string>{"+Thing", "-Thing"}));
}

TEST_F(ComModule, RegistersUnderTheSystemsLocaleAndRestoresTheThreads) {
    const LCID german = MAKELCID(MAKELANGID(LANG_GERMAN, SUBLANG_GERMAN), SORT_DEFAULT);
    const LCID system = GetSystemDefaultLCID();
    ASSERT_NE(german, system);
    for (const HRESULT result : {S_OK, E_FAIL}) {
        registrationResult = result;
        SetThreadLocale(german);
        EXPECT_EQ(module_.DllRegisterServer(false), result);
        EXPECT_EQ(registrationLocale, system);
        EXPECT_EQ(GetThreadLocale(), german);
        EXPECT_EQ(module_.DllUnregisterServer(false), result);
        EXPECT_EQ(registrationLocale, system);
        EXPECT_EQ(GetThreadLocale(), german);
    }
    SetThreadLocale(system);
}

TEST_F(ComModule, AttachFailsAfterAFailedStartOfTheModule) {
    EXPECT_TRUE(module_.DllMain(DLL_PROCESS_ATTACH, nullptr));
    ATL::CAtlBaseModule::m_bInitFailed = true;
    EXPECT_FALSE(module_.DllMain(DLL_PROCESS_ATTACH, nullptr));
    EXPECT_TRUE(module_.DllMain(DLL_PROCESS_DETACH, nullptr));
    ATL::CAtlBaseModule::m_bInitFailed = false;
}

TEST_F(ComModule, WithoutItsTypeLibraryDispatchReturnsWhatTheSystemSays) {
    IDispatchPtr object;
    ASSERT_EQ(Factory()->CreateInstance(nullptr, IID_PPV_ARGS(&object)), S_OK);
    UINT count = 0;
    EXPECT_EQ(object->GetTypeInfoCount(&count), S_OK);
    EXPECT_EQ(count, 1u);
    ITypeInfo* info = nullptr;
    EXPECT_EQ(object->GetTypeInfo(0, 0, &info), TYPE_E_LIBNOTREGISTERED);
    EXPECT_EQ(object->GetTypeInfo(1, 0, &info), DISP_E_BADINDEX);
    wchar_t name[] = L"OnConnection";
    wchar_t* names[] = {name};
    DISPID id = 0;
    EXPECT_EQ(object->GetIDsOfNames(IID_NULL, names, 1, 0, &id), TYPE_E_LIBNOTREGISTERED);
    DISPPARAMS none = {};
    EXPECT_EQ(object->Invoke(1, IID_NULL, 0, DISPATCH_METHOD, &none, nullptr, nullptr, nullptr),
              TYPE_E_LIBNOTREGISTERED);
}

} // namespace
