#pragma once
#include <string>
#include <vector>

#include "stand-ins/agent/Agent.h"
#include "tests/outlook/OutlookControllerPeer.h"
#include "tests/outlook/OutlookTest.h"

namespace outlook_tests {

/// A call to fail: the n-th of a member.
struct FailingCall {
    std::wstring member;
    std::size_t nth = 0;

    std::wstring Name() const { return member + L"#" + std::to_wstring(nth); }
    bool operator==(const FailingCall&) const = default;
};

/// Labels the subject and the body, and replaces the attachments.
stand_ins::Actions Changes();
stand_ins::Actions Block();

/// What a sent item lacks of these changes, its subject having been another: "" or
/// ", old subject, old body, old attachments".
std::wstring MissingChanges(const stand_ins::ItemData& item, const std::wstring& oldSubject);

// Outcomes of more than one kind of item.
inline constexpr wchar_t kUnchanged[] = L"sent, old subject, old body, old attachments";
inline constexpr wchar_t kUninspected[] = L"sent, old subject, old body, old attachments, uninspected";
inline constexpr wchar_t kUninspectedListed[] = L"sent, old subject, old body, old attachments, listed, uninspected";
inline constexpr wchar_t kShown[] = L"kept, on the screen, uninspected";
inline constexpr wchar_t kWaitsOn[] = L"kept, listed, uninspected";
inline constexpr wchar_t kOldLabels[] = L"sent, old subject, old body";
inline constexpr wchar_t kOldBody[] = L"sent, old body";
inline constexpr wchar_t kSubjectAlone[] = L"sent, old body, old attachments";
inline constexpr wchar_t kEmptySubject[] = L"sent, subject \"[Internal] \", old attachments";
inline constexpr wchar_t kOldAttachments[] = L"sent, old attachments";
inline constexpr wchar_t kWithoutItsSubject[] = L"sent, subject \"[Internal] \"";

// Lines of the log that more than one kind of item writes; ~ is the text of the failure.
inline constexpr wchar_t kEventFails[] = L"ERROR InspectItemBeforeSending:COM error= ~";
inline constexpr wchar_t kNoSubject[] = L"ERROR Caught a com exception while resolving item subject (skipping): ~";
inline constexpr wchar_t kNoProperty[] = L"ERROR COM exception while resolving property: ~";
inline constexpr wchar_t kNoSender[] = L"ERROR Caught a com exception while resolving item sender (skipping): ~";
inline constexpr wchar_t kNoRecipients[] =
    L"ERROR Caught a com exception while resolving item recipients (skipping): ~";
inline constexpr wchar_t kNoRecipient[] =
    L"ERROR Caught a com exception while resolving item recipient #1 - (skipping): ~";
inline constexpr wchar_t kNoAttachments[] = L"ERROR Caught a com exception while adding attachments (skipping): ~";
inline constexpr wchar_t kNoAttachment[] = L"ERROR Caught a com exception while adding attachment #1 - (skipping): ~";
inline constexpr wchar_t kNoLabel[] = L"ERROR Unknown error while applying data label.";
inline constexpr wchar_t kNotReplaced[] = L"ERROR Caught a com exception while replacing attachments: ~";
inline constexpr wchar_t kNothingToReplace[] = L"ERROR Caught a com exception while replacing attachments: (E_POINTER)";
inline constexpr wchar_t kStays[] = L"ERROR Failed to override attachments - cannot send the email";
inline constexpr wchar_t kNotSent[] =
    L"ERROR Caught a vorlek exception: FILE: vorlek::OutlookController::SendMail_: Exception: Failed to replace "
    L"attacments!";
inline constexpr wchar_t kInWindow[] = L"ERROR Caught a com exception: ~";
inline constexpr wchar_t kNoTime[] = L"ERROR Could not get item and last modification - returning old date";
inline constexpr wchar_t kNotInDrafts[] = L"WARN Caught a com exception when searching in Drafts: ~";
inline constexpr wchar_t kDraftsInVain[] =
    L"WARN Could not locate the requested item in the Drafts folder - searching in OUTBOX";
inline constexpr wchar_t kNotInOutbox[] = L"WARN Caught a com exception when searching in Outbox: ~";
inline constexpr wchar_t kNotResent[] = L"ERROR COM error while trying to find and resend an item: ~";
inline constexpr wchar_t kNotSaved[] = L"WARN COM exception: ~ item wasn't saved";
inline constexpr wchar_t kEventBreaksOff[] = L"ERROR InspectItemBeforeSending:exception occured ";
inline constexpr wchar_t kNoView[] = L"ERROR Caught a COM exception: ~";
inline constexpr wchar_t kNoClass[] = L"ERROR Failed to retrieve Redemption.RDOSession CLSID!";
inline constexpr wchar_t kNotCreated[] = L"ERROR Failed to create Redemption.RDOSession instance!";
inline constexpr wchar_t kNoSession[] = L"ERROR Failed to retrieve Redemption.RDOSession instance!";
inline constexpr wchar_t kRecipientSkipped[] = L"ERROR Caught a com exception while resolving an item recipient: ~";
inline constexpr wchar_t kNoCurrentUser[] =
    L"ERROR Failed to create Redemption.SafeCurrentUser instance. This means we couldn't get the mail sender - leaving "
    L"it out of the incident context";
inline constexpr wchar_t kNoSafeItem[] = L"ERROR Failed to retrieve Redemption SafeItem => skipping recipients list";
inline constexpr wchar_t kNoCurrentUserClass[] =
    L"ERROR Failed to retrieve Redemption.SafeCurrentUser CLSID. This means we couldn't get the mail sender - leaving "
    L"it out of the incident context";
inline constexpr wchar_t kAttachmentsSkipped[] =
    L"ERROR Failed to retrieve Redemption SafeItem => skipping preparing attachments for inspection";
inline constexpr wchar_t kEmptyText[] = L"ERROR Failed to retrieve Redemption SafeItem => exporting an empty text";

/// Every call of the object model that an item's road makes fails once, each in a run of its own: what becomes of the
/// item, and what the log says.
class MemberFailureTest : public OutlookTest {
protected:
    /// An item's road through the add-in, from the start of Outlook on.
    struct Road {
        stand_ins::ItemData item;
        stand_ins::Actions actions = Changes();
        bool embedded = false;
        bool waiting = false;            ///< an earlier run left the item in the ledger, and no main window is open yet
        FailingCall from = {};           ///< the calls before it are another road's, too; empty: from the first on
        FailingCall until = {};          ///< those from it on are; empty: to the last
        std::wstring folder = L"Drafts"; ///< where it stands; "Archive\\Plans" of another store
        std::wstring version = L"16.0.5.1";
    };

    /// Calls that follow one another, and what comes of it if one of them fails.
    struct Row {
        std::vector<std::wstring> calls; ///< "none": the run in which nothing fails
        std::wstring outcome;
        /// Those at Warn and Error: of the undisturbed run each once, of a failing one those that it has beyond the
        /// undisturbed. ~ is the text of the failure, # the ID of an item, STORE of a store, FILE a place in the
        /// source.
        std::vector<std::wstring> lines;
    };

    /// Walks the road undisturbed, then once for each of its calls with that call failing. The rows stand in the order
    /// of the calls.
    void Expect(const Road& road, const std::vector<Row>& rows);

    /// Makes the item of the road, which the user then sends unless it waits, and what it needs; before the start if it
    /// waits, otherwise after, and then without a call of the object model.
    virtual stand_ins::DispatchPtr Prepare(const Road& road);
    /// Where the item is after a run: "sent", "kept" and the like, with what it lacks.
    virtual std::wstring Whereabouts(const Road& road) const = 0;

    static std::vector<std::wstring> Ledger();

private:
    struct Fate_ {
        std::wstring outcome;
        std::vector<std::wstring> lines;
        std::vector<std::wstring> members; ///< that were called
    };

    Fate_ Walk_(const Road& road, const FailingCall& failing);
    void StartAfresh_(const Road& road);
    bool StartController_(vorlek::OutlookController& controller, const Road& road) const;
    std::vector<std::wstring> Lines_() const;
};

} // namespace outlook_tests
