// An invitation's road, and what becomes of the request that travels and of its appointment when Outlook is killed on
// it.
#include "tests/end-to-end/Crash.h"

namespace end_to_end {
namespace {

class MeetingCrash : public CrashTest {
protected:
    MeetingCrash()
        : CrashTest({.name = "meeting", .home = "Calendar", .atHome = "in the calendar", .window = L"Plans - Meeting"},
                    {{"kind", "appointment"}}) {}
};

TEST_F(MeetingCrash, MeetingIsAccountedForWhileItIsPutAside) {
    Expect("Putting a meeting aside", {},
           {{"when the send was stopped, before the add-in saves", L"before:MeetingItem.Save"},
            {"the request is saved, its appointment is not", L"before:AppointmentItem.Save"},
            {"both are saved, before the ledger entry", L"after:AppointmentItem.EntryID#3"},
            {"listed, before the appointment's window closes", L"before:AppointmentItem.Close"},
            {"while the content is gathered", L"before:Attachment.SaveAsFile"},
            kAgentThinks});
}

TEST_F(MeetingCrash, AllowedMeetingIsAccountedForWhileItIsSent) {
    Expect("Sending an allowed meeting", {},
           {{"the worker's message has arrived", L"before:NameSpace.GetItemFromID#5"},
            {"before the ledger entry is removed", L"after:MeetingItem.EntryID#3"},
            {"the entry is removed", L"before:AppointmentItem.Send"},
            {"inside `Send`, the event is over", L"before:Transport.Submit"},
            {"inside `Send`, the meeting has left", L"after:Transport.Submit"},
            {"before the request is deleted", L"before:MeetingItem.Move"},
            {"the request is in Deleted Items", L"after:MeetingItem.Move"},
            {"the request is deleted", L"after:MeetingItem.Delete"}});
}

TEST_F(MeetingCrash, ChangedMeetingIsAccountedForAndChangedOnce) {
    Expect("Labelling a meeting and replacing its attachments", {.policy = kLabel},
           {{"the subject of the appointment is labelled", L"after:AppointmentItem.Subject put"},
            {"its attachments are removed", L"after:Attachments.Remove"},
            {"its new attachment is there", L"after:Attachments.Add"},
            {"the entry is removed", L"before:AppointmentItem.Send"},
            {"inside `Send`, the meeting has left", L"after:Transport.Submit"},
            {"`Send` is over", L"after:AppointmentItem.Send"}});
}

TEST_F(MeetingCrash, BlockedMeetingIsAccountedForUntilItIsTheUsersAgain) {
    Expect("Giving a blocked meeting back", {.policy = kBlock},
           {kAgentThinks,
            {"the appointment is shown, before the request is deleted", L"after:AppointmentItem.Display"},
            {"the request is in Deleted Items", L"after:MeetingItem.Move"},
            {"the request is deleted, before the ledger entry is removed", L"after:MeetingItem.Delete"},
            {"the entry is removed", L"unlisted"}});
}

TEST_F(MeetingCrash, MeetingIsAccountedForWhileItsOrganizerReadsABox) {
    Expect("While a message box tells that a meeting was modified",
           {.edited = "Friday.", .options = {L"--meanwhile", L"edit:Plans"}}, {{"the organizer reads it", L"box"}});
}

TEST_F(MeetingCrash, MeetingOfAnEarlierRunIsAccountedForInsideTheEvent) {
    Expect("A meeting at the next start, before the main window", {.interrupted = kAgentThinks},
           {{"before the ledger entry is removed", L"after:MeetingItem.EntryID"},
            {"the entry is removed", L"before:AppointmentItem.Send"},
            kAgentThinks,
            {"inside `Send`, the meeting has left", L"after:Transport.Submit"},
            {"the request is in Deleted Items", L"after:MeetingItem.Move"},
            {"the request is deleted", L"after:MeetingItem.Delete"}});
}

TEST_F(MeetingCrash, MeetingOfAnEarlierRunIsAccountedForBesideTheEvent) {
    Expect("A meeting at the next start, with the main window open",
           {.options = {L"--early-explorer"}, .interrupted = kAgentThinks},
           {{"the entry is removed", L"before:AppointmentItem.Send"},
            {"a second request is saved, before its ledger entry", L"after:AppointmentItem.EntryID#3"},
            {"the second is listed", L"before:AppointmentItem.Close"},
            kAgentThinks,
            {"the entry is removed again", L"before:AppointmentItem.Send#2"},
            {"inside `Send`, the meeting has left", L"after:Transport.Submit"},
            {"the second request is deleted", L"after:MeetingItem.Delete"}});
}

class TaskCrash : public CrashTest {
protected:
    TaskCrash()
        : CrashTest({.name = "task request", .home = "Tasks", .atHome = "in the task list", .window = L"Plans - Task"},
                    {{"kind", "task"}}) {}
};

TEST_F(TaskCrash, TaskRequestIsAccountedForInsideTheEvent) {
    Expect("Sending a task request", {},
           {kAgentThinks,
            {"inside the send, the event is over", L"before:Transport.Submit"},
            {"inside the send, the request has left", L"after:Transport.Submit"}});
}

} // namespace
} // namespace end_to_end
