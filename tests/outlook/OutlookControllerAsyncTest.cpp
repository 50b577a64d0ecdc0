// The inspection beside the send event, from the cancelled send to the end of the worker.
#include "foundation/RegistryKey.h"
#include "stand-ins/outlook/Figures.h"
#include "tests/outlook/AsyncTest.h"
#include "tests/support/FailingLog.h"
#include "tests/support/ReplacedImport.h"

namespace vorlek {
namespace {

using outlook_tests::AsyncTest;
using outlook_tests::ErrorText;
using outlook_tests::Hold;
using outlook_tests::kMail;
using stand_ins::Policy;
using stand_ins::SendResult;
using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::SizeIs;
using testing::StartsWith;

const std::wstring kUnsentText = L"One message or more could not be sent.\nPlease check your Drafts folder";
const std::wstring kModifiedText = L"The mail item was modified during inspection and was not sent.";
const std::wstring kFinished = L"Finished Async inspection successfully.";

class AsyncInspectionTest : public AsyncTest {
protected:
    /// The mail that waits in Drafts, changed and saved as by its user.
    void EditDraft(const SendResult& result) {
        const auto session = stand_ins::GetObject(outlook->Application(), L"Session");
        const stand_ins::DispatchPtr mail(
            stand_ins::Invoke(session, L"GetItemFromID", {_variant_t(result.entryId.c_str())}));
        stand_ins::Put(mail, L"Body", L"Changed my mind.");
        stand_ins::Invoke(mail, L"Save");
    }
};

TEST_F(AsyncInspectionTest, TheSendIsCancelledAtOnceAndTheMailLeavesAfterTheAnswer) {
    Hold hold;
    const stand_ins::Agent agent(hold.Inspections());
    const SendResult result = Send();
    EXPECT_EQ(result.outcome, SendResult::Outcome::Stopped);
    EXPECT_FALSE(outlook->IsOpen(result.entryId));
    EXPECT_THAT(outlook->ItemsIn(L"Drafts"), SizeIs(1));
    EXPECT_THAT(Ledger(), ElementsAre(result.entryId));
    EXPECT_THAT(outlook->Delivered(), IsEmpty());
    hold.Open();
    ASSERT_TRUE(WorkersEnd());
    EXPECT_TRUE(stand_ins::Outlook::HasLeft(result));
    EXPECT_THAT(outlook->Delivered(), SizeIs(1));
    EXPECT_THAT(outlook->ItemsIn(L"Drafts"), IsEmpty());
    EXPECT_THAT(Ledger(), IsEmpty());
    EXPECT_FALSE(peer.Remembers(result.entryId)); // the memory was spent inside the send
    EXPECT_THAT(Errors(), IsEmpty());
    EXPECT_THAT(Methods(agent), ElementsAre(L"GetExecutionMode", L"Inspect", L"GetExecutionMode"));
}

TEST_F(AsyncInspectionTest, TheLedgerComesFirstThenTheWindowsThenTheGathering) {
    const stand_ins::Agent agent;
    Send();
    ASSERT_TRUE(WorkersEnd());
    const std::vector<std::wstring> steps = {
        L"Non-embedded Outlook -> Sending for \"async\" inspection. Stopping the send process until inspection ends.",
        L"Finished gathering information for current message.",
        L"Got decision: 1",
        L"Message can be sent",
        L"The email wasn't blocked - make sure it wasn't modified.",
        L"Sending WM_SEND_MAIL",
        L"Got WM_SEND_MAIL",
        L"now doing the handler->send()",
        L"IsSentByPlugin_?",
        L"Item was already inspected by the plugin so we don't reinspect it",
        L"InspectItemBeforeSending:success on async sentbyplugin.returning false",
        L"after handler->send. Item was sent.",
        kFinished,
        std::wstring(76, L'<')};
    std::size_t next = 0;
    for (const auto& text : log.Texts(L"INFO")) {
        next += next < steps.size() && text == steps[next] ? 1 : 0;
    }
    EXPECT_EQ(next, steps.size()) << "missing: " << testing::PrintToString(steps[std::min(next, steps.size() - 1)]);
    EXPECT_EQ(Logged(L"INFO", std::wstring(76, L'>')), 1u);
    EXPECT_EQ(Logged(L"INFO", L"Started Async inspection."), 1u);
    const auto& calls = outlook->Calls();
    EXPECT_TRUE(calls.Before(L"Inspector.Close", L"MailItem.Recipients"));
    EXPECT_TRUE(calls.Before(L"Inspector.Close", L"MailItem.LastModificationTime"));
}

TEST_F(AsyncInspectionTest, TheItemIsInTheLedgerBeforeItsWindowCloses) {
    const stand_ins::Agent agent;
    std::size_t listed = 0;
    HWND subclassed = outlook->ExplorerWindow();
    outlook->Failures().On(L"Inspector.Close", [&](const stand_ins::Call&) {
        listed = Ledger().size();
        subclassed = OutlookControllerPeer::SubclassedWindow();
        return std::optional<_variant_t>();
    });
    Send();
    ASSERT_TRUE(WorkersEnd());
    EXPECT_EQ(listed, 1u);
    EXPECT_EQ(subclassed, nullptr); // the close comes before the window is subclassed
    EXPECT_EQ(OutlookControllerPeer::SubclassedWindow(), outlook->ExplorerWindow());
}

TEST_F(AsyncInspectionTest, TheLedgerHoldsTheSentItemsIdBesideTheItems) {
    Hold hold;
    const stand_ins::Agent agent(hold.Inspections());
    const SendResult result = Send();
    EXPECT_EQ(CommonUtils::GetSentItemId(result.entryId, nullptr), result.entryId);
    hold.Open();
    ASSERT_TRUE(WorkersEnd());
}

TEST_F(AsyncInspectionTest, TheItemIsOnlyReadOnTheWorkersThread) {
    const stand_ins::Agent agent;
    Send();
    ASSERT_TRUE(WorkersEnd());
    std::vector<std::wstring> members;
    for (const auto& call : outlook->Calls().All()) {
        if (call.thread != GetCurrentThreadId()) {
            members.push_back(call.member);
        }
    }
    const auto search = {L"Application.Session get", L"NameSpace.GetItemFromID", L"NameSpace.GetItemFromID",
                         L"MailItem.LastModificationTime get"};
    std::vector<std::wstring> expected(search.begin(), search.end());
    expected.insert(expected.end(), search.begin(), search.end());
    EXPECT_EQ(members, expected);
}

TEST_F(AsyncInspectionTest, OutlooksLoopRunsWhileTheAgentThinks) {
    constexpr UINT kHeartbeat = WM_APP + 1;
    const HWND window = outlook->ExplorerWindow();
    std::atomic<bool> answered = false;
    Hold hold;
    hold.Open();
    const stand_ins::Agent agent(hold.Inspections([&](const stand_ins::Request&) {
        // The agent answers only once Outlook's thread has: if that waited for the agent, both would for ever.
        DWORD_PTR result = 0;
        answered = SendMessageTimeoutW(window, kHeartbeat, 0, 0, SMTO_NORMAL, 20000, &result) != 0;
    }));
    Send();
    ASSERT_TRUE(WorkersEnd());
    EXPECT_TRUE(answered);
    EXPECT_THAT(outlook->Delivered(), SizeIs(1));
}

TEST_F(AsyncInspectionTest, TheAgentIsShownTheMailAsItWasAtTheSend) {
    Hold hold;
    const stand_ins::Agent agent(hold.Inspections());
    Send();
    hold.Open();
    ASSERT_TRUE(WorkersEnd());
    EXPECT_THAT(agent.Requests().at(1).param, HasSubstr(L"The plans of the year."));
}

TEST_F(AsyncInspectionTest, ABlockedMailComesBackToTheScreen) {
    const stand_ins::Agent agent(With(Policy::Block()));
    const SendResult result = Send();
    const auto boxes = BoxesDuring([&] { ASSERT_TRUE(AllEnds()); });
    EXPECT_THAT(boxes, IsEmpty());
    EXPECT_TRUE(outlook->IsOpen(result.entryId));
    EXPECT_THAT(outlook->Delivered(), IsEmpty());
    EXPECT_THAT(Ledger(), IsEmpty());
    EXPECT_EQ(Logged(L"INFO", L"Opening (blocked) item."), 1u);
    EXPECT_EQ(Logged(L"INFO", kFinished), 1u);
    EXPECT_THAT(Errors(), IsEmpty());
}

TEST_F(AsyncInspectionTest, OfABlockedMailTheModificationTimeIsReadOnce) {
    const stand_ins::Agent agent(With(Policy::Block()));
    Send();
    ASSERT_TRUE(AllEnds());
    EXPECT_EQ(outlook->Calls().Count(L"MailItem.LastModificationTime"), 1u);
    EXPECT_FALSE(log.Has(L"INFO", L"The email wasn't blocked - make sure it wasn't modified."));
}

TEST_F(AsyncInspectionTest, TheWorkerDoesNotWaitForABlockedMailToBeShown) {
    const stand_ins::Agent agent(With(Policy::Block()));
    const SendResult result = Send();
    // Not a message is handled meanwhile.
    while (WorkerThread::Running() != 0) {
        SwitchToThread();
    }
    EXPECT_FALSE(outlook->IsOpen(result.entryId));
    stand_ins::Outlook::HandleMessages();
    EXPECT_TRUE(outlook->IsOpen(result.entryId));
}

TEST_F(AsyncInspectionTest, ABlockedMailCanBeSentAgainByItsUser) {
    stand_ins::Agent agent(With(Policy::Block()));
    const SendResult result = Send();
    ASSERT_TRUE(AllEnds());
    agent.SetPolicy({});
    const auto session = stand_ins::GetObject(outlook->Application(), L"Session");
    outlook->Send(
        stand_ins::DispatchPtr(stand_ins::Invoke(session, L"GetItemFromID", {_variant_t(result.entryId.c_str())})));
    ASSERT_TRUE(WorkersEnd());
    EXPECT_TRUE(stand_ins::Outlook::HasLeft(result));
    EXPECT_THAT(outlook->Delivered(), SizeIs(1));
}

TEST_F(AsyncInspectionTest, TheDocumentIsLoggedAtDebugOnceForAMailThatLeavesAndTwiceForABlockedOne) {
    stand_ins::Agent agent;
    const auto documents = [&] {
        std::size_t count = 0;
        for (const auto& text : log.Texts(L"DEBUG")) {
            const std::size_t at = text.find(L"<inspectorMessage ");
            if (text.starts_with(L"Inspection message of size ") && at != text.npos) {
                ++count;
                const std::size_t colon = text.find(L": ");
                EXPECT_EQ(std::stoul(text.substr(27)), text.size() - colon - 2);
            }
        }
        log.Clear();
        return count;
    };
    Send();
    ASSERT_TRUE(WorkersEnd());
    EXPECT_EQ(documents(), 1u);
    agent.SetPolicy(Policy::Block());
    Send();
    ASSERT_TRUE(AllEnds());
    EXPECT_EQ(documents(), 2u);
    log4cxx::Logger::getRootLogger()->setLevel(log4cxx::Level::getInfo());
    Send();
    ASSERT_TRUE(AllEnds());
    EXPECT_EQ(documents(), 0u);
}

TEST_F(AsyncInspectionTest, LabelsAndAttachmentsAreThoseOfTheDecisionAndItsFilesGoWithIt) {
    const std::wstring file = File(L"new.bin", "harmless");
    const stand_ins::Agent agent(With(Policy::Decision(
        L"<decision result=\"1\"><DataModifications><EmailSubject value=\"[Secret] Plans\" /><EmailAttachments>"
        L"<Attachment path=\"" +
        file + L"\" displayName=\"notice.txt\" /></EmailAttachments></DataModifications></decision>")));
    bool there = false;
    outlook->Failures().On(L"Transport.Submit", [&](const stand_ins::Call&) {
        there = std::filesystem::exists(file);
        return std::optional<_variant_t>();
    });
    Send();
    ASSERT_TRUE(WorkersEnd());
    const auto mail = outlook->Delivered().at(0);
    EXPECT_EQ(mail.subject, L"[Secret] Plans");
    ASSERT_THAT(mail.attachments, SizeIs(1));
    EXPECT_EQ(mail.attachments[0].displayName, L"notice.txt");
    EXPECT_EQ(mail.attachments[0].content, "harmless");
    EXPECT_TRUE(there);
    EXPECT_FALSE(std::filesystem::exists(file));
}

TEST_F(AsyncInspectionTest, AMailChangedMeanwhileIsToldToItsUserAndComesBack) {
    Hold hold;
    HANDLE asked = CreateEventW(nullptr, TRUE, FALSE, nullptr);
    const stand_ins::Agent agent(hold.Inspections([&](const stand_ins::Request&) { SetEvent(asked); }));
    const SendResult result = Send();
    outlook->RunUntil([&] { return WaitForSingleObject(asked, 0) == WAIT_OBJECT_0; });
    EditDraft(result);
    hold.Open();
    const auto boxes = BoxesDuring([&] { ASSERT_TRUE(AllEnds()); });
    CloseHandle(asked);
    EXPECT_THAT(boxes, ElementsAre(kModifiedText));
    EXPECT_THAT(Errors(), ElementsAre(L"The mail item was modified during the inspection!!"));
    EXPECT_THAT(outlook->Delivered(), IsEmpty());
    EXPECT_TRUE(outlook->IsOpen(result.entryId));
    EXPECT_THAT(Ledger(), IsEmpty());
    EXPECT_EQ(Logged(L"INFO", kFinished), 1u);
}

TEST_F(AsyncInspectionTest, AMailMovedMeanwhileIsSentFromThere) {
    Start({.keepsEntryIdOnMove = true});
    outlook->AddStore(L"Archive", {L"2025"});
    Hold hold;
    const stand_ins::Agent agent(hold.Inspections());
    const SendResult result = Send();
    const auto session = stand_ins::GetObject(outlook->Application(), L"Session");
    const auto archive = stand_ins::GetObject(
        stand_ins::GetObject(stand_ins::GetObject(session, L"Folders"), L"Item", {L"Archive"}), L"Folders");
    const auto target = stand_ins::GetObject(archive, L"Item", {L"2025"});
    stand_ins::Invoke(
        stand_ins::DispatchPtr(stand_ins::Invoke(session, L"GetItemFromID", {_variant_t(result.entryId.c_str())})),
        L"Move", {_variant_t(target.GetInterfacePtr())});
    hold.Open();
    ASSERT_TRUE(WorkersEnd());
    EXPECT_THAT(outlook->Delivered(), SizeIs(1));
    EXPECT_THAT(outlook->ItemsIn(L"Archive\\2025"), IsEmpty());
    EXPECT_THAT(Ledger(), IsEmpty());
    EXPECT_TRUE(log.Has(L"INFO", L"Item " + result.entryId + L" found in \\\\Archive\\2025"));
}

TEST_F(AsyncInspectionTest, AMailDeletedMeanwhileIsLostToTheAddInAndStaysListed) {
    Hold hold;
    const stand_ins::Agent agent(hold.Inspections());
    const SendResult result = Send();
    const auto session = stand_ins::GetObject(outlook->Application(), L"Session");
    stand_ins::Invoke(
        stand_ins::DispatchPtr(stand_ins::Invoke(session, L"GetItemFromID", {_variant_t(result.entryId.c_str())})),
        L"Delete");
    hold.Open();
    const auto boxes = BoxesDuring([&] { ASSERT_TRUE(AllEnds()); });
    EXPECT_THAT(boxes, IsEmpty());
    EXPECT_THAT(outlook->Delivered(), IsEmpty());
    EXPECT_THAT(Ledger(), ElementsAre(result.entryId));
    EXPECT_THAT(Errors(), Contains(StartsWith(L"Caught a vorlek exception: OutlookControllerSearch.cpp(")));
}

TEST_F(AsyncInspectionTest, AnOutlookThatRefusesForeignThreadsSendsWithoutSeeingChanges) {
    Start({.strictThreads = true});
    Hold hold;
    const stand_ins::Agent agent(hold.Inspections());
    const SendResult result = Send();
    EditDraft(result);
    hold.Open();
    ASSERT_TRUE(WorkersEnd());
    EXPECT_THAT(outlook->Delivered(), SizeIs(1));
    EXPECT_EQ(Logged(L"ERROR", L"Could not get item and last modification - returning old date"), 2u);
}

TEST_F(AsyncInspectionTest, TwoMailsAreInspectedAtOnceAndTheSecondMayFinishFirst) {
    Hold first;
    Hold second;
    stand_ins::AgentOptions options;
    options.responder = [&](const stand_ins::Request& request) {
        if (request.method == L"Inspect") {
            (request.param.find(L"The first") != request.param.npos ? first : second).Wait();
        }
        return std::optional<stand_ins::Answer>();
    };
    const stand_ins::Agent agent(options);
    auto mail = kMail;
    mail.subject = L"The first";
    const SendResult one = Send(mail);
    mail.subject = L"The second";
    const SendResult two = Send(mail);
    EXPECT_EQ(WorkerThread::Running(), 2);
    second.Open();
    EXPECT_TRUE(outlook->RunUntil([&] { return stand_ins::Outlook::HasLeft(two); }));
    EXPECT_FALSE(stand_ins::Outlook::HasLeft(one));
    first.Open();
    ASSERT_TRUE(WorkersEnd());
    EXPECT_TRUE(stand_ins::Outlook::HasLeft(one));
    EXPECT_EQ(outlook->Delivered().at(0).subject, L"The second");
}

TEST_F(AsyncInspectionTest, WithoutAWindowAnAllowedMailStaysAndStaysListed) {
    Hold hold;
    const stand_ins::Agent agent(hold.Inspections());
    const SendResult result = Send();
    controller.RestoreExplorerWindow_(); // as OnDisconnection does
    hold.Open();
    ASSERT_TRUE(AllEnds());
    EXPECT_THAT(outlook->Delivered(), IsEmpty());
    EXPECT_THAT(outlook->ItemsIn(L"Drafts"), SizeIs(1));
    EXPECT_THAT(Ledger(), ElementsAre(result.entryId));
    EXPECT_THAT(Warnings(), Not(Contains(L"No outlook explorer window was found")));
    EXPECT_EQ(Logged(L"INFO", kFinished), 1u);
}

TEST_F(AsyncInspectionTest, WithoutAWindowABlockedMailStaysAndStaysListed) {
    Hold hold;
    auto options = hold.Inspections();
    options.policy = Policy::Block();
    const stand_ins::Agent agent(options);
    const SendResult result = Send();
    controller.RestoreExplorerWindow_();
    hold.Open();
    ASSERT_TRUE(AllEnds());
    EXPECT_FALSE(outlook->IsOpen(result.entryId));
    EXPECT_THAT(Ledger(), ElementsAre(result.entryId));
    EXPECT_THAT(Warnings(), Contains(L"No outlook explorer window was found"));
    EXPECT_EQ(Logged(L"INFO", kFinished), 1u);
}

TEST_F(AsyncInspectionTest, AnExplorerClosedMeanwhileLeavesTheMailToTheNextStart) {
    for (const bool block : {false, true}) {
        Start({});
        Hold hold;
        auto options = hold.Inspections();
        options.policy = block ? Policy::Block() : Policy();
        const stand_ins::Agent agent(options);
        const SendResult result = Send();
        outlook->CloseExplorer();
        outlook->OpenExplorer();
        hold.Open();
        ASSERT_TRUE(AllEnds());
        EXPECT_THAT(outlook->Delivered(), IsEmpty());
        EXPECT_FALSE(outlook->IsOpen(result.entryId));
        EXPECT_THAT(Ledger(), Contains(result.entryId));
        EXPECT_EQ(Logged(L"WARN", L"PostMessageW failed with: 1400"), block ? 1u : 0u);
    }
}

TEST_F(AsyncInspectionTest, AnAgentLostMeanwhileStopsTheMailAndIsToldOnce) {
    stand_ins::Agent agent;
    agent.Misbehave(stand_ins::Misbehaviour::Reset, L"Inspect");
    const SendResult result = Send();
    const auto boxes = BoxesDuring([&] { ASSERT_TRUE(AllEnds()); });
    EXPECT_THAT(boxes, ElementsAre(kUnsentText));
    EXPECT_THAT(outlook->Delivered(), IsEmpty());
    EXPECT_FALSE(outlook->IsOpen(result.entryId));
    EXPECT_THAT(outlook->ItemsIn(L"Drafts"), SizeIs(1));
    EXPECT_THAT(Ledger(), ElementsAre(result.entryId));
    EXPECT_THAT(Errors().back(), StartsWith(L"Exception:Failed to process message asynchronously: "));
    EXPECT_EQ(outlook->Calls().Count(L"MailItem.LastModificationTime"), 1u);
    EXPECT_EQ(Logged(L"INFO", kFinished), 0u);
}

TEST_F(AsyncInspectionTest, WithoutAThreadTheMailStaysListedAndIsToldToItsUser) {
    const stand_ins::Agent agent;
    SendResult result;
    const auto boxes = BoxesDuring([&] {
        test_support::ReplacedImport<"CreateThread", decltype(CreateThread)>* create = nullptr;
        const DWORD own = GetCurrentThreadId();
        test_support::ReplacedImport<"CreateThread", decltype(CreateThread)> ours(
            [&](LPSECURITY_ATTRIBUTES security, SIZE_T stack, LPTHREAD_START_ROUTINE procedure, LPVOID argument,
                DWORD flags, LPDWORD id) -> HANDLE {
                if (GetCurrentThreadId() == own) {
                    SetLastError(ERROR_NOT_ENOUGH_MEMORY);
                    return nullptr;
                }
                return create->Original(security, stack, procedure, argument, flags, id);
            });
        create = &ours;
        result = Send();
    });
    EXPECT_THAT(boxes, ElementsAre(kUnsentText));
    EXPECT_EQ(result.outcome, SendResult::Outcome::Stopped);
    EXPECT_THAT(outlook->Delivered(), IsEmpty());
    EXPECT_THAT(Ledger(), ElementsAre(result.entryId));
    EXPECT_THAT(Errors(), ElementsAre(HasSubstr(L"CreateThread failed with: 8")));
    EXPECT_THAT(Methods(agent), ElementsAre(L"GetExecutionMode"));
}

TEST_F(AsyncInspectionTest, WithoutAThreadNothingOfTheInspectionIsKept) {
    const test_support::ReplacedImport<"MessageBoxW", decltype(MessageBoxW)> box(
        [](HWND, const wchar_t*, const wchar_t*, UINT) { return IDOK; });
    const auto handler = HandlerOf({.subject = L"Plans"});
    std::size_t blocks[3]; // the first has what is kept once and for all
    {
        const test_support::FailingImport<"CreateThread", decltype(CreateThread)> none(ERROR_NOT_ENOUGH_MEMORY);
        for (std::size_t& count : blocks) {
            peer.HandleAsyncInspection(handler);
            outlook->Calls().Clear();
            log.Clear();
            count = stand_ins::Figures::Measure().heapBlocks;
        }
    }
    EXPECT_EQ(blocks[2], blocks[1]);
    EXPECT_EQ(box.Calls(), 3);
}

TEST_F(AsyncInspectionTest, AFailureBeforeTheWorkerLetsTheMailPassAndStaysListed) {
    const stand_ins::Agent agent;
    outlook->Failures().Fail(L"MailItem.BodyFormat", E_ACCESSDENIED, 1);
    EXPECT_EQ(Send().outcome, SendResult::Outcome::Sent);
    EXPECT_THAT(Errors(), ElementsAre(L"InspectItemBeforeSending:COM error= " + ErrorText(E_ACCESSDENIED)));
    EXPECT_THAT(Ledger(), SizeIs(1));
    EXPECT_THAT(Methods(agent), ElementsAre(L"GetExecutionMode"));
}

TEST_F(AsyncInspectionTest, AFailedSendPutsTheMailOnTheScreenAndKeepsTheMemory) {
    const stand_ins::Agent agent;
    outlook->Failures().Fail(L"Transport.Submit", E_FAIL);
    const SendResult result = Send();
    ASSERT_TRUE(WorkersEnd());
    EXPECT_TRUE(outlook->IsOpen(result.entryId));
    EXPECT_THAT(Ledger(), IsEmpty());
    EXPECT_EQ(Logged(L"INFO", L"after handler->send. Item was sent."), 1u);
}

/// A failure of one kind, and what the worker says of it.
struct WorkerFailure {
    const char* name;
    std::function<void()> raise;
    std::wstring line;
};

const WorkerFailure kFailures[] = {
    {"Exception", [] { throw IOException(L"Disk.cpp", 7, L"vorlek::Disk::Read", L"broken"); },
     L"Exception:Failed to process message asynchronously: Disk.cpp(7): vorlek::Disk::Read: IOException: broken"},
    {"ComError", [] { throw _com_error(E_ACCESSDENIED); }, L"Caught a com error: " + ErrorText(E_ACCESSDENIED)},
    {"StandardException", [] { throw std::runtime_error("standard"); }, L"Outlook Exceptionstandard"},
    {"AnythingElse", [] { throw 42; }, L"Exception:Unknown error occured while processing item asynchronously."},
};

class WorkerFailureTest : public AsyncInspectionTest, public testing::WithParamInterface<WorkerFailure> {};

TEST_P(WorkerFailureTest, IsLoggedAndToldOnceAndLeavesTheMailListed) {
    const stand_ins::Agent agent;
    const test_support::FailingLog failing(L"Message can be sent", GetParam().raise);
    const SendResult result = Send();
    const auto boxes = BoxesDuring([&] { ASSERT_TRUE(AllEnds()); });
    EXPECT_THAT(boxes, ElementsAre(kUnsentText));
    EXPECT_THAT(Errors(), ElementsAre(GetParam().line));
    EXPECT_THAT(outlook->Delivered(), IsEmpty());
    EXPECT_FALSE(outlook->IsOpen(result.entryId));
    EXPECT_THAT(Ledger(), ElementsAre(result.entryId));
}

TEST_P(WorkerFailureTest, EndsTheProcedureWithZeroAndFreesWhatItWasGiven) {
    auto* const params = new AsyncProcessingParams(&controller, L"ID-1", new CInspectorMessage(L"Email"));
    const auto number = reinterpret_cast<WPARAM>(params);
    const test_support::FailingLog failing(L"Started Async inspection.", GetParam().raise);
    DWORD result = 1;
    BoxesDuring([&] { result = OutlookControllerPeer::InspectItemAsync(params); });
    EXPECT_EQ(result, 0u);
    EXPECT_EQ(AsyncProcessingParams::From(number), nullptr);
}

INSTANTIATE_TEST_SUITE_P(Kinds, WorkerFailureTest, testing::ValuesIn(kFailures),
                         [](const auto& kind) { return kind.param.name; });

TEST_F(AsyncInspectionTest, TheProcedureEndsWithZeroAndFreesWhatItWasGiven) {
    const stand_ins::Agent agent;
    const std::wstring id = stand_ins::GetText(outlook->SavedItem(kMail), L"EntryID");
    peer.Subclass();
    auto* const params = new AsyncProcessingParams(&controller, id, new CInspectorMessage(L"Email"));
    const auto number = reinterpret_cast<WPARAM>(params);
    EXPECT_EQ(OutlookControllerPeer::InspectItemAsync(params), 0u);
    EXPECT_EQ(AsyncProcessingParams::From(number), nullptr);
    EXPECT_THAT(outlook->Delivered(), SizeIs(1));
}

} // namespace
} // namespace vorlek
