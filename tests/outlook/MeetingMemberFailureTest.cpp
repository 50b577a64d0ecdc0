// Every call of Outlook's object model, and of Redemption's, that a meeting's road makes fails once, each in a run of
// its own.
#include "agent/apps/outlook/CommonUtils.h"
#include "tests/outlook/MeetingTest.h"
#include "tests/outlook/MemberFailure.h"

namespace vorlek {
namespace {

using namespace outlook_tests; // its words make up the tables
using stand_ins::ItemData;

// Outcomes, and lines of the log.
const wchar_t* const kSentTwiceInspected =
    L"sent, old subject, old body, old attachments, the invitation differs, in Drafts, inspected twice";
const wchar_t* const kTwiceInspectedItemShown =
    L"sent, old subject, old body, old attachments, the invitation differs, in Drafts, its item on the screen, "
    L"inspected twice";
const wchar_t* const kForwardTwiceInspected = L"sent, subject \"[Internal] [Internal] FW: Review\", inspected twice";
const wchar_t* const kAppointmentSent =
    L"sent, subject \"Review\", old body, old attachments, in Drafts, its item on the screen";
const wchar_t* const kItemKept = L"sent, in Drafts";
const wchar_t* const kItemInDeletedItems = L"sent, in Deleted Items";
const wchar_t* const kDiffersInDeletedItems = L"sent, the invitation differs, in Deleted Items";
const wchar_t* const kDiffersItemKept = L"sent, the invitation differs, in Drafts";
const wchar_t* const kInDrafts = L"not sent, in Drafts";
const wchar_t* const kInDraftsUninspected = L"not sent, in Drafts, uninspected";
const wchar_t* const kListed = L"not sent, in Drafts, listed";
const wchar_t* const kListedUninspected = L"not sent, in Drafts, listed, uninspected";
const wchar_t* const kOnScreen = L"not sent, on the screen";
const wchar_t* const kItemOnScreen = L"not sent, in Drafts, its item on the screen";
const wchar_t* const kItemOnScreenListed = L"not sent, in Drafts, its item on the screen, listed";
const wchar_t* const kShownAndInDeletedItems = L"not sent, in Deleted Items, on the screen";
const wchar_t* const kShownAndInDrafts = L"not sent, in Drafts, on the screen";
const wchar_t* const kUnchangedListed = L"sent, old subject, old body, old attachments, listed";
const wchar_t* const kDiffers = L"sent, the invitation differs";
const wchar_t* const kDiffersOldAttachments = L"sent, old attachments, the invitation differs";
const wchar_t* const kDiffersOldBody = L"sent, old body, the invitation differs";
const wchar_t* const kDiffersOldLabels = L"sent, old subject, old body, the invitation differs";
const wchar_t* const kDiffersWithoutItsSubject = L"sent, subject \"[Internal] \", the invitation differs";
const wchar_t* const kOldBodyItemKept = L"sent, old body, in Drafts";
const wchar_t* const kOldLabelsItemKept = L"sent, old subject, old body, in Drafts";
const wchar_t* const kOnScreenUninspected = L"not sent, on the screen, uninspected";
const wchar_t* const kShownAndInDeletedItemsUninspected = L"not sent, in Deleted Items, on the screen, uninspected";
const wchar_t* const kShownAndInDraftsUninspected = L"not sent, in Drafts, on the screen, uninspected";
const wchar_t* const kOnlyInTheCalendar = L"not sent, only in the calendar";
const wchar_t* const kOnlyInTheCalendarUninspected = L"not sent, only in the calendar, uninspected";
const wchar_t* const kNoAppointment = L"ERROR Caught a com exception while getting related appointment: ~";
const wchar_t* const kOnSpot = L"ERROR Failed to get Associated Appointment! Handle on spot.";
const wchar_t* const kItemsId = L"WARN Failed to get related appointment - returning MeetingItem id";
const wchar_t* const kEmptyId = L"ERROR Caught a com exception - returning empty ID: ~";
const wchar_t* const kOldDate = L"ERROR Caught a com exception - returning old date: ~";
const wchar_t* const kZeroDate = L"ERROR Failed to get related appointment - returning 0";
const wchar_t* const kAppointmentNotSaved = L"WARN MeetingHandler::Save:COM exception: ~ appointment wasn't saved";
const wchar_t* const kNoneToSave = L"ERROR Couldn't get the related appointment! Save failed.";
const wchar_t* const kNoneThroughRedemption = L"ERROR Failed to get Associated Appointment!";
const wchar_t* const kTryRedemption = L"ERROR Error getting related appointment. Attempting with RDO.";
const wchar_t* const kDisplayByRedemption = L"ERROR Failed to get appointment - attempting to display with RDO";
const wchar_t* const kNotShown = L"ERROR Caught a com exception while displaying the meeting: ~";
const wchar_t* const kNotSentAtAll = L"ERROR MeetingHandler::Send - failed to send the item.";
const wchar_t* const kSendFails = L"ERROR MeetingHandler::Send: Caught a com exception during Send: ~";
const wchar_t* const kSendCancelled = L"ERROR MeetingHandler::Send: Caught a com exception during Send: (E_ABORT)";
const wchar_t* const kItemSendFails = L"ERROR Caught a COM exception while sending the request itself: ~";
const wchar_t* const kItemSendCancelled = L"ERROR Caught a COM exception while sending the request itself: (E_ABORT)";
const wchar_t* const kNotSentByRedemption =
    L"ERROR MeetingHandler::SendWithRDO_: Caught a com exception during Send: ~";
const wchar_t* const kNotDeleted = L"ERROR Caught a com exception during attempt to delete item: ~";
const wchar_t* const kNotFetched = L"ERROR Caught an exception in outlookSession->GetItemFromID : ~";
const wchar_t* const kNotAmongDeleted = L"ERROR Failed to find the Meeting item in the Deleted Items folder";
const wchar_t* const kNotOutOfThere = L"ERROR Failed to delete the Meeting item from Deleted Items folder";
const wchar_t* const kNotLinked =
    L"WARN Item is not associated to its appointment. Attempting to find the appointment ID manually";
const wchar_t* const kNotInStore = L"ERROR  MeetingHandler::FindItemInAllFolders__:Caught an  exception: A~";
const wchar_t* const kNotHeld = L"ERROR  MeetingHandler::FindItemInAllFolders__:Caught an  exception: A(not found)";
const wchar_t* const kNotShared =
    L"ERROR  MeetingHandler::FindItemInAllFolders__:Caught an  exception  in the shared calendar: ~";
const wchar_t* const kNotById = L"ERROR Failed to get related appointment using ID - returning NULL";
const wchar_t* const kNoId = L"ERROR Failed to get related appointment - returning NULL";
const wchar_t* const kNoSafeMeetingClass = L"ERROR Failed to retrieve Redemption.SafeMeetingItem CLSID";
const wchar_t* const kNoSafeMeeting = L"ERROR Failed to create Redemption.SafeMeetingItem instance";
const wchar_t* const kNoRepresentedName = L"ERROR COM exception while resolving property: (not found)";
const wchar_t* const kNoAppointmentsSender = L"WARN Could not get associated appointment";

/// The folder of a road is that of the appointment.
class MeetingMemberFailure : public MemberFailureTest {
protected:
    stand_ins::DispatchPtr Prepare(const Road& road) override {
        if (!road.item.fromName.empty()) {
            outlook->AddSharedCalendar(road.item.fromName);
        }
        const auto appointment = outlook->SavedItem(AppointmentOf(road.item), road.folder);
        ItemData meeting = road.item;
        meeting.relatedId = outlook->ItemsIn(road.folder).at(0).entryId;
        if (!road.waiting && !meeting.linkBroken) {
            return IsInvitation_(road) ? appointment : outlook->NewItem(meeting); // Outlook makes the invitation itself
        }
        const auto item = outlook->SavedItem(meeting);
        CommonUtils::AddToInspectedItems(outlook->ItemsIn(L"Drafts").at(0).entryId, meeting.relatedId, nullptr);
        return item;
    }

    std::wstring Whereabouts(const Road& road) const override {
        const auto delivered = outlook->Delivered();
        const auto drafts = outlook->ItemsIn(L"Drafts");
        const auto calendar = outlook->ItemsIn(road.folder);
        EXPECT_EQ(calendar.size(), 1u) << "the appointment is lost";
        EXPECT_LE(delivered.size(), 1u) << "it is sent twice";
        std::wstring place =
            delivered.empty() ? L"not sent" : L"sent" + Changed_(road, calendar.at(0), delivered.at(0));
        place += drafts.empty() ? L"" : L", in Drafts";
        place += outlook->ItemsIn(L"Deleted Items").empty() ? L"" : L", in Deleted Items";
        const bool shown = outlook->IsOpen(calendar.at(0).entryId);
        const bool itemShown = !drafts.empty() && outlook->IsOpen(drafts.at(0).entryId);
        if (delivered.empty() && drafts.empty() && !shown) {
            place += L", only in the calendar";
        }
        return place + (shown ? L", on the screen" : L"") + (itemShown ? L", its item on the screen" : L"");
    }

private:
    /// What is lacking of the changes, which an invitation's appointment undergoes. Inside the event they come after
    /// Outlook has made the invitation of it.
    static std::wstring Changed_(const Road& road, const ItemData& appointment, const ItemData& sent) {
        if (road.actions.block) {
            return {};
        }
        std::wstring missing = MissingChanges(sent, road.item.subject);
        if (!IsInvitation_(road)) {
            return missing;
        }
        const std::wstring missingThere = MissingChanges(appointment, road.item.subject);
        return missingThere + (missing == missingThere ? L"" : L", the invitation differs");
    }
    static bool IsInvitation_(const Road& road) {
        return road.item.messageClass.empty() && road.item.subject == L"Review";
    }
};

using OldMeetingMemberFailure = WithRedemption<MeetingMemberFailure>;

ItemData OfDelegate(ItemData meeting) {
    meeting.fromName = L"Anna Weber";
    return meeting;
}

TEST_F(MeetingMemberFailure, RequestOrForwardUpToTheWorker) {
    for (const auto& [item, onTheSpot] : {std::pair(Request(), kDiffers), {Forward(), L"sent"}}) {
        // clang-format off
        Expect({.item = item, .from = {L"MeetingItem.GetAssociatedAppointment", 1}, .until = {L"Application.Session get", 2}, .folder = L"Calendar"}, {
            {{L"none"}, L"sent", {}},
            {{L"MeetingItem.GetAssociatedAppointment#1"}, L"sent", {kNoAppointment}},
            {{L"MeetingItem.MessageClass get#1", L"MeetingItem.Subject get#1", L"AppointmentItem.Subject get#1",
              L"Application.ActiveExplorer#1", L"Explorer.Caption get#1"}, kUninspected, {kEventFails}},
            {{L"MeetingItem.GetAssociatedAppointment#2"}, onTheSpot, {kNoAppointment, kOnSpot}},
            {{L"AppointmentItem.IsRecurring get#1"}, kUninspected, {kEventFails}},
            {{L"MeetingItem.GetAssociatedAppointment#3"}, L"sent", {kNoAppointment, kItemsId}},
            {{L"AppointmentItem.EntryID get#1"}, L"sent", {kEmptyId}},
            {{L"MeetingItem.EntryID get#1"}, kUninspected, {kEventFails}},
            {{L"MeetingItem.Save#1"}, kUninspected, {kNotSaved, kEventBreaksOff}},
            {{L"MeetingItem.GetAssociatedAppointment#4"}, L"sent", {kNoAppointment, kNoneToSave, kNoClass, kNoSession, kNoneThroughRedemption}},
            {{L"AppointmentItem.EntryID get#2"}, L"sent", {kAppointmentNotSaved}},
            {{L"MeetingItem.EntryID get#2"}, kUninspected, {kEventFails}},
            {{L"MeetingItem.GetAssociatedAppointment#5"}, L"sent", {kNoAppointment, kItemsId}},
            {{L"AppointmentItem.EntryID get#3"}, L"sent", {kEmptyId}},
            {{L"MeetingItem.GetAssociatedAppointment#6"}, L"sent", {kNoAppointment}},
            {{L"AppointmentItem.Close#1", L"Application.ActiveExplorer#2", L"Explorer.Caption get#2"}, kUninspectedListed, {kEventFails}},
            {{L"MeetingItem.Subject get#2"}, kWithoutItsSubject, {kNoSubject}},
            {{L"MeetingItem.PropertyAccessor get#1", L"PropertyAccessor.GetProperty#1"}, L"sent", {kNoProperty}},
            {{L"MeetingItem.GetAssociatedAppointment#7", L"AppointmentItem.SendUsingAccount get#1"}, L"sent", {kNoSender}},
            {{L"MeetingItem.Recipients get#1", L"Recipients.Count get#1", L"Recipients.ResolveAll#1"}, L"sent", {kNoRecipients}},
            {{L"Recipients.Item#1", L"Recipient.Resolved get#1", L"Recipient.PropertyAccessor get#1",
              L"PropertyAccessor.GetProperty#2", L"Recipient.Type get#1"}, L"sent", {kNoRecipient}},
            {{L"MeetingItem.Attachments get#1", L"Attachments.Count get#1"}, kOldAttachments, {kNoAttachments}},
            {{L"Attachments.Item#1", L"Attachment.FileName get#1", L"Attachment.SaveAsFile#1"}, kOldAttachments, {kNoAttachment}},
            {{L"MeetingItem.Body get#1"}, kUninspectedListed, {kEventFails}},
        });
        // clang-format on
    }
}

TEST_F(MeetingMemberFailure, RequestOrForwardInTheWorker) {
    for (const ItemData& item : {Request(), Forward()}) {
        // clang-format off
        Expect({.item = item, .from = {L"Application.Session get", 2}, .until = {L"Application.Session get", 4}, .folder = L"Calendar"}, {
            {{L"none"}, L"sent", {}},
            {{L"Application.Session get#2"}, L"sent", {kNoTime}},
            {{L"NameSpace.GetItemFromID#1"}, L"sent", {kNotInDrafts, kDraftsInVain}},
            {{L"NameSpace.GetItemFromID#2"}, L"sent", {kNotInOutbox}},
            {{L"MeetingItem.GetAssociatedAppointment#8"}, L"sent", {kNoAppointment}},
            {{L"MeetingItem.MessageClass get#2", L"MeetingItem.Subject get#3", L"AppointmentItem.Subject get#2"}, L"sent", {kNoTime}},
            {{L"MeetingItem.GetAssociatedAppointment#9"}, L"sent", {kNoAppointment, kZeroDate}},
            {{L"AppointmentItem.IsRecurring get#2", L"AppointmentItem.LastModificationTime get#1"}, L"sent", {kOldDate}},
            {{L"Application.Session get#3"}, L"sent", {kNoTime}},
            {{L"NameSpace.GetItemFromID#3"}, L"sent", {kNotInDrafts, kDraftsInVain}},
            {{L"NameSpace.GetItemFromID#4"}, L"sent", {kNotInOutbox}},
            {{L"MeetingItem.GetAssociatedAppointment#10"}, L"sent", {kNoAppointment}},
            {{L"MeetingItem.MessageClass get#3", L"MeetingItem.Subject get#4", L"AppointmentItem.Subject get#3"}, L"sent", {kNoTime}},
            {{L"MeetingItem.GetAssociatedAppointment#11"}, L"sent", {kNoAppointment, kZeroDate}},
            {{L"AppointmentItem.IsRecurring get#3", L"AppointmentItem.LastModificationTime get#2"}, L"sent", {kOldDate}},
        });
        // clang-format on
    }
}

TEST_F(MeetingMemberFailure, RequestAfterTheWorker) {
    // clang-format off
    Expect({.item = Request(), .from = {L"Application.Session get", 4}, .folder = L"Calendar"}, {
        {{L"none"}, L"sent", {}},
        {{L"Application.Session get#4"}, kListed, {kInWindow}},
        {{L"NameSpace.GetItemFromID#5"}, L"sent", {kNotInDrafts, kDraftsInVain}},
        {{L"NameSpace.GetItemFromID#6"}, L"sent", {kNotInOutbox}},
        {{L"MeetingItem.GetAssociatedAppointment#12"}, L"sent", {kNoAppointment}},
        {{L"MeetingItem.MessageClass get#4", L"MeetingItem.Subject get#5", L"AppointmentItem.Subject get#4"}, kListed, {kInWindow}},
        {{L"MeetingItem.GetAssociatedAppointment#13"}, kOldLabels, {kNoAppointment, kTryRedemption, kNoClass, kNoSession, kNoLabel}},
        {{L"AppointmentItem.Subject put#1"}, kOldLabels, {kNoLabel}},
        {{L"MeetingItem.GetAssociatedAppointment#14"}, kOldBody, {kNoAppointment, kNoLabel}},
        {{L"AppointmentItem.Body put#1"}, kOldBody, {kNoLabel}},
        {{L"MeetingItem.GetAssociatedAppointment#15"}, kListed, {kNoAppointment, kTryRedemption, kNoClass, kNoSession, kNoneThroughRedemption, kStays, kNotSent}},
        {{L"AppointmentItem.Attachments get#1", L"Attachments.Count get#2", L"Attachments.Count get#3",
          L"Attachments.Remove#1", L"Attachments.Count get#4", L"Attachments.Add#1"}, kListed, {kNotReplaced, kStays, kNotSent}},
        {{L"MeetingItem.GetAssociatedAppointment#16"}, kSentTwiceInspected, {kNoAppointment, kItemsId, kNotSentAtAll, kSendCancelled}},
        {{L"AppointmentItem.EntryID get#4"}, kSentTwiceInspected, {kEmptyId, kNotSentAtAll, kSendCancelled}},
        {{L"MeetingItem.GetAssociatedAppointment#17"}, kInDrafts, {kNoAppointment, kNoClass, kNoSession, kNoneThroughRedemption}},
        {{L"MeetingItem.EntryID get#3"}, kListed, {kSendFails}},
        {{L"AppointmentItem.Send#1"}, kInDrafts, {kNotSentAtAll, kSendFails}},
        {{L"MeetingItem.GetAssociatedAppointment#18"}, L"sent", {kNoAppointment}},
        {{L"MeetingItem.MessageClass get#5", L"MeetingItem.Subject get#6", L"AppointmentItem.Subject get#5",
          L"Application.ActiveExplorer#3", L"Explorer.Caption get#3"}, L"sent", {kEventFails}},
        {{L"MeetingItem.GetAssociatedAppointment#19"}, L"sent, subject \"[Internal] [Internal] Review\", the invitation differs, inspected twice", {kNoAppointment, kOnSpot}},
        {{L"AppointmentItem.IsRecurring get#4"}, L"sent", {kEventFails}},
        {{L"MeetingItem.GetAssociatedAppointment#20"}, kSentTwiceInspected, {kNoAppointment, kItemsId, kNotSentAtAll, kSendCancelled}},
        {{L"AppointmentItem.EntryID get#5"}, kSentTwiceInspected, {kEmptyId, kNotSentAtAll, kSendCancelled}},
        {{L"Transport.Submit#1"}, kInDrafts, {kNotSentAtAll, kSendFails}},
        {{L"Application.Session get#5", L"NameSpace.GetDefaultFolder#3", L"MeetingItem.Move#1"}, kItemKept, {kNotDeleted}},
        {{L"MeetingItem.EntryID get#4", L"Application.Session get#6"}, kItemInDeletedItems, {kNotDeleted}},
        {{L"MAPIFolder.StoreID get#3", L"NameSpace.GetItemFromID#7"}, kItemInDeletedItems, {kNotFetched, kNotAmongDeleted}},
        {{L"MeetingItem.Delete#1"}, kItemInDeletedItems, {kNotOutOfThere}},
    });
    // clang-format on
}

TEST_F(MeetingMemberFailure, RequestInsideTheEvent) {
    // clang-format off
    Expect({.item = Request(), .embedded = true, .from = {L"MeetingItem.GetAssociatedAppointment", 1}, .folder = L"Calendar"}, {
        {{L"none"}, kDiffers, {}},
        {{L"MeetingItem.GetAssociatedAppointment#1"}, kDiffers, {kNoAppointment}},
        {{L"MeetingItem.MessageClass get#1", L"MeetingItem.Subject get#1", L"AppointmentItem.Subject get#1"}, kUninspected, {kEventFails}},
        {{L"MeetingItem.Subject get#2"}, kDiffersWithoutItsSubject, {kNoSubject}},
        {{L"MeetingItem.PropertyAccessor get#1", L"PropertyAccessor.GetProperty#1"}, kDiffers, {kNoProperty}},
        {{L"MeetingItem.GetAssociatedAppointment#2", L"AppointmentItem.SendUsingAccount get#1"}, kDiffers, {kNoSender}},
        {{L"MeetingItem.Recipients get#1", L"Recipients.Count get#1", L"Recipients.ResolveAll#1"}, kDiffers, {kNoRecipients}},
        {{L"Recipients.Item#1", L"Recipient.Resolved get#1", L"Recipient.PropertyAccessor get#1",
          L"PropertyAccessor.GetProperty#2", L"Recipient.Type get#1"}, kDiffers, {kNoRecipient}},
        {{L"MeetingItem.Attachments get#1", L"Attachments.Count get#1"}, kDiffersOldAttachments, {kNoAttachments}},
        {{L"Attachments.Item#1", L"Attachment.FileName get#1", L"Attachment.SaveAsFile#1"}, kDiffersOldAttachments, {kNoAttachment}},
        {{L"MeetingItem.Body get#1"}, kUninspected, {kEventFails}},
        {{L"MeetingItem.GetAssociatedAppointment#3"}, kDiffersOldLabels, {kNoAppointment, kTryRedemption, kNoClass, kNoSession, kNoLabel}},
        {{L"AppointmentItem.Subject put#1"}, kDiffersOldLabels, {kNoLabel}},
        {{L"MeetingItem.GetAssociatedAppointment#4"}, kDiffersOldBody, {kNoAppointment, kNoLabel}},
        {{L"AppointmentItem.Body put#1"}, kDiffersOldBody, {kNoLabel}},
        {{L"MeetingItem.GetAssociatedAppointment#5"}, kOnScreen, {kNoAppointment, kTryRedemption, kNoClass, kNoSession, kNoneThroughRedemption, kStays}},
        {{L"AppointmentItem.Attachments get#1", L"Attachments.Count get#2", L"Attachments.Count get#3",
          L"Attachments.Remove#1", L"Attachments.Count get#4", L"Attachments.Add#1"}, kOnScreen, {kNotReplaced, kStays}},
        {{L"Transport.Submit#1"}, kOnScreen, {}},
    });
    // clang-format on
}

TEST_F(MeetingMemberFailure, BlockedRequest) {
    // clang-format off
    Expect({.item = Request(), .actions = Block(), .from = {L"Application.Session get", 2}, .folder = L"Calendar"}, {
        {{L"none"}, kOnScreen, {}},
        {{L"Application.Session get#2"}, kOnScreen, {kNoTime}},
        {{L"NameSpace.GetItemFromID#1"}, kOnScreen, {kNotInDrafts, kDraftsInVain}},
        {{L"NameSpace.GetItemFromID#2"}, kOnScreen, {kNotInOutbox}},
        {{L"MeetingItem.GetAssociatedAppointment#8"}, kOnScreen, {kNoAppointment}},
        {{L"MeetingItem.MessageClass get#2", L"MeetingItem.Subject get#3", L"AppointmentItem.Subject get#2"}, kOnScreen, {kNoTime}},
        {{L"MeetingItem.GetAssociatedAppointment#9"}, kOnScreen, {kNoAppointment, kZeroDate}},
        {{L"AppointmentItem.IsRecurring get#2", L"AppointmentItem.LastModificationTime get#1"}, kOnScreen, {kOldDate}},
        {{L"Application.Session get#3"}, kListed, {kInWindow}},
        {{L"NameSpace.GetItemFromID#3"}, kOnScreen, {kNotInDrafts, kDraftsInVain}},
        {{L"NameSpace.GetItemFromID#4"}, kOnScreen, {kNotInOutbox}},
        {{L"MeetingItem.GetAssociatedAppointment#10"}, kOnScreen, {kNoAppointment}},
        {{L"MeetingItem.MessageClass get#3", L"MeetingItem.Subject get#4", L"AppointmentItem.Subject get#3"}, kListed, {kInWindow}},
        {{L"MeetingItem.GetAssociatedAppointment#11"}, kOnlyInTheCalendar, {kNoAppointment, kDisplayByRedemption, kNoClass, kNoSession, kNoneThroughRedemption}},
        {{L"AppointmentItem.Display#1"}, kInDrafts, {kNotShown}},
        {{L"Application.Session get#4", L"NameSpace.GetDefaultFolder#3", L"MeetingItem.Move#1"}, kShownAndInDrafts, {kNotDeleted}},
        {{L"MeetingItem.EntryID get#3", L"Application.Session get#5"}, kShownAndInDeletedItems, {kNotDeleted}},
        {{L"MAPIFolder.StoreID get#3", L"NameSpace.GetItemFromID#5"}, kShownAndInDeletedItems, {kNotFetched, kNotAmongDeleted}},
        {{L"MeetingItem.Delete#1"}, kShownAndInDeletedItems, {kNotOutOfThere}},
    });
    // clang-format on
}

TEST_F(MeetingMemberFailure, ForwardAfterTheWorker) {
    // clang-format off
    Expect({.item = Forward(), .from = {L"Application.Session get", 4}, .folder = L"Calendar"}, {
        {{L"none"}, L"sent", {}},
        {{L"Application.Session get#4"}, kItemOnScreenListed, {kInWindow}},
        {{L"NameSpace.GetItemFromID#5"}, L"sent", {kNotInDrafts, kDraftsInVain}},
        {{L"NameSpace.GetItemFromID#6"}, L"sent", {kNotInOutbox}},
        {{L"MeetingItem.GetAssociatedAppointment#12"}, L"sent", {kNoAppointment}},
        {{L"MeetingItem.MessageClass get#4", L"MeetingItem.Subject get#5", L"AppointmentItem.Subject get#4"}, kItemOnScreenListed, {kInWindow}},
        {{L"MeetingItem.GetAssociatedAppointment#13"}, L"sent", {kNoAppointment, kOnSpot}},
        {{L"AppointmentItem.IsRecurring get#4", L"MeetingItem.Subject put#1"}, kOldLabels, {kNoLabel}},
        {{L"MeetingItem.GetAssociatedAppointment#14"}, L"sent", {kNoAppointment, kOnSpot}},
        {{L"AppointmentItem.IsRecurring get#5", L"MeetingItem.Body put#1"}, kOldBody, {kNoLabel}},
        {{L"MeetingItem.GetAssociatedAppointment#15"}, L"sent", {kNoAppointment, kOnSpot}},
        {{L"AppointmentItem.IsRecurring get#6", L"MeetingItem.Attachments get#2", L"Attachments.Count get#2",
          L"Attachments.Count get#3", L"Attachments.Remove#1", L"Attachments.Count get#4", L"Attachments.Add#1"}, kItemOnScreenListed, {kNotReplaced, kStays, kNotSent}},
        {{L"MeetingItem.GetAssociatedAppointment#16"}, kForwardTwiceInspected, {kNoAppointment, kItemsId, kItemSendCancelled}},
        {{L"AppointmentItem.EntryID get#4"}, kForwardTwiceInspected, {kEmptyId, kItemSendCancelled}},
        {{L"MeetingItem.GetAssociatedAppointment#17"}, kItemOnScreen, {kNoAppointment, kNoClass, kNoSession, kNoneThroughRedemption}},
        {{L"MeetingItem.EntryID get#3"}, kItemOnScreenListed, {kSendFails}},
        {{L"MeetingItem.Send#1"}, kItemOnScreen, {kItemSendFails}},
        {{L"MeetingItem.GetAssociatedAppointment#18"}, L"sent", {kNoAppointment}},
        {{L"MeetingItem.MessageClass get#5", L"MeetingItem.Subject get#6", L"AppointmentItem.Subject get#5",
          L"Application.ActiveExplorer#3", L"Explorer.Caption get#3"}, L"sent", {kEventFails}},
        {{L"MeetingItem.GetAssociatedAppointment#19"}, kForwardTwiceInspected, {kNoAppointment, kOnSpot}},
        {{L"AppointmentItem.IsRecurring get#7"}, L"sent", {kEventFails}},
        {{L"MeetingItem.GetAssociatedAppointment#20"}, kForwardTwiceInspected, {kNoAppointment, kItemsId, kItemSendCancelled}},
        {{L"AppointmentItem.EntryID get#5"}, kForwardTwiceInspected, {kEmptyId, kItemSendCancelled}},
        {{L"Transport.Submit#1"}, kItemOnScreen, {kItemSendFails}},
    });
    // clang-format on
}

TEST_F(MeetingMemberFailure, ForwardInsideTheEvent) {
    // clang-format off
    Expect({.item = Forward(), .embedded = true, .from = {L"MeetingItem.GetAssociatedAppointment", 1}, .folder = L"Calendar"}, {
        {{L"none"}, L"sent", {}},
        {{L"MeetingItem.GetAssociatedAppointment#1"}, kUnchanged, {kNoAppointment}},
        {{L"MeetingItem.MessageClass get#1", L"MeetingItem.Subject get#1", L"AppointmentItem.Subject get#1"}, kUninspected, {kEventFails}},
        {{L"MeetingItem.Subject get#2"}, kWithoutItsSubject, {kNoSubject}},
        {{L"MeetingItem.PropertyAccessor get#1", L"PropertyAccessor.GetProperty#1"}, L"sent", {kNoProperty}},
        {{L"MeetingItem.GetAssociatedAppointment#2", L"AppointmentItem.SendUsingAccount get#1"}, L"sent", {kNoSender}},
        {{L"MeetingItem.Recipients get#1", L"Recipients.Count get#1", L"Recipients.ResolveAll#1"}, L"sent", {kNoRecipients}},
        {{L"Recipients.Item#1", L"Recipient.Resolved get#1", L"Recipient.PropertyAccessor get#1",
          L"PropertyAccessor.GetProperty#2", L"Recipient.Type get#1"}, L"sent", {kNoRecipient}},
        {{L"MeetingItem.Attachments get#1", L"Attachments.Count get#1"}, kOldAttachments, {kNoAttachments}},
        {{L"Attachments.Item#1", L"Attachment.FileName get#1", L"Attachment.SaveAsFile#1"}, kOldAttachments, {kNoAttachment}},
        {{L"MeetingItem.Body get#1"}, kUninspected, {kEventFails}},
        {{L"MeetingItem.GetAssociatedAppointment#3"}, L"sent", {kNoAppointment, kOnSpot}},
        {{L"AppointmentItem.IsRecurring get#1", L"MeetingItem.Subject put#1"}, kOldLabels, {kNoLabel}},
        {{L"MeetingItem.GetAssociatedAppointment#4"}, L"sent", {kNoAppointment, kOnSpot}},
        {{L"AppointmentItem.IsRecurring get#2", L"MeetingItem.Body put#1"}, kOldBody, {kNoLabel}},
        {{L"MeetingItem.GetAssociatedAppointment#5"}, L"sent", {kNoAppointment, kOnSpot}},
        {{L"AppointmentItem.IsRecurring get#3", L"MeetingItem.Attachments get#2", L"Attachments.Count get#2",
          L"Attachments.Count get#3", L"Attachments.Remove#1", L"Attachments.Count get#4", L"Attachments.Add#1"}, kItemOnScreen, {kNotReplaced, kStays}},
        {{L"Transport.Submit#1"}, kItemOnScreen, {}},
    });
    // clang-format on
}

TEST_F(MeetingMemberFailure, ResponseOrCancellation) {
    for (const wchar_t* messageClass : {kResponse, kCancellation}) {
        // clang-format off
        Expect({.item = OfClass(messageClass), .from = {L"MeetingItem.GetAssociatedAppointment", 1}, .folder = L"Calendar"}, {
            {{L"none"}, L"sent", {}},
            {{L"MeetingItem.GetAssociatedAppointment#1"}, L"sent", {kNoAppointment}},
            {{L"MeetingItem.MessageClass get#1", L"Application.ActiveExplorer#1", L"Explorer.Caption get#1"}, kUninspected, {kEventFails}},
            {{L"MeetingItem.Subject get#1"}, kWithoutItsSubject, {kNoSubject}},
            {{L"MeetingItem.PropertyAccessor get#1", L"PropertyAccessor.GetProperty#1"}, L"sent", {kNoProperty}},
            {{L"MeetingItem.GetAssociatedAppointment#2", L"AppointmentItem.SendUsingAccount get#1"}, L"sent", {kNoSender}},
            {{L"MeetingItem.Recipients get#1", L"Recipients.Count get#1", L"Recipients.ResolveAll#1"}, L"sent", {kNoRecipients}},
            {{L"Recipients.Item#1", L"Recipient.Resolved get#1", L"Recipient.PropertyAccessor get#1",
              L"PropertyAccessor.GetProperty#2", L"Recipient.Type get#1"}, L"sent", {kNoRecipient}},
            {{L"MeetingItem.Attachments get#1", L"Attachments.Count get#1"}, kOldAttachments, {kNoAttachments}},
            {{L"Attachments.Item#1", L"Attachment.FileName get#1", L"Attachment.SaveAsFile#1"}, kOldAttachments, {kNoAttachment}},
            {{L"MeetingItem.Body get#1"}, kUninspected, {kEventFails}},
            {{L"MeetingItem.Subject put#1"}, kOldLabels, {kNoLabel}},
            {{L"MeetingItem.Body put#1"}, kOldBody, {kNoLabel}},
            {{L"MeetingItem.Attachments get#2", L"Attachments.Count get#2", L"Attachments.Count get#3",
              L"Attachments.Remove#1", L"Attachments.Count get#4", L"Attachments.Add#1"}, kItemOnScreen, {kNotReplaced, kStays}},
            {{L"Transport.Submit#1"}, kItemOnScreen, {}},
        });
        // clang-format on
    }
}

TEST_F(MeetingMemberFailure, BlockedResponse) {
    // clang-format off
    Expect({.item = OfClass(kResponse), .actions = Block(), .from = {L"MeetingItem.GetAssociatedAppointment", 1}, .folder = L"Calendar"}, {
        {{L"none"}, kItemOnScreen, {}},
        {{L"MeetingItem.GetAssociatedAppointment#1"}, kItemOnScreen, {kNoAppointment}},
        {{L"MeetingItem.MessageClass get#1", L"Application.ActiveExplorer#1", L"Explorer.Caption get#1"}, L"sent, uninspected", {kEventFails}},
        {{L"MeetingItem.Subject get#1"}, kItemOnScreen, {kNoSubject}},
        {{L"MeetingItem.PropertyAccessor get#1", L"PropertyAccessor.GetProperty#1"}, kItemOnScreen, {kNoProperty}},
        {{L"MeetingItem.GetAssociatedAppointment#2", L"AppointmentItem.SendUsingAccount get#1"}, kItemOnScreen, {kNoSender}},
        {{L"MeetingItem.Recipients get#1", L"Recipients.Count get#1", L"Recipients.ResolveAll#1"}, kItemOnScreen, {kNoRecipients}},
        {{L"Recipients.Item#1", L"Recipient.Resolved get#1", L"Recipient.PropertyAccessor get#1",
          L"PropertyAccessor.GetProperty#2", L"Recipient.Type get#1"}, kItemOnScreen, {kNoRecipient}},
        {{L"MeetingItem.Attachments get#1", L"Attachments.Count get#1"}, kItemOnScreen, {kNoAttachments}},
        {{L"Attachments.Item#1", L"Attachment.FileName get#1", L"Attachment.SaveAsFile#1"}, kItemOnScreen, {kNoAttachment}},
        {{L"MeetingItem.Body get#1"}, L"sent, uninspected", {kEventFails}},
    });
    // clang-format on
}

TEST_F(MeetingMemberFailure, RequestWithABrokenLinkBeforeItsInspection) {
    // clang-format off
    Expect({.item = Unlinked(Request()), .from = {L"MeetingItem.GetAssociatedAppointment", 1}, .until = {L"Application.ActiveExplorer", 2}, .folder = L"Calendar"}, {
        {{L"none"}, L"sent", {kNotLinked, kNoAppointmentsSender}},
        {{L"MeetingItem.GetAssociatedAppointment#1", L"MeetingItem.EntryID get#1", L"Application.Session get#2",
          L"NameSpace.Folders get#1", L"Folders.GetFirst#1", L"MAPIFolder.Folders get#1", L"Folders.GetFirst#2"}, L"sent", {kNoAppointment}},
        {{L"MAPIFolder.StoreID get#3", L"NameSpace.GetItemFromID#1", L"MAPIFolder.FolderPath get#1"}, L"sent", {kNotInStore}},
        {{L"MeetingItem.MessageClass get#1", L"MeetingItem.Subject get#1", L"AppointmentItem.Subject get#1",
          L"Application.ActiveExplorer#1", L"Explorer.Caption get#1"}, kUninspectedListed, {kEventFails}},
        {{L"MeetingItem.GetAssociatedAppointment#2", L"MeetingItem.EntryID get#2", L"Application.Session get#3",
          L"NameSpace.Folders get#2", L"Folders.GetFirst#3", L"MAPIFolder.Folders get#2", L"Folders.GetFirst#4"}, kUnchangedListed, {kNoAppointment, kOnSpot}},
        {{L"MAPIFolder.StoreID get#4", L"NameSpace.GetItemFromID#2", L"MAPIFolder.FolderPath get#2"}, L"sent", {kNotInStore}},
        {{L"AppointmentItem.IsRecurring get#1"}, kUninspectedListed, {kEventFails}},
        {{L"MeetingItem.GetAssociatedAppointment#3", L"MeetingItem.EntryID get#3", L"Application.Session get#4",
          L"NameSpace.Folders get#3", L"Folders.GetFirst#5", L"MAPIFolder.Folders get#3", L"Folders.GetFirst#6"}, L"sent", {kNoAppointment, kItemsId}},
        {{L"MAPIFolder.StoreID get#5", L"NameSpace.GetItemFromID#3", L"MAPIFolder.FolderPath get#3"}, L"sent", {kNotInStore}},
        {{L"AppointmentItem.EntryID get#1"}, L"sent", {kEmptyId}},
        {{L"MeetingItem.EntryID get#4"}, kUninspectedListed, {kEventFails}},
        {{L"MeetingItem.GetAssociatedAppointment#4", L"MeetingItem.EntryID get#5", L"Application.Session get#5",
          L"NameSpace.Folders get#4", L"Folders.GetFirst#7", L"MAPIFolder.Folders get#4", L"Folders.GetFirst#8"}, kItemOnScreenListed, {kNoAppointment, kItemsId, kNoRepresentedName, kNotById, kNoRepresentedName, kNotById, kNoRepresentedName, kNotById, kZeroDate, kNoRepresentedName, kNotById, kNoRepresentedName, kNotById, kZeroDate, kNoRepresentedName, kNotById, kNoRepresentedName, kNotById, kTryRedemption, kNoClass, kNoSession, kNoLabel, kNoRepresentedName, kNotById, kTryRedemption, kNoClass, kNoSession, kNoneThroughRedemption, kStays, kNotSent}},
        {{L"MAPIFolder.StoreID get#6", L"NameSpace.GetItemFromID#4", L"MAPIFolder.FolderPath get#4"}, L"sent", {kNotInStore}},
        {{L"AppointmentItem.EntryID get#2"}, kItemOnScreenListed, {kEmptyId, kNoId, kNoId, kNoId, kZeroDate, kNoId, kNoId, kZeroDate, kNoId, kNoId, kTryRedemption, kNoClass, kNoSession, kNoLabel, kNoId, kTryRedemption, kNoClass, kNoSession, kNoneThroughRedemption, kStays, kNotSent}},
        {{L"MeetingItem.GetAssociatedAppointment#5", L"MeetingItem.EntryID get#6", L"Application.Session get#6",
          L"NameSpace.Folders get#5", L"Folders.GetFirst#9", L"MAPIFolder.Folders get#5", L"Folders.GetFirst#10"}, L"sent", {kNoAppointment}},
        {{L"MAPIFolder.StoreID get#7", L"NameSpace.GetItemFromID#5", L"MAPIFolder.FolderPath get#5"}, L"sent", {kNotInStore}},
        {{L"AppointmentItem.Close#1"}, kUninspectedListed, {kEventFails}},
    });
    // clang-format on
}

TEST_F(MeetingMemberFailure, RequestWithABrokenLinkInTheWorker) {
    // clang-format off
    Expect({.item = Unlinked(Request()), .from = {L"Application.Session get", 7}, .until = {L"Application.Session get", 10}, .folder = L"Calendar"}, {
        {{L"none"}, L"sent", {kNotLinked, kNoAppointmentsSender}},
        {{L"Application.Session get#7"}, L"sent", {kNoTime}},
        {{L"NameSpace.GetItemFromID#6"}, L"sent", {kNotInDrafts, kDraftsInVain}},
        {{L"NameSpace.GetItemFromID#7"}, L"sent", {kNotInOutbox}},
        {{L"MeetingItem.GetAssociatedAppointment#7", L"MeetingItem.EntryID get#7", L"Application.Session get#8",
          L"NameSpace.Folders get#6", L"Folders.GetFirst#11", L"MAPIFolder.Folders get#6", L"Folders.GetFirst#12"}, L"sent", {kNoAppointment}},
        {{L"MAPIFolder.StoreID get#8", L"NameSpace.GetItemFromID#8", L"MAPIFolder.FolderPath get#6"}, L"sent", {kNotInStore}},
        {{L"MeetingItem.MessageClass get#2", L"MeetingItem.Subject get#3", L"AppointmentItem.Subject get#2"}, L"sent", {kNoTime}},
        {{L"MeetingItem.GetAssociatedAppointment#8", L"MeetingItem.EntryID get#8", L"Application.Session get#9",
          L"NameSpace.Folders get#7", L"Folders.GetFirst#13", L"MAPIFolder.Folders get#7", L"Folders.GetFirst#14"}, L"sent", {kNoAppointment, kZeroDate}},
        {{L"MAPIFolder.StoreID get#9", L"NameSpace.GetItemFromID#9", L"MAPIFolder.FolderPath get#7"}, L"sent", {kNotInStore}},
        {{L"AppointmentItem.IsRecurring get#2", L"AppointmentItem.LastModificationTime get#1"}, L"sent", {kOldDate}},
    });
    // clang-format on
}

TEST_F(MeetingMemberFailure, RequestWithABrokenLinkChanged) {
    // clang-format off
    Expect({.item = Unlinked(Request()), .from = {L"Application.Session get", 13}, .until = {L"MeetingItem.GetAssociatedAppointment", 15}, .folder = L"Calendar"}, {
        {{L"none"}, L"sent", {kNotLinked, kNoAppointmentsSender}},
        {{L"Application.Session get#13"}, kItemOnScreenListed, {kInWindow}},
        {{L"NameSpace.GetItemFromID#14"}, L"sent", {kNotInDrafts, kDraftsInVain}},
        {{L"NameSpace.GetItemFromID#15"}, L"sent", {kNotInOutbox}},
        {{L"MeetingItem.GetAssociatedAppointment#11", L"MeetingItem.EntryID get#11", L"Application.Session get#14",
          L"NameSpace.Folders get#10", L"Folders.GetFirst#19", L"MAPIFolder.Folders get#10", L"Folders.GetFirst#20"}, L"sent", {kNoAppointment}},
        {{L"MAPIFolder.StoreID get#12", L"NameSpace.GetItemFromID#16", L"MAPIFolder.FolderPath get#10"}, L"sent", {kNotInStore}},
        {{L"MeetingItem.MessageClass get#4", L"MeetingItem.Subject get#5", L"AppointmentItem.Subject get#4"}, kItemOnScreenListed, {kInWindow}},
        {{L"MeetingItem.GetAssociatedAppointment#12", L"MeetingItem.EntryID get#12", L"Application.Session get#15",
          L"NameSpace.Folders get#11", L"Folders.GetFirst#21", L"MAPIFolder.Folders get#11", L"Folders.GetFirst#22"}, kOldLabels, {kNoAppointment, kTryRedemption, kNoClass, kNoSession, kNoLabel}},
        {{L"MAPIFolder.StoreID get#13", L"NameSpace.GetItemFromID#17", L"MAPIFolder.FolderPath get#11"}, L"sent", {kNotInStore}},
        {{L"AppointmentItem.Subject put#1"}, kOldLabels, {kNoLabel}},
        {{L"MeetingItem.GetAssociatedAppointment#13", L"MeetingItem.EntryID get#13", L"Application.Session get#16",
          L"NameSpace.Folders get#12", L"Folders.GetFirst#23", L"MAPIFolder.Folders get#12", L"Folders.GetFirst#24"}, kOldBody, {kNoAppointment, kNoLabel}},
        {{L"MAPIFolder.StoreID get#14", L"NameSpace.GetItemFromID#18", L"MAPIFolder.FolderPath get#12"}, L"sent", {kNotInStore}},
        {{L"AppointmentItem.Body put#1"}, kOldBody, {kNoLabel}},
        {{L"MeetingItem.GetAssociatedAppointment#14", L"MeetingItem.EntryID get#14", L"Application.Session get#17",
          L"NameSpace.Folders get#13", L"Folders.GetFirst#25", L"MAPIFolder.Folders get#13", L"Folders.GetFirst#26"}, kItemOnScreenListed, {kNoAppointment, kTryRedemption, kNoClass, kNoSession, kNoneThroughRedemption, kStays, kNotSent}},
        {{L"MAPIFolder.StoreID get#15", L"NameSpace.GetItemFromID#19", L"MAPIFolder.FolderPath get#13"}, L"sent", {kNotInStore}},
        {{L"AppointmentItem.Attachments get#1", L"Attachments.Count get#2", L"Attachments.Count get#3",
          L"Attachments.Remove#1", L"Attachments.Count get#4", L"Attachments.Add#1"}, kItemOnScreenListed, {kNotReplaced, kStays, kNotSent}},
    });
    // clang-format on
}

TEST_F(MeetingMemberFailure, RequestWithABrokenLinkSent) {
    // clang-format off
    Expect({.item = Unlinked(Request()), .from = {L"MeetingItem.GetAssociatedAppointment", 15}, .until = {L"AppointmentItem.Send", 1}, .folder = L"Calendar"}, {
        {{L"none"}, L"sent", {kNotLinked, kNoAppointmentsSender}},
        {{L"MeetingItem.GetAssociatedAppointment#15", L"MeetingItem.EntryID get#15", L"Application.Session get#18",
          L"NameSpace.Folders get#14", L"Folders.GetFirst#27", L"MAPIFolder.Folders get#14", L"Folders.GetFirst#28"}, kTwiceInspectedItemShown, {kNoAppointment, kItemsId, kNotSentAtAll, kSendCancelled}},
        {{L"MAPIFolder.StoreID get#16", L"NameSpace.GetItemFromID#20", L"MAPIFolder.FolderPath get#14"}, L"sent", {kNotInStore}},
        {{L"AppointmentItem.EntryID get#3"}, kTwiceInspectedItemShown, {kEmptyId, kNotSentAtAll, kSendCancelled}},
        {{L"MeetingItem.GetAssociatedAppointment#16", L"MeetingItem.EntryID get#16", L"Application.Session get#19",
          L"NameSpace.Folders get#15", L"Folders.GetFirst#29", L"MAPIFolder.Folders get#15", L"Folders.GetFirst#30"}, kItemOnScreen, {kNoAppointment, kNoClass, kNoSession, kNoneThroughRedemption}},
        {{L"MAPIFolder.StoreID get#17", L"NameSpace.GetItemFromID#21", L"MAPIFolder.FolderPath get#15"}, L"sent", {kNotInStore}},
        {{L"MeetingItem.EntryID get#17"}, kItemOnScreenListed, {kSendFails}},
    });
    // clang-format on
}

TEST_F(MeetingMemberFailure, RequestOfAnEarlierRun) {
    // clang-format off
    Expect({.item = Request(), .waiting = true, .from = {L"Application.Session get", 2}, .folder = L"Calendar"}, {
        {{L"none"}, kDiffers, {}},
        {{L"Application.Session get#2"}, kListedUninspected, {kNotResent}},
        {{L"NameSpace.GetItemFromID#1"}, kDiffers, {kNotInDrafts, kDraftsInVain}},
        {{L"NameSpace.GetItemFromID#2"}, kDiffers, {kNotInOutbox}},
        {{L"MeetingItem.GetAssociatedAppointment#1"}, kDiffers, {kNoAppointment}},
        {{L"MeetingItem.MessageClass get#1", L"MeetingItem.Subject get#1", L"AppointmentItem.Subject get#1"}, kListedUninspected, {kNotResent}},
        {{L"MeetingItem.GetAssociatedAppointment#2"}, kInDraftsUninspected, {kNoAppointment, kNoClass, kNoSession, kNoneThroughRedemption}},
        {{L"MeetingItem.EntryID get#1"}, kListedUninspected, {kSendFails}},
        {{L"AppointmentItem.Send#1"}, kInDraftsUninspected, {kNotSentAtAll, kSendFails}},
        {{L"MeetingItem.GetAssociatedAppointment#3"}, kDiffers, {kNoAppointment}},
        {{L"MeetingItem.MessageClass get#2", L"MeetingItem.Subject get#2", L"AppointmentItem.Subject get#2",
          L"Application.ActiveExplorer#1"}, kUninspected, {kEventFails}},
        {{L"MeetingItem.Subject get#3"}, kDiffersWithoutItsSubject, {kNoSubject}},
        {{L"MeetingItem.PropertyAccessor get#1", L"PropertyAccessor.GetProperty#1"}, kDiffers, {kNoProperty}},
        {{L"MeetingItem.GetAssociatedAppointment#4", L"AppointmentItem.SendUsingAccount get#1"}, kDiffers, {kNoSender}},
        {{L"MeetingItem.Recipients get#1", L"Recipients.Count get#1", L"Recipients.ResolveAll#1"}, kDiffers, {kNoRecipients}},
        {{L"Recipients.Item#1", L"Recipient.Resolved get#1", L"Recipient.PropertyAccessor get#1",
          L"PropertyAccessor.GetProperty#2", L"Recipient.Type get#1"}, kDiffers, {kNoRecipient}},
        {{L"MeetingItem.Attachments get#1", L"Attachments.Count get#1"}, kDiffersOldAttachments, {kNoAttachments}},
        {{L"Attachments.Item#1", L"Attachment.FileName get#1", L"Attachment.SaveAsFile#1"}, kDiffersOldAttachments, {kNoAttachment}},
        {{L"MeetingItem.Body get#1"}, kUninspected, {kEventFails}},
        {{L"MeetingItem.GetAssociatedAppointment#5"}, kDiffersOldLabels, {kNoAppointment, kTryRedemption, kNoClass, kNoSession, kNoLabel}},
        {{L"AppointmentItem.Subject put#1"}, kDiffersOldLabels, {kNoLabel}},
        {{L"MeetingItem.GetAssociatedAppointment#6"}, kDiffersOldBody, {kNoAppointment, kNoLabel}},
        {{L"AppointmentItem.Body put#1"}, kDiffersOldBody, {kNoLabel}},
        {{L"MeetingItem.GetAssociatedAppointment#7"}, kInDrafts, {kNoAppointment, kTryRedemption, kNoClass, kNoSession, kNoneThroughRedemption, kStays, kNotSentAtAll, kSendCancelled}},
        {{L"AppointmentItem.Attachments get#1", L"Attachments.Count get#2", L"Attachments.Count get#3",
          L"Attachments.Remove#1", L"Attachments.Count get#4", L"Attachments.Add#1"}, kInDrafts, {kNotReplaced, kStays, kNotSentAtAll, kSendCancelled}},
        {{L"Transport.Submit#1"}, kInDrafts, {kNotSentAtAll, kSendFails}},
        {{L"Application.Session get#3", L"NameSpace.GetDefaultFolder#3", L"MeetingItem.Move#1"}, kDiffersItemKept, {kNotDeleted}},
        {{L"MeetingItem.EntryID get#2", L"Application.Session get#4"}, kDiffersInDeletedItems, {kNotDeleted}},
        {{L"MAPIFolder.StoreID get#3", L"NameSpace.GetItemFromID#3"}, kDiffersInDeletedItems, {kNotFetched, kNotAmongDeleted}},
        {{L"MeetingItem.Delete#1"}, kDiffersInDeletedItems, {kNotOutOfThere}},
    });
    // clang-format on
}

TEST_F(MeetingMemberFailure, RequestOfADelegateOfAnEarlierRun) {
    // clang-format off
    Expect({.item = Unlinked(OfDelegate(Request())), .waiting = true, .from = {L"MeetingItem.GetAssociatedAppointment", 2}, .until = {L"MeetingItem.GetAssociatedAppointment", 3}, .folder = L"Anna Weber\\Calendar"}, {
        {{L"none"}, kDiffers, {kNotLinked, kNotHeld}},
        {{L"MeetingItem.GetAssociatedAppointment#2", L"MeetingItem.EntryID get#2", L"Application.Session get#4",
          L"NameSpace.Folders get#2", L"Folders.GetFirst#3", L"MAPIFolder.Folders get#2", L"Folders.GetFirst#4"}, kInDraftsUninspected, {kNoAppointment, kNoClass, kNoSession, kNoneThroughRedemption}},
        {{L"MAPIFolder.StoreID get#11", L"NameSpace.GetItemFromID#11"}, kDiffers, {kNotInStore}},
        {{L"Folders.GetNext#9"}, kInDraftsUninspected, {kNoAppointment, kNoClass, kNoSession, kNoneThroughRedemption}},
        {{L"MAPIFolder.StoreID get#12", L"NameSpace.GetItemFromID#12"}, kDiffers, {kNotInStore}},
        {{L"Folders.GetNext#10"}, kInDraftsUninspected, {kNoAppointment, kNoClass, kNoSession, kNoneThroughRedemption}},
        {{L"MAPIFolder.StoreID get#13", L"NameSpace.GetItemFromID#13"}, kDiffers, {kNotInStore}},
        {{L"Folders.GetNext#11"}, kInDraftsUninspected, {kNoAppointment, kNoClass, kNoSession, kNoneThroughRedemption}},
        {{L"MAPIFolder.StoreID get#14", L"NameSpace.GetItemFromID#14"}, kDiffers, {kNotInStore}},
        {{L"Folders.GetNext#12"}, kInDraftsUninspected, {kNoAppointment, kNoClass, kNoSession, kNoneThroughRedemption}},
        {{L"MAPIFolder.StoreID get#15", L"NameSpace.GetItemFromID#15"}, kDiffers, {kNotInStore}},
        {{L"Folders.GetNext#13"}, kInDraftsUninspected, {kNoAppointment, kNoClass, kNoSession, kNoneThroughRedemption}},
        {{L"MAPIFolder.StoreID get#16", L"NameSpace.GetItemFromID#16"}, kDiffers, {kNotInStore}},
        {{L"Folders.GetNext#14"}, kInDraftsUninspected, {kNoAppointment, kNoClass, kNoSession, kNoneThroughRedemption}},
        {{L"MAPIFolder.StoreID get#17", L"NameSpace.GetItemFromID#17"}, kDiffers, {kNotInStore}},
        {{L"Folders.GetNext#15", L"Folders.GetNext#16"}, kInDraftsUninspected, {kNoAppointment, kNoClass, kNoSession, kNoneThroughRedemption}},
        {{L"MeetingItem.PropertyAccessor get#2", L"PropertyAccessor.GetProperty#2"}, kInDraftsUninspected, {kNoProperty, kNotById, kNoClass, kNoSession, kNoneThroughRedemption}},
        {{L"NameSpace.CreateRecipient#2", L"Recipient.Resolve#2", L"Recipient.Resolved get#2",
          L"NameSpace.GetSharedDefaultFolder#2", L"MAPIFolder.StoreID get#18", L"NameSpace.GetItemFromID#18"}, kInDraftsUninspected, {kNotShared, kNotById, kNoClass, kNoSession, kNoneThroughRedemption}},
        {{L"MeetingItem.EntryID get#3"}, kListedUninspected, {kSendFails}},
        {{L"AppointmentItem.Send#1"}, kInDraftsUninspected, {kNotSentAtAll, kSendFails}},
    });
    // clang-format on
}

TEST_F(OldMeetingMemberFailure, RequestUpToTheWorker) {
    // clang-format off
    Expect({.item = Request(), .from = {L"MeetingItem.GetAssociatedAppointment", 1}, .until = {L"Application.Session get", 2}, .folder = L"Calendar", .version = kVersion11}, {
        {{L"none"}, kItemKept, {}},
        {{L"MeetingItem.GetAssociatedAppointment#1"}, kItemKept, {kNoAppointment}},
        {{L"MeetingItem.MessageClass get#1", L"MeetingItem.Subject get#1", L"AppointmentItem.Subject get#1"}, kUninspected, {kEventFails}},
        {{L"MeetingItem.Save#1"}, kItemKept, {kNotSaved}},
        {{L"MeetingItem.GetAssociatedAppointment#2"}, kItemKept, {kNoAppointment, kNoneToSave}},
        {{L"AppointmentItem.EntryID get#1"}, kItemKept, {kAppointmentNotSaved}},
        {{L"Application.ActiveExplorer#1", L"Explorer.Caption get#1"}, kUninspected, {kEventFails}},
        {{L"RDOSession.CreateInstance#1"}, kDiffers, {kNotCreated, kNoSession, kOnSpot}},
        {{L"RDOSession.GetRDOObjectFromOutlookObject#1", L"RDOMeetingItem.GetAssociatedAppointment#1"}, kDiffers, {kNoAppointment, kOnSpot}},
        {{L"RDOAppointmentItem.IsRecurring get#1"}, kUninspected, {kEventFails}},
        {{L"MeetingItem.GetAssociatedAppointment#3"}, kItemKept, {kNoAppointment, kItemsId}},
        {{L"AppointmentItem.EntryID get#2"}, kItemKept, {kEmptyId}},
        {{L"MeetingItem.EntryID get#1"}, kUninspected, {kEventFails}},
        {{L"MeetingItem.GetAssociatedAppointment#4"}, kItemKept, {kNoAppointment, kItemsId}},
        {{L"AppointmentItem.EntryID get#3"}, kItemKept, {kEmptyId}},
        {{L"MeetingItem.GetAssociatedAppointment#5"}, kItemKept, {kNoAppointment}},
        {{L"AppointmentItem.Close#1", L"Application.ActiveExplorer#2", L"Explorer.Caption get#2"}, kUninspectedListed, {kEventFails}},
        {{L"MeetingItem.Subject get#2"}, L"sent, subject \"[Internal] \", in Drafts", {kNoSubject}},
        {{L"RDOSession.CreateInstance#2"}, kItemKept, {kNotCreated, kNoSession}},
        {{L"RDOSession.GetRDOObjectFromOutlookObject#2"}, kItemKept, {kNoView}},
        {{L"RDOMeetingItem.Fields#1"}, kItemKept, {kNoSubject}},
        {{L"SafeCurrentUser.CreateInstance#1"}, kItemKept, {kNoCurrentUser}},
        {{L"SafeCurrentUser.SMTPAddress get#1"}, kItemKept, {kNoSender}},
        {{L"SafeMeetingItem.CreateInstance#1"}, kItemKept, {kNoSafeMeeting, kNoSafeItem}},
        {{L"SafeMeetingItem.Item put#1", L"SafeMeetingItem.Recipients get#1", L"SafeRecipients.ResolveAll#1",
          L"SafeRecipients.Count get#1"}, kItemKept, {kNoRecipients}},
        {{L"SafeRecipients.Item#1", L"SafeRecipient.Resolved get#1", L"SafeRecipient.AddressEntry get#1",
          L"SafeRecipient.Fields#1", L"SafeRecipient.Address get#1", L"SafeRecipient.Name get#1",
          L"SafeRecipient.Type get#1"}, kItemKept, {kRecipientSkipped}},
        {{L"SafeMeetingItem.Attachments get#1", L"SafeAttachments.Count get#1", L"SafeAttachments.Item#1",
          L"SafeAttachment.FileName get#1", L"SafeAttachment.SaveAsFile#1", L"SafeMeetingItem.Body get#1"}, kUninspectedListed, {kEventFails}},
    });
    // clang-format on
}

TEST_F(OldMeetingMemberFailure, RequestFromTheWorkerOn) {
    // clang-format off
    Expect({.item = Request(), .from = {L"Application.Session get", 2}, .folder = L"Calendar", .version = kVersion11}, {
        {{L"none"}, kItemKept, {}},
        {{L"Application.Session get#2"}, kItemKept, {kNoTime}},
        {{L"NameSpace.GetItemFromID#1"}, kItemKept, {kNotInDrafts, kDraftsInVain}},
        {{L"NameSpace.GetItemFromID#2"}, kItemKept, {kNotInOutbox}},
        {{L"MeetingItem.GetAssociatedAppointment#6"}, kItemKept, {kNoAppointment}},
        {{L"MeetingItem.MessageClass get#2", L"MeetingItem.Subject get#3", L"AppointmentItem.Subject get#2"}, kItemKept, {kNoTime}},
        {{L"MeetingItem.GetAssociatedAppointment#7"}, kItemKept, {kNoAppointment, kZeroDate}},
        {{L"AppointmentItem.IsRecurring get#1", L"AppointmentItem.LastModificationTime get#1"}, kItemKept, {kOldDate}},
        {{L"Application.Session get#3"}, kItemKept, {kNoTime}},
        {{L"NameSpace.GetItemFromID#3"}, kItemKept, {kNotInDrafts, kDraftsInVain}},
        {{L"NameSpace.GetItemFromID#4"}, kItemKept, {kNotInOutbox}},
        {{L"MeetingItem.GetAssociatedAppointment#8"}, kItemKept, {kNoAppointment}},
        {{L"MeetingItem.MessageClass get#3", L"MeetingItem.Subject get#4", L"AppointmentItem.Subject get#3"}, kItemKept, {kNoTime}},
        {{L"MeetingItem.GetAssociatedAppointment#9"}, kItemKept, {kNoAppointment, kZeroDate}},
        {{L"AppointmentItem.IsRecurring get#2", L"AppointmentItem.LastModificationTime get#2"}, kItemKept, {kOldDate}},
        {{L"Application.Session get#4"}, kListed, {kInWindow}},
        {{L"NameSpace.GetItemFromID#5"}, kItemKept, {kNotInDrafts, kDraftsInVain}},
        {{L"NameSpace.GetItemFromID#6"}, kItemKept, {kNotInOutbox}},
        {{L"MeetingItem.GetAssociatedAppointment#10"}, kItemKept, {kNoAppointment}},
        {{L"MeetingItem.MessageClass get#4", L"MeetingItem.Subject get#5", L"AppointmentItem.Subject get#4"}, kListed, {kInWindow}},
        {{L"RDOSession.CreateInstance#3"}, kOldLabelsItemKept, {kNotCreated, kNoSession, kNoLabel}},
        {{L"RDOSession.GetRDOObjectFromOutlookObject#3", L"RDOMeetingItem.GetAssociatedAppointment#2"}, kOldLabelsItemKept, {kNoAppointment, kNoLabel}},
        {{L"RDOAppointmentItem.Subject put#1"}, kOldLabelsItemKept, {kNoLabel}},
        {{L"RDOAppointmentItem.Save#1"}, kOldBodyItemKept, {kNoLabel}},
        {{L"RDOSession.CreateInstance#4"}, kOldBodyItemKept, {kNotCreated, kNoSession, kNoLabel}},
        {{L"RDOSession.GetRDOObjectFromOutlookObject#4", L"RDOMeetingItem.GetAssociatedAppointment#3"}, kOldBodyItemKept, {kNoAppointment, kNoLabel}},
        {{L"RDOAppointmentItem.Body put#1"}, kOldBodyItemKept, {kNoLabel}},
        {{L"RDOAppointmentItem.Save#2"}, kItemKept, {kNoLabel}},
        {{L"RDOSession.CreateInstance#5"}, kListed, {kNotCreated, kNoSession, kNoneThroughRedemption, kStays, kNotSent}},
        {{L"RDOSession.GetRDOObjectFromOutlookObject#5", L"RDOMeetingItem.GetAssociatedAppointment#4"}, kListed, {kNoAppointment, kNoneThroughRedemption, kStays, kNotSent}},
        {{L"RDOAppointmentItem.Attachments get#1", L"RDOAttachments.Count get#1", L"RDOAttachments.Clear#1",
          L"RDOAttachments.Add#1", L"RDOAppointmentItem.Save#3"}, kListed, {kNotReplaced, kStays, kNotSent}},
        {{L"MeetingItem.GetAssociatedAppointment#11"}, kItemKept, {kNoAppointment, kItemsId}},
        {{L"AppointmentItem.EntryID get#4"}, kItemKept, {kEmptyId}},
        {{L"MeetingItem.GetAssociatedAppointment#12"}, kItemKept, {kNoAppointment}},
        {{L"RDOSession.CreateInstance#6"}, L"sent", {kNotCreated, kNoSession, kNoneThroughRedemption}},
        {{L"RDOSession.GetRDOObjectFromOutlookObject#6", L"RDOMeetingItem.GetAssociatedAppointment#5"}, L"sent", {kNoAppointment, kNoneThroughRedemption}},
        {{L"RDOAppointmentItem.Send#1", L"Transport.Submit#1"}, L"sent", {kNotSentByRedemption}},
        {{L"MeetingItem.EntryID get#2"}, L"sent, in Drafts, listed", {kSendFails}},
    });
    // clang-format on
}

TEST_F(OldMeetingMemberFailure, RequestInsideTheEvent) {
    // clang-format off
    Expect({.item = Request(), .embedded = true, .from = {L"MeetingItem.GetAssociatedAppointment", 1}, .folder = L"Calendar", .version = kVersion11}, {
        {{L"none"}, kDiffers, {}},
        {{L"MeetingItem.GetAssociatedAppointment#1"}, kDiffers, {kNoAppointment}},
        {{L"MeetingItem.MessageClass get#1", L"MeetingItem.Subject get#1", L"AppointmentItem.Subject get#1"}, kUninspected, {kEventFails}},
        {{L"MeetingItem.Save#1"}, kDiffers, {kNotSaved}},
        {{L"MeetingItem.GetAssociatedAppointment#2"}, kDiffers, {kNoAppointment, kNoneToSave}},
        {{L"AppointmentItem.EntryID get#1"}, kDiffers, {kAppointmentNotSaved}},
        {{L"MeetingItem.Subject get#2"}, kDiffersWithoutItsSubject, {kNoSubject}},
        {{L"RDOSession.CreateInstance#1"}, kDiffers, {kNotCreated, kNoSession}},
        {{L"RDOSession.GetRDOObjectFromOutlookObject#1"}, kDiffers, {kNoView}},
        {{L"RDOMeetingItem.Fields#1"}, kDiffers, {kNoSubject}},
        {{L"SafeCurrentUser.CreateInstance#1"}, kDiffers, {kNoCurrentUser}},
        {{L"SafeCurrentUser.SMTPAddress get#1"}, kDiffers, {kNoSender}},
        {{L"SafeMeetingItem.CreateInstance#1"}, kDiffers, {kNoSafeMeeting, kNoSafeItem}},
        {{L"SafeMeetingItem.Item put#1", L"SafeMeetingItem.Recipients get#1", L"SafeRecipients.ResolveAll#1",
          L"SafeRecipients.Count get#1"}, kDiffers, {kNoRecipients}},
        {{L"SafeRecipients.Item#1", L"SafeRecipient.Resolved get#1", L"SafeRecipient.AddressEntry get#1",
          L"SafeRecipient.Fields#1", L"SafeRecipient.Address get#1", L"SafeRecipient.Name get#1",
          L"SafeRecipient.Type get#1"}, kDiffers, {kRecipientSkipped}},
        {{L"SafeMeetingItem.Attachments get#1", L"SafeAttachments.Count get#1", L"SafeAttachments.Item#1",
          L"SafeAttachment.FileName get#1", L"SafeAttachment.SaveAsFile#1", L"SafeMeetingItem.Body get#1"}, kUninspected, {kEventFails}},
        {{L"RDOSession.CreateInstance#2"}, kDiffersOldLabels, {kNotCreated, kNoSession, kNoLabel}},
        {{L"RDOSession.GetRDOObjectFromOutlookObject#2", L"RDOMeetingItem.GetAssociatedAppointment#1"}, kDiffersOldLabels, {kNoAppointment, kNoLabel}},
        {{L"RDOAppointmentItem.Subject put#1"}, kDiffersOldLabels, {kNoLabel}},
        {{L"RDOAppointmentItem.Save#1"}, kDiffersOldBody, {kNoLabel}},
        {{L"RDOSession.CreateInstance#3"}, kDiffersOldBody, {kNotCreated, kNoSession, kNoLabel}},
        {{L"RDOSession.GetRDOObjectFromOutlookObject#3", L"RDOMeetingItem.GetAssociatedAppointment#2"}, kDiffersOldBody, {kNoAppointment, kNoLabel}},
        {{L"RDOAppointmentItem.Body put#1"}, kDiffersOldBody, {kNoLabel}},
        {{L"RDOAppointmentItem.Save#2"}, kDiffers, {kNoLabel}},
        {{L"RDOSession.CreateInstance#4"}, kShownAndInDrafts, {kNotCreated, kNoSession, kNoneThroughRedemption, kStays}},
        {{L"RDOSession.GetRDOObjectFromOutlookObject#4", L"RDOMeetingItem.GetAssociatedAppointment#3"}, kShownAndInDrafts, {kNoAppointment, kNoneThroughRedemption, kStays}},
        {{L"RDOAppointmentItem.Attachments get#1", L"RDOAttachments.Count get#1", L"RDOAttachments.Clear#1",
          L"RDOAttachments.Add#1", L"RDOAppointmentItem.Save#3"}, kShownAndInDrafts, {kNotReplaced, kStays}},
        {{L"Transport.Submit#1"}, kShownAndInDrafts, {}},
    });
    // clang-format on
}

TEST_F(OldMeetingMemberFailure, BlockedRequest) {
    // clang-format off
    Expect({.item = Request(), .actions = Block(), .from = {L"Application.Session get", 2}, .folder = L"Calendar", .version = kVersion11}, {
        {{L"none"}, kOnScreen, {kDisplayByRedemption}},
        {{L"Application.Session get#2"}, kOnScreen, {kNoTime}},
        {{L"NameSpace.GetItemFromID#1"}, kOnScreen, {kNotInDrafts, kDraftsInVain}},
        {{L"NameSpace.GetItemFromID#2"}, kOnScreen, {kNotInOutbox}},
        {{L"MeetingItem.GetAssociatedAppointment#6"}, kOnScreen, {kNoAppointment}},
        {{L"MeetingItem.MessageClass get#2", L"MeetingItem.Subject get#3", L"AppointmentItem.Subject get#2"}, kOnScreen, {kNoTime}},
        {{L"MeetingItem.GetAssociatedAppointment#7"}, kOnScreen, {kNoAppointment, kZeroDate}},
        {{L"AppointmentItem.IsRecurring get#1", L"AppointmentItem.LastModificationTime get#1"}, kOnScreen, {kOldDate}},
        {{L"Application.Session get#3"}, kListed, {kInWindow}},
        {{L"NameSpace.GetItemFromID#3"}, kOnScreen, {kNotInDrafts, kDraftsInVain}},
        {{L"NameSpace.GetItemFromID#4"}, kOnScreen, {kNotInOutbox}},
        {{L"MeetingItem.GetAssociatedAppointment#8"}, kOnScreen, {kNoAppointment}},
        {{L"MeetingItem.MessageClass get#3", L"MeetingItem.Subject get#4", L"AppointmentItem.Subject get#3"}, kListed, {kInWindow}},
        {{L"MeetingItem.GetAssociatedAppointment#9"}, kOnScreen, {kNoAppointment}},
        {{L"RDOSession.CreateInstance#3"}, kOnlyInTheCalendar, {kNotCreated, kNoSession, kNoneThroughRedemption}},
        {{L"RDOSession.GetRDOObjectFromOutlookObject#3", L"RDOMeetingItem.GetAssociatedAppointment#2"}, kOnlyInTheCalendar, {kNoAppointment, kNoneThroughRedemption}},
        {{L"RDOAppointmentItem.Display#1"}, kInDrafts, {kNotShown}},
        {{L"Application.Session get#4", L"NameSpace.GetDefaultFolder#3", L"MeetingItem.Move#1"}, kShownAndInDrafts, {kNotDeleted}},
        {{L"MeetingItem.EntryID get#2", L"Application.Session get#5"}, kShownAndInDeletedItems, {kNotDeleted}},
        {{L"MAPIFolder.StoreID get#3", L"NameSpace.GetItemFromID#5"}, kShownAndInDeletedItems, {kNotFetched, kNotAmongDeleted}},
        {{L"MeetingItem.Delete#1"}, kShownAndInDeletedItems, {kNotOutOfThere}},
    });
    // clang-format on
}

TEST_F(OldMeetingMemberFailure, RequestOfAnEarlierRun) {
    // clang-format off
    Expect({.item = Request(), .waiting = true, .from = {L"Application.Session get", 2}, .folder = L"Calendar", .version = kVersion11}, {
        {{L"none"}, kOnScreenUninspected, {kDisplayByRedemption}},
        {{L"Application.Session get#2"}, kListedUninspected, {kNotResent}},
        {{L"NameSpace.GetItemFromID#1"}, kOnScreenUninspected, {kNotInDrafts, kDraftsInVain}},
        {{L"NameSpace.GetItemFromID#2"}, kOnScreenUninspected, {kNotInOutbox}},
        {{L"MeetingItem.GetAssociatedAppointment#1"}, kOnScreenUninspected, {kNoAppointment}},
        {{L"MeetingItem.MessageClass get#1", L"MeetingItem.Subject get#1", L"AppointmentItem.Subject get#1"}, kListedUninspected, {kNotResent}},
        {{L"MeetingItem.GetAssociatedAppointment#2"}, kOnScreenUninspected, {kNoAppointment}},
        {{L"RDOSession.CreateInstance#1"}, kOnlyInTheCalendarUninspected, {kNotCreated, kNoSession, kNoneThroughRedemption}},
        {{L"RDOSession.GetRDOObjectFromOutlookObject#1", L"RDOMeetingItem.GetAssociatedAppointment#1"}, kOnlyInTheCalendarUninspected, {kNoAppointment, kNoneThroughRedemption}},
        {{L"RDOAppointmentItem.Display#1"}, kInDraftsUninspected, {kNotShown}},
        {{L"Application.Session get#3", L"NameSpace.GetDefaultFolder#3", L"MeetingItem.Move#1"}, kShownAndInDraftsUninspected, {kNotDeleted}},
        {{L"MeetingItem.EntryID get#1", L"Application.Session get#4"}, kShownAndInDeletedItemsUninspected, {kNotDeleted}},
        {{L"MAPIFolder.StoreID get#3", L"NameSpace.GetItemFromID#3"}, kShownAndInDeletedItemsUninspected, {kNotFetched, kNotAmongDeleted}},
        {{L"MeetingItem.Delete#1"}, kShownAndInDeletedItemsUninspected, {kNotOutOfThere}},
    });
    // clang-format on
}

TEST_F(OldMeetingMemberFailure, Forward) {
    // clang-format off
    Expect({.item = Forward(), .from = {L"MeetingItem.GetAssociatedAppointment", 1}, .folder = L"Calendar", .version = kVersion11}, {
        {{L"none"}, L"sent", {}},
        // Taken for a request at first, by the worker for a forward: Redemption sends its appointment.
        {{L"MeetingItem.GetAssociatedAppointment#1"}, kAppointmentSent, {kNoAppointment}},
        {{L"MeetingItem.MessageClass get#1", L"MeetingItem.Subject get#1", L"AppointmentItem.Subject get#1"}, kUninspected, {kEventFails}},
        {{L"MeetingItem.Save#1"}, L"sent", {kNotSaved}},
        {{L"MeetingItem.GetAssociatedAppointment#2"}, L"sent", {kNoAppointment, kNoneToSave}},
        {{L"AppointmentItem.EntryID get#1"}, L"sent", {kAppointmentNotSaved}},
        {{L"Application.ActiveExplorer#1", L"Explorer.Caption get#1"}, kUninspected, {kEventFails}},
        {{L"RDOSession.CreateInstance#1"}, L"sent", {kNotCreated, kNoSession, kOnSpot}},
        {{L"RDOSession.GetRDOObjectFromOutlookObject#1", L"RDOMeetingItem.GetAssociatedAppointment#1"}, L"sent", {kNoAppointment, kOnSpot}},
        {{L"RDOAppointmentItem.IsRecurring get#1"}, kUninspected, {kEventFails}},
        {{L"MeetingItem.Subject get#2"}, kWithoutItsSubject, {kNoSubject}},
        {{L"RDOSession.CreateInstance#2"}, L"sent", {kNotCreated, kNoSession}},
        {{L"RDOSession.GetRDOObjectFromOutlookObject#2"}, L"sent", {kNoView}},
        {{L"RDOMeetingItem.Fields#1"}, L"sent", {kNoSubject}},
        {{L"SafeCurrentUser.CreateInstance#1"}, L"sent", {kNoCurrentUser}},
        {{L"SafeCurrentUser.SMTPAddress get#1"}, L"sent", {kNoSender}},
        {{L"SafeMeetingItem.CreateInstance#1"}, L"sent", {kNoSafeMeeting, kNoSafeItem}},
        {{L"SafeMeetingItem.Item put#1", L"SafeMeetingItem.Recipients get#1", L"SafeRecipients.ResolveAll#1",
          L"SafeRecipients.Count get#1"}, L"sent", {kNoRecipients}},
        {{L"SafeRecipients.Item#1", L"SafeRecipient.Resolved get#1", L"SafeRecipient.AddressEntry get#1",
          L"SafeRecipient.Fields#1", L"SafeRecipient.Address get#1", L"SafeRecipient.Name get#1",
          L"SafeRecipient.Type get#1"}, L"sent", {kRecipientSkipped}},
        {{L"SafeMeetingItem.Attachments get#1", L"SafeAttachments.Count get#1", L"SafeAttachments.Item#1",
          L"SafeAttachment.FileName get#1", L"SafeAttachment.SaveAsFile#1", L"SafeMeetingItem.Body get#1"}, kUninspected, {kEventFails}},
        {{L"RDOSession.CreateInstance#3"}, L"sent", {kNotCreated, kNoSession, kOnSpot}},
        {{L"RDOSession.GetRDOObjectFromOutlookObject#3", L"RDOMeetingItem.GetAssociatedAppointment#2"}, L"sent", {kNoAppointment, kOnSpot}},
        {{L"RDOAppointmentItem.IsRecurring get#2", L"MeetingItem.Subject put#1"}, kOldLabels, {kNoLabel}},
        {{L"RDOSession.CreateInstance#4"}, L"sent", {kNotCreated, kNoSession, kOnSpot}},
        {{L"RDOSession.GetRDOObjectFromOutlookObject#4", L"RDOMeetingItem.GetAssociatedAppointment#3"}, L"sent", {kNoAppointment, kOnSpot}},
        {{L"RDOAppointmentItem.IsRecurring get#3", L"MeetingItem.Body put#1"}, kOldBody, {kNoLabel}},
        {{L"RDOSession.CreateInstance#5"}, L"sent", {kNotCreated, kNoSession, kOnSpot}},
        {{L"RDOSession.GetRDOObjectFromOutlookObject#5", L"RDOMeetingItem.GetAssociatedAppointment#4"}, L"sent", {kNoAppointment, kOnSpot}},
        {{L"RDOAppointmentItem.IsRecurring get#4", L"MeetingItem.Attachments get#1", L"Attachments.Count get#1",
          L"Attachments.Count get#2", L"Attachments.Remove#1", L"Attachments.Count get#3", L"Attachments.Add#1"}, kItemOnScreen, {kNotReplaced, kStays}},
        {{L"Transport.Submit#1"}, kItemOnScreen, {}},
    });
    // clang-format on
}

TEST_F(OldMeetingMemberFailure, ResponseOrCancellation) {
    for (const wchar_t* messageClass : {kResponse, kCancellation}) {
        // clang-format off
        Expect({.item = OfClass(messageClass), .from = {L"MeetingItem.GetAssociatedAppointment", 1}, .folder = L"Calendar", .version = kVersion11}, {
            {{L"none"}, L"sent", {}},
            {{L"MeetingItem.GetAssociatedAppointment#1"}, L"sent", {kNoAppointment}},
            {{L"MeetingItem.MessageClass get#1"}, kUninspected, {kEventFails}},
            {{L"MeetingItem.Save#1"}, L"sent", {kNotSaved}},
            {{L"MeetingItem.GetAssociatedAppointment#2"}, L"sent", {kNoAppointment, kNoneToSave}},
            {{L"AppointmentItem.EntryID get#1"}, L"sent", {kAppointmentNotSaved}},
            {{L"Application.ActiveExplorer#1", L"Explorer.Caption get#1"}, kUninspected, {kEventFails}},
            {{L"MeetingItem.Subject get#1"}, kWithoutItsSubject, {kNoSubject}},
            {{L"RDOSession.CreateInstance#1"}, L"sent", {kNotCreated, kNoSession}},
            {{L"RDOSession.GetRDOObjectFromOutlookObject#1"}, L"sent", {kNoView}},
            {{L"RDOMeetingItem.Fields#1"}, L"sent", {kNoSubject}},
            {{L"SafeCurrentUser.CreateInstance#1"}, L"sent", {kNoCurrentUser}},
            {{L"SafeCurrentUser.SMTPAddress get#1"}, L"sent", {kNoSender}},
            {{L"SafeMeetingItem.CreateInstance#1"}, L"sent", {kNoSafeMeeting, kNoSafeItem}},
            {{L"SafeMeetingItem.Item put#1", L"SafeMeetingItem.Recipients get#1", L"SafeRecipients.ResolveAll#1",
              L"SafeRecipients.Count get#1"}, L"sent", {kNoRecipients}},
            {{L"SafeRecipients.Item#1", L"SafeRecipient.Resolved get#1", L"SafeRecipient.AddressEntry get#1",
              L"SafeRecipient.Fields#1", L"SafeRecipient.Address get#1", L"SafeRecipient.Name get#1",
              L"SafeRecipient.Type get#1"}, L"sent", {kRecipientSkipped}},
            {{L"SafeMeetingItem.Attachments get#1", L"SafeAttachments.Count get#1", L"SafeAttachments.Item#1",
              L"SafeAttachment.FileName get#1", L"SafeAttachment.SaveAsFile#1", L"SafeMeetingItem.Body get#1"}, kUninspected, {kEventFails}},
            {{L"MeetingItem.Subject put#1"}, kOldLabels, {kNoLabel}},
            {{L"MeetingItem.Body put#1"}, kOldBody, {kNoLabel}},
            {{L"MeetingItem.Attachments get#1", L"Attachments.Count get#1", L"Attachments.Count get#2",
              L"Attachments.Remove#1", L"Attachments.Count get#3", L"Attachments.Add#1"}, kItemOnScreen, {kNotReplaced, kStays}},
            {{L"Transport.Submit#1"}, kItemOnScreen, {}},
        });
        // clang-format on
    }
}

TEST_F(OldMeetingMemberFailure, BlockedResponse) {
    // clang-format off
    Expect({.item = OfClass(kResponse), .actions = Block(), .from = {L"MeetingItem.GetAssociatedAppointment", 1}, .folder = L"Calendar", .version = kVersion11}, {
        {{L"none"}, kItemOnScreen, {}},
        {{L"MeetingItem.GetAssociatedAppointment#1"}, kItemOnScreen, {kNoAppointment}},
        {{L"MeetingItem.MessageClass get#1"}, L"sent, uninspected", {kEventFails}},
        {{L"MeetingItem.Save#1"}, kItemOnScreen, {kNotSaved}},
        {{L"MeetingItem.GetAssociatedAppointment#2"}, kItemOnScreen, {kNoAppointment, kNoneToSave}},
        {{L"AppointmentItem.EntryID get#1"}, kItemOnScreen, {kAppointmentNotSaved}},
        {{L"Application.ActiveExplorer#1", L"Explorer.Caption get#1"}, L"sent, uninspected", {kEventFails}},
        {{L"MeetingItem.Subject get#1"}, kItemOnScreen, {kNoSubject}},
        {{L"RDOSession.CreateInstance#1"}, kItemOnScreen, {kNotCreated, kNoSession}},
        {{L"RDOSession.GetRDOObjectFromOutlookObject#1"}, kItemOnScreen, {kNoView}},
        {{L"RDOMeetingItem.Fields#1"}, kItemOnScreen, {kNoSubject}},
        {{L"SafeCurrentUser.CreateInstance#1"}, kItemOnScreen, {kNoCurrentUser}},
        {{L"SafeCurrentUser.SMTPAddress get#1"}, kItemOnScreen, {kNoSender}},
        {{L"SafeMeetingItem.CreateInstance#1"}, kItemOnScreen, {kNoSafeMeeting, kNoSafeItem}},
        {{L"SafeMeetingItem.Item put#1", L"SafeMeetingItem.Recipients get#1", L"SafeRecipients.ResolveAll#1",
          L"SafeRecipients.Count get#1"}, kItemOnScreen, {kNoRecipients}},
        {{L"SafeRecipients.Item#1", L"SafeRecipient.Resolved get#1", L"SafeRecipient.AddressEntry get#1",
          L"SafeRecipient.Fields#1", L"SafeRecipient.Address get#1", L"SafeRecipient.Name get#1",
          L"SafeRecipient.Type get#1"}, kItemOnScreen, {kRecipientSkipped}},
        {{L"SafeMeetingItem.Attachments get#1", L"SafeAttachments.Count get#1", L"SafeAttachments.Item#1",
          L"SafeAttachment.FileName get#1", L"SafeAttachment.SaveAsFile#1", L"SafeMeetingItem.Body get#1"}, L"sent, uninspected", {kEventFails}},
    });
    // clang-format on
}

TEST_F(OldMeetingMemberFailure, RequestWithoutRedemption) {
    RemoveRedemption();
    // clang-format off
    Expect({.item = Request(), .from = {L"MeetingItem.GetAssociatedAppointment", 1}, .folder = L"Calendar", .version = kVersion11}, {
        {{L"none"}, kUnchanged, {kNoClass, kNoSession, kOnSpot, kNoCurrentUserClass, kNoSafeMeetingClass, kNoSafeItem, kAttachmentsSkipped, kEmptyText, kNoLabel}},
        {{L"MeetingItem.GetAssociatedAppointment#1"}, kUnchanged, {kNoAppointment}},
        {{L"MeetingItem.MessageClass get#1", L"MeetingItem.Subject get#1", L"AppointmentItem.Subject get#1"}, kUninspected, {kEventFails}},
        {{L"MeetingItem.Save#1"}, kUnchanged, {kNotSaved}},
        {{L"MeetingItem.GetAssociatedAppointment#2"}, kUnchanged, {kNoAppointment, kNoneToSave, kNoneThroughRedemption, kNoClass, kNoSession}},
        {{L"AppointmentItem.EntryID get#1"}, kUnchanged, {kAppointmentNotSaved}},
        {{L"Application.ActiveExplorer#1", L"Explorer.Caption get#1"}, kUninspected, {kEventFails}},
        {{L"MeetingItem.Subject get#2"}, kUnchanged, {kNoSubject}},
        {{L"Transport.Submit#1"}, kShownAndInDrafts, {}},
    });
    // clang-format on
}

TEST_F(OldMeetingMemberFailure, ResponseWithoutRedemption) {
    RemoveRedemption();
    // clang-format off
    Expect({.item = OfClass(kResponse), .from = {L"MeetingItem.GetAssociatedAppointment", 1}, .folder = L"Calendar", .version = kVersion11}, {
        {{L"none"}, kOldAttachments, {kNoClass, kNoSession, kNoCurrentUserClass, kNoSafeMeetingClass, kNoSafeItem, kAttachmentsSkipped, kEmptyText}},
        {{L"MeetingItem.GetAssociatedAppointment#1"}, kOldAttachments, {kNoAppointment}},
        {{L"MeetingItem.MessageClass get#1"}, kUninspected, {kEventFails}},
        {{L"MeetingItem.Save#1"}, kOldAttachments, {kNotSaved}},
        {{L"MeetingItem.GetAssociatedAppointment#2"}, kOldAttachments, {kNoAppointment, kNoneToSave, kNoneThroughRedemption, kNoClass, kNoSession}},
        {{L"AppointmentItem.EntryID get#1"}, kOldAttachments, {kAppointmentNotSaved}},
        {{L"Application.ActiveExplorer#1", L"Explorer.Caption get#1"}, kUninspected, {kEventFails}},
        {{L"MeetingItem.Subject get#1"}, kEmptySubject, {kNoSubject}},
        {{L"MeetingItem.Subject put#1"}, kUnchanged, {kNoLabel}},
        {{L"MeetingItem.Body put#1"}, kSubjectAlone, {kNoLabel}},
        {{L"Transport.Submit#1"}, kItemOnScreen, {}},
    });
    // clang-format on
}

} // namespace
} // namespace vorlek
