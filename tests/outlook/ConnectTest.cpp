#include "agent/apps/outlook/Connect.h"

#include <functional>
#include <iterator>
#include <optional>

#include "agent/apps/outlook/GlobalConfig.h"
#include "agent/apps/outlook/WorkerThread.h"
#include "foundation/AutoHandle.h"
#include "stand-ins/agent/Agent.h"
#include "tests/outlook/OutlookTest.h"
#include "tests/support/FailingLog.h"
#include "tests/support/MessageBox.h"
#include "tests/support/ReplacedImport.h"

namespace outlook_tests {
namespace {

using Texts = std::vector<std::wstring>;

/// Objects keep a module loaded: here it is that of the test program.
class TestModule : public ATL::CAtlDllModuleT<TestModule> {};
TestModule module;

constexpr wchar_t kGotItem[] = L"OnMailSend:Got an Outlook item for inspection.calling InspectItemBeforeSending";
constexpr wchar_t kController[] =
    L" InspectItemBeforeSending-----------------------------------------------------------------";
constexpr wchar_t kCrashed[] = L"CConnect::OnDisconnection crashed for Unknown error";

_COM_SMARTPTR_TYPEDEF(_IDTExtensibility2, __uuidof(_IDTExtensibility2));

class ConnectTest : public OutlookTest {
protected:
    ConnectTest() {
        vorlek::GlobalConfig::SetOutlookApplication({});
        EXPECT_EQ(ATL::CComCreator<ATL::CComObject<vorlek::CConnect>>::CreateInstance(
                      nullptr, __uuidof(_IDTExtensibility2), reinterpret_cast<void**>(&addIn)),
                  S_OK);
        log.Clear();
    }
    ~ConnectTest() override {
        outlook->Failures().Clear();
        if (addIn) {
            Disconnect();
        }
    }

    HRESULT Connect() { return Connect(outlook->Application()); }
    HRESULT Connect(IDispatch* application) {
        return addIn->OnConnection(application, ext_cm_Startup, nullptr, nullptr);
    }
    HRESULT Disconnect() { return addIn->OnDisconnection(ext_dm_UserClosed, nullptr); }
    Texts Infos() const { return log.Texts(L"INFO"); }
    std::size_t EventsSeen() const {
        std::size_t count = 0;
        for (const auto& text : Infos()) {
            count += text == kGotItem;
        }
        return count;
    }
    stand_ins::DispatchPtr Mail() {
        return outlook->NewMail(
            {.subject = L"Hello", .body = L"Text", .recipients = {{.address = L"receiver@example.com"}}});
    }

    _IDTExtensibility2Ptr addIn;
};

/// A failure of one kind, and what the border makes of it.
struct Failure {
    const char* name;
    std::function<void()> raise;
    std::wstring text; ///< its own
};

const Failure kFailures[] = {
    {"Exception", [] { throw vorlek::IOException(L"Disk.cpp", 7, L"vorlek::Disk::Read", L"broken"); },
     L"Disk.cpp(7): vorlek::Disk::Read: IOException: broken"},
    {"ComError", [] { throw _com_error(E_ACCESSDENIED); }, ErrorText(E_ACCESSDENIED)},
    {"StandardException", [] { throw std::runtime_error("standard"); }, L"standard"},
    {"AnythingElse", [] { throw 42; }, L""},
};

stand_ins::Faults::Action Raise(const Failure& failure) {
    return [&failure](const stand_ins::Call&) -> std::optional<_variant_t> {
        failure.raise();
        return std::nullopt;
    };
}

/// What loading and unloading write for each kind.
std::wstring ConnectionLine(std::size_t kind) {
    const std::wstring phrases[] = {L"", L"Caught a com exception: ", L"", kCrashed};
    return phrases[kind] + kFailures[kind].text;
}

std::wstring MailSendLine(std::size_t kind) {
    const std::wstring phrases[] = {L"OnMailSend:ex=", L"OnMailSend:Caught a com exception:err= ",
                                    L"OnMailSend:ex.what=", L"CConnect::OnMailSend crashed for Unknown error"};
    return phrases[kind] + kFailures[kind].text;
}

/// Answers the boxes about unsent mail while the body runs; their texts.
Texts BoxesDuring(const std::function<void()>& body) {
    return test_support::BoxesDuring(L"Microsoft Outlook", body);
}

TEST_F(ConnectTest, ConnectsToOutlookBeforeItSaysThatItIsLoaded) {
    EXPECT_EQ(Connect(), S_OK);
    EXPECT_EQ(Infos(),
              (Texts{L"Outlook plug-in started to load...", L"Initializing OutlookController",
                     L"Initializiation of OutlookController finished.",
                     L"Sending items that were in the middle of inspection when Outlook was closed.",
                     L"Outlook is embedded - skipping resending of inspected items", L"Outlook plug-in was loaded"}));
    EXPECT_EQ(Errors(), Texts{});
    EXPECT_TRUE(outlook->Calls().Before(L"Application.Advise", L"Application.Session"));
    const auto held = vorlek::GlobalConfig::GetOutlookApplication();
    EXPECT_EQ(held.GetInterfacePtr(),
              Outlook::_ApplicationPtr(outlook->Application().GetInterfacePtr()).GetInterfacePtr());
}

TEST_F(ConnectTest, LinesBearTheNameOfTheClass) {
    Connect();
    EXPECT_TRUE(log.Lines().front().logger.ends_with(L"vorlek.CConnect"));
}

TEST_F(ConnectTest, StaysIdleInAProgramThatIsNoOutlook) {
    EXPECT_EQ(Connect(Mail()), S_FALSE);
    EXPECT_EQ(Connect(nullptr), S_FALSE);
    outlook->Failures().Fail(L"Application.QueryInterface _Application", E_NOINTERFACE);
    EXPECT_EQ(Connect(), S_FALSE);
    EXPECT_EQ(Infos(), Texts(3, L"Outlook plug-in started to load..."));
    EXPECT_EQ(Errors(), Texts{});
    EXPECT_EQ(outlook->Calls().Count(L"Application.FindConnectionPoint"), 0u);
    EXPECT_EQ(outlook->Calls().Count(L"Application.Session"), 0u);
    EXPECT_EQ(vorlek::GlobalConfig::GetOutlookApplication().GetInterfacePtr(), nullptr);
}

TEST_F(ConnectTest, FailureToAskForTheApplicationIsLoggedAndStillCountsAsLoaded) {
    outlook->Failures().Fail(L"Application.QueryInterface _Application", E_ACCESSDENIED);
    EXPECT_EQ(Connect(), S_OK);
    EXPECT_EQ(Errors(), Texts{L"Caught a com exception: " + ErrorText(E_ACCESSDENIED)});
    EXPECT_EQ(Infos(), (Texts{L"Outlook plug-in started to load...", L"Outlook plug-in was loaded"}));
    EXPECT_EQ(vorlek::GlobalConfig::GetOutlookApplication().GetInterfacePtr(), nullptr);
}

TEST_F(ConnectTest, ProfileWithoutADraftsFolderStillCountsAsLoaded) {
    outlook->Failures().Answer(L"NameSpace.GetDefaultFolder", stand_ins::NoObject(), 2);
    EXPECT_EQ(Connect(), S_OK);
    EXPECT_EQ(Errors(),
              (Texts{L"Failed to retrieve Drafts folder.", L"Caught a com exception: " + ErrorText(E_POINTER)}));
    EXPECT_EQ(Infos(), (Texts{L"Outlook plug-in started to load...", L"Initializing OutlookController",
                              L"Outlook plug-in was loaded"}));
}

TEST_F(ConnectTest, FailureToAdviseIsNotLookedAt) {
    outlook->Failures().Fail(L"Application.Advise", E_FAIL);
    EXPECT_EQ(Connect(), S_OK);
    EXPECT_EQ(Errors(), Texts{});
    EXPECT_EQ(outlook->Calls().Count(L"Application.Session"), 1u);
    outlook->RaiseItemSend(Mail());
    EXPECT_EQ(EventsSeen(), 0u);
}

TEST_F(ConnectTest, AdviseThatFailedCanBeMadeUpFor) {
    outlook->Failures().Fail(L"Application.Advise", E_FAIL, 1);
    Connect();
    EXPECT_EQ(Connect(), S_OK);
    EXPECT_EQ(Errors(), Texts{});
}

TEST_F(ConnectTest, SecondConnectionIsRefusedInsideAndLeavesTheFirst) {
    Connect();
    log.Clear();
    outlook->Calls().Clear();
    EXPECT_EQ(Connect(), S_OK);
    EXPECT_EQ(Errors(), Texts{kCrashed});
    EXPECT_EQ(Infos(), (Texts{L"Outlook plug-in started to load...", L"Outlook plug-in was loaded"}));
    EXPECT_EQ(outlook->Calls().Count(L"Application.Advise"), 0u);
    EXPECT_EQ(outlook->Calls().Count(L"Application.Session"), 0u);
}

TEST_F(ConnectTest, ConnectsAgainAfterADisconnection) {
    Connect();
    Disconnect();
    log.Clear();
    EXPECT_EQ(Connect(), S_OK);
    EXPECT_EQ(Errors(), Texts{});
    EXPECT_EQ(outlook->Calls().Count(L"Application.Advise"), 2u);
}

TEST_F(ConnectTest, DisconnectionEndsTheEvents) {
    Connect();
    log.Clear();
    EXPECT_EQ(Disconnect(), S_OK);
    EXPECT_EQ(Infos(), Texts{L"Outlook plug-in was unloaded"});
    EXPECT_EQ(Errors(), Texts{});
    outlook->RaiseItemSend(Mail());
    EXPECT_EQ(EventsSeen(), 0u);
}

TEST_F(ConnectTest, DisconnectionGivesTheExplorerItsOwnProcedureBack) {
    const stand_ins::Agent agent;
    wchar_t line[] = L"outlook.exe"; // not the test program's, in which Outlook would be embedded
    const test_support::ReplacedImport<"GetCommandLineW", decltype(GetCommandLineW)> command([&] { return line; });
    Connect();
    const auto procedure = [&] { return GetWindowLongPtrW(outlook->ExplorerWindow(), GWLP_WNDPROC); };
    const auto own = procedure();
    outlook->Send(Mail());
    EXPECT_TRUE(outlook->RunUntil([&] { return outlook->Delivered().size() == 1; }));
    EXPECT_NE(procedure(), own);
    Disconnect();
    EXPECT_EQ(procedure(), own);
}

TEST_F(ConnectTest, DisconnectionLeavesNothingThatHoldsTheAddIn) {
    const LONG before = module.GetLockCount();
    Connect();
    Disconnect();
    addIn->AddRef();
    EXPECT_EQ(addIn->Release(), 1u);
    addIn.Release();
    EXPECT_EQ(module.GetLockCount(), before - 1);
}

DWORD WINAPI WaitFor(void* event) {
    return WaitForSingleObject(event, INFINITE);
}

TEST_F(ConnectTest, DisconnectionInTheMiddleOfAnInspectionKeepsTheAddInForItsWorker) {
    const LONG before = module.GetLockCount();
    const vorlek::FileHandle end(CreateEventW(nullptr, TRUE, FALSE, nullptr));
    Connect();
    vorlek::WorkerThread::Start(WaitFor, end.Get());
    Disconnect();
    addIn.Release();
    EXPECT_EQ(module.GetLockCount(), before);
    SetEvent(end.Get());
    outlook->RunUntil([] { return vorlek::WorkerThread::Running() == 0; });
}

TEST_F(ConnectTest, DisconnectionWithoutAConnectionIsHarmless) {
    EXPECT_EQ(Disconnect(), S_OK);
    EXPECT_EQ(Disconnect(), S_OK);
    EXPECT_EQ(Infos(), Texts(2, L"Outlook plug-in was unloaded"));
    EXPECT_EQ(Errors(), Texts{});
}

TEST_F(ConnectTest, DisconnectionAfterAFailedConnectionIsHarmless) {
    outlook->Failures().Fail(L"Application.FindConnectionPoint", E_FAIL);
    outlook->Failures().Fail(L"Application.Session", E_FAIL);
    Connect();
    log.Clear();
    EXPECT_EQ(Disconnect(), S_OK);
    EXPECT_EQ(Infos(), Texts{L"Outlook plug-in was unloaded"});
    EXPECT_EQ(Errors(), Texts{});
}

TEST_F(ConnectTest, FailureToUnadviseIsNotLookedAt) {
    Connect();
    log.Clear();
    outlook->Failures().Fail(L"Application.Unadvise", E_FAIL);
    EXPECT_EQ(Disconnect(), S_OK);
    EXPECT_EQ(Infos(), Texts{L"Outlook plug-in was unloaded"});
    EXPECT_EQ(Errors(), Texts{});
}

TEST_F(ConnectTest, OtherNotificationsAreOnlyLoggedAndStandInTheSlotsThatOutlookCalls) {
    using Notification = HRESULT STDMETHODCALLTYPE(_IDTExtensibility2*, SAFEARRAY**);
    void** slots = *reinterpret_cast<void***>(addIn.GetInterfacePtr());
    for (const int slot : {9, 10, 11}) {
        EXPECT_EQ(reinterpret_cast<Notification*>(slots[slot])(addIn, nullptr), S_OK);
    }
    EXPECT_EQ(Infos(), (Texts{L"CConnect::OnAddInsUpdate was called", L"CConnect::OnStartupComplete was called",
                              L"CConnect::OnBeginShutdown was called"}));
}

TEST_F(ConnectTest, AnswersTheInterfacesThatOutlookAsksFor) {
    const auto answers = [&](REFIID iid) {
        stand_ins::UnknownPtr found;
        return addIn->QueryInterface(iid, reinterpret_cast<void**>(&found));
    };
    EXPECT_EQ(answers(IID_IUnknown), S_OK);
    EXPECT_EQ(answers(IID_IDispatch), S_OK);
    EXPECT_EQ(answers(__uuidof(_IDTExtensibility2)), S_OK);
    EXPECT_EQ(answers(vorlek::DIID_ApplicationEvents), E_NOINTERFACE); // the sink's, an object of its own
}

TEST_F(ConnectTest, VerdictOfTheAgentDecidesOverTheSend) {
    stand_ins::Agent agent;
    Connect();
    EXPECT_FALSE(outlook->RaiseItemSend(Mail(), true));
    agent.SetPolicy(stand_ins::Policy::Block());
    EXPECT_TRUE(outlook->RaiseItemSend(Mail(), false));
    EXPECT_EQ(EventsSeen(), 2u);
    EXPECT_EQ(Errors(), Texts{});
}

TEST_F(ConnectTest, WithoutAnAgentTheSendStaysStoppedAndTheUserIsToldOnce) {
    Connect();
    log.Clear();
    bool cancel = false;
    const auto boxes = BoxesDuring([&] { cancel = outlook->RaiseItemSend(Mail(), false); });
    EXPECT_TRUE(cancel);
    EXPECT_EQ(boxes, Texts{L"One message or more could not be sent.\nPlease check your Drafts folder"});
    ASSERT_FALSE(Errors().empty());
    EXPECT_TRUE(Errors().back().starts_with(L"OnMailSend:ex=")) << Errors().back();
}

/// Each kind of failure, at each of the three operations that can fail.
class ConnectFailure : public ConnectTest, public testing::WithParamInterface<std::size_t> {
protected:
    const Failure& failure_ = kFailures[GetParam()];
};

TEST_P(ConnectFailure, DuringTheStartIsLoggedAndLeavesAConnectedSink) {
    outlook->Failures().On(L"NameSpace.GetDefaultFolder", Raise(failure_));
    EXPECT_EQ(Connect(), S_OK);
    EXPECT_EQ(Errors(), Texts{ConnectionLine(GetParam())});
    EXPECT_EQ(Infos(), (Texts{L"Outlook plug-in started to load...", L"Initializing OutlookController",
                              L"Outlook plug-in was loaded"}));
    stand_ins::Agent agent;
    outlook->RaiseItemSend(Mail());
    EXPECT_EQ(EventsSeen(), 1u);
}

TEST_P(ConnectFailure, DuringRecoveryIsLoggedAndStillCountsAsLoaded) {
    const test_support::FailingLog failing(
        L"Sending items that were in the middle of inspection when Outlook was closed.", failure_.raise);
    EXPECT_EQ(Connect(), S_OK);
    EXPECT_EQ(Errors(), Texts{ConnectionLine(GetParam())});
    EXPECT_EQ(Infos().back(), L"Outlook plug-in was loaded");
}

TEST_P(ConnectFailure, DuringTheUnloadIsLogged) {
    Connect();
    log.Clear();
    outlook->Failures().On(L"Application.Unadvise", Raise(failure_));
    EXPECT_EQ(Disconnect(), S_OK);
    EXPECT_EQ(Errors(), Texts{ConnectionLine(GetParam())});
    EXPECT_EQ(Infos(), Texts{});
}

TEST_P(ConnectFailure, DuringTheDecisionStopsTheSendAndIsToldToTheUserOnce) {
    stand_ins::Agent agent;
    Connect();
    log.Clear();
    const test_support::FailingLog failing(kController, failure_.raise);
    for (const std::size_t sends : {1u, 2u}) {
        bool cancel = false;
        const auto boxes = BoxesDuring([&] { cancel = outlook->RaiseItemSend(Mail(), false); });
        EXPECT_TRUE(cancel);
        EXPECT_EQ(boxes, Texts{L"One message or more could not be sent.\nPlease check your Drafts folder"});
        EXPECT_EQ(Errors(), Texts(sends, MailSendLine(GetParam())));
    }
    EXPECT_EQ(agent.Requests().size(), 0u);
}

INSTANTIATE_TEST_SUITE_P(Kinds, ConnectFailure, testing::Range(std::size_t{0}, std::size(kFailures)),
                         [](const auto& kind) { return kFailures[kind.param].name; });

} // namespace
} // namespace outlook_tests
