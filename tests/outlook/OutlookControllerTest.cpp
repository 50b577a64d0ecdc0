#include "tests/outlook/OutlookControllerTest.h"

#include <future>

#include "agent/apps/outlook/CommonUtils.h"
#include "agent/apps/outlook/GlobalConfig.h"
#include "foundation/Log4CxxHelper.h"
#include "foundation/RegistryKey.h"
#include "plugin-link/Exceptions.h"
#include "stand-ins/outlook/Figures.h"
#include "tests/support/ChildProcess.h"
#include "tests/support/OwnLocalMachine.h"

namespace vorlek {
namespace {

using outlook_tests::ContextOf;
using outlook_tests::ErrorText;
using outlook_tests::kAccessDenied;
using outlook_tests::kMail;
using outlook_tests::OutlookControllerTest;
using outlook_tests::ThrowNumber;
using outlook_tests::ThrowStandard;
using stand_ins::ExplorerState;
using stand_ins::ItemData;
using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Not;

/// A process without a log makes a controller: what the log is called then, and how many threads that took.
std::wstring LogOfAController(const std::wstring&) {
    const test_support::OwnLocalMachine machine; // where no log is configured
    const std::size_t before = stand_ins::CountThreads();
    const OutlookController controller;
    return GetLogSessionName() + (L" on " + std::to_wstring(stand_ins::CountThreads() - before)) + L" threads";
}
const test_support::ChildRoleName logOfAController(L"LogOfAController", LogOfAController);

TEST(OutlookControllerLog, StartsWithTheFirstControllerAndOnNoThreadOfItsOwn) {
    EXPECT_EQ(test_support::ChildProcess(L"LogOfAController").Result(), L"outlook_tests on 0 threads");
}

TEST_F(OutlookControllerTest, LinesBearTheNameOfTheClass) {
    controller.InitApplication(App());
    EXPECT_TRUE(log.Lines().front().logger.ends_with(L"vorlek.OutlookController"));
}

TEST_F(OutlookControllerTest, ADisabledAddInLetsTheItemPassWithoutLookingAtIt) {
    stand_ins::Policy policy;
    policy.executionModes = {{L"Email", 0}};
    const stand_ins::Agent agent(With(policy));
    EXPECT_FALSE(Inspect());
    EXPECT_THAT(outlook->Calls().Members(), IsEmpty());
    EXPECT_THAT(Methods(agent), ElementsAre(L"GetExecutionMode"));
    EXPECT_THAT(
        log.Texts(L"INFO"),
        ElementsAre(L" InspectItemBeforeSending-----------------------------------------------------------------",
                    L"Plugin disabled. Canceling Inspecting outbox folder."));
}

TEST_F(OutlookControllerTest, EveryModeButZeroIsEnabled) {
    stand_ins::Policy policy;
    policy.executionModes = {{L"Email", -1}};
    const stand_ins::Agent agent(With(policy));
    EXPECT_FALSE(Inspect());
    EXPECT_THAT(Methods(agent), ElementsAre(L"GetExecutionMode", L"Inspect"));
}

TEST_F(OutlookControllerTest, AnAgentThatIsGoneRaisesOutOfTheEvent) {
    EXPECT_THROW(Inspect(), PluginUtils::PluginManagerConnectionException);
    EXPECT_THAT(outlook->Calls().Members(), IsEmpty());
}

TEST_F(OutlookControllerTest, AnItemOfAnotherKindPasses) {
    const stand_ins::Agent agent;
    EXPECT_FALSE(InspectItem(outlook->NewPost({.subject = L"Posted"})));
    EXPECT_TRUE(log.Has(L"INFO", L"Unsupported item was passed -> allowing to send the item"));
    EXPECT_FALSE(InspectItem({}));
    EXPECT_TRUE(log.Has(L"INFO", L"Unsupported item was passed -> allowing to send the item"));
    EXPECT_THAT(Methods(agent), ElementsAre(L"GetExecutionMode", L"GetExecutionMode"));
}

TEST_F(OutlookControllerTest, EmbeddedAnAllowedMailPassesUntouched) {
    const stand_ins::Agent agent;
    EXPECT_FALSE(Inspect());
    EXPECT_THAT(Methods(agent), ElementsAre(L"GetExecutionMode", L"Inspect"));
    EXPECT_TRUE(log.Has(L"INFO", L"Embedded Outlook -> Sending for \"synchronized\" inspection"));
    EXPECT_TRUE(log.Has(L"INFO", L"Finished gathering information for current message."));
    EXPECT_TRUE(log.Has(L"INFO", L"Message can be sent"));
    EXPECT_EQ(outlook->Calls().Count(L"MailItem.Subject put"), 0u);
    EXPECT_EQ(outlook->Calls().Count(L"MailItem.Save"), 0u);
    EXPECT_EQ(outlook->Calls().Count(L"Attachments.Remove"), 0u);
}

TEST_F(OutlookControllerTest, TheAgentIsAskedForTheChannelOfMailInBothCalls) {
    const stand_ins::Agent agent;
    Inspect();
    const auto requests = agent.Requests();
    ASSERT_EQ(requests.size(), 2u);
    EXPECT_EQ(requests[0].param, L"Email");
    EXPECT_NE(requests[1].param.find(L"<inspectorMessage version=\"1\" channel=\"Email\">"), std::wstring::npos);
}

TEST_F(OutlookControllerTest, EmbeddedABlockedMailStays) {
    const stand_ins::Agent agent(With(stand_ins::Policy::Decision(L"<decision result=\"2\" />")));
    EXPECT_TRUE(Inspect());
    EXPECT_TRUE(log.Has(L"INFO", L"Got decision: 2"));
    EXPECT_TRUE(log.Has(L"INFO", L"Message should be blocked!"));
}

TEST_F(OutlookControllerTest, ABlockedMailIsNotLabelled) {
    const stand_ins::Agent agent(With(stand_ins::Policy::Decision(
        L"<decision result=\"2\"><DataModifications><EmailSubject value=\"No\" /></DataModifications></decision>")));
    EXPECT_TRUE(Inspect());
    EXPECT_EQ(outlook->Calls().Count(L"MailItem.Subject put"), 0u);
}

TEST_F(OutlookControllerTest, ASubjectLabelAloneLeavesTheAttachmentsAlone) {
    const stand_ins::Agent agent(With(stand_ins::Policy::Decision(
        L"<decision result=\"1\"><DataModifications><EmailSubject value=\"[Secret] Plans\" /></DataModifications>"
        L"</decision>")));
    const auto mail = outlook->NewMail(kMail);
    EXPECT_FALSE(InspectItem(mail));
    EXPECT_EQ(stand_ins::GetText(mail, L"Subject"), L"[Secret] Plans");
    EXPECT_FALSE(log.Has(L"INFO", L"Replacing attachments - using Outlook OM"));
}

TEST_F(OutlookControllerTest, LabelsComeBeforeTheReplacedAttachments) {
    const std::wstring file = File(L"new.bin", "harmless");
    const stand_ins::Agent agent(With(stand_ins::Policy::Decision(
        L"<decision result=\"1\"><DataModifications><EmailSubject value=\"Labelled\" /><EmailAttachments>"
        L"<Attachment path=\"" +
        file + L"\" displayName=\"plan.txt\" /></EmailAttachments></DataModifications></decision>")));
    const auto mail = outlook->NewMail(kMail);
    EXPECT_FALSE(InspectItem(mail));
    EXPECT_TRUE(outlook->Calls().Before(L"MailItem.Subject put", L"Attachments.Remove"));
    EXPECT_EQ(stand_ins::GetNumber(stand_ins::GetObject(mail, L"Attachments"), L"Count"), 1);
    EXPECT_FALSE(std::filesystem::exists(file)); // the decision's own file went with the decision
}

TEST_F(OutlookControllerTest, AttachmentsThatCannotBeReplacedStopTheMail) {
    const std::wstring file = File(L"new.bin", "harmless");
    const stand_ins::Agent agent(With(stand_ins::Policy::Decision(
        L"<decision result=\"1\"><DataModifications><EmailAttachments><Attachment path=\"" + file +
        L"\" displayName=\"plan.txt\" /></EmailAttachments></DataModifications></decision>")));
    outlook->Failures().Fail(L"Attachments.Add", kAccessDenied);
    EXPECT_TRUE(Inspect());
    EXPECT_THAT(Errors(),
                ElementsAre(L"Caught a com exception while replacing attachments: " + ErrorText(kAccessDenied),
                            L"Failed to override attachments - cannot send the email"));
}

TEST_F(OutlookControllerTest, AnEmbeddedOutlookNeverAsksWhetherTheMailIsOnTheSpot) {
    const stand_ins::Agent agent;
    Inspect();
    EXPECT_EQ(outlook->Calls().Count(L"MailItem.AutoForwarded"), 0u);
    EXPECT_FALSE(log.Has(L"DEBUG", L"Checking for OnSpot override"));
    EXPECT_TRUE(log.Has(L"DEBUG", L"Outlook process was loaded as embedded, embeddedProcess_ == true"));
}

TEST_F(OutlookControllerTest, AMailOnTheSpotIsInspectedInTheEventEachTime) {
    const stand_ins::Agent agent;
    peer.SetEmbedded(false);
    ItemData voted = kMail;
    voted.votingResponse = L"Yes";
    const auto mail = outlook->NewMail(voted);
    EXPECT_FALSE(InspectItem(mail));
    EXPECT_FALSE(InspectItem(mail));
    EXPECT_THAT(Methods(agent), ElementsAre(L"GetExecutionMode", L"Inspect", L"GetExecutionMode", L"Inspect"));
    EXPECT_FALSE(log.Has(L"INFO", L"IsSentByPlugin_?"));
}

TEST_F(OutlookControllerTest, AMailThatTheAddInSendsItselfPassesOnce) {
    const stand_ins::Agent agent;
    peer.SetEmbedded(false);
    const auto mail = outlook->SavedItem(kMail);
    peer.Remember(stand_ins::GetText(mail, L"EntryID"), DateTime(DateTime::Utc));
    EXPECT_FALSE(InspectItem(mail));
    EXPECT_THAT(Methods(agent), ElementsAre(L"GetExecutionMode"));
    EXPECT_TRUE(log.Has(L"INFO", L"InspectItemBeforeSending:success on async sentbyplugin.returning false"));
    EXPECT_FALSE(peer.IsSentByPlugin(std::make_shared<MessageHandler>(Outlook::_MailItemPtr(mail.GetInterfacePtr()))));
    EXPECT_TRUE(log.Has(L"INFO", L"Item should be inspected - wasn't sent by the plugin"));
}

TEST_F(OutlookControllerTest, EveryFailureAfterTheFirstQuestionLetsTheMailPass) {
    const stand_ins::Agent agent;
    outlook->Failures().Fail(L"MailItem.BodyFormat", kAccessDenied, 1);
    EXPECT_FALSE(Inspect());
    EXPECT_THAT(Errors(), ElementsAre(L"InspectItemBeforeSending:COM error= " + ErrorText(kAccessDenied)));
    outlook->Failures().On(L"MailItem.BodyFormat", ThrowStandard("lost"), 1);
    EXPECT_FALSE(Inspect());
    EXPECT_THAT(Errors(), ElementsAre(L"InspectItemBeforeSending:exception. what= lost"));
    outlook->Failures().On(L"MailItem.BodyFormat", ThrowNumber(), 1);
    EXPECT_FALSE(Inspect());
    EXPECT_THAT(Errors(), ElementsAre(L"InspectItemBeforeSending:exception occured "));
}

TEST_F(OutlookControllerTest, AnAgentLostInTheMiddleOfAnInspectionLetsTheMailPass) {
    stand_ins::Agent agent;
    agent.Misbehave(stand_ins::Misbehaviour::Reset, L"Inspect");
    EXPECT_FALSE(Inspect());
    EXPECT_THAT(Errors(), Contains(L"InspectItemBeforeSending:exception occured "));
}

TEST_F(OutlookControllerTest, AnItemThatCannotSayWhatItIsPassesWithAnErrorLine) {
    const stand_ins::Agent agent;
    outlook->Failures().Fail(L"MailItem.QueryInterface", E_FAIL);
    EXPECT_FALSE(Inspect());
    EXPECT_THAT(Errors(), ElementsAre(L"InspectItemBeforeSending:COM error= " + ErrorText(E_FAIL)));
}

TEST_F(OutlookControllerTest, EveryWayOutLetsGoOfTheItem) {
    const auto mail = outlook->NewMail(kMail);
    const auto references = [&] {
        mail->AddRef();
        return mail->Release();
    };
    const ULONG before = references();
    EXPECT_THROW(InspectItem(mail), PluginUtils::PluginManagerConnectionException);
    EXPECT_EQ(references(), before);
    stand_ins::Agent agent;
    EXPECT_FALSE(InspectItem(mail)); // allowed
    EXPECT_EQ(references(), before);
    agent.SetPolicy(stand_ins::Policy::Block());
    EXPECT_TRUE(InspectItem(mail));
    EXPECT_EQ(references(), before);
    outlook->Failures().Fail(L"MailItem.BodyFormat", kAccessDenied);
    EXPECT_FALSE(InspectItem(mail));
    EXPECT_EQ(references(), before);
}

TEST_F(OutlookControllerTest, BeforeOutlook2007TheMailIsSavedBeforeAnyOtherTest) {
    const stand_ins::Agent agent;
    SetVersion(L"11.0.8169");
    Inspect();
    ASSERT_THAT(outlook->Calls().Members(), Not(IsEmpty()));
    EXPECT_EQ(outlook->Calls().Members().front(), L"MailItem.Save");
}

TEST_F(OutlookControllerTest, WithoutAnApplicationOutlookIsNotEmbedded) {
    peer.SetEmbedded(false);
    peer.SetApplication({});
    EXPECT_FALSE(peer.IsEmbedded());
    EXPECT_THAT(log.Texts(L"DEBUG"), ElementsAre(L"outlookApp_ == NULL"));
}

TEST_F(OutlookControllerTest, WithoutAnExplorerOutlookIsEmbedded) {
    peer.SetEmbedded(false);
    Restart({.explorer = ExplorerState::Missing});
    peer.SetApplication(App());
    EXPECT_TRUE(peer.IsEmbedded());
    EXPECT_THAT(log.Texts(L"DEBUG"), ElementsAre(L"Couldn't find active explorer - assuming Outlook is embedded"));
}

TEST_F(OutlookControllerTest, AnEnabledMainWindowIsNoEmbeddedOutlook) {
    peer.SetEmbedded(false);
    EXPECT_FALSE(peer.IsEmbedded());
    EXPECT_EQ(OutlookControllerPeer::FoundWindow(), outlook->ExplorerWindow());
    EXPECT_THAT(log.Texts(L"DEBUG"), ElementsAre(L"Active explorer window IsWindowEnabled == 1"));
}

TEST_F(OutlookControllerTest, ADisabledMainWindowIsAnEmbeddedOutlook) {
    peer.SetEmbedded(false);
    Restart({.explorer = ExplorerState::Disabled});
    peer.SetApplication(App());
    EXPECT_TRUE(peer.IsEmbedded());
    EXPECT_THAT(log.Texts(L"DEBUG"), ElementsAre(L"Active explorer window IsWindowEnabled == 0"));
}

class SentByPlugin : public OutlookControllerTest {
protected:
    SentByPlugin() : handler(HandlerOf(kMail)), id(handler->GetSentItemUniqueID()) { log.Clear(); }

    static DateTime At(int second, int millisecond) {
        return DateTime(2026, 3, 1, 12, 0, second, millisecond, DateTime::Utc);
    }

    std::shared_ptr<ItemHandler> handler;
    std::wstring id;
};

TEST_F(SentByPlugin, ANullHandlerCountsAsSent) {
    EXPECT_TRUE(peer.IsSentByPlugin(nullptr));
    EXPECT_THAT(log.Texts(L"INFO"),
                ElementsAre(L"IsSentByPlugin_?", L"Unsupported item was passed -> allowing to send the item"));
}

TEST_F(SentByPlugin, AnItemThatWasNotSentIsInspected) {
    EXPECT_FALSE(peer.IsSentByPlugin(handler));
    EXPECT_THAT(log.Texts(L"INFO"),
                ElementsAre(L"IsSentByPlugin_?", L"Checking if item with ID " + id + L" should be inspected",
                            L"Item should be inspected - wasn't sent by the plugin"));
}

TEST_F(SentByPlugin, TenSecondsLaterIsStillInTimeAndTheEntryIsSpent) {
    peer.Remember(id, At(1, 7));
    EXPECT_TRUE(peer.IsSentByPlugin(handler, At(11, 7)));
    EXPECT_TRUE(log.Has(L"INFO", L"Item was already inspected by the plugin so we don't reinspect it"));
    EXPECT_FALSE(peer.IsSentByPlugin(handler, At(11, 7)));
    EXPECT_TRUE(log.Has(L"INFO", L"Item should be inspected - wasn't sent by the plugin"));
}

TEST_F(SentByPlugin, AMillisecondMoreIsTooLateAndTheEntryIsSpentAllTheSame) {
    peer.Remember(id, At(1, 7));
    EXPECT_FALSE(peer.IsSentByPlugin(handler, At(11, 8)));
    EXPECT_TRUE(log.Has(L"INFO", L"Item should be inspected - sent by the plugin - but 10001 ms ago"));
    log.Clear();
    EXPECT_FALSE(peer.IsSentByPlugin(handler, At(2, 0)));
    EXPECT_TRUE(log.Has(L"INFO", L"Item should be inspected - wasn't sent by the plugin"));
}

TEST_F(SentByPlugin, AClockThatWasSetBackMeansAnInspection) {
    peer.Remember(id, At(1, 1));
    EXPECT_FALSE(peer.IsSentByPlugin(handler, At(1, 0)));
    EXPECT_TRUE(log.Has(L"INFO", L"Item should be inspected - sent by the plugin - but 18446744073709551615 ms ago"));
}

TEST_F(SentByPlugin, ASecondEntryKeepsTheTimeOfTheFirst) {
    peer.Remember(id, At(1, 0));
    peer.Remember(id, At(20, 0));
    EXPECT_FALSE(peer.IsSentByPlugin(handler, At(20, 0)));
    EXPECT_TRUE(log.Has(L"INFO", L"Item should be inspected - sent by the plugin - but 19000 ms ago"));
}

TEST_F(OutlookControllerTest, StartingLearnsFoldersAndVersionInThisOrder) {
    SetVersion(L"-1.");
    outlook->Calls().Clear();
    log.Clear();
    controller.InitApplication(App());
    EXPECT_THAT(outlook->Calls().Members(),
                ElementsAre(L"Application.Session get", L"NameSpace.GetDefaultFolder", L"MAPIFolder.StoreID get",
                            L"NameSpace.GetDefaultFolder", L"MAPIFolder.StoreID get", L"Application.Version get"));
    EXPECT_GT(peer.OutboxStoreId().length(), 0u);
    EXPECT_GT(peer.DraftsStoreId().length(), 0u);
    EXPECT_EQ(GlobalConfig::GetOutlookMajorVersion(), 16);
    EXPECT_THAT(log.Texts(L"INFO"),
                ElementsAre(L"Initializing OutlookController", L"Initializiation of OutlookController finished."));
    EXPECT_THAT(Warnings(), IsEmpty());
}

TEST_F(OutlookControllerTest, AProgramThatIsNotOutlookHoldsAnEmbeddedOne) {
    peer.SetEmbedded(false);
    controller.InitApplication(App()); // this program has another name
    EXPECT_TRUE(peer.IsEmbeddedProcess());
}

TEST_F(OutlookControllerTest, AVersionThatIsKnownIsNotReadAgain) {
    outlook->Calls().Clear();
    EXPECT_EQ(peer.InitOutlookVersion(), 16);
    SetVersion(L"1.");
    EXPECT_EQ(peer.InitOutlookVersion(), 1);
    EXPECT_THAT(outlook->Calls().Members(), IsEmpty());
    SetVersion(L"0.");
    EXPECT_EQ(peer.InitOutlookVersion(), 0); // no version
    EXPECT_EQ(GlobalConfig::GetOutlookMajorVersion(), 16);
    SetVersion(L"-1.");
    EXPECT_EQ(peer.InitOutlookVersion(), -1); // what was held before
    EXPECT_EQ(GlobalConfig::GetOutlookMajorVersion(), 16);
    SetVersion(L"-1.");
    peer.SetApplication({});
    EXPECT_EQ(peer.InitOutlookVersion(), -1);
    EXPECT_EQ(GlobalConfig::GetOutlookMajorVersion(), -1);
}

TEST_F(OutlookControllerTest, AStartInAProcessThatKnowsTheVersionDoesNotAskForIt) {
    outlook->Calls().Clear();
    controller.InitApplication(App());
    EXPECT_EQ(outlook->Calls().Count(L"Application.Session"), 1u);
    EXPECT_EQ(outlook->Calls().Count(L"Application.Version"), 0u);
}

TEST_F(OutlookControllerTest, WithoutASessionTheFoldersStayUnknownWithoutAWord) {
    outlook->Failures().Answer(L"Application.Session", stand_ins::NoObject());
    controller.InitApplication(App());
    EXPECT_EQ(peer.OutboxStoreId().length(), 0u);
    EXPECT_THAT(Warnings(), IsEmpty());
    EXPECT_THAT(Errors(), IsEmpty());
    EXPECT_TRUE(log.Has(L"INFO", L"Initializiation of OutlookController finished."));
}

/// The HRESULT that the start raises.
HRESULT StartFailure(OutlookController& controller, const Outlook::_ApplicationPtr& app) {
    try {
        controller.InitApplication(app);
    } catch (const _com_error& failure) {
        return failure.Error();
    }
    return S_OK;
}

TEST_F(OutlookControllerTest, WithoutAnApplicationTheStartRaises) {
    EXPECT_EQ(StartFailure(controller, Outlook::_ApplicationPtr()), E_POINTER);
}

TEST_F(OutlookControllerTest, WithoutAnOutboxTheStartRaisesAfterAnErrorLine) {
    outlook->Failures().Answer(L"NameSpace.GetDefaultFolder", stand_ins::NoObject(), 1);
    EXPECT_EQ(StartFailure(controller, App()), E_POINTER);
    EXPECT_THAT(Errors(), ElementsAre(L"Failed to retrieve Outbox folder."));
}

TEST_F(OutlookControllerTest, WithoutDraftsTheStartRaisesAfterAnErrorLineAndTheVersionStaysUnknown) {
    SetVersion(L"-1.");
    outlook->Failures().Answer(L"NameSpace.GetDefaultFolder", stand_ins::NoObject(), 2);
    EXPECT_EQ(StartFailure(controller, App()), E_POINTER);
    EXPECT_THAT(Errors(), ElementsAre(L"Failed to retrieve Drafts folder."));
    EXPECT_GT(peer.OutboxStoreId().length(), 0u);
    EXPECT_EQ(GlobalConfig::GetOutlookMajorVersion(), -1);
}

TEST_F(OutlookControllerTest, EmptyStoreIdsAreWarnedOf) {
    outlook->Failures().Answer(L"MAPIFolder.StoreID", _variant_t(L""));
    controller.InitApplication(App());
    EXPECT_THAT(Warnings(), ElementsAre(L"Outbox store ID is empty!", L"Drafts store ID is empty!"));
}

TEST_F(OutlookControllerTest, TheDefaultFoldersAreOutboxAndDrafts) {
    outlook->Calls().Clear();
    controller.InitApplication(App());
    std::vector<std::wstring> calls;
    for (const auto& call : outlook->Calls().All()) {
        if (stand_ins::IsMember(call.member, L"NameSpace.GetDefaultFolder")) {
            calls.push_back(call.ToString());
        }
    }
    EXPECT_THAT(calls, ElementsAre(L"NameSpace.GetDefaultFolder(4)", L"NameSpace.GetDefaultFolder(16)"));
}

TEST_F(OutlookControllerTest, TheMessageHoldsTheMailsContext) {
    const auto context = ContextOf(peer.CreateInspectionMessage(HandlerOf(kMail)));
    EXPECT_THAT(context, Contains(L"EmailSubject=Plans"));
    EXPECT_THAT(context, Contains(L"EmailTo=you@b.example"));
    EXPECT_TRUE(log.Has(L"INFO", L"Finished gathering information for current message."));
}

} // namespace
} // namespace vorlek
