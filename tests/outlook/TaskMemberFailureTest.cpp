// Every call of Outlook's object model that the road of a task request makes fails once, each in a run of its own.
#include <filesystem>
#include <regex>

#include "foundation/RegistryKey.h"
#include "stand-ins/agent/Agent.h"
#include "tests/outlook/AsyncTest.h"
#include "tests/outlook/TaskTest.h"

namespace vorlek {
namespace {

using outlook_tests::ErrorText;
using outlook_tests::EventSink;
using outlook_tests::kAcceptClass;
using outlook_tests::kAccessDenied;
using outlook_tests::kRequestClass;
using outlook_tests::OutlookTest;
using outlook_tests::RequestOf;
using stand_ins::ItemData;

/// How a task request comes to the add-in.
struct Road {
    ItemData item;
    bool waiting = false; ///< it is one that an earlier run left in Drafts, and no main window is open yet
};

/// A call to fail: the n-th of a member.
struct FailingCall {
    std::wstring member;
    std::size_t nth = 0;
};

// Outcomes, and lines of the log.
const wchar_t* const kUninspected = L"sent, old subject, old body, old attachments, uninspected";
const wchar_t* const kOnScreen = L"kept, on the screen";
const wchar_t* const kOldLabels = L"sent, old subject, old body";
const wchar_t* const kEventFails = L"ERROR InspectItemBeforeSending:COM error= ~";
const wchar_t* const kNoTask = L"ERROR Caught a com exception while getting related task: ~";
const wchar_t* const kNoSubject = L"ERROR Caught a com exception while resolving item subject (skipping): ~";
const wchar_t* const kNoProperty = L"ERROR COM exception while resolving property: ~";
const wchar_t* const kNoSender = L"ERROR Caught a com exception while resolving item sender (skipping): ~";
const wchar_t* const kNoAttachments = L"ERROR Caught a com exception while adding attachments (skipping): ~";
const wchar_t* const kNoAttachment = L"ERROR Caught a com exception while adding attachment #1 - (skipping): ~";
const wchar_t* const kNoLabel = L"ERROR Unknown error while applying data label.";
const wchar_t* const kNotReplaced = L"ERROR Caught a com exception while replacing attachments: ~";
const wchar_t* const kNothingToReplace = L"ERROR Caught a com exception while replacing attachments: (E_POINTER)";
const wchar_t* const kStays = L"ERROR Failed to override attachments - cannot send the email";
const wchar_t* const kNotResent = L"ERROR COM error while trying to find and resend an item: ~";
const wchar_t* const kSendFails = L"ERROR Caught(TaskHandler::Send) a com exception during Send: ~";
const wchar_t* const kCancelled = L"ERROR Caught(TaskHandler::Send) a com exception during Send: (E_ABORT)";

/// A failing call and what comes of it; in the lines of the log ~ is the text of the failure, # the ID of an item.
struct Row {
    const wchar_t* call;
    const wchar_t* outcome;
    std::vector<std::wstring> lines;
};

class TaskMemberFailure : public OutlookTest {
protected:
    /// Fails each call of a successful run in turn; the rows in the order of the calls.
    void Expect(const Road& road, const std::vector<Row>& rows) {
        EXPECT_EQ(Walk_(road, {}), L"sent") << "without a failure";
        const std::vector<FailingCall> calls = RecordedCalls_();
        for (std::size_t i = 0; i < calls.size(); ++i) {
            const std::wstring name = calls[i].member + L"#" + std::to_wstring(calls[i].nth);
            const std::wstring outcome = Walk_(road, calls[i]);
            if (i >= rows.size()) {
                ADD_FAILURE() << "no row tells of " << testing::PrintToString(name);
                continue;
            }
            SCOPED_TRACE(testing::PrintToString(name));
            EXPECT_EQ(rows[i].call, name);
            EXPECT_EQ(rows[i].outcome, outcome);
            EXPECT_EQ(rows[i].lines, Lines_());
        }
        EXPECT_EQ(rows.size(), calls.size());
    }

private:
    std::vector<FailingCall> RecordedCalls_() const {
        std::vector<FailingCall> calls;
        for (const std::wstring& member : members_) {
            if (member != L"Application.ItemSend") { // the event: Outlook's call, not ours
                calls.push_back(
                    {member, 1 + static_cast<std::size_t>(std::ranges::count(calls, member, &FailingCall::member))});
            }
        }
        return calls;
    }

    /// What becomes of the request.
    std::wstring Walk_(const Road& road, const FailingCall& failing) {
        StartAfresh_();
        const auto item = Prepare_(road);
        const stand_ins::Agent agent(Policy_());
        OutlookController controller;
        const EventSink sink(outlook->Application(),
                             [&](IDispatch* request) { return controller.InspectItemBeforeSending(request); });
        controller.InitApplication(Outlook::_ApplicationPtr(outlook->Application().GetInterfacePtr()));
        OutlookControllerPeer{controller}.SetEmbedded(false);
        outlook->Calls().Clear();
        log.Clear();
        if (!failing.member.empty()) {
            outlook->Failures().Fail(failing.member, kAccessDenied, failing.nth);
        }
        if (road.waiting) {
            controller.HandleIncompleteInspections();
        } else {
            outlook->Send(item);
        }
        outlook->Failures().Clear();
        members_ = outlook->Calls().Members();
        const bool inspected = std::ranges::count(agent.Requests(), L"Inspect", &stand_ins::Request::method) != 0;
        return Whereabouts_(road) + (inspected ? L"" : L", uninspected");
    }

    void StartAfresh_() {
        outlook.reset();
        std::filesystem::remove_all(folder.Path());
        RegistryKey::GetCurrentUser().DeleteSubKeyTree(outlook_tests::kPluginKey);
        OutlookControllerPeer::ForgetWindows();
        Restart({});
    }

    stand_ins::DispatchPtr Prepare_(const Road& road) const {
        if (!road.waiting) {
            return outlook->NewItem(road.item);
        }
        const auto item = outlook->SavedItem(road.item);
        const std::wstring id = stand_ins::GetText(item, L"EntryID");
        CommonUtils::AddToInspectedItems(id, id, nullptr);
        outlook->CloseExplorer();
        return item;
    }

    std::wstring Whereabouts_(const Road& road) const {
        std::vector<std::wstring> ids;
        CommonUtils::GetInspectedItemIds(ids, nullptr);
        const auto delivered = outlook->Delivered();
        const auto drafts = outlook->ItemsIn(L"Drafts");
        EXPECT_EQ(outlook->ItemsIn(L"Tasks").size(), 1u);
        EXPECT_LE(delivered.size(), 1u);
        EXPECT_FALSE(delivered.empty() && drafts.empty()) << "the request is lost";
        std::wstring place = delivered.empty() ? L"kept" : L"sent" + Unchanged_(delivered.at(0));
        if (!delivered.empty() && !drafts.empty()) {
            place += L", and kept";
        }
        if (!road.waiting && !drafts.empty() && outlook->OpenInspectors() != 0) {
            place += L", on the screen";
        }
        return place + (ids.empty() ? L"" : L", listed");
    }

    static std::wstring Unchanged_(const ItemData& request) {
        std::wstring unchanged;
        unchanged += request.subject.starts_with(L"[Internal]") ? L"" : L", old subject";
        unchanged += request.body.starts_with(L"Internal") ? L"" : L", old body";
        const bool replaced = request.attachments.size() == 1 && request.attachments.at(0).displayName == L"notice.txt";
        return unchanged + (replaced ? L"" : L", old attachments");
    }

    std::vector<std::wstring> Lines_() const {
        std::vector<std::wstring> lines;
        for (const auto& line : log.Lines()) {
            if (line.level == L"ERROR" || line.level == L"WARN") {
                std::wstring text = std::regex_replace(line.text, std::wregex(L"\\b0{8}[0-9A-F]{32}\\b"), L"#");
                for (const auto& [result, name] : {std::pair(kAccessDenied, L"~"), std::pair(E_POINTER, L"(E_POINTER)"),
                                                   std::pair(E_ABORT, L"(E_ABORT)")}) {
                    if (const std::wstring words = ErrorText(result); text.ends_with(words)) {
                        text.replace(text.size() - words.size(), words.size(), name);
                    }
                }
                if (text != L"Could not get recipients") { // of every request
                    lines.push_back(line.level + L" " + text);
                }
            }
        }
        return lines;
    }

    static stand_ins::AgentOptions Policy_() {
        stand_ins::Actions actions;
        actions.subject = L"[Internal] {subject}";
        actions.bodyBefore = L"Internal";
        actions.replacement = {.name = {}, .file = {}, .text = L"Removed.", .displayName = L"notice.txt"};
        stand_ins::AgentOptions options;
        options.policy = stand_ins::Policy::Always(actions);
        return options;
    }

    std::vector<std::wstring> members_; ///< called in the last run
};

TEST_F(TaskMemberFailure, AssignedTask) {
    // clang-format off
    Expect({.item = outlook_tests::PaintTheFence()}, {
        {L"TaskRequestItem.GetAssociatedTask#1", L"sent", {kNoTask}},
        {L"TaskRequestItem.MessageClass get#1", kUninspected, {kEventFails}},
        {L"TaskRequestItem.Subject get#1", kUninspected, {kEventFails}},
        {L"TaskItem.Subject get#1", kUninspected, {kEventFails}},
        {L"Application.ActiveExplorer#1", kUninspected, {kEventFails}},
        {L"Explorer.Caption get#1", kUninspected, {kEventFails}},
        {L"TaskRequestItem.Subject get#2", L"sent", {kNoSubject}},
        {L"TaskRequestItem.PropertyAccessor get#1", L"sent", {kNoProperty}},
        {L"PropertyAccessor.GetProperty#1", L"sent", {kNoProperty}},
        {L"TaskRequestItem.GetAssociatedTask#2", L"sent", {kNoSender}},
        {L"TaskItem.SendUsingAccount get#1", L"sent", {kNoSender}},
        {L"Account.SmtpAddress get#1", L"sent", {kNoSender}},
        {L"TaskRequestItem.Attachments get#1", L"sent, old attachments", {kNoAttachments}},
        {L"Attachments.Count get#1", L"sent, old attachments", {kNoAttachments}},
        {L"Attachments.Item#1", L"sent, old attachments", {kNoAttachment}},
        {L"Attachment.FileName get#1", L"sent, old attachments", {kNoAttachment}},
        {L"Attachment.SaveAsFile#1", L"sent, old attachments", {kNoAttachment}},
        {L"TaskRequestItem.Body get#1", kUninspected, {kEventFails}},
        {L"TaskRequestItem.GetAssociatedTask#3", kOldLabels, {kNoTask, kNoLabel}},
        {L"TaskItem.Subject put#1", kOldLabels, {kNoLabel}},
        {L"TaskItem.Save#1", L"sent, old body", {kNoLabel}},
        {L"TaskRequestItem.GetAssociatedTask#4", L"sent, old body", {kNoTask, kNoLabel}},
        {L"TaskItem.Body put#1", L"sent, old body", {kNoLabel}},
        {L"TaskItem.Save#2", L"sent", {kNoLabel}},
        {L"TaskRequestItem.GetAssociatedTask#5", kOnScreen, {kNoTask, kNothingToReplace, kStays}},
        {L"TaskItem.Attachments get#1", kOnScreen, {kNotReplaced, kStays}},
        {L"Attachments.Count get#2", kOnScreen, {kNotReplaced, kStays}},
        {L"Attachments.Count get#3", kOnScreen, {kNotReplaced, kStays}},
        {L"Attachments.Remove#1", kOnScreen, {kNotReplaced, kStays}},
        {L"Attachments.Count get#4", kOnScreen, {kNotReplaced, kStays}},
        {L"Attachments.Add#1", kOnScreen, {kNotReplaced, kStays}},
        {L"TaskItem.Save#3", kOnScreen, {kNotReplaced, kStays}},
        {L"Transport.Submit#1", kOnScreen, {}},
    });
    // clang-format on
}

TEST_F(TaskMemberFailure, Response) {
    // clang-format off
    Expect({.item = RequestOf(kAcceptClass, L"Accepted: Paint the fence")}, {
        {L"TaskRequestItem.GetAssociatedTask#1", L"sent", {kNoTask}},
        {L"TaskRequestItem.MessageClass get#1", kUninspected, {kEventFails}},
        {L"Application.ActiveExplorer#1", kUninspected, {kEventFails}},
        {L"Explorer.Caption get#1", kUninspected, {kEventFails}},
        {L"TaskRequestItem.Subject get#1", L"sent", {kNoSubject}},
        {L"TaskRequestItem.PropertyAccessor get#1", L"sent", {kNoProperty}},
        {L"PropertyAccessor.GetProperty#1", L"sent", {kNoProperty}},
        {L"TaskRequestItem.GetAssociatedTask#2", L"sent", {kNoSender}},
        {L"TaskItem.SendUsingAccount get#1", L"sent", {kNoSender}},
        {L"Account.SmtpAddress get#1", L"sent", {kNoSender}},
        {L"TaskRequestItem.Attachments get#1", L"sent, old attachments", {kNoAttachments}},
        {L"Attachments.Count get#1", L"sent, old attachments", {kNoAttachments}},
        {L"Attachments.Item#1", L"sent, old attachments", {kNoAttachment}},
        {L"Attachment.FileName get#1", L"sent, old attachments", {kNoAttachment}},
        {L"Attachment.SaveAsFile#1", L"sent, old attachments", {kNoAttachment}},
        {L"TaskRequestItem.Body get#1", kUninspected, {kEventFails}},
        {L"TaskRequestItem.Subject put#1", kOldLabels, {kNoLabel}},
        {L"TaskRequestItem.Save#1", L"sent, old body", {kNoLabel}},
        {L"TaskRequestItem.Body put#1", L"sent, old body", {kNoLabel}},
        {L"TaskRequestItem.Save#2", L"sent", {kNoLabel}},
        {L"TaskRequestItem.Attachments get#2", kOnScreen, {kNotReplaced, kStays}},
        {L"Attachments.Count get#2", kOnScreen, {kNotReplaced, kStays}},
        {L"Attachments.Count get#3", kOnScreen, {kNotReplaced, kStays}},
        {L"Attachments.Remove#1", kOnScreen, {kNotReplaced, kStays}},
        {L"Attachments.Count get#4", kOnScreen, {kNotReplaced, kStays}},
        {L"Attachments.Add#1", kOnScreen, {kNotReplaced, kStays}},
        {L"TaskRequestItem.Save#3", kOnScreen, {kNotReplaced, kStays}},
        {L"Transport.Submit#1", kOnScreen, {}},
    });
    // clang-format on
}

TEST_F(TaskMemberFailure, RequestOfAnEarlierRun) {
    // clang-format off
    Expect({.item = RequestOf(kRequestClass), .waiting = true}, {
        {L"Application.Session get#1", L"kept, listed, uninspected", {kNotResent}},
        {L"NameSpace.GetItemFromID#1", L"sent", {L"WARN Caught a com exception when searching in Drafts: ~", L"WARN Could not locate the requested item in the Drafts folder - searching in OUTBOX"}},
        {L"NameSpace.GetItemFromID#2", L"sent", {L"WARN Caught a com exception when searching in Outbox: ~"}},
        {L"TaskRequestItem.GetAssociatedTask#1", L"sent", {kNoTask}},
        {L"TaskRequestItem.MessageClass get#1", L"kept, listed, uninspected", {kNotResent}},
        {L"TaskRequestItem.Subject get#1", L"kept, listed, uninspected", {kNotResent}},
        {L"TaskItem.Subject get#1", L"kept, listed, uninspected", {kNotResent}},
        {L"TaskRequestItem.GetAssociatedTask#2", L"kept, uninspected", {kNoTask, L"ERROR TaskHandler::Send - failed to send the task."}},
        {L"TaskRequestItem.EntryID get#1", L"kept, listed, uninspected", {kSendFails}},
        {L"TaskItem.Send#1", L"kept, uninspected", {kSendFails}},
        {L"TaskRequestItem.GetAssociatedTask#3", L"sent", {kNoTask}},
        {L"TaskRequestItem.MessageClass get#2", kUninspected, {kEventFails}},
        {L"TaskRequestItem.Subject get#2", kUninspected, {kEventFails}},
        {L"TaskItem.Subject get#2", kUninspected, {kEventFails}},
        {L"Application.ActiveExplorer#1", kUninspected, {kEventFails}},
        {L"TaskRequestItem.Subject get#3", L"sent", {kNoSubject}},
        {L"TaskRequestItem.PropertyAccessor get#1", L"sent", {kNoProperty}},
        {L"PropertyAccessor.GetProperty#1", L"sent", {kNoProperty}},
        {L"TaskRequestItem.GetAssociatedTask#4", L"sent", {kNoSender}},
        {L"TaskItem.SendUsingAccount get#1", L"sent", {kNoSender}},
        {L"Account.SmtpAddress get#1", L"sent", {kNoSender}},
        {L"TaskRequestItem.Attachments get#1", L"sent, old attachments", {kNoAttachments}},
        {L"Attachments.Count get#1", L"sent, old attachments", {kNoAttachments}},
        {L"Attachments.Item#1", L"sent, old attachments", {kNoAttachment}},
        {L"Attachment.FileName get#1", L"sent, old attachments", {kNoAttachment}},
        {L"Attachment.SaveAsFile#1", L"sent, old attachments", {kNoAttachment}},
        {L"TaskRequestItem.Body get#1", kUninspected, {kEventFails}},
        {L"TaskRequestItem.GetAssociatedTask#5", kOldLabels, {kNoTask, kNoLabel}},
        {L"TaskItem.Subject put#1", kOldLabels, {kNoLabel}},
        {L"TaskItem.Save#1", L"sent, old body", {kNoLabel}},
        {L"TaskRequestItem.GetAssociatedTask#6", L"sent, old body", {kNoTask, kNoLabel}},
        {L"TaskItem.Body put#1", L"sent, old body", {kNoLabel}},
        {L"TaskItem.Save#2", L"sent", {kNoLabel}},
        {L"TaskRequestItem.GetAssociatedTask#7", L"kept", {kNoTask, kNothingToReplace, kStays, kCancelled}},
        {L"TaskItem.Attachments get#1", L"kept", {kNotReplaced, kStays, kCancelled}},
        {L"Attachments.Count get#2", L"kept", {kNotReplaced, kStays, kCancelled}},
        {L"Attachments.Count get#3", L"kept", {kNotReplaced, kStays, kCancelled}},
        {L"Attachments.Remove#1", L"kept", {kNotReplaced, kStays, kCancelled}},
        {L"Attachments.Count get#4", L"kept", {kNotReplaced, kStays, kCancelled}},
        {L"Attachments.Add#1", L"kept", {kNotReplaced, kStays, kCancelled}},
        {L"TaskItem.Save#3", L"kept", {kNotReplaced, kStays, kCancelled}},
        {L"Transport.Submit#1", L"kept", {kSendFails}},
        {L"TaskItem.EntryID get#1", L"sent, and kept", {kSendFails}},
        {L"TaskRequestItem.Delete#1", L"sent, and kept", {kSendFails}},
    });
    // clang-format on
}

} // namespace
} // namespace vorlek
