// The DLL as Windows meets it: registered by regsvr32, created by its ProgID, loaded and unloaded.
#include "platform/Windows.h"

#include <comdef.h>
#include <gtest/gtest.h>
#include <string>

#include "platform/atl/atlbase.h"
#include "platform/outlook/Extensibility.h"
#include "tests/support/RegistryDump.h"

namespace {

using test_support::DumpRegistry;

_COM_SMARTPTR_TYPEDEF(_IDTExtensibility2, __uuidof(_IDTExtensibility2));
_COM_SMARTPTR_TYPEDEF(IDispatch, __uuidof(IDispatch));
_COM_SMARTPTR_TYPEDEF(ITypeLib, __uuidof(ITypeLib));
_COM_SMARTPTR_TYPEDEF(ITypeInfo, __uuidof(ITypeInfo));

constexpr CLSID kConnect = {0xF7A9E3A1, 0x9D13, 0x4D56, {0x93, 0x3D, 0x5E, 0x5D, 0x79, 0x8C, 0xB0, 0x42}};
constexpr GUID kLibrary = {0xBE895505, 0xBEB0, 0x4CF5, {0xAD, 0x15, 0x5A, 0x54, 0x84, 0xEC, 0xD3, 0x36}};
const std::wstring kConnectKey = L"CLSID\\{F7A9E3A1-9D13-4D56-933D-5E5D798CB042}";
const std::wstring kLibraryKey = L"TypeLib\\{BE895505-BEB0-4CF5-AD15-5A5484ECD336}";

std::wstring PluginPath() {
    wchar_t path[MAX_PATH];
    GetFullPathNameW(PLUGIN_FILE, MAX_PATH, path, nullptr);
    return path;
}

DWORD Regsvr32(const std::wstring& options) {
    std::wstring command = L"regsvr32.exe /s " + options + L"\"" + PluginPath() + L"\"";
    STARTUPINFOW startup = {};
    startup.cb = sizeof(startup);
    PROCESS_INFORMATION process = {};
    if (!CreateProcessW(nullptr, command.data(), nullptr, nullptr, FALSE, 0, nullptr, nullptr, &startup, &process)) {
        return GetLastError();
    }
    WaitForSingleObject(process.hProcess, INFINITE);
    DWORD code = 0;
    GetExitCodeProcess(process.hProcess, &code);
    CloseHandle(process.hThread);
    CloseHandle(process.hProcess);
    return code;
}

std::wstring Classes(const std::wstring& key) {
    return DumpRegistry(HKEY_CLASSES_ROOT, key);
}

/// A machine on which the DLL is not registered, before and after.
class Registration : public testing::Test {
protected:
    Registration() { Clear_(); }
    ~Registration() override { Clear_(); }

    void ExpectNothingRegistered() const {
        EXPECT_EQ(Classes(L"OutlookQLTPlugin.Connect"), L"");
        EXPECT_EQ(Classes(L"OutlookQLTPlugin64.Connect"), L"");
        EXPECT_EQ(Classes(kConnectKey), L"");
        EXPECT_EQ(Classes(kLibraryKey), L"");
    }

private:
    static void Clear_() {
        for (const auto& key : {std::wstring(L"OutlookQLTPlugin.Connect"), std::wstring(L"OutlookQLTPlugin64.Connect"),
                                kConnectKey, kLibraryKey}) {
            test_support::RemoveRegistryKey(HKEY_CLASSES_ROOT, key);
        }
    }
};

/// The DLL, loaded for as long as the object lives.
class Plugin {
public:
    Plugin() : module_(LoadLibraryW(PluginPath().c_str())) {}
    ~Plugin() { FreeLibrary(module_); }
    Plugin(const Plugin&) = delete;
    Plugin& operator=(const Plugin&) = delete;

    HMODULE Get() const { return module_; }
    template <class... Arguments>
    HRESULT Call(const char* name, Arguments... arguments) const {
        using Function = HRESULT STDMETHODCALLTYPE(Arguments...);
        return reinterpret_cast<Function*>(reinterpret_cast<void*>(GetProcAddress(module_, name)))(arguments...);
    }

private:
    HMODULE module_;
};

/// The thread's apartment, as Outlook's UI thread has it.
class Apartment {
public:
    Apartment() { EXPECT_EQ(CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED), S_OK); }
    ~Apartment() { CoUninitialize(); }
    Apartment(const Apartment&) = delete;
    Apartment& operator=(const Apartment&) = delete;
};

TEST_F(Registration, WritesTheClassItsTwoProgIdsAndTheTypeLibrary) {
    EXPECT_EQ(Regsvr32(L""), 0u);
    EXPECT_EQ(Classes(L"OutlookQLTPlugin.Connect"), L"[]\n"
                                                    L"@ = s Connect Class\n"
                                                    L"[CLSID]\n"
                                                    L"@ = s {F7A9E3A1-9D13-4D56-933D-5E5D798CB042}\n");
    EXPECT_EQ(Classes(L"OutlookQLTPlugin64.Connect"), L"[]\n"
                                                      L"@ = s Connect Class\n"
                                                      L"[CLSID]\n"
                                                      L"@ = s {F7A9E3A1-9D13-4D56-933D-5E5D798CB042}\n");
    EXPECT_EQ(Classes(kConnectKey), L"[]\n"
                                    L"@ = s Connect Class\n"
                                    L"[InprocServer32]\n"
                                    L"@ = s " +
                                        PluginPath() +
                                        L"\n"
                                        L"ThreadingModel = s Apartment\n"
                                        L"[ProgID]\n"
                                        L"@ = s OutlookQLTPlugin.Connect\n"
                                        L"[Programmable]\n"
                                        L"[TypeLib]\n"
                                        L"@ = s {BE895505-BEB0-4CF5-AD15-5A5484ECD336}\n"
                                        L"[VersionIndependentProgID]\n"
                                        L"@ = s OutlookQLTPlugin.Connect\n");
    const std::wstring library = PluginPath();
    EXPECT_EQ(Classes(kLibraryKey), L"[]\n"
                                    L"[1.0]\n"
                                    L"@ = s OutlookQLTPlugin 1.0 Type Library\n"
                                    L"[1.0\\0]\n"
                                    L"[1.0\\0\\win64]\n"
                                    L"@ = s " +
                                        library +
                                        L"\n"
                                        L"[1.0\\FLAGS]\n"
                                        L"@ = s 8\n"
                                        L"[1.0\\HELPDIR]\n"
                                        L"@ = s " +
                                        library.substr(0, library.rfind(L'\\')) + L"\n");
}

TEST_F(Registration, IsRemovedWithoutATraceAndSparesOtherClasses) {
    ASSERT_EQ(Regsvr32(L""), 0u);
    EXPECT_EQ(Regsvr32(L"/u "), 0u);
    ExpectNothingRegistered();
    // The system's standard marshaller: any class of others.
    EXPECT_NE(Classes(L"CLSID\\{00000320-0000-0000-C000-000000000046}"), L"");
}

TEST_F(Registration, CanBeRepeated) {
    ASSERT_EQ(Regsvr32(L""), 0u);
    const std::wstring once = Classes(kConnectKey);
    EXPECT_EQ(Regsvr32(L""), 0u);
    EXPECT_EQ(Classes(kConnectKey), once);
}

TEST_F(Registration, HoldsNothingForTheUserAloneAndNoKeyOfOutlooks) {
    const std::wstring addIns = L"Software\\Microsoft\\Office\\Outlook\\Addins\\OutlookQLTPlugin.Connect";
    ASSERT_EQ(Regsvr32(L""), 0u);
    EXPECT_EQ(DumpRegistry(HKEY_CURRENT_USER, L"Software\\Classes\\OutlookQLTPlugin.Connect"), L"");
    EXPECT_EQ(DumpRegistry(HKEY_CURRENT_USER, L"Software\\Classes\\" + kConnectKey), L"");
    EXPECT_EQ(DumpRegistry(HKEY_CURRENT_USER, addIns), L"");
    EXPECT_EQ(DumpRegistry(HKEY_LOCAL_MACHINE, addIns), L"");
}

TEST_F(Registration, MakesTheClassCreatableByBothProgIds) {
    ASSERT_EQ(Regsvr32(L""), 0u);
    const Apartment apartment;
    for (const auto* name : {L"OutlookQLTPlugin.Connect", L"OutlookQLTPlugin64.Connect"}) {
        CLSID classId = {};
        ASSERT_EQ(CLSIDFromProgID(name, &classId), S_OK);
        EXPECT_EQ(classId, kConnect);
        _IDTExtensibility2Ptr addIn;
        ASSERT_EQ(CoCreateInstance(classId, nullptr, CLSCTX_INPROC_SERVER, IID_PPV_ARGS(&addIn)), S_OK);
        EXPECT_EQ(addIn->OnConnection(nullptr, ext_cm_Startup, nullptr, nullptr), S_FALSE);
        IDispatchPtr dispatch = addIn;
        EXPECT_NE(dispatch.GetInterfacePtr(), nullptr);
    }
}

TEST_F(Registration, FailureIsReturnedToTheCaller) {
    const Plugin plugin;
    // Nothing can be written below a volatile key but volatile keys.
    HKEY key = nullptr;
    ASSERT_EQ(RegCreateKeyExW(HKEY_CLASSES_ROOT, L"OutlookQLTPlugin.Connect", 0, nullptr, REG_OPTION_VOLATILE, KEY_READ,
                              nullptr, &key, nullptr),
              ERROR_SUCCESS);
    RegCloseKey(key);
    EXPECT_EQ(plugin.Call("DllRegisterServer"), HRESULT_FROM_WIN32(ERROR_CHILD_MUST_BE_VOLATILE));
    EXPECT_EQ(Classes(kConnectKey), L"");
    EXPECT_EQ(Classes(kLibraryKey), L"");
}

TEST_F(Registration, OfATypeLibraryGoesThroughTheUsersFunctionsWhenTheSwitchIsOn) {
    const Plugin plugin;
    ATL::AtlSetPerUserRegistration(true);
    EXPECT_EQ(ATL::AtlRegisterTypeLib(plugin.Get()), S_OK);
    EXPECT_NE(Classes(kLibraryKey), L"");
    EXPECT_EQ(ATL::AtlUnRegisterTypeLib(plugin.Get()), S_OK);
    EXPECT_EQ(Classes(kLibraryKey), L"");
    ATL::AtlSetPerUserRegistration(false);
}

TEST(Plugin, CanBeUnloadedOnlyWhileNoObjectIsAlive) {
    const Plugin plugin;
    EXPECT_EQ(plugin.Call("DllCanUnloadNow"), S_OK);
    IClassFactory* factory = nullptr;
    ASSERT_EQ(plugin.Call("DllGetClassObject", &kConnect, &IID_IClassFactory, &factory), S_OK);
    EXPECT_EQ(plugin.Call("DllCanUnloadNow"), S_FALSE);
    _IDTExtensibility2Ptr addIn;
    ASSERT_EQ(factory->CreateInstance(nullptr, IID_PPV_ARGS(&addIn)), S_OK);
    factory->Release();
    EXPECT_EQ(plugin.Call("DllCanUnloadNow"), S_FALSE);
    addIn = nullptr;
    EXPECT_EQ(plugin.Call("DllCanUnloadNow"), S_OK);
}

TEST(Plugin, HasNoOtherClass) {
    const Plugin plugin;
    void* object = nullptr;
    EXPECT_EQ(plugin.Call("DllGetClassObject", &kLibrary, &IID_IClassFactory, &object), CLASS_E_CLASSNOTAVAILABLE);
}

TEST(Plugin, CanBeLoadedAgainAfterItsUnload) {
    for (int round = 0; round < 2; ++round) {
        {
            const Plugin plugin;
            ASSERT_NE(plugin.Get(), nullptr);
            IClassFactory* factory = nullptr;
            ASSERT_EQ(plugin.Call("DllGetClassObject", &kConnect, &IID_IClassFactory, &factory), S_OK);
            _IDTExtensibility2Ptr addIn;
            ASSERT_EQ(factory->CreateInstance(nullptr, IID_PPV_ARGS(&addIn)), S_OK);
            EXPECT_EQ(addIn->OnStartupComplete(nullptr), S_OK);
            factory->Release();
        }
        EXPECT_EQ(GetModuleHandleW(L"OutlookQLTPlugin.dll"), nullptr);
    }
}

TEST(Plugin, TypeLibraryHoldsTheClassAlone) {
    ITypeLibPtr library;
    ASSERT_EQ(LoadTypeLibEx(PluginPath().c_str(), REGKIND_NONE, &library), S_OK);
    TLIBATTR* attributes = nullptr;
    ASSERT_EQ(library->GetLibAttr(&attributes), S_OK);
    EXPECT_EQ(attributes->guid, kLibrary);
    EXPECT_EQ(attributes->wMajorVerNum, 1);
    EXPECT_EQ(attributes->wMinorVerNum, 0);
    library->ReleaseTLibAttr(attributes);
    _bstr_t name, help;
    ASSERT_EQ(library->GetDocumentation(-1, name.GetAddress(), help.GetAddress(), nullptr, nullptr), S_OK);
    EXPECT_STREQ(name, L"OutlookQLTPlugin");
    EXPECT_STREQ(help, L"OutlookQLTPlugin 1.0 Type Library");

    ASSERT_EQ(library->GetTypeInfoCount(), 1u);
    ITypeInfoPtr connect;
    ASSERT_EQ(library->GetTypeInfoOfGuid(kConnect, &connect), S_OK);
    TYPEATTR* type = nullptr;
    ASSERT_EQ(connect->GetTypeAttr(&type), S_OK);
    EXPECT_EQ(type->typekind, TKIND_COCLASS);
    connect->ReleaseTypeAttr(type);
    ASSERT_EQ(connect->GetDocumentation(-1, name.GetAddress(), help.GetAddress(), nullptr, nullptr), S_OK);
    EXPECT_STREQ(name, L"Connect");
    EXPECT_STREQ(help, L"Connect Class");
}

TEST(Plugin, CarriesItsNameAndVersion) {
    const Plugin plugin;
    wchar_t text[64];
    ASSERT_GT(LoadStringW(plugin.Get(), 100, text, 64), 0);
    EXPECT_STREQ(text, L"AddIn");

    DWORD ignored = 0;
    const DWORD size = GetFileVersionInfoSizeW(PluginPath().c_str(), &ignored);
    ASSERT_GT(size, 0u);
    std::string info(size, '\0');
    ASSERT_TRUE(GetFileVersionInfoW(PluginPath().c_str(), 0, size, info.data()));
    const auto value = [&](const std::wstring& name) {
        void* found = nullptr;
        UINT length = 0;
        VerQueryValueW(info.data(), (L"\\StringFileInfo\\040904B0\\" + name).c_str(), &found, &length);
        return std::wstring(found == nullptr ? L"" : static_cast<const wchar_t*>(found));
    };
    EXPECT_EQ(value(L"OriginalFilename"), L"OutlookQLTPlugin.dll");
    EXPECT_EQ(value(L"FileVersion"), PLUGIN_VERSION);
    EXPECT_EQ(value(L"ProductVersion"), PLUGIN_VERSION);
}

} // namespace
