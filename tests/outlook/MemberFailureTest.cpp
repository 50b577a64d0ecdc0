// Every call of Outlook's object model that a mail's road makes fails once, each in a run of its own.
#include <filesystem>
#include <regex>

#include "foundation/RegistryKey.h"
#include "foundation/StringUtils.h"
#include "tests/outlook/AsyncTest.h"
#include "tests/support/ReplacedImport.h"

namespace vorlek {
namespace {

using outlook_tests::ErrorText;
using outlook_tests::EventSink;
using outlook_tests::kAccessDenied;
using outlook_tests::OutlookTest;
using stand_ins::ItemData;

using MessageBoxImport = test_support::ReplacedImport<"MessageBoxW", decltype(MessageBoxW)>;

const std::wstring kLabelled = L"[Internal] Plans";

/// A call to fail: the n-th of a member.
struct FailingCall {
    std::wstring member;
    std::size_t nth = 0;

    bool operator==(const FailingCall&) const = default;
};

/// A mail's road through the add-in, from the start of Outlook on.
struct Road {
    stand_ins::Actions actions;
    bool embedded = false;
    bool html = false;
    bool waiting = false;  ///< the mail is one that an earlier run left, and no main window is open yet
    FailingCall from = {}; ///< those before it are another road's, too; empty: from the first on
};

class MemberFailure : public OutlookTest {
protected:
    /// Fails each call of a successful run in turn, and compares with the rows, "call | outcome | lines of the log |",
    /// of which there is one for each call, in their order. In the lines ~ is the text of the failure. The run as a
    /// whole has the first row.
    void Expect(const Road& road, const std::wstring& rows) {
        std::vector<std::wstring> seen = {L"none | " + Walk_(road, {})};
        for (const FailingCall& call : RecordedCalls_(road.from)) {
            const std::wstring name = call.member + L"#" + std::to_wstring(call.nth);
            SCOPED_TRACE(std::string(name.begin(), name.end()));
            seen.push_back(name + L" | " + Walk_(road, call));
        }
        EXPECT_THAT(seen, testing::ElementsAreArray(LinesOf_(rows)));
    }

private:
    /// The calls of the last run, from one of them on.
    std::vector<FailingCall> RecordedCalls_(const FailingCall& from) const {
        std::vector<FailingCall> calls;
        for (const std::wstring& member : members_) {
            if (member != L"Application.ItemSend") { // the event: Outlook's call, not ours
                calls.push_back(
                    {member, 1 + static_cast<std::size_t>(std::ranges::count(calls, member, &FailingCall::member))});
            }
        }
        if (!from.member.empty()) {
            calls.erase(calls.begin(), std::ranges::find(calls, from));
        }
        return calls;
    }

    static std::vector<std::wstring> LinesOf_(const std::wstring& text) {
        std::vector<std::wstring> lines;
        std::wistringstream stream(text);
        for (std::wstring line; std::getline(stream, line);) {
            if (!line.empty()) {
                lines.push_back(line);
            }
        }
        return lines;
    }

    /// "outcome | lines" of one run.
    std::wstring Walk_(const Road& road, const FailingCall& failing) {
        StartAfresh_(road);
        const stand_ins::Agent agent(With_(road.actions));
        if (!failing.member.empty()) {
            outlook->Failures().Fail(failing.member, kAccessDenied, failing.nth);
        }
        const MessageBoxImport box([](HWND, const wchar_t*, const wchar_t*, UINT) { return IDOK; });
        OutlookController controller;
        const EventSink sink(outlook->Application(),
                             [&](IDispatch* item) { return controller.InspectItemBeforeSending(item); });
        const bool started = StartController_(controller, road);
        if (!road.waiting) {
            outlook->Send(outlook->NewMail(Mail_(road)));
        }
        EXPECT_TRUE(outlook->RunUntil([] { return WorkerThread::Running() == 0; }, 20000));
        stand_ins::Outlook::HandleMessages();
        outlook->Failures().Clear();
        members_ = outlook->Calls().Members();
        const bool inspected = std::ranges::count(agent.Requests(), L"Inspect", &stand_ins::Request::method) != 0;
        std::wstring outcome = Whereabouts_(road) + (inspected ? L"" : L", uninspected") +
                               (started ? L"" : L", the start fails") +
                               (box.Calls() == 0 ? L"" : L", the user is told");
        controller.RestoreExplorerWindow_();
        return outcome + L" | " + Lines_() + L" |";
    }

    void StartAfresh_(const Road& road) {
        outlook.reset();
        std::filesystem::remove_all(folder.Path());
        RegistryKey::GetCurrentUser().DeleteSubKeyTree(outlook_tests::kPluginKey);
        OutlookControllerPeer::ForgetWindows();
        Restart({});
        SetVersion(L"-1."); // not known yet
        if (road.waiting) {
            const std::wstring id = stand_ins::GetText(outlook->SavedItem(Mail_(road)), L"EntryID");
            CommonUtils::AddToInspectedItems(id, id, nullptr);
            outlook->CloseExplorer();
        }
        outlook->Calls().Clear();
        log.Clear();
    }

    /// As at the add-in's connection: nothing gets out of it. False: the start broke off.
    bool StartController_(OutlookController& controller, const Road& road) const {
        OutlookControllerPeer peer{controller};
        try {
            controller.InitApplication(Outlook::_ApplicationPtr(outlook->Application().GetInterfacePtr()));
            peer.SetEmbedded(road.embedded);
            controller.HandleIncompleteInspections();
            return true;
        } catch (const _com_error& failure) {
            EXPECT_EQ(failure.Error(), kAccessDenied);
            peer.SetEmbedded(road.embedded);
            return false;
        }
    }

    std::wstring Whereabouts_(const Road& road) const {
        std::vector<std::wstring> ids;
        CommonUtils::GetInspectedItemIds(ids, nullptr);
        const auto delivered = outlook->Delivered();
        const auto drafts = outlook->ItemsIn(L"Drafts");
        const std::wstring listed = ids.empty() ? L"" : L", listed";
        EXPECT_LE(delivered.size() + drafts.size(), 1u);
        if (!delivered.empty()) {
            return L"sent" + (road.actions.subject.empty() ? L"" : Changes_(delivered.at(0))) + listed;
        }
        const bool shown = outlook->OpenInspectors() != 0;
        EXPECT_TRUE(shown || !drafts.empty()) << "the mail is lost";
        return (drafts.empty() ? L"not saved" : L"in Drafts") + listed + (shown ? L", on the screen" : L"");
    }

    static std::wstring Changes_(const ItemData& mail) {
        std::wstring missing;
        missing += mail.subject == kLabelled ? L"" : L", subject \"" + mail.subject + L"\"";
        missing += mail.body.starts_with(L"Internal") ? L"" : L", old body";
        const bool replaced = mail.attachments.size() == 1 && mail.attachments.at(0).displayName == L"notice.txt";
        return missing + (replaced ? L"" : L", " + std::to_wstring(mail.attachments.size()) + L" old attachments");
    }

    std::wstring Lines_() const {
        std::wstring lines;
        for (const auto& line : log.Lines()) {
            if (line.level == L"ERROR" || line.level == L"WARN") {
                lines += (lines.empty() ? L"" : L" // ") + line.level + L" " + line.text;
            }
        }
        lines = std::regex_replace(lines, std::wregex(L"\\w+\\.cpp\\(\\d+\\)"), L"FILE");
        lines = StringUtils::Replace(lines, ErrorText(kAccessDenied), L"~");
        return StringUtils::Replace(lines, ErrorText(E_ABORT), L"~stopped");
    }

    static stand_ins::AgentOptions With_(const stand_ins::Actions& actions) {
        stand_ins::AgentOptions options;
        options.policy = stand_ins::Policy::Always(actions);
        return options;
    }

    static ItemData Mail_(const Road& road) {
        ItemData mail = outlook_tests::kMail;
        if (road.html) {
            mail.body.clear();
            mail.htmlBody = L"<html><body>The plans of the year.</body></html>";
        }
        return mail;
    }

    std::vector<std::wstring> members_; ///< that the last run called
};

stand_ins::Actions Changes() {
    stand_ins::Actions actions;
    actions.subject = L"[Internal] {subject}";
    actions.bodyBefore = L"Internal";
    actions.replacement.emplace();
    actions.replacement->text = L"Removed.";
    actions.replacement->displayName = L"notice.txt";
    return actions;
}

stand_ins::Actions Block() {
    stand_ins::Actions actions;
    actions.block = true;
    return actions;
}

TEST_F(MemberFailure, PlainMailBesideTheEvent) {
    Expect({.actions = Changes()}, LR"(
none | sent |  |
Application.FindConnectionPoint#1 | sent, subject "Plans", old body, 1 old attachments, uninspected |  |
Application.Advise#1 | sent, subject "Plans", old body, 1 old attachments, uninspected |  |
Application.Session get#1 | sent, the start fails |  |
NameSpace.GetDefaultFolder#1 | sent, the start fails |  |
MAPIFolder.StoreID get#1 | sent, the start fails |  |
NameSpace.GetDefaultFolder#2 | sent, the start fails |  |
MAPIFolder.StoreID get#2 | sent, the start fails |  |
Application.Version get#1 | sent, the start fails |  |
Application.ActiveExplorer#1 | sent, subject "Plans", old body, 1 old attachments, uninspected | ERROR InspectItemBeforeSending:COM error= ~ |
Explorer.Caption get#1 | sent, subject "Plans", old body, 1 old attachments, uninspected | ERROR InspectItemBeforeSending:COM error= ~ |
MailItem.AutoForwarded get#1 | sent, subject "Plans", old body, 1 old attachments, uninspected | ERROR InspectItemBeforeSending:COM error= ~ |
MailItem.VotingResponse get#1 | sent, subject "Plans", old body, 1 old attachments, uninspected | ERROR InspectItemBeforeSending:COM error= ~ |
MailItem.EntryID get#1 | sent, subject "Plans", old body, 1 old attachments, uninspected | ERROR InspectItemBeforeSending:COM error= ~ |
MailItem.Save#1 | sent, subject "Plans", old body, 1 old attachments, uninspected | WARN COM exception: ~ item wasn't saved // ERROR InspectItemBeforeSending:exception occured  |
MailItem.EntryID get#2 | sent, subject "Plans", old body, 1 old attachments, uninspected | ERROR InspectItemBeforeSending:COM error= ~ |
MailItem.EntryID get#3 | sent, subject "Plans", old body, 1 old attachments, uninspected | ERROR InspectItemBeforeSending:COM error= ~ |
MailItem.EntryID get#4 | sent, subject "Plans", old body, 1 old attachments, uninspected | ERROR InspectItemBeforeSending:COM error= ~ |
MailItem.GetInspector get#1 | sent, subject "Plans", old body, 1 old attachments, listed, uninspected | ERROR InspectItemBeforeSending:COM error= ~ |
Inspector.IsWordMail get#1 | sent, subject "Plans", old body, 1 old attachments, listed, uninspected | ERROR InspectItemBeforeSending:COM error= ~ |
Inspector.Close#1 | sent, subject "Plans", old body, 1 old attachments, listed, uninspected | ERROR InspectItemBeforeSending:COM error= ~ |
Application.ActiveExplorer#2 | sent, subject "Plans", old body, 1 old attachments, listed, uninspected | ERROR InspectItemBeforeSending:COM error= ~ |
Explorer.Caption get#2 | sent, subject "Plans", old body, 1 old attachments, listed, uninspected | ERROR InspectItemBeforeSending:COM error= ~ |
MailItem.Subject get#1 | sent, subject "[Internal] " | ERROR Caught a com exception while resolving item subject (skipping): ~ |
MailItem.PropertyAccessor get#1 | sent | ERROR COM exception while resolving property: ~ |
PropertyAccessor.GetProperty#1 | sent | ERROR COM exception while resolving property: ~ |
MailItem.SendUsingAccount get#1 | sent | ERROR Caught a com exception while resolving item sender (skipping): ~ |
Account.SmtpAddress get#1 | sent | ERROR Caught a com exception while resolving item sender (skipping): ~ |
MailItem.Recipients get#1 | sent | ERROR Caught a com exception while resolving item recipients (skipping): ~ |
Recipients.Count get#1 | sent | ERROR Caught a com exception while resolving item recipients (skipping): ~ |
Recipients.ResolveAll#1 | sent | ERROR Caught a com exception while resolving item recipients (skipping): ~ |
Recipients.Item#1 | sent | ERROR Caught a com exception while resolving item recipient #1 - (skipping): ~ |
Recipient.Resolved get#1 | sent | ERROR Caught a com exception while resolving item recipient #1 - (skipping): ~ |
Recipient.PropertyAccessor get#1 | sent | ERROR Caught a com exception while resolving item recipient #1 - (skipping): ~ |
PropertyAccessor.GetProperty#2 | sent | ERROR Caught a com exception while resolving item recipient #1 - (skipping): ~ |
Recipient.Type get#1 | sent | ERROR Caught a com exception while resolving item recipient #1 - (skipping): ~ |
MailItem.Attachments get#1 | sent, 1 old attachments | ERROR Caught a com exception while adding attachments (skipping): ~ |
Attachments.Count get#1 | sent, 1 old attachments | ERROR Caught a com exception while adding attachments (skipping): ~ |
Attachments.Item#1 | sent, 1 old attachments | ERROR Caught a com exception while adding attachment #1 - (skipping): ~ |
Attachment.FileName get#1 | sent, 1 old attachments | ERROR Caught a com exception while adding attachment #1 - (skipping): ~ |
Attachment.SaveAsFile#1 | sent, 1 old attachments | ERROR Caught a com exception while adding attachment #1 - (skipping): ~ |
MailItem.Body get#1 | sent, subject "Plans", old body, 1 old attachments, listed, uninspected | ERROR InspectItemBeforeSending:COM error= ~ |
MailItem.BodyFormat get#1 | sent, subject "Plans", old body, 1 old attachments, listed, uninspected | ERROR InspectItemBeforeSending:COM error= ~ |
Application.Session get#2 | sent | ERROR Could not get item and last modification - returning old date |
NameSpace.GetItemFromID#1 | sent | WARN Caught a com exception when searching in Drafts: ~ // WARN Could not locate the requested item in the Drafts folder - searching in OUTBOX |
NameSpace.GetItemFromID#2 | sent | WARN Caught a com exception when searching in Outbox: ~ |
MailItem.LastModificationTime get#1 | sent | ERROR Could not get item and last modification - returning old date |
Application.Session get#3 | sent | ERROR Could not get item and last modification - returning old date |
NameSpace.GetItemFromID#3 | sent | WARN Caught a com exception when searching in Drafts: ~ // WARN Could not locate the requested item in the Drafts folder - searching in OUTBOX |
NameSpace.GetItemFromID#4 | sent | WARN Caught a com exception when searching in Outbox: ~ |
MailItem.LastModificationTime get#2 | sent | ERROR Could not get item and last modification - returning old date |
Application.Session get#4 | in Drafts, listed | ERROR Caught a com exception: ~ |
NameSpace.GetItemFromID#5 | sent | WARN Caught a com exception when searching in Drafts: ~ // WARN Could not locate the requested item in the Drafts folder - searching in OUTBOX |
NameSpace.GetItemFromID#6 | sent | WARN Caught a com exception when searching in Outbox: ~ |
MailItem.Subject put#1 | sent, subject "Plans", old body | ERROR Unknown error while applying data label. |
MailItem.BodyFormat get#2 | sent, old body | ERROR Unknown error while applying data label. |
MailItem.Body put#1 | sent, old body | ERROR Unknown error while applying data label. |
MailItem.Attachments get#2 | in Drafts, listed | ERROR Caught a com exception while replacing attachments: ~ // ERROR Failed to override attachments - cannot send the email // ERROR Caught a vorlek exception: FILE: vorlek::OutlookController::SendMail_: Exception: Failed to replace attacments! |
Attachments.Count get#2 | in Drafts, listed | ERROR Caught a com exception while replacing attachments: ~ // ERROR Failed to override attachments - cannot send the email // ERROR Caught a vorlek exception: FILE: vorlek::OutlookController::SendMail_: Exception: Failed to replace attacments! |
Attachments.Count get#3 | in Drafts, listed | ERROR Caught a com exception while replacing attachments: ~ // ERROR Failed to override attachments - cannot send the email // ERROR Caught a vorlek exception: FILE: vorlek::OutlookController::SendMail_: Exception: Failed to replace attacments! |
Attachments.Remove#1 | in Drafts, listed | ERROR Caught a com exception while replacing attachments: ~ // ERROR Failed to override attachments - cannot send the email // ERROR Caught a vorlek exception: FILE: vorlek::OutlookController::SendMail_: Exception: Failed to replace attacments! |
Attachments.Count get#4 | in Drafts, listed | ERROR Caught a com exception while replacing attachments: ~ // ERROR Failed to override attachments - cannot send the email // ERROR Caught a vorlek exception: FILE: vorlek::OutlookController::SendMail_: Exception: Failed to replace attacments! |
Attachments.Add#1 | in Drafts, listed | ERROR Caught a com exception while replacing attachments: ~ // ERROR Failed to override attachments - cannot send the email // ERROR Caught a vorlek exception: FILE: vorlek::OutlookController::SendMail_: Exception: Failed to replace attacments! |
MailItem.EntryID get#5 | in Drafts, listed | ERROR Caught a com exception: ~ |
MailItem.EntryID get#6 | in Drafts, listed | ERROR MessageHandler::Send: Caught a com exception during RemoveFromInspectedItems or SendWithRDO_() ~ |
Application.Session get#5 | in Drafts, on the screen | ERROR MessageHandler::Send: YM:Caught a com exception during Send: ~ // ERROR MessageHandler::Send - Outlook failed to send the message item. |
NameSpace.GetDefaultFolder#3 | in Drafts, on the screen | ERROR MessageHandler::Send: YM:Caught a com exception during Send: ~ // ERROR MessageHandler::Send - Outlook failed to send the message item. |
MailItem.Send#1 | in Drafts, on the screen | ERROR MessageHandler::Send: YM:Caught a com exception during Send: ~ // ERROR MessageHandler::Send - Outlook failed to send the message item. |
Application.ActiveExplorer#3 | sent | ERROR InspectItemBeforeSending:COM error= ~ |
Explorer.Caption get#3 | sent | ERROR InspectItemBeforeSending:COM error= ~ |
MailItem.AutoForwarded get#2 | sent | ERROR InspectItemBeforeSending:COM error= ~ |
MailItem.VotingResponse get#2 | sent | ERROR InspectItemBeforeSending:COM error= ~ |
MailItem.EntryID get#7 | sent | ERROR InspectItemBeforeSending:COM error= ~ |
Transport.Submit#1 | in Drafts, on the screen | ERROR MessageHandler::Send: YM:Caught a com exception during Send: ~ // ERROR MessageHandler::Send - Outlook failed to send the message item. |
)");
}

TEST_F(MemberFailure, HtmlMailInsideTheEvent) {
    Expect({.actions = Changes(), .embedded = true, .html = true}, LR"(
none | sent |  |
Application.FindConnectionPoint#1 | sent, subject "Plans", old body, 1 old attachments, uninspected |  |
Application.Advise#1 | sent, subject "Plans", old body, 1 old attachments, uninspected |  |
Application.Session get#1 | sent, the start fails |  |
NameSpace.GetDefaultFolder#1 | sent, the start fails |  |
MAPIFolder.StoreID get#1 | sent, the start fails |  |
NameSpace.GetDefaultFolder#2 | sent, the start fails |  |
MAPIFolder.StoreID get#2 | sent, the start fails |  |
Application.Version get#1 | sent, the start fails |  |
MailItem.Subject get#1 | sent, subject "[Internal] " | ERROR Caught a com exception while resolving item subject (skipping): ~ |
MailItem.PropertyAccessor get#1 | sent | ERROR COM exception while resolving property: ~ |
PropertyAccessor.GetProperty#1 | sent | ERROR COM exception while resolving property: ~ |
MailItem.SendUsingAccount get#1 | sent | ERROR Caught a com exception while resolving item sender (skipping): ~ |
Account.SmtpAddress get#1 | sent | ERROR Caught a com exception while resolving item sender (skipping): ~ |
MailItem.Recipients get#1 | sent | ERROR Caught a com exception while resolving item recipients (skipping): ~ |
Recipients.Count get#1 | sent | ERROR Caught a com exception while resolving item recipients (skipping): ~ |
Recipients.ResolveAll#1 | sent | ERROR Caught a com exception while resolving item recipients (skipping): ~ |
Recipients.Item#1 | sent | ERROR Caught a com exception while resolving item recipient #1 - (skipping): ~ |
Recipient.Resolved get#1 | sent | ERROR Caught a com exception while resolving item recipient #1 - (skipping): ~ |
Recipient.PropertyAccessor get#1 | sent | ERROR Caught a com exception while resolving item recipient #1 - (skipping): ~ |
PropertyAccessor.GetProperty#2 | sent | ERROR Caught a com exception while resolving item recipient #1 - (skipping): ~ |
Recipient.Type get#1 | sent | ERROR Caught a com exception while resolving item recipient #1 - (skipping): ~ |
MailItem.Attachments get#1 | sent, 1 old attachments | ERROR Caught a com exception while adding attachments (skipping): ~ |
Attachments.Count get#1 | sent, 1 old attachments | ERROR Caught a com exception while adding attachments (skipping): ~ |
Attachments.Item#1 | sent, 1 old attachments | ERROR Caught a com exception while adding attachment #1 - (skipping): ~ |
Attachment.FileName get#1 | sent, 1 old attachments | ERROR Caught a com exception while adding attachment #1 - (skipping): ~ |
Attachment.SaveAsFile#1 | sent, 1 old attachments | ERROR Caught a com exception while adding attachment #1 - (skipping): ~ |
MailItem.Body get#1 | sent, subject "Plans", old body, 1 old attachments, uninspected | ERROR InspectItemBeforeSending:COM error= ~ |
MailItem.BodyFormat get#1 | sent, subject "Plans", old body, 1 old attachments, uninspected | ERROR InspectItemBeforeSending:COM error= ~ |
MailItem.HTMLBody get#1 | sent, subject "Plans", old body, 1 old attachments, uninspected | ERROR InspectItemBeforeSending:COM error= ~ |
MailItem.Subject put#1 | sent, subject "Plans", old body | ERROR Unknown error while applying data label. |
MailItem.BodyFormat get#2 | sent, old body | ERROR Unknown error while applying data label. |
MailItem.HTMLBody put#1 | sent, old body | ERROR Unknown error while applying data label. |
MailItem.Attachments get#2 | in Drafts, on the screen | ERROR Caught a com exception while replacing attachments: ~ // ERROR Failed to override attachments - cannot send the email |
Attachments.Count get#2 | in Drafts, on the screen | ERROR Caught a com exception while replacing attachments: ~ // ERROR Failed to override attachments - cannot send the email |
Attachments.Count get#3 | in Drafts, on the screen | ERROR Caught a com exception while replacing attachments: ~ // ERROR Failed to override attachments - cannot send the email |
Attachments.Remove#1 | in Drafts, on the screen | ERROR Caught a com exception while replacing attachments: ~ // ERROR Failed to override attachments - cannot send the email |
Attachments.Count get#4 | in Drafts, on the screen | ERROR Caught a com exception while replacing attachments: ~ // ERROR Failed to override attachments - cannot send the email |
Attachments.Add#1 | in Drafts, on the screen | ERROR Caught a com exception while replacing attachments: ~ // ERROR Failed to override attachments - cannot send the email |
Transport.Submit#1 | in Drafts, on the screen |  |
)");
}

TEST_F(MemberFailure, BlockedMailBesideTheEvent) {
    Expect({.actions = Block(), .from = {L"Application.Session get", 2}}, LR"(
none | in Drafts, on the screen |  |
Application.Session get#2 | in Drafts, on the screen | ERROR Could not get item and last modification - returning old date |
NameSpace.GetItemFromID#1 | in Drafts, on the screen | WARN Caught a com exception when searching in Drafts: ~ // WARN Could not locate the requested item in the Drafts folder - searching in OUTBOX |
NameSpace.GetItemFromID#2 | in Drafts, on the screen | WARN Caught a com exception when searching in Outbox: ~ |
MailItem.LastModificationTime get#1 | in Drafts, on the screen | ERROR Could not get item and last modification - returning old date |
Application.Session get#3 | in Drafts, listed | ERROR Caught a com exception: ~ |
NameSpace.GetItemFromID#3 | in Drafts, on the screen | WARN Caught a com exception when searching in Drafts: ~ // WARN Could not locate the requested item in the Drafts folder - searching in OUTBOX |
NameSpace.GetItemFromID#4 | in Drafts, on the screen | WARN Caught a com exception when searching in Outbox: ~ |
MailItem.Display#1 | in Drafts, listed | ERROR Caught a com exception: ~ |
)");
}

TEST_F(MemberFailure, HtmlMailOfAnEarlierRun) {
    Expect({.actions = Changes(), .html = true, .waiting = true}, LR"(
none | sent |  |
Application.FindConnectionPoint#1 | sent, subject "Plans", old body, 1 old attachments, uninspected |  |
Application.Advise#1 | sent, subject "Plans", old body, 1 old attachments, uninspected |  |
Application.Session get#1 | in Drafts, listed, uninspected, the start fails |  |
NameSpace.GetDefaultFolder#1 | in Drafts, listed, uninspected, the start fails |  |
MAPIFolder.StoreID get#1 | in Drafts, listed, uninspected, the start fails |  |
NameSpace.GetDefaultFolder#2 | in Drafts, listed, uninspected, the start fails |  |
MAPIFolder.StoreID get#2 | in Drafts, listed, uninspected, the start fails |  |
Application.Version get#1 | in Drafts, listed, uninspected, the start fails |  |
Application.Session get#2 | in Drafts, listed, uninspected | ERROR COM error while trying to find and resend an item: ~ |
NameSpace.GetItemFromID#1 | sent | WARN Caught a com exception when searching in Drafts: ~ // WARN Could not locate the requested item in the Drafts folder - searching in OUTBOX |
NameSpace.GetItemFromID#2 | sent | WARN Caught a com exception when searching in Outbox: ~ |
MailItem.EntryID get#1 | in Drafts, listed, uninspected | ERROR MessageHandler::Send: Caught a com exception during RemoveFromInspectedItems or SendWithRDO_() ~ |
Application.Session get#3 | in Drafts, on the screen, uninspected | ERROR MessageHandler::Send: YM:Caught a com exception during Send: ~ // ERROR MessageHandler::Send - Outlook failed to send the message item. |
NameSpace.GetDefaultFolder#3 | in Drafts, on the screen, uninspected | ERROR MessageHandler::Send: YM:Caught a com exception during Send: ~ // ERROR MessageHandler::Send - Outlook failed to send the message item. |
MailItem.Send#1 | in Drafts, on the screen, uninspected | ERROR MessageHandler::Send: YM:Caught a com exception during Send: ~ // ERROR MessageHandler::Send - Outlook failed to send the message item. |
Application.ActiveExplorer#1 | sent, subject "Plans", old body, 1 old attachments, uninspected | ERROR InspectItemBeforeSending:COM error= ~ |
MailItem.Subject get#1 | sent, subject "[Internal] " | ERROR Caught a com exception while resolving item subject (skipping): ~ |
MailItem.PropertyAccessor get#1 | sent | ERROR COM exception while resolving property: ~ |
PropertyAccessor.GetProperty#1 | sent | ERROR COM exception while resolving property: ~ |
MailItem.SendUsingAccount get#1 | sent | ERROR Caught a com exception while resolving item sender (skipping): ~ |
Account.SmtpAddress get#1 | sent | ERROR Caught a com exception while resolving item sender (skipping): ~ |
MailItem.Recipients get#1 | sent | ERROR Caught a com exception while resolving item recipients (skipping): ~ |
Recipients.Count get#1 | sent | ERROR Caught a com exception while resolving item recipients (skipping): ~ |
Recipients.ResolveAll#1 | sent | ERROR Caught a com exception while resolving item recipients (skipping): ~ |
Recipients.Item#1 | sent | ERROR Caught a com exception while resolving item recipient #1 - (skipping): ~ |
Recipient.Resolved get#1 | sent | ERROR Caught a com exception while resolving item recipient #1 - (skipping): ~ |
Recipient.PropertyAccessor get#1 | sent | ERROR Caught a com exception while resolving item recipient #1 - (skipping): ~ |
PropertyAccessor.GetProperty#2 | sent | ERROR Caught a com exception while resolving item recipient #1 - (skipping): ~ |
Recipient.Type get#1 | sent | ERROR Caught a com exception while resolving item recipient #1 - (skipping): ~ |
MailItem.Attachments get#1 | sent, 1 old attachments | ERROR Caught a com exception while adding attachments (skipping): ~ |
Attachments.Count get#1 | sent, 1 old attachments | ERROR Caught a com exception while adding attachments (skipping): ~ |
Attachments.Item#1 | sent, 1 old attachments | ERROR Caught a com exception while adding attachment #1 - (skipping): ~ |
Attachment.FileName get#1 | sent, 1 old attachments | ERROR Caught a com exception while adding attachment #1 - (skipping): ~ |
Attachment.SaveAsFile#1 | sent, 1 old attachments | ERROR Caught a com exception while adding attachment #1 - (skipping): ~ |
MailItem.Body get#1 | sent, subject "Plans", old body, 1 old attachments, uninspected | ERROR InspectItemBeforeSending:COM error= ~ |
MailItem.BodyFormat get#1 | sent, subject "Plans", old body, 1 old attachments, uninspected | ERROR InspectItemBeforeSending:COM error= ~ |
MailItem.HTMLBody get#1 | sent, subject "Plans", old body, 1 old attachments, uninspected | ERROR InspectItemBeforeSending:COM error= ~ |
MailItem.Subject put#1 | sent, subject "Plans", old body | ERROR Unknown error while applying data label. |
MailItem.BodyFormat get#2 | sent, old body | ERROR Unknown error while applying data label. |
MailItem.HTMLBody put#1 | sent, old body | ERROR Unknown error while applying data label. |
MailItem.Attachments get#2 | in Drafts, on the screen | ERROR Caught a com exception while replacing attachments: ~ // ERROR Failed to override attachments - cannot send the email // ERROR MessageHandler::Send: YM:Caught a com exception during Send: ~stopped // ERROR MessageHandler::Send - Outlook failed to send the message item. |
Attachments.Count get#2 | in Drafts, on the screen | ERROR Caught a com exception while replacing attachments: ~ // ERROR Failed to override attachments - cannot send the email // ERROR MessageHandler::Send: YM:Caught a com exception during Send: ~stopped // ERROR MessageHandler::Send - Outlook failed to send the message item. |
Attachments.Count get#3 | in Drafts, on the screen | ERROR Caught a com exception while replacing attachments: ~ // ERROR Failed to override attachments - cannot send the email // ERROR MessageHandler::Send: YM:Caught a com exception during Send: ~stopped // ERROR MessageHandler::Send - Outlook failed to send the message item. |
Attachments.Remove#1 | in Drafts, on the screen | ERROR Caught a com exception while replacing attachments: ~ // ERROR Failed to override attachments - cannot send the email // ERROR MessageHandler::Send: YM:Caught a com exception during Send: ~stopped // ERROR MessageHandler::Send - Outlook failed to send the message item. |
Attachments.Count get#4 | in Drafts, on the screen | ERROR Caught a com exception while replacing attachments: ~ // ERROR Failed to override attachments - cannot send the email // ERROR MessageHandler::Send: YM:Caught a com exception during Send: ~stopped // ERROR MessageHandler::Send - Outlook failed to send the message item. |
Attachments.Add#1 | in Drafts, on the screen | ERROR Caught a com exception while replacing attachments: ~ // ERROR Failed to override attachments - cannot send the email // ERROR MessageHandler::Send: YM:Caught a com exception during Send: ~stopped // ERROR MessageHandler::Send - Outlook failed to send the message item. |
Transport.Submit#1 | in Drafts, on the screen | ERROR MessageHandler::Send: YM:Caught a com exception during Send: ~ // ERROR MessageHandler::Send - Outlook failed to send the message item. |
)");
}

} // namespace
} // namespace vorlek
