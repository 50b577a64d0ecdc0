// The DLL in a process that ends, or gives it back, while threads of the add-in run.
#include <atomic>

#include <comdef.h>

#include <gtest/gtest.h>

#include "platform/outlook/Extensibility.h"
#include "stand-ins/agent/Agent.h"
#include "stand-ins/outlook/Outlook.h"
#include "tests/end-to-end/Desk.h"
#include "tests/support/ChildProcess.h"

namespace end_to_end {
namespace {

constexpr CLSID kConnect = {0xF7A9E3A1, 0x9D13, 0x4D56, {0x93, 0x3D, 0x5E, 0x5D, 0x79, 0x8C, 0xB0, 0x42}};
constexpr int kThreads = 4;
constexpr DWORD kLongMs = 20000;

using AddInPtr = _com_ptr_t<_com_IIID<_IDTExtensibility2, &IID__IDTExtensibility2>>;

/// An add-in of the DLL, which is loaded for it.
AddInPtr LoadAddIn(const std::wstring& module) {
    const HMODULE loaded = LoadLibraryW(module.c_str());
    using GetClassObject = HRESULT STDMETHODCALLTYPE(REFCLSID, REFIID, void**);
    auto* getClassObject =
        reinterpret_cast<GetClassObject*>(reinterpret_cast<void*>(GetProcAddress(loaded, "DllGetClassObject")));
    _com_ptr_t<_com_IIID<IClassFactory, &IID_IClassFactory>> factory;
    getClassObject(kConnect, IID_PPV_ARGS(&factory));
    AddInPtr addIn;
    factory->CreateInstance(nullptr, IID_PPV_ARGS(&addIn));
    return addIn;
}

DWORD WINAPI LogForEver(void* addIn) {
    for (;;) {
        static_cast<_IDTExtensibility2*>(addIn)->OnStartupComplete(nullptr);
    }
}

std::wstring EndWhileThreadsLog(const std::wstring& module) {
    AddInPtr addIn = LoadAddIn(module);
    for (int i = 0; i < kThreads; ++i) {
        CloseHandle(CreateThread(nullptr, 0, LogForEver, addIn.GetInterfacePtr(), 0, nullptr));
    }
    addIn.Detach();
    return L"ended";
}

const test_support::ChildRoleName endWhileThreadsLog(L"EndWhileThreadsLog", EndWhileThreadsLog);

bool IsLoaded() {
    return GetModuleHandleW(L"OutlookQLTPlugin.dll") != nullptr;
}

/// In a program of Outlook's name: gives the DLL back while a worker waits for the agent. What was seen of it.
std::wstring UnloadInMidInspection(const std::wstring& argument) {
    const std::size_t bar = argument.find(L'|');
    const HANDLE asked = CreateEventW(nullptr, TRUE, FALSE, nullptr);
    const HANDLE answer = CreateEventW(nullptr, TRUE, FALSE, nullptr);
    stand_ins::AgentOptions options;
    options.responder = [&](const stand_ins::Request& request) {
        if (request.method == L"Inspect") {
            SetEvent(asked);
            WaitForSingleObject(answer, kLongMs);
        }
        return std::optional<stand_ins::Answer>();
    };
    const stand_ins::Agent agent(options);
    std::wstring result;
    {
        stand_ins::Outlook outlook({.profile = argument.substr(bar + 1)});
        AddInPtr addIn = LoadAddIn(argument.substr(0, bar));
        addIn->OnConnection(outlook.Application(), ext_cm_Startup, nullptr, nullptr);
        outlook.Send(outlook.NewMail({.subject = L"Plans", .recipients = {{.address = L"ben@example.com"}}}));
        result += WaitForSingleObject(asked, kLongMs) == WAIT_OBJECT_0 ? L"asked" : L"not asked";
        addIn->OnDisconnection(ext_dm_UserClosed, nullptr);
        addIn.Release();
        FreeLibrary(GetModuleHandleW(L"OutlookQLTPlugin.dll"));
        result += IsLoaded() ? L", kept for its worker" : L", unloaded";
        SetEvent(answer);
        result += outlook.RunUntil([] { return !IsLoaded(); }, kLongMs) ? L", then unloaded" : L", still there";
        result += outlook.ItemsIn(L"Drafts").size() == 1 ? L", mail in Drafts" : L", mail lost";
    }
    CloseHandle(asked);
    CloseHandle(answer);
    return result;
}

const test_support::ChildRoleName unloadInMidInspection(L"UnloadInMidInspection", UnloadInMidInspection);

/// The same, but the user takes the add-in away and back while the first worker waits: what became of the mail, once
/// both workers have ended.
std::wstring ReconnectInMidInspection(const std::wstring& argument) {
    const std::size_t bar = argument.find(L'|');
    const HANDLE asked = CreateEventW(nullptr, TRUE, FALSE, nullptr);
    const HANDLE answer = CreateEventW(nullptr, TRUE, FALSE, nullptr);
    std::atomic<int> inspections = 0;
    stand_ins::AgentOptions options;
    options.responder = [&](const stand_ins::Request& request) {
        if (request.method == L"Inspect" && ++inspections == 1) {
            SetEvent(asked);
            WaitForSingleObject(answer, kLongMs);
        }
        return std::optional<stand_ins::Answer>();
    };
    const stand_ins::Agent agent(options);
    std::wstring result;
    {
        stand_ins::Outlook outlook({.profile = argument.substr(bar + 1)});
        AddInPtr addIn = LoadAddIn(argument.substr(0, bar));
        addIn->OnConnection(outlook.Application(), ext_cm_Startup, nullptr, nullptr);
        outlook.Send(outlook.NewMail({.subject = L"Plans", .recipients = {{.address = L"ben@example.com"}}}));
        WaitForSingleObject(asked, kLongMs);
        addIn->OnDisconnection(ext_dm_UserClosed, nullptr);
        addIn = LoadAddIn(argument.substr(0, bar));
        addIn->OnConnection(outlook.Application(), ext_cm_AfterStartup, nullptr, nullptr);
        outlook.RunUntil([&] { return outlook.Delivered().size() == 1; }, kLongMs);
        SetEvent(answer);
        addIn->OnDisconnection(ext_dm_UserClosed, nullptr);
        addIn.Release();
        for (int loaded = 0; loaded < 2; ++loaded) {
            FreeLibrary(GetModuleHandleW(L"OutlookQLTPlugin.dll"));
        }
        result += outlook.RunUntil([] { return !IsLoaded(); }, kLongMs) ? L"ended" : L"still there";
        result += L", inspected " + std::to_wstring(inspections) + L" times, sent " +
                  std::to_wstring(outlook.Delivered().size()) + L" times";
    }
    CloseHandle(asked);
    CloseHandle(answer);
    return result;
}

const test_support::ChildRoleName reconnectInMidInspection(L"ReconnectInMidInspection", ReconnectInMidInspection);

class Module : public Desk {
protected:
    static std::wstring PluginPath() { return (std::filesystem::path(L"Z:") / ADDIN_MODULE).make_preferred(); }
    /// The result of a role, played in a program of Outlook's name.
    std::wstring PlayInOutlook(const std::wstring& role) const {
        wchar_t own[MAX_PATH] = L"";
        GetModuleFileNameW(nullptr, own, MAX_PATH);
        const auto outlook = folder_ / L"OUTLOOK.EXE";
        std::filesystem::copy_file(own, outlook);
        return test_support::ChildProcess(role, PluginPath() + L"|" + (folder_ / L"profile").wstring(), outlook)
            .Result();
    }
};

TEST_F(Module, ProcessThatEndsWhileThreadsLogEnds) {
    for (int round = 0; round < 10; ++round) {
        const test_support::ChildProcess child(L"EndWhileThreadsLog", PluginPath());
        ASSERT_EQ(WaitForSingleObject(child.Handle(), kLongMs), WAIT_OBJECT_0) << "round " << round;
    }
}

TEST_F(Module, WorkerKeepsItsCodeAndItsControllerUntilItEnds) {
    EXPECT_EQ(PlayInOutlook(L"UnloadInMidInspection"), L"asked, kept for its worker, then unloaded, mail in Drafts");
    EXPECT_EQ(Ledger().size(), 1u);
}

TEST_F(Module, MailInHandIsSentOnceWhenTheAddInGoesAndComesBack) {
    EXPECT_EQ(PlayInOutlook(L"ReconnectInMidInspection"), L"ended, inspected 2 times, sent 1 times");
    EXPECT_TRUE(Ledger().empty());
}

} // namespace
} // namespace end_to_end
