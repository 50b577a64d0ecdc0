// The roads of a mail before Outlook 2007, inside the event, beside it and after a start.
#include "tests/outlook/AsyncTest.h"
#include "tests/outlook/OldOutlookTest.h"

namespace vorlek {
namespace {

using outlook_tests::AsyncTest;
using outlook_tests::ErrorText;
using outlook_tests::Hold;
using outlook_tests::kAccessDenied;
using outlook_tests::kMail;
using outlook_tests::kVersion11;
using outlook_tests::RedemptionLibrary;
using stand_ins::Editor;
using stand_ins::ItemData;
using stand_ins::SendResult;
using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::SizeIs;
using testing::StartsWith;

const ItemData kHtmlMail{.subject = L"Plans",
                         .htmlBody = L"<html><body><p>Plans.</p></body></html>",
                         .recipients = kMail.recipients,
                         .attachments = kMail.attachments};
const ItemData kRichMail{.subject = L"Plans",
                         .body = L"Plans.",
                         .rtfBody = "{\\rtf1\\ansi Plans.}",
                         .recipients = kMail.recipients,
                         .attachments = kMail.attachments};

/// What a mail of a format holds once the agent has labelled it.
struct Format {
    const char* name;
    const ItemData& mail;
    std::wstring (*body)(const ItemData&);
};

void PrintTo(const Format& format, std::ostream* stream) {
    *stream << format.name;
}

std::wstring PlainBody(const ItemData& mail) {
    return mail.body;
}
std::wstring HtmlBody(const ItemData& mail) {
    return mail.htmlBody;
}
std::wstring RichBody(const ItemData& mail) {
    return {mail.rtfBody.begin(), mail.rtfBody.end()};
}

const Format kFormats[] = {{"Plain", kMail, PlainBody}, {"Html", kHtmlMail, HtmlBody}, {"Rich", kRichMail, RichBody}};

/// An interactive Outlook of version 11 on a machine with Redemption.
class OldControllerTest : public AsyncTest {
protected:
    OldControllerTest() {
        SetVersion(kVersion11);
        Start({.version = kVersion11});
    }

    void RemoveRedemption() { redemption_.reset(); }

    /// An agent that does this to every mail, in the words of a policy file.
    static stand_ins::AgentOptions Doing(const std::string& actions) {
        return With(stand_ins::Policy::FromText(R"({"rules": [{"name": "all", "then": {)" + actions + "}}]}"));
    }
    static stand_ins::AgentOptions Changing() {
        return Doing(R"("subject": "[Secret] {subject}", "body": {"before": "This is secret."},
                        "replaceAttachments": {"text": "Removed.", "displayName": "notice.txt"})");
    }
    static void ExpectChanged(const ItemData& sent, const Format& format) {
        EXPECT_EQ(sent.subject, L"[Secret] Plans");
        EXPECT_THAT(format.body(sent), HasSubstr(L"This is secret."));
        ASSERT_THAT(sent.attachments, SizeIs(1));
        EXPECT_EQ(sent.attachments[0].displayName, L"notice.txt");
        EXPECT_EQ(sent.attachments[0].content, "Removed.");
    }

private:
    std::optional<RedemptionLibrary> redemption_{std::in_place};
};

class OldFormats : public OldControllerTest, public testing::WithParamInterface<Format> {};

INSTANTIATE_TEST_SUITE_P(Each, OldFormats, testing::ValuesIn(kFormats),
                         [](const auto& format) { return std::string(format.param.name); });

TEST_P(OldFormats, AMailIsLabelledAndItsAttachmentsReplacedInsideTheEvent) {
    const stand_ins::Agent agent(Changing());
    peer.SetEmbedded(true);
    EXPECT_EQ(Send(GetParam().mail).outcome, SendResult::Outcome::Sent);
    const auto delivered = outlook->Delivered();
    ASSERT_THAT(delivered, SizeIs(1));
    ExpectChanged(delivered[0], GetParam());
    EXPECT_THAT(Errors(), IsEmpty());
    EXPECT_EQ(outlook->Calls().Count(L"RDOMail.Send"), 0u); // Outlook goes on with its own send
}

TEST_P(OldFormats, AMailIsLabelledItsAttachmentsReplacedAndSentByRedemptionBesideTheEvent) {
    const stand_ins::Agent agent(Changing());
    const SendResult result = Send(GetParam().mail);
    EXPECT_EQ(result.outcome, SendResult::Outcome::Stopped);
    ASSERT_TRUE(WorkersEnd());
    EXPECT_TRUE(stand_ins::Outlook::HasLeft(result));
    const auto delivered = outlook->Delivered();
    ASSERT_THAT(delivered, SizeIs(1));
    ExpectChanged(delivered[0], GetParam());
    EXPECT_THAT(outlook->ItemsIn(L"Drafts"), IsEmpty());
    EXPECT_THAT(Ledger(), IsEmpty());
    EXPECT_THAT(Errors(), IsEmpty());
    EXPECT_THAT(Methods(agent), ElementsAre(L"GetExecutionMode", L"Inspect")); // no event of its own
    EXPECT_TRUE(peer.Remembers(result.entryId));
    EXPECT_EQ(outlook->Calls().Count(L"MailItem.Send"), 0u);
}

TEST_P(OldFormats, AMailThatRedemptionDoesNotSendIsSentByOutlookOnceAndNotInspectedAgain) {
    const stand_ins::Agent agent(Changing());
    outlook->Failures().Fail(L"RDOMail.Send", kAccessDenied);
    const SendResult result = Send(GetParam().mail);
    ASSERT_TRUE(WorkersEnd());
    EXPECT_TRUE(stand_ins::Outlook::HasLeft(result));
    const auto delivered = outlook->Delivered();
    ASSERT_THAT(delivered, SizeIs(1));
    ExpectChanged(delivered[0], GetParam());
    EXPECT_THAT(Ledger(), IsEmpty());
    EXPECT_THAT(Errors(), ElementsAre(L"MessageHandler::SendWithRDO_: Caught a com exception during Send: " +
                                      ErrorText(kAccessDenied)));
    EXPECT_THAT(Methods(agent), ElementsAre(L"GetExecutionMode", L"Inspect", L"GetExecutionMode"));
}

TEST_P(OldFormats, ABlockedMailStaysOpenInsideTheEventAndComesBackBesideIt) {
    const stand_ins::Agent agent(With(stand_ins::Policy::Block()));
    peer.SetEmbedded(true);
    const SendResult inside = Send(GetParam().mail);
    EXPECT_EQ(inside.outcome, SendResult::Outcome::Stopped);
    EXPECT_TRUE(outlook->IsOpen(inside.entryId));
    peer.SetEmbedded(false);
    const SendResult beside = Send(GetParam().mail);
    ASSERT_TRUE(AllEnds());
    EXPECT_TRUE(outlook->IsOpen(beside.entryId));
    EXPECT_THAT(outlook->Delivered(), IsEmpty());
    EXPECT_THAT(outlook->ItemsIn(L"Drafts"), SizeIs(2));
    EXPECT_THAT(Ledger(), IsEmpty());
    EXPECT_THAT(Errors(), IsEmpty());
}

TEST_P(OldFormats, WithoutRedemptionAMailLeavesWithItsSubjectLabelledAlone) {
    RemoveRedemption();
    const stand_ins::Agent agent(Doing(R"("subject": "[Secret] {subject}")"));
    peer.SetEmbedded(true);
    EXPECT_EQ(Send(GetParam().mail).outcome, SendResult::Outcome::Sent);
    peer.SetEmbedded(false);
    const SendResult beside = Send(GetParam().mail);
    ASSERT_TRUE(WorkersEnd());
    EXPECT_TRUE(stand_ins::Outlook::HasLeft(beside));
    const auto delivered = outlook->Delivered();
    ASSERT_THAT(delivered, SizeIs(2));
    for (const ItemData& sent : delivered) {
        EXPECT_EQ(sent.subject, L"[Secret] Plans");
        EXPECT_EQ(GetParam().body(sent), GetParam().body(GetParam().mail));
        EXPECT_THAT(sent.attachments, SizeIs(1));
    }
    EXPECT_THAT(Ledger(), IsEmpty());
}

TEST_F(OldControllerTest, WithoutRedemptionABodyIsNotLabelledAndTheMailLeavesAllTheSame) {
    RemoveRedemption();
    const stand_ins::Agent agent(Doing(R"("body": {"before": "This is secret."})"));
    peer.SetEmbedded(true);
    EXPECT_EQ(Send(kMail).outcome, SendResult::Outcome::Sent);
    EXPECT_EQ(outlook->Delivered().at(0).body, kMail.body);
    EXPECT_EQ(Errors().back(), L"Unknown error while applying data label.");
}

TEST_F(OldControllerTest, WithoutRedemptionABlockedMailIsBlockedOnBothRoads) {
    RemoveRedemption();
    const stand_ins::Agent agent(With(stand_ins::Policy::Block()));
    peer.SetEmbedded(true);
    EXPECT_EQ(Send().outcome, SendResult::Outcome::Stopped);
    peer.SetEmbedded(false);
    const SendResult beside = Send();
    ASSERT_TRUE(AllEnds());
    EXPECT_TRUE(outlook->IsOpen(beside.entryId));
    EXPECT_THAT(outlook->Delivered(), IsEmpty());
}

TEST_F(OldControllerTest, TheAttachmentsOfAMailThatRedemptionCannotChangeStopIt) {
    const stand_ins::Agent agent(Changing());
    outlook->Failures().Fail(L"RDOAttachments.Add", kAccessDenied);
    peer.SetEmbedded(true);
    EXPECT_EQ(Send().outcome, SendResult::Outcome::Stopped);
    EXPECT_THAT(outlook->Delivered(), IsEmpty());
    EXPECT_EQ(Errors().back(), L"Failed to override attachments - cannot send the email");
}

TEST_F(OldControllerTest, AMailIsSavedBeforeAnyOtherTest) {
    const stand_ins::Agent agent;
    Send();
    ASSERT_TRUE(WorkersEnd());
    auto calls = outlook->Calls().Members();
    calls.erase(calls.begin(), std::ranges::find(calls, L"Application.ItemSend"));
    ASSERT_GE(calls.size(), 3u);
    EXPECT_EQ(calls[1], L"MailItem.Save");
    EXPECT_EQ(calls[2], L"Application.ActiveExplorer");
}

TEST_F(OldControllerTest, AMailThatCannotBeSavedIsInspectedAllTheSame) {
    const stand_ins::Agent agent(With(stand_ins::Policy::Block()));
    outlook->Failures().Fail(L"MailItem.Save", kAccessDenied, 1);
    const SendResult result = Send();
    ASSERT_TRUE(AllEnds());
    EXPECT_TRUE(outlook->IsOpen(result.entryId));
    EXPECT_THAT(Warnings(), ElementsAre(L"COM exception: " + ErrorText(kAccessDenied) + L" item wasn't saved",
                                        L"Item is using WordMail, but we failed to locate the WordMail window and "
                                        L"close it. Attempting to close it directly."));
}

TEST_F(OldControllerTest, AMailInWordGoesFromTheScreenAndComesBackWhenItIsBlocked) {
    Start({.version = kVersion11, .editor = Editor::Word});
    Hold hold;
    auto options = hold.Inspections();
    options.policy = stand_ins::Policy::Block();
    const stand_ins::Agent agent(options);
    const SendResult result = Send();
    EXPECT_FALSE(outlook->IsOpen(result.entryId));
    EXPECT_TRUE(log.Has(L"INFO", L"Posting close to WordMail"));
    EXPECT_EQ(outlook->Calls().Count(L"Inspector.Close"), 0u);
    hold.Open();
    ASSERT_TRUE(AllEnds());
    EXPECT_TRUE(outlook->IsOpen(result.entryId));
    EXPECT_NE(FindWindowW(L"OpusApp", L"Plans - Message (Plain Text) "), nullptr);
}

TEST_F(OldControllerTest, ClosingWordDoesNotCountAsAChangeDuringTheInspection) {
    Start({.version = kVersion11, .editor = Editor::Word});
    const stand_ins::Agent agent;
    const SendResult result = Send();
    ASSERT_TRUE(WorkersEnd());
    EXPECT_TRUE(stand_ins::Outlook::HasLeft(result));
    EXPECT_THAT(Errors(), IsEmpty());
}

TEST_F(OldControllerTest, AMailInAWordWindowOfAnotherTitleIsClosedDirectly) {
    Start({.version = kVersion11, .editor = Editor::WordUnderAnotherTitle});
    const stand_ins::Agent agent;
    const SendResult result = Send();
    EXPECT_FALSE(outlook->IsOpen(result.entryId));
    EXPECT_EQ(outlook->Calls().Count(L"Inspector.Close"), 1u);
    ASSERT_TRUE(WorkersEnd());
    EXPECT_TRUE(stand_ins::Outlook::HasLeft(result));
}

TEST_F(OldControllerTest, AfterAStartTheMailsOfTheLedgerAreShownAndNotSent) {
    const stand_ins::Agent agent;
    std::vector<std::wstring> ids;
    for (int mails = 0; mails < 2; ++mails) {
        ids.push_back(stand_ins::GetText(outlook->SavedItem(kMail), L"EntryID"));
        CommonUtils::AddToInspectedItems(ids.back(), ids.back(), nullptr);
    }
    CommonUtils::AddToInspectedItems(L"0123ABCD", L"0123ABCD", nullptr); // of a mail that is gone
    outlook->Calls().Clear();
    log.Clear();
    controller.HandleIncompleteInspections();
    EXPECT_TRUE(outlook->IsOpen(ids[0]));
    EXPECT_TRUE(outlook->IsOpen(ids[1]));
    EXPECT_THAT(outlook->Delivered(), IsEmpty());
    EXPECT_THAT(Methods(agent), IsEmpty());
    EXPECT_THAT(Ledger(), ElementsAre(L"0123ABCD"));
    EXPECT_EQ(Logged(L"INFO", L"Outlook 2003 - we display the item that wasn't sent"), 2u);
    EXPECT_EQ(outlook->Calls().Count(L"MailItem.Display"), 2u);
    EXPECT_THAT(Errors(), Contains(StartsWith(L"Failed to find and resend an item: ")));
}

TEST_F(OldControllerTest, AMailThatCannotBeShownAfterAStartStaysListed) {
    const std::wstring id = stand_ins::GetText(outlook->SavedItem(kMail), L"EntryID");
    CommonUtils::AddToInspectedItems(id, id, nullptr);
    outlook->Failures().Fail(L"MailItem.Display", kAccessDenied);
    controller.HandleIncompleteInspections();
    EXPECT_THAT(Ledger(), ElementsAre(id));
    EXPECT_EQ(Errors().back(), L"COM error while trying to find and resend an item: " + ErrorText(kAccessDenied));
}

} // namespace
} // namespace vorlek
