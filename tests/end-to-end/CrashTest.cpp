// A mail's road, and what becomes of the mail when Outlook is killed on it.
#include "tests/end-to-end/Crash.h"

namespace end_to_end {
namespace {

class Crash : public CrashTest {
protected:
    Crash() : CrashTest({.name = "mail", .home = "", .atHome = "", .window = L"Plans - Message (Plain Text) "}, {}) {}
};

TEST_F(Crash, MailIsAccountedForWhileItIsPutAside) {
    Expect("Putting a mail aside", {},
           {{"when the send was stopped, before the add-in saves", L"before:MailItem.Save"},
            {"saved, before the ledger entry", L"after:MailItem.EntryID#4"},
            {"listed, before the window closes", L"before:Inspector.Close"},
            {"the window is closed", L"after:Inspector.Close"},
            {"the main window is found", L"after:Explorer.Caption#2"},
            {"while the content is gathered", L"before:Attachment.SaveAsFile"},
            {"the content is gathered", L"after:MailItem.BodyFormat"},
            {"the worker has begun", L"before:MailItem.LastModificationTime"},
            kAgentThinks});
}

TEST_F(Crash, AllowedMailIsAccountedForWhileItIsSent) {
    Expect("Sending an allowed mail", {},
           {{"the verdict is there, before the worker's message", L"after:MailItem.LastModificationTime#2"},
            {"the worker's message has arrived", L"before:NameSpace.GetItemFromID#5"},
            {"the mail is found again", L"after:NameSpace.GetItemFromID#6"},
            {"before the ledger entry is removed", L"after:MailItem.EntryID#6"},
            {"the entry is removed", L"before:NameSpace.GetDefaultFolder#3"},
            {"before the mail's `Send`", L"before:MailItem.Send"},
            {"inside `Send`, while the agent is asked for its mode", L"asked:GetExecutionMode#2"},
            {"inside `Send`, the event is over", L"before:Transport.Submit"},
            {"inside `Send`, the mail has left", L"after:Transport.Submit"},
            {"`Send` is over", L"after:MailItem.Send"},
            {"the worker has ended", L"finished"}});
}

TEST_F(Crash, ChangedMailIsAccountedForAndChangedOnce) {
    Expect("Labelling a mail and replacing its attachments", {.policy = kLabel},
           {{"before the subject is labelled", L"before:MailItem.Subject put"},
            {"the subject is labelled", L"after:MailItem.Subject put"},
            {"the body is labelled", L"after:MailItem.Body put"},
            {"before the attachments are removed", L"before:Attachments.Remove"},
            {"the attachments are removed", L"after:Attachments.Remove"},
            {"the new attachment is there", L"after:Attachments.Add"},
            {"the entry is removed", L"before:NameSpace.GetDefaultFolder#3"},
            {"inside `Send`, the mail has left", L"after:Transport.Submit"}});
}

TEST_F(Crash, BlockedMailIsAccountedForUntilItIsTheUsersAgain) {
    Expect("Giving a blocked mail back", {.policy = kBlock},
           {kAgentThinks,
            {"the worker's message has arrived", L"before:NameSpace.GetItemFromID#3"},
            {"before the mail is shown", L"before:MailItem.Display"},
            {"shown, before the ledger entry is removed", L"after:MailItem.Display"},
            {"the entry is removed", L"unlisted"}});
}

TEST_F(Crash, MailIsAccountedForWhileItsUserReadsABox) {
    Expect("While a message box is on the screen", {.edited = "Friday.", .options = {L"--meanwhile", L"edit:Plans"}},
           {{"the user reads that the mail was modified", L"box"}});
    Expect("While a message box tells of a lost agent", {.agentFails = true},
           {{"the user reads that a mail could not be sent", L"box"}});
}

TEST_F(Crash, MailOfAnEarlierRunIsAccountedForInsideTheEvent) {
    Expect("At the next start, before the main window", {.interrupted = kAgentThinks},
           {{"the ledger is read", L"before:NameSpace.GetItemFromID"},
            {"the mail is found", L"after:NameSpace.GetItemFromID#2"},
            {"before the ledger entry is removed", L"after:MailItem.EntryID"},
            {"the entry is removed", L"before:NameSpace.GetDefaultFolder#3"},
            {"while the content is gathered", L"before:Attachment.SaveAsFile"},
            kAgentThinks,
            {"inside `Send`, the event is over", L"before:Transport.Submit"},
            {"inside `Send`, the mail has left", L"after:Transport.Submit"},
            {"`Send` is over", L"after:MailItem.Send"}});
}

TEST_F(Crash, MailOfAnEarlierRunIsAccountedForBesideTheEvent) {
    Expect("At the next start, with the main window open",
           {.options = {L"--early-explorer"}, .interrupted = kAgentThinks},
           {{"the entry is removed", L"before:NameSpace.GetDefaultFolder#3"},
            {"before the mail is listed again", L"after:MailItem.EntryID#4"},
            {"listed again, before the window closes", L"before:MailItem.GetInspector"},
            {"before the mail is shown, since its send was stopped", L"before:MailItem.Display"},
            kAgentThinks,
            {"the worker's message has arrived", L"before:NameSpace.GetItemFromID#7"},
            {"the entry is removed again", L"before:NameSpace.GetDefaultFolder#4"},
            {"inside `Send`, the mail has left", L"after:Transport.Submit"}});
}

} // namespace
} // namespace end_to_end
