// Every call of Outlook's object model, and of Redemption's, that the road of a task request makes fails once, each in
// a run of its own.
#include "tests/outlook/MemberFailure.h"
#include "tests/outlook/OldOutlookTest.h"
#include "tests/outlook/TaskTest.h"

namespace vorlek {
namespace {

using namespace outlook_tests; // its words make up the tables

// Outcomes, and lines of the log.
const wchar_t* const kOnScreen = L"kept, on the screen";
const wchar_t* const kNoRecipientsList = L"WARN Could not get recipients";
const wchar_t* const kNoTask = L"ERROR Caught a com exception while getting related task: ~";
const wchar_t* const kSendFails = L"ERROR Caught(TaskHandler::Send) a com exception during Send: ~";
const wchar_t* const kCancelled = L"ERROR Caught(TaskHandler::Send) a com exception during Send: (E_ABORT)";
const wchar_t* const kNoSafeTaskClass = L"ERROR Failed to retrieve Redemption.SafeTaskItem CLSID";
const wchar_t* const kNoSafeTask = L"ERROR Failed to create Redemption.SafeTaskItem instance";
const wchar_t* const kSafeTaskEmpty =
    L"ERROR Failed to create Redemption.SafeTaskItem - Couldn't retrieve related task item";
const wchar_t* const kEventFailsWithoutTask = L"ERROR InspectItemBeforeSending:COM error= (E_POINTER)";
const wchar_t* const kNoTaskToSend = L"ERROR TaskHandler::Send - failed to send the task.";

class TaskMemberFailure : public MemberFailureTest {
protected:
    std::wstring Whereabouts(const Road& road) const override {
        const auto delivered = outlook->Delivered();
        const auto drafts = outlook->ItemsIn(L"Drafts");
        EXPECT_EQ(outlook->ItemsIn(L"Tasks").size(), 1u);
        EXPECT_LE(delivered.size(), 1u);
        EXPECT_FALSE(delivered.empty() && drafts.empty()) << "the request is lost";
        std::wstring place = delivered.empty() ? L"kept" : L"sent" + MissingChanges(delivered.at(0), road.item.subject);
        if (!delivered.empty() && !drafts.empty()) {
            place += L", and kept";
        }
        if (!drafts.empty() && outlook->OpenInspectors() != 0) {
            place += L", on the screen";
        }
        return place;
    }
};

TEST_F(TaskMemberFailure, AssignedTask) {
    // clang-format off
    Expect({.item = PaintTheFence(), .from = {L"TaskRequestItem.GetAssociatedTask", 1}}, {
        {{L"none"}, L"sent", {kNoRecipientsList}},
        {{L"TaskRequestItem.GetAssociatedTask#1"}, L"sent", {kNoTask}},
        {{L"TaskRequestItem.MessageClass get#1", L"TaskRequestItem.Subject get#1", L"TaskItem.Subject get#1",
          L"Application.ActiveExplorer#1", L"Explorer.Caption get#1"}, kUninspected, {kEventFails}},
        {{L"TaskRequestItem.Subject get#2"}, kWithoutItsSubject, {kNoSubject}},
        {{L"TaskRequestItem.PropertyAccessor get#1", L"PropertyAccessor.GetProperty#1"}, L"sent", {kNoProperty}},
        {{L"TaskRequestItem.GetAssociatedTask#2", L"TaskItem.SendUsingAccount get#1", L"Account.SmtpAddress get#1"}, L"sent", {kNoSender}},
        {{L"TaskRequestItem.Attachments get#1", L"Attachments.Count get#1"}, kOldAttachments, {kNoAttachments}},
        {{L"Attachments.Item#1", L"Attachment.FileName get#1", L"Attachment.SaveAsFile#1"}, kOldAttachments, {kNoAttachment}},
        {{L"TaskRequestItem.Body get#1"}, kUninspected, {kEventFails}},
        {{L"TaskRequestItem.GetAssociatedTask#3"}, kOldLabels, {kNoTask, kNoLabel}},
        {{L"TaskItem.Subject put#1"}, kOldLabels, {kNoLabel}},
        {{L"TaskItem.Save#1"}, kOldBody, {kNoLabel}},
        {{L"TaskRequestItem.GetAssociatedTask#4"}, kOldBody, {kNoTask, kNoLabel}},
        {{L"TaskItem.Body put#1"}, kOldBody, {kNoLabel}},
        {{L"TaskItem.Save#2"}, L"sent", {kNoLabel}},
        {{L"TaskRequestItem.GetAssociatedTask#5"}, kOnScreen, {kNoTask, kNothingToReplace, kStays}},
        {{L"TaskItem.Attachments get#1", L"Attachments.Count get#2", L"Attachments.Count get#3",
          L"Attachments.Remove#1", L"Attachments.Count get#4", L"Attachments.Add#1", L"TaskItem.Save#3"}, kOnScreen, {kNotReplaced, kStays}},
        {{L"Transport.Submit#1"}, kOnScreen, {}},
    });
    // clang-format on
}

TEST_F(TaskMemberFailure, Response) {
    // clang-format off
    Expect({.item = RequestOf(kAcceptClass, L"Accepted: Paint the fence"), .from = {L"TaskRequestItem.GetAssociatedTask", 1}}, {
        {{L"none"}, L"sent", {kNoRecipientsList}},
        {{L"TaskRequestItem.GetAssociatedTask#1"}, L"sent", {kNoTask}},
        {{L"TaskRequestItem.MessageClass get#1", L"Application.ActiveExplorer#1", L"Explorer.Caption get#1"}, kUninspected, {kEventFails}},
        {{L"TaskRequestItem.Subject get#1"}, kWithoutItsSubject, {kNoSubject}},
        {{L"TaskRequestItem.PropertyAccessor get#1", L"PropertyAccessor.GetProperty#1"}, L"sent", {kNoProperty}},
        {{L"TaskRequestItem.GetAssociatedTask#2", L"TaskItem.SendUsingAccount get#1", L"Account.SmtpAddress get#1"}, L"sent", {kNoSender}},
        {{L"TaskRequestItem.Attachments get#1", L"Attachments.Count get#1"}, kOldAttachments, {kNoAttachments}},
        {{L"Attachments.Item#1", L"Attachment.FileName get#1", L"Attachment.SaveAsFile#1"}, kOldAttachments, {kNoAttachment}},
        {{L"TaskRequestItem.Body get#1"}, kUninspected, {kEventFails}},
        {{L"TaskRequestItem.Subject put#1"}, kOldLabels, {kNoLabel}},
        {{L"TaskRequestItem.Save#1", L"TaskRequestItem.Body put#1"}, kOldBody, {kNoLabel}},
        {{L"TaskRequestItem.Save#2"}, L"sent", {kNoLabel}},
        {{L"TaskRequestItem.Attachments get#2", L"Attachments.Count get#2", L"Attachments.Count get#3",
          L"Attachments.Remove#1", L"Attachments.Count get#4", L"Attachments.Add#1", L"TaskRequestItem.Save#3"}, kOnScreen, {kNotReplaced, kStays}},
        {{L"Transport.Submit#1"}, kOnScreen, {}},
    });
    // clang-format on
}

TEST_F(TaskMemberFailure, RequestOfAnEarlierRun) {
    // clang-format off
    Expect({.item = RequestOf(kRequestClass), .waiting = true, .from = {L"Application.Session get", 2}}, {
        {{L"none"}, L"sent", {kNoRecipientsList}},
        {{L"Application.Session get#2"}, kWaitsOn, {kNotResent}},
        {{L"NameSpace.GetItemFromID#1"}, L"sent", {kNotInDrafts, kDraftsInVain}},
        {{L"NameSpace.GetItemFromID#2"}, L"sent", {kNotInOutbox}},
        {{L"TaskRequestItem.GetAssociatedTask#1"}, L"sent", {kNoTask}},
        {{L"TaskRequestItem.MessageClass get#1", L"TaskRequestItem.Subject get#1", L"TaskItem.Subject get#1"}, kWaitsOn, {kNotResent}},
        {{L"TaskRequestItem.GetAssociatedTask#2"}, L"kept, uninspected", {kNoTask, kNoTaskToSend}},
        {{L"TaskRequestItem.EntryID get#1"}, kWaitsOn, {kSendFails}},
        {{L"TaskItem.Send#1"}, L"kept, uninspected", {kSendFails}},
        {{L"TaskRequestItem.GetAssociatedTask#3"}, L"sent", {kNoTask}},
        {{L"TaskRequestItem.MessageClass get#2", L"TaskRequestItem.Subject get#2", L"TaskItem.Subject get#2",
          L"Application.ActiveExplorer#1"}, kUninspected, {kEventFails}},
        {{L"TaskRequestItem.Subject get#3"}, kWithoutItsSubject, {kNoSubject}},
        {{L"TaskRequestItem.PropertyAccessor get#1", L"PropertyAccessor.GetProperty#1"}, L"sent", {kNoProperty}},
        {{L"TaskRequestItem.GetAssociatedTask#4", L"TaskItem.SendUsingAccount get#1", L"Account.SmtpAddress get#1"}, L"sent", {kNoSender}},
        {{L"TaskRequestItem.Attachments get#1", L"Attachments.Count get#1"}, kOldAttachments, {kNoAttachments}},
        {{L"Attachments.Item#1", L"Attachment.FileName get#1", L"Attachment.SaveAsFile#1"}, kOldAttachments, {kNoAttachment}},
        {{L"TaskRequestItem.Body get#1"}, kUninspected, {kEventFails}},
        {{L"TaskRequestItem.GetAssociatedTask#5"}, kOldLabels, {kNoTask, kNoLabel}},
        {{L"TaskItem.Subject put#1"}, kOldLabels, {kNoLabel}},
        {{L"TaskItem.Save#1"}, kOldBody, {kNoLabel}},
        {{L"TaskRequestItem.GetAssociatedTask#6"}, kOldBody, {kNoTask, kNoLabel}},
        {{L"TaskItem.Body put#1"}, kOldBody, {kNoLabel}},
        {{L"TaskItem.Save#2"}, L"sent", {kNoLabel}},
        {{L"TaskRequestItem.GetAssociatedTask#7"}, L"kept", {kNoTask, kNothingToReplace, kStays, kCancelled}},
        {{L"TaskItem.Attachments get#1", L"Attachments.Count get#2", L"Attachments.Count get#3",
          L"Attachments.Remove#1", L"Attachments.Count get#4", L"Attachments.Add#1", L"TaskItem.Save#3"}, L"kept", {kNotReplaced, kStays, kCancelled}},
        {{L"Transport.Submit#1"}, L"kept", {kSendFails}},
        {{L"TaskItem.EntryID get#1", L"TaskRequestItem.Delete#1"}, L"sent, and kept", {kSendFails}},
    });
    // clang-format on
}

using OldTaskMemberFailure = WithRedemption<TaskMemberFailure>;

TEST_F(OldTaskMemberFailure, AssignedTask) {
    // clang-format off
    Expect({.item = PaintTheFence(), .from = {L"TaskRequestItem.GetAssociatedTask", 1}, .version = kVersion11}, {
        {{L"none"}, L"sent", {}},
        {{L"TaskRequestItem.GetAssociatedTask#1"}, L"sent", {kNoTask}},
        {{L"TaskRequestItem.MessageClass get#1", L"TaskRequestItem.Subject get#1", L"TaskItem.Subject get#1",
          L"Application.ActiveExplorer#1", L"Explorer.Caption get#1"}, kUninspected, {kEventFails}},
        {{L"TaskRequestItem.Subject get#2"}, kWithoutItsSubject, {kNoSubject}},
        {{L"RDOSession.CreateInstance#1"}, L"sent", {kNotCreated, kNoSession}},
        {{L"RDOSession.GetRDOObjectFromOutlookObject#1"}, L"sent", {kNoView}},
        {{L"RDOMail.Fields#1"}, L"sent", {kNoSubject}},
        {{L"SafeCurrentUser.CreateInstance#1"}, L"sent", {kNoCurrentUser}},
        {{L"SafeCurrentUser.SMTPAddress get#1"}, L"sent", {kNoSender}},
        {{L"SafeTaskItem.CreateInstance#1"}, L"sent", {kNoSafeTask, kNoSafeItem}},
        {{L"TaskRequestItem.GetAssociatedTask#2"}, kUninspected, {kNoTask, kSafeTaskEmpty, kNoSafeItem, kEventFailsWithoutTask}},
        {{L"SafeTaskItem.Item put#1", L"SafeTaskItem.Recipients get#1", L"SafeRecipients.ResolveAll#1",
          L"SafeRecipients.Count get#1"}, L"sent", {kNoRecipients}},
        {{L"SafeRecipients.Item#1", L"SafeRecipient.Resolved get#1", L"SafeRecipient.AddressEntry get#1",
          L"SafeRecipient.Fields#1", L"SafeRecipient.Address get#1", L"SafeRecipient.Name get#1",
          L"SafeRecipient.Type get#1"}, L"sent", {kRecipientSkipped}},
        {{L"SafeTaskItem.Attachments get#1", L"SafeAttachments.Count get#1", L"SafeAttachments.Item#1",
          L"SafeAttachment.FileName get#1", L"SafeAttachment.SaveAsFile#1", L"SafeTaskItem.Body get#1"}, kUninspected, {kEventFails}},
        {{L"TaskRequestItem.GetAssociatedTask#3"}, kOldLabels, {kNoTask, kNoLabel}},
        {{L"TaskItem.Subject put#1"}, kOldLabels, {kNoLabel}},
        {{L"TaskItem.Save#1"}, kOldBody, {kNoLabel}},
        {{L"TaskRequestItem.GetAssociatedTask#4"}, kOldBody, {kNoTask, kNoLabel}},
        {{L"TaskItem.Body put#1"}, kOldBody, {kNoLabel}},
        {{L"TaskItem.Save#2"}, L"sent", {kNoLabel}},
        {{L"TaskRequestItem.GetAssociatedTask#5"}, kOnScreen, {kNoTask, kNothingToReplace, kStays}},
        {{L"TaskItem.Attachments get#1", L"Attachments.Count get#1", L"Attachments.Count get#2",
          L"Attachments.Remove#1", L"Attachments.Count get#3", L"Attachments.Add#1", L"TaskItem.Save#3"}, kOnScreen, {kNotReplaced, kStays}},
        {{L"Transport.Submit#1"}, kOnScreen, {}},
    });
    // clang-format on
}

TEST_F(OldTaskMemberFailure, Response) {
    // clang-format off
    Expect({.item = RequestOf(kAcceptClass, L"Accepted: Paint the fence"), .from = {L"TaskRequestItem.GetAssociatedTask", 1}, .version = kVersion11}, {
        {{L"none"}, L"sent", {}},
        {{L"TaskRequestItem.GetAssociatedTask#1"}, L"sent", {kNoTask}},
        {{L"TaskRequestItem.MessageClass get#1", L"Application.ActiveExplorer#1", L"Explorer.Caption get#1"}, kUninspected, {kEventFails}},
        {{L"TaskRequestItem.Subject get#1"}, kWithoutItsSubject, {kNoSubject}},
        {{L"RDOSession.CreateInstance#1"}, L"sent", {kNotCreated, kNoSession}},
        {{L"RDOSession.GetRDOObjectFromOutlookObject#1"}, L"sent", {kNoView}},
        {{L"RDOMail.Fields#1"}, L"sent", {kNoSubject}},
        {{L"SafeCurrentUser.CreateInstance#1"}, L"sent", {kNoCurrentUser}},
        {{L"SafeCurrentUser.SMTPAddress get#1"}, L"sent", {kNoSender}},
        {{L"SafeTaskItem.CreateInstance#1"}, L"sent", {kNoSafeTask, kNoSafeItem}},
        {{L"TaskRequestItem.GetAssociatedTask#2"}, kUninspected, {kNoTask, kSafeTaskEmpty, kNoSafeItem, kEventFailsWithoutTask}},
        {{L"SafeTaskItem.Item put#1", L"SafeTaskItem.Recipients get#1", L"SafeRecipients.ResolveAll#1",
          L"SafeRecipients.Count get#1"}, L"sent", {kNoRecipients}},
        {{L"SafeRecipients.Item#1", L"SafeRecipient.Resolved get#1", L"SafeRecipient.AddressEntry get#1",
          L"SafeRecipient.Fields#1", L"SafeRecipient.Address get#1", L"SafeRecipient.Name get#1",
          L"SafeRecipient.Type get#1"}, L"sent", {kRecipientSkipped}},
        {{L"SafeTaskItem.Attachments get#1", L"SafeAttachments.Count get#1", L"SafeAttachments.Item#1",
          L"SafeAttachment.FileName get#1", L"SafeAttachment.SaveAsFile#1", L"SafeTaskItem.Body get#1"}, kUninspected, {kEventFails}},
        {{L"TaskRequestItem.Subject put#1"}, kOldLabels, {kNoLabel}},
        {{L"TaskRequestItem.Save#1", L"TaskRequestItem.Body put#1"}, kOldBody, {kNoLabel}},
        {{L"TaskRequestItem.Save#2"}, L"sent", {kNoLabel}},
        {{L"TaskRequestItem.Attachments get#1", L"Attachments.Count get#1", L"Attachments.Count get#2",
          L"Attachments.Remove#1", L"Attachments.Count get#3", L"Attachments.Add#1", L"TaskRequestItem.Save#3"}, kOnScreen, {kNotReplaced, kStays}},
        {{L"Transport.Submit#1"}, kOnScreen, {}},
    });
    // clang-format on
}

TEST_F(OldTaskMemberFailure, RequestOfAnEarlierRun) {
    // clang-format off
    Expect({.item = RequestOf(kRequestClass), .waiting = true, .from = {L"Application.Session get", 2}, .version = kVersion11}, {
        {{L"none"}, kShown, {}},
        {{L"Application.Session get#2"}, kWaitsOn, {kNotResent}},
        {{L"NameSpace.GetItemFromID#1"}, kShown, {kNotInDrafts, kDraftsInVain}},
        {{L"NameSpace.GetItemFromID#2"}, kShown, {kNotInOutbox}},
        {{L"TaskRequestItem.GetAssociatedTask#1"}, kShown, {kNoTask}},
        {{L"TaskRequestItem.MessageClass get#1", L"TaskRequestItem.Subject get#1", L"TaskItem.Subject get#1",
          L"TaskRequestItem.Display#1"}, kWaitsOn, {kNotResent}},
    });
    // clang-format on
}

TEST_F(OldTaskMemberFailure, AssignedTaskWithoutRedemption) {
    RemoveRedemption();
    // clang-format off
    Expect({.item = PaintTheFence(), .from = {L"TaskRequestItem.GetAssociatedTask", 1}, .version = kVersion11}, {
        {{L"none"}, kOldAttachments, {kNoClass, kNoSession, kNoCurrentUserClass, kNoSafeTaskClass, kNoSafeItem, kAttachmentsSkipped, kEmptyText}},
        {{L"TaskRequestItem.GetAssociatedTask#1"}, kOldAttachments, {kNoTask}},
        {{L"TaskRequestItem.MessageClass get#1", L"TaskRequestItem.Subject get#1", L"TaskItem.Subject get#1",
          L"Application.ActiveExplorer#1", L"Explorer.Caption get#1"}, kUninspected, {kEventFails}},
        {{L"TaskRequestItem.Subject get#2"}, kEmptySubject, {kNoSubject}},
        {{L"TaskRequestItem.GetAssociatedTask#2"}, kUnchanged, {kNoTask, kNoLabel}},
        {{L"TaskItem.Subject put#1"}, kUnchanged, {kNoLabel}},
        {{L"TaskItem.Save#1"}, kSubjectAlone, {kNoLabel}},
        {{L"TaskRequestItem.GetAssociatedTask#3"}, kSubjectAlone, {kNoTask, kNoLabel}},
        {{L"TaskItem.Body put#1"}, kSubjectAlone, {kNoLabel}},
        {{L"TaskItem.Save#2"}, kOldAttachments, {kNoLabel}},
        {{L"Transport.Submit#1"}, kOnScreen, {}},
    });
    // clang-format on
}

} // namespace
} // namespace vorlek
