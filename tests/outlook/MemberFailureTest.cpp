// Every call of Outlook's object model, and of Redemption's, that a mail's road makes fails once, each in a run of
// its own.
#include "tests/outlook/MemberFailure.h"
#include "tests/outlook/OldOutlookTest.h"
#include "tests/outlook/OutlookControllerTest.h"

namespace vorlek {
namespace {

using namespace outlook_tests; // its words make up the tables
using stand_ins::ItemData;

// Outcomes, and lines of the log.
const wchar_t* const kEmptySubjectAlone = L"sent, subject \"[Internal] \", old body, old attachments";
const wchar_t* const kListed = L"kept, listed";
const wchar_t* const kStartFails = L"sent, the start fails";
const wchar_t* const kOnScreen = L"kept, on the screen";
const wchar_t* const kNotByOutlook = L"ERROR MessageHandler::Send: YM:Caught a com exception during Send: ~";
const wchar_t* const kCancelled = L"ERROR MessageHandler::Send: YM:Caught a com exception during Send: (E_ABORT)";
const wchar_t* const kSendFails = L"ERROR MessageHandler::Send - Outlook failed to send the message item.";
const wchar_t* const kStaysListed =
    L"ERROR MessageHandler::Send: Caught a com exception during RemoveFromInspectedItems or SendWithRDO_() ~";
const wchar_t* const kSearchAll = L"WARN Could not Locate the requested item in the Outbox folder - search all";
const wchar_t* const kSearchEnds = L"ERROR Caught a com exception when searching in Some Other Folder: ~";
const wchar_t* const kNowhere = L"ERROR Failed to find and resend an item: FILE: vorlek::OutlookController::FindItem_: "
                                L"Exception: Failed to find item # in any folder.";
const wchar_t* const kNotInStore =
    L"ERROR  item look caused exception.itemUniqueID.c_str()=.#. storeID.c_str()=.STORE.";

const wchar_t* const kNoWordWindow =
    L"WARN Item is using WordMail, but we failed to locate the WordMail window and close it. Attempting to close it "
    L"directly.";
const wchar_t* const kNoSafeMail = L"ERROR Failed to create Redemption.SafeMailItem instance";
const wchar_t* const kNoHtml = L"ERROR Failed to retrieve Redemption RDO mail => exporting no HTML";
const wchar_t* const kNoRichText = L"ERROR Failed to retrieve Redemption RDO mail => exporting no rich text";
const wchar_t* const kNoSafeMailClass = L"ERROR Failed to retrieve Redemption.SafeMailItem CLSID";
const wchar_t* const kNotByRedemption = L"ERROR MessageHandler::SendWithRDO_: Caught a com exception during Send: ~";

class MemberFailure : public MemberFailureTest {
protected:
    std::wstring Whereabouts(const Road& road) const override {
        const auto delivered = outlook->Delivered();
        const auto waiting = outlook->ItemsIn(road.folder);
        EXPECT_LE(delivered.size() + waiting.size(), 1u);
        if (!delivered.empty()) {
            return L"sent" + (road.actions.block ? L"" : MissingChanges(delivered.at(0), road.item.subject));
        }
        const bool shown = outlook->OpenInspectors() != 0;
        EXPECT_TRUE(shown || !waiting.empty()) << "the mail is lost";
        return std::wstring(waiting.empty() ? L"not saved" : L"kept") + (shown ? L", on the screen" : L"");
    }
};

ItemData HtmlMail() {
    ItemData mail = kMail;
    mail.body.clear();
    mail.htmlBody = L"<html><body>The plans of the year.</body></html>";
    return mail;
}

TEST_F(MemberFailure, PlainMailUpToTheWorker) {
    // clang-format off
    Expect({.item = kMail, .until = {L"Application.Session get", 2}}, {
        {{L"none"}, L"sent", {}},
        {{L"Application.FindConnectionPoint#1", L"Application.Advise#1"}, kUninspected, {}},
        {{L"Application.Session get#1", L"NameSpace.GetDefaultFolder#1", L"MAPIFolder.StoreID get#1",
          L"NameSpace.GetDefaultFolder#2", L"MAPIFolder.StoreID get#2", L"Application.Version get#1"}, kStartFails, {}},
        {{L"Application.ActiveExplorer#1", L"Explorer.Caption get#1", L"MailItem.AutoForwarded get#1",
          L"MailItem.VotingResponse get#1", L"MailItem.EntryID get#1"}, kUninspected, {kEventFails}},
        {{L"MailItem.Save#1"}, kUninspected, {kNotSaved, kEventBreaksOff}},
        {{L"MailItem.EntryID get#2", L"MailItem.EntryID get#3", L"MailItem.EntryID get#4"}, kUninspected, {kEventFails}},
        {{L"MailItem.GetInspector get#1", L"Inspector.IsWordMail get#1", L"Inspector.Close#1",
          L"Application.ActiveExplorer#2", L"Explorer.Caption get#2"}, kUninspectedListed, {kEventFails}},
        {{L"MailItem.Subject get#1"}, kWithoutItsSubject, {kNoSubject}},
        {{L"MailItem.PropertyAccessor get#1", L"PropertyAccessor.GetProperty#1"}, L"sent", {kNoProperty}},
        {{L"MailItem.SendUsingAccount get#1", L"Account.SmtpAddress get#1"}, L"sent", {kNoSender}},
        {{L"MailItem.Recipients get#1", L"Recipients.Count get#1", L"Recipients.ResolveAll#1"}, L"sent", {kNoRecipients}},
        {{L"Recipients.Item#1", L"Recipient.Resolved get#1", L"Recipient.PropertyAccessor get#1",
          L"PropertyAccessor.GetProperty#2", L"Recipient.Type get#1"}, L"sent", {kNoRecipient}},
        {{L"MailItem.Attachments get#1", L"Attachments.Count get#1"}, kOldAttachments, {kNoAttachments}},
        {{L"Attachments.Item#1", L"Attachment.FileName get#1", L"Attachment.SaveAsFile#1"}, kOldAttachments, {kNoAttachment}},
        {{L"MailItem.Body get#1", L"MailItem.BodyFormat get#1"}, kUninspectedListed, {kEventFails}},
    });
    // clang-format on
}

TEST_F(MemberFailure, PlainMailFromTheWorkerOn) {
    // clang-format off
    Expect({.item = kMail, .from = {L"Application.Session get", 2}}, {
        {{L"none"}, L"sent", {}},
        {{L"Application.Session get#2"}, L"sent", {kNoTime}},
        {{L"NameSpace.GetItemFromID#1"}, L"sent", {kNotInDrafts, kDraftsInVain}},
        {{L"NameSpace.GetItemFromID#2"}, L"sent", {kNotInOutbox}},
        {{L"MailItem.LastModificationTime get#1", L"Application.Session get#3"}, L"sent", {kNoTime}},
        {{L"NameSpace.GetItemFromID#3"}, L"sent", {kNotInDrafts, kDraftsInVain}},
        {{L"NameSpace.GetItemFromID#4"}, L"sent", {kNotInOutbox}},
        {{L"MailItem.LastModificationTime get#2"}, L"sent", {kNoTime}},
        {{L"Application.Session get#4"}, L"kept, listed", {kInWindow}},
        {{L"NameSpace.GetItemFromID#5"}, L"sent", {kNotInDrafts, kDraftsInVain}},
        {{L"NameSpace.GetItemFromID#6"}, L"sent", {kNotInOutbox}},
        {{L"MailItem.Subject put#1"}, kOldLabels, {kNoLabel}},
        {{L"MailItem.BodyFormat get#2", L"MailItem.Body put#1"}, kOldBody, {kNoLabel}},
        {{L"MailItem.Attachments get#2", L"Attachments.Count get#2", L"Attachments.Count get#3",
          L"Attachments.Remove#1", L"Attachments.Count get#4", L"Attachments.Add#1"}, L"kept, listed", {kNotReplaced, kStays, kNotSent}},
        {{L"MailItem.EntryID get#5"}, L"kept, listed", {kInWindow}},
        {{L"MailItem.EntryID get#6"}, L"kept, listed", {kStaysListed}},
        {{L"Application.Session get#5", L"NameSpace.GetDefaultFolder#3", L"MailItem.Send#1"}, kOnScreen, {kNotByOutlook, kSendFails}},
        {{L"Application.ActiveExplorer#3", L"Explorer.Caption get#3", L"MailItem.AutoForwarded get#2",
          L"MailItem.VotingResponse get#2", L"MailItem.EntryID get#7"}, L"sent", {kEventFails}},
        {{L"Transport.Submit#1"}, kOnScreen, {kNotByOutlook, kSendFails}},
    });
    // clang-format on
}

TEST_F(MemberFailure, HtmlMailInsideTheEvent) {
    // clang-format off
    Expect({.item = HtmlMail(), .embedded = true}, {
        {{L"none"}, L"sent", {}},
        {{L"Application.FindConnectionPoint#1", L"Application.Advise#1"}, kUninspected, {}},
        {{L"Application.Session get#1", L"NameSpace.GetDefaultFolder#1", L"MAPIFolder.StoreID get#1",
          L"NameSpace.GetDefaultFolder#2", L"MAPIFolder.StoreID get#2", L"Application.Version get#1"}, kStartFails, {}},
        {{L"MailItem.Subject get#1"}, kWithoutItsSubject, {kNoSubject}},
        {{L"MailItem.PropertyAccessor get#1", L"PropertyAccessor.GetProperty#1"}, L"sent", {kNoProperty}},
        {{L"MailItem.SendUsingAccount get#1", L"Account.SmtpAddress get#1"}, L"sent", {kNoSender}},
        {{L"MailItem.Recipients get#1", L"Recipients.Count get#1", L"Recipients.ResolveAll#1"}, L"sent", {kNoRecipients}},
        {{L"Recipients.Item#1", L"Recipient.Resolved get#1", L"Recipient.PropertyAccessor get#1",
          L"PropertyAccessor.GetProperty#2", L"Recipient.Type get#1"}, L"sent", {kNoRecipient}},
        {{L"MailItem.Attachments get#1", L"Attachments.Count get#1"}, kOldAttachments, {kNoAttachments}},
        {{L"Attachments.Item#1", L"Attachment.FileName get#1", L"Attachment.SaveAsFile#1"}, kOldAttachments, {kNoAttachment}},
        {{L"MailItem.Body get#1", L"MailItem.BodyFormat get#1", L"MailItem.HTMLBody get#1"}, kUninspected, {kEventFails}},
        {{L"MailItem.Subject put#1"}, kOldLabels, {kNoLabel}},
        {{L"MailItem.BodyFormat get#2", L"MailItem.HTMLBody put#1"}, kOldBody, {kNoLabel}},
        {{L"MailItem.Attachments get#2", L"Attachments.Count get#2", L"Attachments.Count get#3",
          L"Attachments.Remove#1", L"Attachments.Count get#4", L"Attachments.Add#1"}, kOnScreen, {kNotReplaced, kStays}},
        {{L"Transport.Submit#1"}, kOnScreen, {}},
    });
    // clang-format on
}

TEST_F(MemberFailure, BlockedMailBesideTheEvent) {
    // clang-format off
    Expect({.item = kMail, .actions = Block(), .from = {L"Application.Session get", 2}}, {
        {{L"none"}, kOnScreen, {}},
        {{L"Application.Session get#2"}, kOnScreen, {kNoTime}},
        {{L"NameSpace.GetItemFromID#1"}, kOnScreen, {kNotInDrafts, kDraftsInVain}},
        {{L"NameSpace.GetItemFromID#2"}, kOnScreen, {kNotInOutbox}},
        {{L"MailItem.LastModificationTime get#1"}, kOnScreen, {kNoTime}},
        {{L"Application.Session get#3"}, L"kept, listed", {kInWindow}},
        {{L"NameSpace.GetItemFromID#3"}, kOnScreen, {kNotInDrafts, kDraftsInVain}},
        {{L"NameSpace.GetItemFromID#4"}, kOnScreen, {kNotInOutbox}},
        {{L"MailItem.Display#1"}, L"kept, listed", {kInWindow}},
    });
    // clang-format on
}

TEST_F(MemberFailure, HtmlMailOfAnEarlierRun) {
    // clang-format off
    Expect({.item = HtmlMail(), .waiting = true}, {
        {{L"none"}, L"sent", {}},
        {{L"Application.FindConnectionPoint#1", L"Application.Advise#1"}, kUninspected, {}},
        {{L"Application.Session get#1", L"NameSpace.GetDefaultFolder#1", L"MAPIFolder.StoreID get#1",
          L"NameSpace.GetDefaultFolder#2", L"MAPIFolder.StoreID get#2", L"Application.Version get#1"}, L"kept, listed, uninspected, the start fails", {}},
        {{L"Application.Session get#2"}, kWaitsOn, {kNotResent}},
        {{L"NameSpace.GetItemFromID#1"}, L"sent", {kNotInDrafts, kDraftsInVain}},
        {{L"NameSpace.GetItemFromID#2"}, L"sent", {kNotInOutbox}},
        {{L"MailItem.EntryID get#1"}, kWaitsOn, {kStaysListed}},
        {{L"Application.Session get#3", L"NameSpace.GetDefaultFolder#3", L"MailItem.Send#1"}, kShown, {kNotByOutlook, kSendFails}},
        {{L"Application.ActiveExplorer#1"}, kUninspected, {kEventFails}},
        {{L"MailItem.Subject get#1"}, kWithoutItsSubject, {kNoSubject}},
        {{L"MailItem.PropertyAccessor get#1", L"PropertyAccessor.GetProperty#1"}, L"sent", {kNoProperty}},
        {{L"MailItem.SendUsingAccount get#1", L"Account.SmtpAddress get#1"}, L"sent", {kNoSender}},
        {{L"MailItem.Recipients get#1", L"Recipients.Count get#1", L"Recipients.ResolveAll#1"}, L"sent", {kNoRecipients}},
        {{L"Recipients.Item#1", L"Recipient.Resolved get#1", L"Recipient.PropertyAccessor get#1",
          L"PropertyAccessor.GetProperty#2", L"Recipient.Type get#1"}, L"sent", {kNoRecipient}},
        {{L"MailItem.Attachments get#1", L"Attachments.Count get#1"}, kOldAttachments, {kNoAttachments}},
        {{L"Attachments.Item#1", L"Attachment.FileName get#1", L"Attachment.SaveAsFile#1"}, kOldAttachments, {kNoAttachment}},
        {{L"MailItem.Body get#1", L"MailItem.BodyFormat get#1", L"MailItem.HTMLBody get#1"}, kUninspected, {kEventFails}},
        {{L"MailItem.Subject put#1"}, kOldLabels, {kNoLabel}},
        {{L"MailItem.BodyFormat get#2", L"MailItem.HTMLBody put#1"}, kOldBody, {kNoLabel}},
        {{L"MailItem.Attachments get#2", L"Attachments.Count get#2", L"Attachments.Count get#3",
          L"Attachments.Remove#1", L"Attachments.Count get#4", L"Attachments.Add#1"}, kOnScreen, {kNotReplaced, kStays, kCancelled, kSendFails}},
        {{L"Transport.Submit#1"}, kOnScreen, {kNotByOutlook, kSendFails}},
    });
    // clang-format on
}

TEST_F(MemberFailure, MailOfAnEarlierRunInAnotherStore) {
    // clang-format off
    Expect({.item = kMail, .waiting = true, .from = {L"Application.Session get", 2}, .until = {L"Application.ActiveExplorer", 1}, .folder = L"Archive\\Plans"}, {
        {{L"none"}, L"sent", {L"WARN Caught a com exception when searching in Drafts: (not found)", kDraftsInVain, L"WARN Caught a com exception when searching in Outbox: (not found)", kSearchAll, kNotInStore}},
        {{L"Application.Session get#2"}, kWaitsOn, {kNotResent}},
        {{L"NameSpace.GetItemFromID#1"}, L"sent", {kNotInDrafts}},
        {{L"NameSpace.GetItemFromID#2"}, L"sent", {kNotInOutbox}},
        {{L"Application.Session get#3", L"NameSpace.Folders get#1", L"Folders.GetFirst#1",
          L"MAPIFolder.Folders get#1", L"Folders.GetFirst#2", L"MAPIFolder.StoreID get#3"}, kWaitsOn, {kSearchEnds, kNowhere}},
        {{L"NameSpace.GetItemFromID#3"}, L"sent", {}},
        {{L"Folders.GetNext#1", L"MAPIFolder.StoreID get#4"}, kWaitsOn, {kSearchEnds, kNowhere}},
        {{L"NameSpace.GetItemFromID#4"}, L"sent", {}},
        {{L"Folders.GetNext#2", L"MAPIFolder.StoreID get#5"}, kWaitsOn, {kSearchEnds, kNowhere}},
        {{L"NameSpace.GetItemFromID#5"}, L"sent", {}},
        {{L"Folders.GetNext#3", L"MAPIFolder.StoreID get#6"}, kWaitsOn, {kSearchEnds, kNowhere}},
        {{L"NameSpace.GetItemFromID#6"}, L"sent", {}},
        {{L"Folders.GetNext#4", L"MAPIFolder.StoreID get#7"}, kWaitsOn, {kSearchEnds, kNowhere}},
        {{L"NameSpace.GetItemFromID#7"}, L"sent", {}},
        {{L"Folders.GetNext#5", L"MAPIFolder.StoreID get#8"}, kWaitsOn, {kSearchEnds, kNowhere}},
        {{L"NameSpace.GetItemFromID#8"}, L"sent", {}},
        {{L"Folders.GetNext#6", L"MAPIFolder.StoreID get#9"}, kWaitsOn, {kSearchEnds, kNowhere}},
        {{L"NameSpace.GetItemFromID#9"}, L"sent", {}},
        {{L"Folders.GetNext#7", L"Folders.GetNext#8", L"MAPIFolder.Folders get#2", L"Folders.GetFirst#3",
          L"MAPIFolder.StoreID get#10"}, kWaitsOn, {kSearchEnds, kNowhere}},
        {{L"NameSpace.GetItemFromID#10"}, kWaitsOn, {kNotInStore, kNowhere}},
        {{L"MAPIFolder.FolderPath get#1"}, kWaitsOn, {kSearchEnds, kNowhere}},
        {{L"MailItem.EntryID get#1"}, kWaitsOn, {kStaysListed}},
        {{L"Application.Session get#4", L"NameSpace.GetDefaultFolder#3", L"MailItem.Send#1"}, kShown, {kNotByOutlook, kSendFails}},
    });
    // clang-format on
}

using OldMemberFailure = WithRedemption<MemberFailure>;

/// To one whose address stands in the recipient, and to one whose address only his entry knows.
ItemData OldPlainMail() {
    return {.subject = L"Plans",
            .body = L"The plans of the year.",
            .recipients = {{.name = L"You", .address = L"you@b.example"},
                           {.name = L"Colleague",
                            .address = L"cn=colleague",
                            .addressType = L"EX",
                            .properties = {{0x39FE001F, L"colleague@a.example"}}}},
            .attachments = {{.fileName = L"plan.txt", .content = "secret"}}};
}

ItemData OldHtmlMail() {
    ItemData mail = OldPlainMail();
    mail.htmlBody = L"<html><body>The plans of the year.</body></html>";
    return mail;
}

ItemData OldRichTextMail() {
    ItemData mail = OldPlainMail();
    mail.rtfBody = "{\\rtf1\\ansi\\pard The plans of the year.\\par}";
    return mail;
}

/// Forms that Redemption alone reads and labels.
struct Form {
    ItemData mail;
    const wchar_t* read;
    const wchar_t* notRead; ///< the line
    const wchar_t* write;
};

std::vector<Form> Forms() {
    return {{OldHtmlMail(), L"RDOMail.HTMLBody get#1", kNoHtml, L"RDOMail.HTMLBody put#1"},
            {OldRichTextMail(), L"RDOMail.SaveAs#1", kNoRichText, L"RDOMail.Import#1"}};
}

TEST_F(OldMemberFailure, MailUpToItsBody) {
    for (const ItemData& mail : {OldPlainMail(), OldHtmlMail(), OldRichTextMail()}) {
        // clang-format off
        Expect({.item = mail, .until = {L"MailItem.BodyFormat get", 1}, .version = kVersion11}, {
            {{L"none"}, L"sent", {kNoWordWindow}},
            {{L"Application.FindConnectionPoint#1", L"Application.Advise#1"}, kUninspected, {}},
            {{L"Application.Session get#1", L"NameSpace.GetDefaultFolder#1", L"MAPIFolder.StoreID get#1",
              L"NameSpace.GetDefaultFolder#2", L"MAPIFolder.StoreID get#2", L"Application.Version get#1"}, kStartFails, {}},
            {{L"MailItem.Save#1"}, L"sent", {kNotSaved}},
            {{L"Application.ActiveExplorer#1", L"Explorer.Caption get#1", L"MailItem.AutoForwarded get#1",
              L"MailItem.VotingResponse get#1", L"MailItem.EntryID get#1", L"MailItem.EntryID get#2",
              L"MailItem.EntryID get#3"}, kUninspected, {kEventFails}},
            {{L"MailItem.GetInspector get#1", L"Inspector.Caption get#1", L"Inspector.Close#1",
              L"Application.ActiveExplorer#2", L"Explorer.Caption get#2"}, kUninspectedListed, {kEventFails}},
            {{L"MailItem.Subject get#1"}, kWithoutItsSubject, {kNoSubject}},
            {{L"RDOSession.CreateInstance#1"}, L"sent", {kNotCreated, kNoSession}},
            {{L"RDOSession.GetRDOObjectFromOutlookObject#1"}, L"sent", {kNoView}},
            {{L"RDOMail.Fields#1"}, L"sent", {kNoSubject}},
            {{L"SafeCurrentUser.CreateInstance#1"}, L"sent", {kNoCurrentUser}},
            {{L"SafeCurrentUser.SMTPAddress get#1"}, L"sent", {kNoSender}},
            {{L"SafeMailItem.CreateInstance#1"}, L"sent", {kNoSafeMail, kNoSafeItem}},
            {{L"SafeMailItem.Item put#1", L"SafeMailItem.Recipients get#1", L"SafeRecipients.ResolveAll#1",
              L"SafeRecipients.Count get#1"}, L"sent", {kNoRecipients}},
            {{L"SafeRecipients.Item#1", L"SafeRecipient.Resolved get#1", L"SafeRecipient.AddressEntry get#1",
              L"SafeRecipient.Fields#1", L"SafeRecipient.Address get#1", L"SafeRecipient.Name get#1",
              L"SafeRecipient.Type get#1", L"SafeRecipients.Item#2", L"SafeRecipient.Resolved get#2",
              L"SafeRecipient.AddressEntry get#2", L"SafeRecipient.Fields#2", L"SafeAddressEntry.SMTPAddress get#1",
              L"SafeRecipient.Name get#2", L"SafeRecipient.Type get#2"}, L"sent", {kRecipientSkipped}},
            {{L"SafeMailItem.Attachments get#1", L"SafeAttachments.Count get#1", L"SafeAttachments.Item#1",
              L"SafeAttachment.FileName get#1", L"SafeAttachment.SaveAsFile#1", L"SafeMailItem.Body get#1"}, kUninspectedListed, {kEventFails}},
        });
        // clang-format on
    }
}

TEST_F(OldMemberFailure, PlainBody) {
    // clang-format off
    Expect({.item = OldPlainMail(), .from = {L"MailItem.BodyFormat get", 1}, .until = {L"Application.Session get", 2}, .version = kVersion11}, {
        {{L"none"}, L"sent", {kNoWordWindow}},
        {{L"MailItem.BodyFormat get#1"}, kUninspectedListed, {kEventFails}},
    });
    // clang-format on
}

TEST_F(OldMemberFailure, HtmlOrRichTextBody) {
    for (const Form& form : Forms()) {
        // clang-format off
        Expect({.item = form.mail, .from = {L"MailItem.BodyFormat get", 1}, .until = {L"Application.Session get", 2}, .version = kVersion11}, {
            {{L"none"}, L"sent", {kNoWordWindow}},
            {{L"MailItem.BodyFormat get#1"}, kUninspectedListed, {kEventFails}},
            {{L"RDOSession.CreateInstance#2"}, kOldBody, {kNotCreated, kNoSession, form.notRead}},
            {{L"RDOSession.GetRDOObjectFromOutlookObject#2"}, kOldBody, {kNoView, form.notRead}},
            {{form.read}, kUninspectedListed, {kEventFails}},
        });
        // clang-format on
    }
}

TEST_F(OldMemberFailure, MailInTheWorker) {
    for (const ItemData& mail : {OldPlainMail(), OldHtmlMail(), OldRichTextMail()}) {
        // clang-format off
        Expect({.item = mail, .from = {L"Application.Session get", 2}, .until = {L"Application.Session get", 4}, .version = kVersion11}, {
            {{L"none"}, L"sent", {kNoWordWindow}},
            {{L"Application.Session get#2"}, L"sent", {kNoTime}},
            {{L"NameSpace.GetItemFromID#1"}, L"sent", {kNotInDrafts, kDraftsInVain}},
            {{L"NameSpace.GetItemFromID#2"}, L"sent", {kNotInOutbox}},
            {{L"MailItem.LastModificationTime get#1", L"Application.Session get#3"}, L"sent", {kNoTime}},
            {{L"NameSpace.GetItemFromID#3"}, L"sent", {kNotInDrafts, kDraftsInVain}},
            {{L"NameSpace.GetItemFromID#4"}, L"sent", {kNotInOutbox}},
            {{L"MailItem.LastModificationTime get#2"}, L"sent", {kNoTime}},
        });
        // clang-format on
    }
}

TEST_F(OldMemberFailure, PlainMailAfterTheWorker) {
    // clang-format off
    Expect({.item = OldPlainMail(), .from = {L"Application.Session get", 4}, .version = kVersion11}, {
        {{L"none"}, L"sent", {kNoWordWindow}},
        {{L"Application.Session get#4"}, kListed, {kInWindow}},
        {{L"NameSpace.GetItemFromID#5"}, L"sent", {kNotInDrafts, kDraftsInVain}},
        {{L"NameSpace.GetItemFromID#6"}, L"sent", {kNotInOutbox}},
        {{L"MailItem.Subject put#1"}, kOldLabels, {kNoLabel}},
        {{L"MailItem.BodyFormat get#2"}, kOldBody, {kNoLabel}},
        {{L"RDOSession.CreateInstance#2"}, kOldBody, {kNotCreated, kNoSession, kNoLabel}},
        {{L"RDOSession.GetRDOObjectFromOutlookObject#2"}, kOldBody, {kNoView, kNoLabel}},
        {{L"RDOMail.Body put#1"}, kOldBody, {kNoLabel}},
        {{L"RDOSession.CreateInstance#3"}, kListed, {kNotCreated, kNoSession, kNothingToReplace, kStays, kNotSent}},
        {{L"RDOSession.GetRDOObjectFromOutlookObject#3"}, kListed, {kNoView, kNothingToReplace, kStays, kNotSent}},
        {{L"RDOMail.Attachments get#1", L"RDOAttachments.Count get#1", L"RDOAttachments.Clear#1",
          L"RDOAttachments.Add#1", L"RDOMail.Save#1"}, kListed, {kNotReplaced, kStays, kNotSent}},
        {{L"MailItem.EntryID get#4"}, kListed, {kInWindow}},
        {{L"MailItem.EntryID get#5"}, kListed, {kStaysListed}},
        {{L"RDOSession.CreateInstance#4"}, L"sent", {kNotCreated, kNoSession}},
        {{L"RDOSession.GetRDOObjectFromOutlookObject#4"}, L"sent", {kNoView}},
        {{L"MailItem.Subject get#2", L"RDOMail.Subject put#1", L"RDOMail.Send#1", L"Transport.Submit#1"}, L"sent", {kNotByRedemption}},
    });
    // clang-format on
}

TEST_F(OldMemberFailure, HtmlOrRichTextMailAfterTheWorker) {
    for (const Form& form : Forms()) {
        // clang-format off
        Expect({.item = form.mail, .from = {L"Application.Session get", 4}, .version = kVersion11}, {
            {{L"none"}, L"sent", {kNoWordWindow}},
            {{L"Application.Session get#4"}, kListed, {kInWindow}},
            {{L"NameSpace.GetItemFromID#5"}, L"sent", {kNotInDrafts, kDraftsInVain}},
            {{L"NameSpace.GetItemFromID#6"}, L"sent", {kNotInOutbox}},
            {{L"MailItem.Subject put#1"}, kOldLabels, {kNoLabel}},
            {{L"MailItem.BodyFormat get#2"}, kOldBody, {kNoLabel}},
            {{L"RDOSession.CreateInstance#3"}, kOldBody, {kNotCreated, kNoSession, kNoLabel}},
            {{L"RDOSession.GetRDOObjectFromOutlookObject#3"}, kOldBody, {kNoView, kNoLabel}},
            {{form.write}, kOldBody, {kNoLabel}},
            {{L"RDOSession.CreateInstance#4"}, kListed, {kNotCreated, kNoSession, kNothingToReplace, kStays, kNotSent}},
            {{L"RDOSession.GetRDOObjectFromOutlookObject#4"}, kListed, {kNoView, kNothingToReplace, kStays, kNotSent}},
            {{L"RDOMail.Attachments get#1", L"RDOAttachments.Count get#1", L"RDOAttachments.Clear#1",
              L"RDOAttachments.Add#1", L"RDOMail.Save#1"}, kListed, {kNotReplaced, kStays, kNotSent}},
            {{L"MailItem.EntryID get#4"}, kListed, {kInWindow}},
            {{L"MailItem.EntryID get#5"}, kListed, {kStaysListed}},
            {{L"RDOSession.CreateInstance#5"}, L"sent", {kNotCreated, kNoSession}},
            {{L"RDOSession.GetRDOObjectFromOutlookObject#5"}, L"sent", {kNoView}},
            {{L"MailItem.Subject get#2", L"RDOMail.Subject put#1", L"RDOMail.Send#1", L"Transport.Submit#1"}, L"sent", {kNotByRedemption}},
        });
        // clang-format on
    }
}

TEST_F(OldMemberFailure, BlockedMail) {
    // clang-format off
    Expect({.item = OldHtmlMail(), .actions = Block(), .from = {L"Application.Session get", 2}, .version = kVersion11}, {
        {{L"none"}, kOnScreen, {kNoWordWindow}},
        {{L"Application.Session get#2"}, kOnScreen, {kNoTime}},
        {{L"NameSpace.GetItemFromID#1"}, kOnScreen, {kNotInDrafts, kDraftsInVain}},
        {{L"NameSpace.GetItemFromID#2"}, kOnScreen, {kNotInOutbox}},
        {{L"MailItem.LastModificationTime get#1"}, kOnScreen, {kNoTime}},
        {{L"Application.Session get#3"}, kListed, {kInWindow}},
        {{L"NameSpace.GetItemFromID#3"}, kOnScreen, {kNotInDrafts, kDraftsInVain}},
        {{L"NameSpace.GetItemFromID#4"}, kOnScreen, {kNotInOutbox}},
        {{L"MailItem.Display#1"}, kListed, {kInWindow}},
    });
    // clang-format on
}

TEST_F(OldMemberFailure, MailWithoutRedemption) {
    RemoveRedemption();
    // clang-format off
    Expect({.item = OldPlainMail(), .from = {L"MailItem.Save", 1}, .version = kVersion11}, {
        {{L"none"}, kSubjectAlone, {kNoWordWindow, kNoClass, kNoSession, kNoCurrentUserClass, kNoSafeMailClass, kNoSafeItem, kAttachmentsSkipped, kEmptyText, kNoLabel}},
        {{L"MailItem.Save#1"}, kSubjectAlone, {kNotSaved}},
        {{L"Application.ActiveExplorer#1", L"Explorer.Caption get#1", L"MailItem.AutoForwarded get#1",
          L"MailItem.VotingResponse get#1", L"MailItem.EntryID get#1", L"MailItem.EntryID get#2",
          L"MailItem.EntryID get#3"}, kUninspected, {kEventFails}},
        {{L"MailItem.GetInspector get#1", L"Inspector.Caption get#1", L"Inspector.Close#1",
          L"Application.ActiveExplorer#2", L"Explorer.Caption get#2"}, kUninspectedListed, {kEventFails}},
        {{L"MailItem.Subject get#1"}, kEmptySubjectAlone, {kNoSubject}},
        {{L"MailItem.BodyFormat get#1"}, kUninspectedListed, {kEventFails}},
        {{L"Application.Session get#2"}, kSubjectAlone, {kNoTime}},
        {{L"NameSpace.GetItemFromID#1"}, kSubjectAlone, {kNotInDrafts, kDraftsInVain}},
        {{L"NameSpace.GetItemFromID#2"}, kSubjectAlone, {kNotInOutbox}},
        {{L"MailItem.LastModificationTime get#1", L"Application.Session get#3"}, kSubjectAlone, {kNoTime}},
        {{L"NameSpace.GetItemFromID#3"}, kSubjectAlone, {kNotInDrafts, kDraftsInVain}},
        {{L"NameSpace.GetItemFromID#4"}, kSubjectAlone, {kNotInOutbox}},
        {{L"MailItem.LastModificationTime get#2"}, kSubjectAlone, {kNoTime}},
        {{L"Application.Session get#4"}, kListed, {kInWindow}},
        {{L"NameSpace.GetItemFromID#5"}, kSubjectAlone, {kNotInDrafts, kDraftsInVain}},
        {{L"NameSpace.GetItemFromID#6"}, kSubjectAlone, {kNotInOutbox}},
        {{L"MailItem.Subject put#1"}, kUnchanged, {}},
        {{L"MailItem.BodyFormat get#2"}, kSubjectAlone, {}},
        {{L"MailItem.EntryID get#4"}, kListed, {kInWindow}},
        {{L"MailItem.EntryID get#5"}, kListed, {kStaysListed}},
        {{L"Application.Session get#5", L"NameSpace.GetDefaultFolder#3", L"MailItem.Send#1"}, kOnScreen, {kNotByOutlook, kSendFails}},
        {{L"MailItem.Save#2"}, kSubjectAlone, {kNotSaved}},
        {{L"Application.ActiveExplorer#3", L"Explorer.Caption get#3", L"MailItem.AutoForwarded get#2",
          L"MailItem.VotingResponse get#2", L"MailItem.EntryID get#6"}, kSubjectAlone, {kEventFails}},
        {{L"Transport.Submit#1"}, kOnScreen, {kNotByOutlook, kSendFails}},
    });
    // clang-format on
}

TEST_F(OldMemberFailure, MailInsideTheEventUpToItsBody) {
    for (const ItemData& mail : {OldPlainMail(), OldHtmlMail(), OldRichTextMail()}) {
        // clang-format off
        Expect({.item = mail, .embedded = true, .from = {L"MailItem.Save", 1}, .until = {L"MailItem.BodyFormat get", 1}, .version = kVersion11}, {
            {{L"none"}, L"sent", {}},
            {{L"MailItem.Save#1"}, L"sent", {kNotSaved}},
            {{L"MailItem.Subject get#1"}, kWithoutItsSubject, {kNoSubject}},
            {{L"RDOSession.CreateInstance#1"}, L"sent", {kNotCreated, kNoSession}},
            {{L"RDOSession.GetRDOObjectFromOutlookObject#1"}, L"sent", {kNoView}},
            {{L"RDOMail.Fields#1"}, L"sent", {kNoSubject}},
            {{L"SafeCurrentUser.CreateInstance#1"}, L"sent", {kNoCurrentUser}},
            {{L"SafeCurrentUser.SMTPAddress get#1"}, L"sent", {kNoSender}},
            {{L"SafeMailItem.CreateInstance#1"}, L"sent", {kNoSafeMail, kNoSafeItem}},
            {{L"SafeMailItem.Item put#1", L"SafeMailItem.Recipients get#1", L"SafeRecipients.ResolveAll#1",
              L"SafeRecipients.Count get#1"}, L"sent", {kNoRecipients}},
            {{L"SafeRecipients.Item#1", L"SafeRecipient.Resolved get#1", L"SafeRecipient.AddressEntry get#1",
              L"SafeRecipient.Fields#1", L"SafeRecipient.Address get#1", L"SafeRecipient.Name get#1",
              L"SafeRecipient.Type get#1", L"SafeRecipients.Item#2", L"SafeRecipient.Resolved get#2",
              L"SafeRecipient.AddressEntry get#2", L"SafeRecipient.Fields#2", L"SafeAddressEntry.SMTPAddress get#1",
              L"SafeRecipient.Name get#2", L"SafeRecipient.Type get#2"}, L"sent", {kRecipientSkipped}},
            {{L"SafeMailItem.Attachments get#1", L"SafeAttachments.Count get#1", L"SafeAttachments.Item#1",
              L"SafeAttachment.FileName get#1", L"SafeAttachment.SaveAsFile#1", L"SafeMailItem.Body get#1"}, kUninspected, {kEventFails}},
        });
        // clang-format on
    }
}

TEST_F(OldMemberFailure, PlainMailInsideTheEvent) {
    // clang-format off
    Expect({.item = OldPlainMail(), .embedded = true, .from = {L"MailItem.BodyFormat get", 1}, .version = kVersion11}, {
        {{L"none"}, L"sent", {}},
        {{L"MailItem.BodyFormat get#1"}, kUninspected, {kEventFails}},
        {{L"MailItem.Subject put#1"}, kOldLabels, {kNoLabel}},
        {{L"MailItem.BodyFormat get#2"}, kOldBody, {kNoLabel}},
        {{L"RDOSession.CreateInstance#2"}, kOldBody, {kNotCreated, kNoSession, kNoLabel}},
        {{L"RDOSession.GetRDOObjectFromOutlookObject#2"}, kOldBody, {kNoView, kNoLabel}},
        {{L"RDOMail.Body put#1"}, kOldBody, {kNoLabel}},
        {{L"RDOSession.CreateInstance#3"}, kOnScreen, {kNotCreated, kNoSession, kNothingToReplace, kStays}},
        {{L"RDOSession.GetRDOObjectFromOutlookObject#3"}, kOnScreen, {kNoView, kNothingToReplace, kStays}},
        {{L"RDOMail.Attachments get#1", L"RDOAttachments.Count get#1", L"RDOAttachments.Clear#1",
          L"RDOAttachments.Add#1", L"RDOMail.Save#1"}, kOnScreen, {kNotReplaced, kStays}},
        {{L"Transport.Submit#1"}, kOnScreen, {}},
    });
    // clang-format on
}

TEST_F(OldMemberFailure, HtmlOrRichTextMailInsideTheEvent) {
    for (const Form& form : Forms()) {
        // clang-format off
        Expect({.item = form.mail, .embedded = true, .from = {L"MailItem.BodyFormat get", 1}, .version = kVersion11}, {
            {{L"none"}, L"sent", {}},
            {{L"MailItem.BodyFormat get#1"}, kUninspected, {kEventFails}},
            {{L"RDOSession.CreateInstance#2"}, kOldBody, {kNotCreated, kNoSession, form.notRead}},
            {{L"RDOSession.GetRDOObjectFromOutlookObject#2"}, kOldBody, {kNoView, form.notRead}},
            {{form.read}, kUninspected, {kEventFails}},
            {{L"MailItem.Subject put#1"}, kOldLabels, {kNoLabel}},
            {{L"MailItem.BodyFormat get#2"}, kOldBody, {kNoLabel}},
            {{L"RDOSession.CreateInstance#3"}, kOldBody, {kNotCreated, kNoSession, kNoLabel}},
            {{L"RDOSession.GetRDOObjectFromOutlookObject#3"}, kOldBody, {kNoView, kNoLabel}},
            {{form.write}, kOldBody, {kNoLabel}},
            {{L"RDOSession.CreateInstance#4"}, kOnScreen, {kNotCreated, kNoSession, kNothingToReplace, kStays}},
            {{L"RDOSession.GetRDOObjectFromOutlookObject#4"}, kOnScreen, {kNoView, kNothingToReplace, kStays}},
            {{L"RDOMail.Attachments get#1", L"RDOAttachments.Count get#1", L"RDOAttachments.Clear#1",
              L"RDOAttachments.Add#1", L"RDOMail.Save#1"}, kOnScreen, {kNotReplaced, kStays}},
            {{L"Transport.Submit#1"}, kOnScreen, {}},
        });
        // clang-format on
    }
}

TEST_F(OldMemberFailure, BlockedMailInsideTheEvent) {
    // clang-format off
    Expect({.item = OldHtmlMail(), .actions = Block(), .embedded = true, .from = {L"MailItem.Save", 1}, .version = kVersion11}, {
        {{L"none"}, kOnScreen, {}},
        {{L"MailItem.Save#1"}, kOnScreen, {kNotSaved}},
        {{L"MailItem.Subject get#1"}, kOnScreen, {kNoSubject}},
        {{L"RDOSession.CreateInstance#1"}, kOnScreen, {kNotCreated, kNoSession}},
        {{L"RDOSession.GetRDOObjectFromOutlookObject#1"}, kOnScreen, {kNoView}},
        {{L"RDOMail.Fields#1"}, kOnScreen, {kNoSubject}},
        {{L"SafeCurrentUser.CreateInstance#1"}, kOnScreen, {kNoCurrentUser}},
        {{L"SafeCurrentUser.SMTPAddress get#1"}, kOnScreen, {kNoSender}},
        {{L"SafeMailItem.CreateInstance#1"}, kOnScreen, {kNoSafeMail, kNoSafeItem}},
        {{L"SafeMailItem.Item put#1", L"SafeMailItem.Recipients get#1", L"SafeRecipients.ResolveAll#1",
          L"SafeRecipients.Count get#1"}, kOnScreen, {kNoRecipients}},
        {{L"SafeRecipients.Item#1", L"SafeRecipient.Resolved get#1", L"SafeRecipient.AddressEntry get#1",
          L"SafeRecipient.Fields#1", L"SafeRecipient.Address get#1", L"SafeRecipient.Name get#1",
          L"SafeRecipient.Type get#1", L"SafeRecipients.Item#2", L"SafeRecipient.Resolved get#2",
          L"SafeRecipient.AddressEntry get#2", L"SafeRecipient.Fields#2", L"SafeAddressEntry.SMTPAddress get#1",
          L"SafeRecipient.Name get#2", L"SafeRecipient.Type get#2"}, kOnScreen, {kRecipientSkipped}},
        {{L"SafeMailItem.Attachments get#1", L"SafeAttachments.Count get#1", L"SafeAttachments.Item#1",
          L"SafeAttachment.FileName get#1", L"SafeAttachment.SaveAsFile#1", L"SafeMailItem.Body get#1",
          L"MailItem.BodyFormat get#1"}, L"sent, uninspected", {kEventFails}},
        {{L"RDOSession.CreateInstance#2"}, kOnScreen, {kNotCreated, kNoSession, kNoHtml}},
        {{L"RDOSession.GetRDOObjectFromOutlookObject#2"}, kOnScreen, {kNoView, kNoHtml}},
        {{L"RDOMail.HTMLBody get#1"}, L"sent, uninspected", {kEventFails}},
    });
    // clang-format on
}

TEST_F(OldMemberFailure, MailWithoutRedemptionInsideTheEvent) {
    RemoveRedemption();
    // clang-format off
    Expect({.item = OldPlainMail(), .embedded = true, .from = {L"MailItem.Save", 1}, .version = kVersion11}, {
        {{L"none"}, kSubjectAlone, {kNoClass, kNoSession, kNoCurrentUserClass, kNoSafeMailClass, kNoSafeItem, kAttachmentsSkipped, kEmptyText, kNoLabel}},
        {{L"MailItem.Save#1"}, kSubjectAlone, {kNotSaved}},
        {{L"MailItem.Subject get#1"}, kEmptySubjectAlone, {kNoSubject}},
        {{L"MailItem.BodyFormat get#1"}, kUninspected, {kEventFails}},
        {{L"MailItem.Subject put#1"}, kUnchanged, {}},
        {{L"MailItem.BodyFormat get#2"}, kSubjectAlone, {}},
        {{L"Transport.Submit#1"}, kOnScreen, {}},
    });
    // clang-format on
}

TEST_F(OldMemberFailure, MailOfAnEarlierRun) {
    // clang-format off
    Expect({.item = OldPlainMail(), .waiting = true, .from = {L"Application.Session get", 2}, .version = kVersion11}, {
        {{L"none"}, kShown, {}},
        {{L"Application.Session get#2"}, kWaitsOn, {kNotResent}},
        {{L"NameSpace.GetItemFromID#1"}, kShown, {kNotInDrafts, kDraftsInVain}},
        {{L"NameSpace.GetItemFromID#2"}, kShown, {kNotInOutbox}},
        {{L"MailItem.Display#1"}, kWaitsOn, {kNotResent}},
    });
    // clang-format on
}

} // namespace
} // namespace vorlek
