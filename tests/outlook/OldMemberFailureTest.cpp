// Every call into Outlook and Redemption that a mail makes before Outlook 2007, each made to fail once: what becomes of
// the mail, and what the log says first.
#include <algorithm>
#include <map>
#include <set>

#include "foundation/RegistryKey.h"
#include "stand-ins/outlook/Store.h"
#include "tests/outlook/AsyncTest.h"
#include "tests/outlook/MemberFailure.h"
#include "tests/outlook/OldOutlookTest.h"

namespace vorlek {
namespace {

using outlook_tests::AsyncTest;
using outlook_tests::CallsOf;
using outlook_tests::ErrorText;
using outlook_tests::FailingCall;
using outlook_tests::kAccessDenied;
using outlook_tests::kVersion11;
using outlook_tests::RedemptionLibrary;
using stand_ins::ItemData;
using stand_ins::SendResult;

// What becomes of a mail. As decided: sent with all changes of the decision, or on the screen if it is blocked.
constexpr wchar_t kAsDecided[] = L"as decided";
constexpr wchar_t kUninspected[] = L"sent uninspected";
constexpr wchar_t kUninspectedListed[] = L"sent uninspected, listed";
constexpr wchar_t kWithoutBody[] = L"sent without its body label";
constexpr wchar_t kWithoutLabels[] = L"sent without its labels";
constexpr wchar_t kOnScreen[] = L"on the screen";
constexpr wchar_t kWaiting[] = L"in Drafts, listed";

// Lines that stand more than once; % is the text of the failure.
constexpr wchar_t kPasses[] = L"InspectItemBeforeSending:COM error= %";
constexpr wchar_t kSubject[] = L"Caught a com exception while resolving item subject (skipping): %";
constexpr wchar_t kRecipients[] = L"Caught a com exception while resolving item recipients (skipping): %";
constexpr wchar_t kRecipient[] = L"Caught a com exception while resolving an item recipient: %";
constexpr wchar_t kNoSession[] = L"Failed to create Redemption.RDOSession instance!";
constexpr wchar_t kNoView[] = L"Caught a COM exception: %";
constexpr wchar_t kNoLabel[] = L"Unknown error while applying data label.";
constexpr wchar_t kNotReplaced[] = L"Caught a com exception while replacing attachments: %";
constexpr wchar_t kNotSaved[] = L"COM exception: % item wasn't saved";
constexpr wchar_t kInWindow[] = L"Caught a com exception: %";
constexpr wchar_t kNoTime[] = L"Could not get item and last modification - returning old date";
constexpr wchar_t kNotInDrafts[] = L"Caught a com exception when searching in Drafts: %";
constexpr wchar_t kNotInOutbox[] = L"Caught a com exception when searching in Outbox: %";
constexpr wchar_t kNotByRedemption[] = L"MessageHandler::SendWithRDO_: Caught a com exception during Send: %";
constexpr wchar_t kNotByOutlook[] = L"MessageHandler::Send: YM:Caught a com exception during Send: %";

// The flows of the tables: a plain (p), an HTML (h) and a rich-text mail (r) whose labels and attachments are replaced;
// an HTML mail that is blocked (b); a plain mail whose subject is labelled, on a machine without Redemption (n).
struct Row {
    const char* flows;
    const wchar_t* member; ///< as it is recorded
    std::size_t nth;       ///< which call of it; 0: every one that has no row of its own
    const wchar_t* outcome;
    const wchar_t* log; ///< the first new line at Warn or Error; empty: none
};

const std::vector<Row> kInside = {
    {"phrbn", L"MailItem.Save", 0, kAsDecided, kNotSaved},
    {"phrbn", L"MailItem.Subject get", 0, kAsDecided, kSubject},
    {"phrb", L"RDOSession.CreateInstance", 1, kAsDecided, kNoSession},
    {"phrb", L"RDOSession.GetRDOObjectFromOutlookObject", 1, kAsDecided, kNoView},
    {"phrb", L"RDOMail.Fields", 0, kAsDecided, kSubject},
    {"phrb", L"SafeCurrentUser.CreateInstance", 0, kAsDecided,
     L"Failed to create Redemption.SafeCurrentUser instance. This means we couldn't get the mail sender - leaving it "
     L"out "
     L"of the incident context"},
    {"phrb", L"SafeCurrentUser.SMTPAddress get", 0, kAsDecided,
     L"Caught a com exception while resolving item sender (skipping): %"},
    {"phrb", L"SafeMailItem.CreateInstance", 0, kAsDecided, L"Failed to create Redemption.SafeMailItem instance"},
    {"phrb", L"SafeMailItem.Item put", 0, kAsDecided, kRecipients},
    {"phrb", L"SafeMailItem.Recipients get", 0, kAsDecided, kRecipients},
    {"phrb", L"SafeRecipients.ResolveAll", 0, kAsDecided, kRecipients},
    {"phrb", L"SafeRecipients.Count get", 0, kAsDecided, kRecipients},
    {"phrb", L"SafeRecipients.Item", 0, kAsDecided, kRecipient},
    {"phrb", L"SafeRecipient.Resolved get", 0, kAsDecided, kRecipient},
    {"phrb", L"SafeRecipient.AddressEntry get", 0, kAsDecided, kRecipient},
    {"phrb", L"SafeRecipient.Fields", 0, kAsDecided, kRecipient},
    {"phrb", L"SafeRecipient.Address get", 0, kAsDecided, kRecipient},
    {"phrb", L"SafeAddressEntry.SMTPAddress get", 0, kAsDecided, kRecipient},
    {"phrb", L"SafeRecipient.Name get", 0, kAsDecided, kRecipient},
    {"phrb", L"SafeRecipient.Type get", 0, kAsDecided, kRecipient},
    {"phrb", L"SafeMailItem.Attachments get", 0, kUninspected, kPasses},
    {"phrb", L"SafeAttachments.Count get", 0, kUninspected, kPasses},
    {"phrb", L"SafeAttachments.Item", 0, kUninspected, kPasses},
    {"phrb", L"SafeAttachment.FileName get", 0, kUninspected, kPasses},
    {"phrb", L"SafeAttachment.SaveAsFile", 0, kUninspected, kPasses},
    {"phrb", L"SafeMailItem.Body get", 0, kUninspected, kPasses},
    {"phrbn", L"MailItem.BodyFormat get", 1, kUninspected, kPasses},
    {"hrb", L"RDOSession.CreateInstance", 2, kAsDecided, kNoSession}, // no file of the body
    {"hrb", L"RDOSession.GetRDOObjectFromOutlookObject", 2, kAsDecided, kNoView},
    {"hb", L"RDOMail.HTMLBody get", 0, kUninspected, kPasses},
    {"r", L"RDOMail.SaveAs", 0, kUninspected, kPasses},
    {"phr", L"MailItem.Subject put", 0, kWithoutLabels, kNoLabel},
    {"n", L"MailItem.Subject put", 0, L"sent without its subject label", kNoLabel},
    {"phr", L"MailItem.BodyFormat get", 2, kWithoutBody, kNoLabel},
    {"p", L"RDOSession.CreateInstance", 2, kWithoutBody, kNoSession},
    {"p", L"RDOSession.GetRDOObjectFromOutlookObject", 2, kWithoutBody, kNoView},
    {"hr", L"RDOSession.CreateInstance", 3, kWithoutBody, kNoSession},
    {"hr", L"RDOSession.GetRDOObjectFromOutlookObject", 3, kWithoutBody, kNoView},
    {"p", L"RDOMail.Body put", 0, kWithoutBody, kNoLabel},
    {"h", L"RDOMail.HTMLBody put", 0, kWithoutBody, kNoLabel},
    {"r", L"RDOMail.Import", 0, kWithoutBody, kNoLabel},
    {"p", L"RDOSession.CreateInstance", 3, kOnScreen, kNoSession},
    {"p", L"RDOSession.GetRDOObjectFromOutlookObject", 3, kOnScreen, kNoView},
    {"hr", L"RDOSession.CreateInstance", 4, kOnScreen, kNoSession},
    {"hr", L"RDOSession.GetRDOObjectFromOutlookObject", 4, kOnScreen, kNoView},
    {"phr", L"RDOMail.Attachments get", 0, kOnScreen, kNotReplaced},
    {"phr", L"RDOAttachments.Count get", 0, kOnScreen, kNotReplaced},
    {"phr", L"RDOAttachments.Clear", 0, kOnScreen, kNotReplaced},
    {"phr", L"RDOAttachments.Add", 0, kOnScreen, kNotReplaced},
    {"phr", L"RDOMail.Save", 0, kOnScreen, kNotReplaced},
    {"phrn", L"Transport.Submit", 0, kOnScreen, L""}, // Outlook's own failure, told by Outlook
};

const std::vector<Row> kBeside = {
    {"phrbn", L"MailItem.Save", 0, kAsDecided, kNotSaved},
    {"phrbn", L"Application.ActiveExplorer", 1, kUninspected, kPasses},
    {"phrbn", L"Explorer.Caption get", 1, kUninspected, kPasses},
    {"phrbn", L"MailItem.AutoForwarded get", 1, kUninspected, kPasses},
    {"phrbn", L"MailItem.VotingResponse get", 1, kUninspected, kPasses},
    {"phrbn", L"MailItem.EntryID get", 1, kUninspected, kPasses},
    {"phrbn", L"MailItem.EntryID get", 2, kUninspected, kPasses},
    {"phrbn", L"MailItem.EntryID get", 3, kUninspected, kPasses},
    {"phrbn", L"MailItem.GetInspector get", 0, kUninspectedListed, kPasses},
    {"phrbn", L"Inspector.Caption get", 0, kUninspectedListed, kPasses},
    {"phrbn", L"Inspector.Close", 0, kUninspectedListed, kPasses},
    {"phrbn", L"MailItem.Subject get", 1, kAsDecided, kSubject},
    {"phrb", L"RDOSession.CreateInstance", 1, kAsDecided, kNoSession},
    {"phrb", L"RDOSession.GetRDOObjectFromOutlookObject", 1, kAsDecided, kNoView},
    {"phrb", L"RDOMail.Fields", 0, kAsDecided, kSubject},
    {"phrb", L"SafeCurrentUser.CreateInstance", 0, kAsDecided,
     L"Failed to create Redemption.SafeCurrentUser instance. This means we couldn't get the mail sender - leaving it "
     L"out "
     L"of the incident context"},
    {"phrb", L"SafeCurrentUser.SMTPAddress get", 0, kAsDecided,
     L"Caught a com exception while resolving item sender (skipping): %"},
    {"phrb", L"SafeMailItem.CreateInstance", 0, kAsDecided, L"Failed to create Redemption.SafeMailItem instance"},
    {"phrb", L"SafeMailItem.Item put", 0, kAsDecided, kRecipients},
    {"phrb", L"SafeMailItem.Recipients get", 0, kAsDecided, kRecipients},
    {"phrb", L"SafeRecipients.ResolveAll", 0, kAsDecided, kRecipients},
    {"phrb", L"SafeRecipients.Count get", 0, kAsDecided, kRecipients},
    {"phrb", L"SafeRecipients.Item", 0, kAsDecided, kRecipient},
    {"phrb", L"SafeRecipient.Resolved get", 0, kAsDecided, kRecipient},
    {"phrb", L"SafeRecipient.AddressEntry get", 0, kAsDecided, kRecipient},
    {"phrb", L"SafeRecipient.Fields", 0, kAsDecided, kRecipient},
    {"phrb", L"SafeRecipient.Address get", 0, kAsDecided, kRecipient},
    {"phrb", L"SafeAddressEntry.SMTPAddress get", 0, kAsDecided, kRecipient},
    {"phrb", L"SafeRecipient.Name get", 0, kAsDecided, kRecipient},
    {"phrb", L"SafeRecipient.Type get", 0, kAsDecided, kRecipient},
    {"phrb", L"SafeMailItem.Attachments get", 0, kUninspectedListed, kPasses},
    {"phrb", L"SafeAttachments.Count get", 0, kUninspectedListed, kPasses},
    {"phrb", L"SafeAttachments.Item", 0, kUninspectedListed, kPasses},
    {"phrb", L"SafeAttachment.FileName get", 0, kUninspectedListed, kPasses},
    {"phrb", L"SafeAttachment.SaveAsFile", 0, kUninspectedListed, kPasses},
    {"phrb", L"SafeMailItem.Body get", 0, kUninspectedListed, kPasses},
    {"phrbn", L"MailItem.BodyFormat get", 1, kUninspectedListed, kPasses},
    {"hrb", L"RDOSession.CreateInstance", 2, kAsDecided, kNoSession}, // no file of the body
    {"hrb", L"RDOSession.GetRDOObjectFromOutlookObject", 2, kAsDecided, kNoView},
    {"hb", L"RDOMail.HTMLBody get", 0, kUninspectedListed, kPasses},
    {"r", L"RDOMail.SaveAs", 0, kUninspectedListed, kPasses},
    // The worker: a time that is not known is no change.
    {"phrbn", L"Application.Session get", 1, kAsDecided, kNoTime},
    {"phrn", L"Application.Session get", 2, kAsDecided, kNoTime},
    {"phrbn", L"MailItem.LastModificationTime get", 0, kAsDecided, kNoTime},
    {"phrbn", L"NameSpace.GetItemFromID", 1, kAsDecided, kNotInDrafts},
    {"phrbn", L"NameSpace.GetItemFromID", 2, kAsDecided, kNotInOutbox},
    {"phrbn", L"NameSpace.GetItemFromID", 3, kAsDecided, kNotInDrafts},
    {"phrbn", L"NameSpace.GetItemFromID", 4, kAsDecided, kNotInOutbox},
    {"phrn", L"NameSpace.GetItemFromID", 5, kAsDecided, kNotInDrafts},
    {"phrn", L"NameSpace.GetItemFromID", 6, kAsDecided, kNotInOutbox},
    // A blocked mail comes back.
    {"b", L"Application.Session get", 2, kWaiting, kInWindow},
    {"b", L"MailItem.Display", 0, kWaiting, kInWindow},
    // An allowed one is changed and sent.
    {"phrn", L"Application.Session get", 3, kWaiting, kInWindow},
    {"phr", L"MailItem.Subject put", 0, kWithoutLabels, kNoLabel},
    {"n", L"MailItem.Subject put", 0, L"sent without its subject label", kNoLabel},
    {"phr", L"MailItem.BodyFormat get", 2, kWithoutBody, kNoLabel},
    {"p", L"RDOSession.CreateInstance", 2, kWithoutBody, kNoSession},
    {"p", L"RDOSession.GetRDOObjectFromOutlookObject", 2, kWithoutBody, kNoView},
    {"hr", L"RDOSession.CreateInstance", 3, kWithoutBody, kNoSession},
    {"hr", L"RDOSession.GetRDOObjectFromOutlookObject", 3, kWithoutBody, kNoView},
    {"p", L"RDOMail.Body put", 0, kWithoutBody, kNoLabel},
    {"h", L"RDOMail.HTMLBody put", 0, kWithoutBody, kNoLabel},
    {"r", L"RDOMail.Import", 0, kWithoutBody, kNoLabel},
    {"p", L"RDOSession.CreateInstance", 3, kWaiting, kNoSession},
    {"p", L"RDOSession.GetRDOObjectFromOutlookObject", 3, kWaiting, kNoView},
    {"hr", L"RDOSession.CreateInstance", 4, kWaiting, kNoSession},
    {"hr", L"RDOSession.GetRDOObjectFromOutlookObject", 4, kWaiting, kNoView},
    {"phr", L"RDOMail.Attachments get", 0, kWaiting, kNotReplaced},
    {"phr", L"RDOAttachments.Count get", 0, kWaiting, kNotReplaced},
    {"phr", L"RDOAttachments.Clear", 0, kWaiting, kNotReplaced},
    {"phr", L"RDOAttachments.Add", 0, kWaiting, kNotReplaced},
    {"phr", L"RDOMail.Save", 0, kWaiting, kNotReplaced},
    {"phrn", L"MailItem.EntryID get", 4, kWaiting, kInWindow},
    {"phrn", L"MailItem.EntryID get", 5, kWaiting,
     L"MessageHandler::Send: Caught a com exception during RemoveFromInspectedItems or SendWithRDO_() %"},
    // What Redemption does not send Outlook sends.
    {"p", L"RDOSession.CreateInstance", 4, kAsDecided, kNoSession},
    {"p", L"RDOSession.GetRDOObjectFromOutlookObject", 4, kAsDecided, kNoView},
    {"hr", L"RDOSession.CreateInstance", 5, kAsDecided, kNoSession},
    {"hr", L"RDOSession.GetRDOObjectFromOutlookObject", 5, kAsDecided, kNoView},
    {"phr", L"MailItem.Subject get", 2, kAsDecided, kNotByRedemption},
    {"phr", L"RDOMail.Subject put", 0, kAsDecided, kNotByRedemption},
    {"phr", L"RDOMail.Send", 0, kAsDecided, kNotByRedemption},
    {"phr", L"Transport.Submit", 0, kAsDecided, kNotByRedemption},
    // What Outlook does not send either goes back to its user; inside its send the mail is known as inspected.
    {"n", L"Application.Session get", 4, kOnScreen, kNotByOutlook},
    {"n", L"NameSpace.GetDefaultFolder", 0, kOnScreen, kNotByOutlook},
    {"n", L"MailItem.Send", 0, kOnScreen, kNotByOutlook},
    {"n", L"Transport.Submit", 0, kOnScreen, kNotByOutlook},
    {"n", L"Application.ActiveExplorer", 2, kAsDecided, kPasses},
    {"n", L"Explorer.Caption get", 2, kAsDecided, kPasses},
    {"n", L"MailItem.AutoForwarded get", 2, kAsDecided, kPasses},
    {"n", L"MailItem.VotingResponse get", 2, kAsDecided, kPasses},
    {"n", L"MailItem.EntryID get", 6, kAsDecided, kPasses},
};

// A mail of the ledger at the next start.
const std::vector<Row> kStart = {
    {"s", L"Application.Session get", 0, kWaiting, L"COM error while trying to find and resend an item: %"},
    {"s", L"NameSpace.GetItemFromID", 1, kOnScreen, kNotInDrafts},
    {"s", L"NameSpace.GetItemFromID", 2, kOnScreen, kNotInOutbox},
    {"s", L"MailItem.Display", 0, kWaiting, L"COM error while trying to find and resend an item: %"},
};

struct Fate {
    std::wstring outcome;
    std::vector<std::wstring> lines; ///< at Warn and Error
    std::vector<std::wstring> calls; ///< the members of Outlook and Redemption, in order
};

class OldMemberFailure : public AsyncTest {
protected:
    OldMemberFailure() {
        SetVersion(kVersion11);
        Start({.version = kVersion11});
    }

    /// Runs the flow undisturbed, then once for each of its calls with that call failing, and compares with the table.
    void Check(char flow, const std::vector<Row>& table, const std::function<Fate()>& run) {
        run(); // what is done once in a process's life is done
        const Fate undisturbed = run();
        EXPECT_EQ(undisturbed.outcome, flow == 's' ? kOnScreen : kAsDecided);
        std::set<const Row*> used;
        for (const FailingCall& call : CallsOf(undisturbed.calls)) {
            const std::string name = testing::PrintToString(call.Name());
            const Row* const row = Find(table, flow, call);
            if (row == nullptr) {
                ADD_FAILURE() << "no row for " << name;
                continue;
            }
            used.insert(row);
            SCOPED_TRACE(name);
            outlook->Failures().Fail(call.member, kAccessDenied, call.nth);
            const Fate fate = run();
            outlook->Failures().Clear();
            EXPECT_EQ(fate.outcome, row->outcome);
            EXPECT_EQ(FirstNew(undisturbed.lines, fate.lines), WithError(row->log));
        }
        for (const Row& row : table) {
            const bool ours = std::string(row.flows).find(flow) != std::string::npos;
            EXPECT_TRUE(!ours || used.contains(&row))
                << "a row that is not needed: " << testing::PrintToString(std::wstring(row.member)) << " #" << row.nth;
        }
    }

    void RemoveRedemption() { redemption_.reset(); }

    /// Sends one mail of the flow to its end.
    Fate SendOne(stand_ins::Agent& agent, char flow) {
        Prepare(agent, flow);
        const auto item = outlook->NewMail(MailOf(flow));
        const std::size_t delivered = Deliveries();
        const std::uint64_t inspections = agent.Numbers().methods[L"Inspect"];
        outlook->Calls().Clear();
        log.Clear();
        const SendResult result = outlook->Send(item);
        EXPECT_TRUE(AllEnds());
        Fate fate{L"", Lines(), outlook->Calls().Members()};
        if (Deliveries() > delivered + 1) {
            fate.outcome = L"sent twice";
        } else if (Deliveries() == delivered) {
            fate.outcome = Place(result);
            fate.outcome = flow == 'b' && fate.outcome == kOnScreen ? kAsDecided : fate.outcome;
            stand_ins::Invoke(item, L"Close", {1L});
        } else if (agent.Numbers().methods[L"Inspect"] == inspections) {
            fate.outcome = kUninspected;
        } else {
            fate.outcome = Changes(LastDelivered(), flow);
        }
        ForgetLedger(fate.outcome);
        return fate;
    }

    std::vector<std::wstring> Lines() const {
        std::vector<std::wstring> lines;
        for (const auto& line : log.Lines()) {
            if (line.level == L"WARN" || line.level == L"ERROR") {
                lines.push_back(line.text);
            }
        }
        return lines;
    }
    /// Where a mail is that did not leave.
    std::wstring Place(const SendResult& result) const {
        return outlook->IsOpen(result.entryId)      ? kOnScreen
               : stand_ins::Outlook::IsGone(result) ? L"lost"
                                                    : L"in Drafts";
    }
    void ForgetLedger(std::wstring& outcome) {
        outcome += Ledger().empty() ? L"" : L", listed";
        RegistryKey::GetCurrentUser().DeleteSubKeyTree(outlook_tests::kUnsentKey);
    }

private:
    static ItemData MailOf(char flow) {
        ItemData mail{.subject = L"Plans",
                      .body = L"The plans of the year.",
                      .recipients = {{.name = L"You", .address = L"you@b.example"},
                                     {.name = L"Colleague",
                                      .address = L"cn=colleague",
                                      .addressType = L"EX",
                                      .properties = {{0x39FE001F, L"colleague@a.example"}}}},
                      .attachments = {{.fileName = L"plan.txt", .content = "secret"}}};
        if (flow == 'h' || flow == 'b') {
            mail.htmlBody = L"<p>The plans of the year.</p>";
        } else if (flow == 'r') {
            mail.rtfBody = "{\\rtf1\\ansi The plans of the year.}";
        }
        return mail;
    }

    /// The decision for the next mail, with its files, which go with each decision.
    void Prepare(stand_ins::Agent& agent, char flow) {
        const std::wstring wide = flow == 'h' ? L"<p>labelled</p>" : L"labelled";
        const std::string body = flow == 'r' ? "{\\rtf1\\ansi labelled}"
                                             : std::string(reinterpret_cast<const char*>(wide.data()), 2 * wide.size());
        const std::wstring all = L"<EmailBody path=\"" + File(L"body", body) +
                                 L"\" /><EmailAttachments><Attachment path=\"" + File(L"notice", "Removed.") +
                                 L"\" displayName=\"notice.txt\" /></EmailAttachments>";
        agent.SetPolicy(stand_ins::Policy::Decision(
            flow == 'b' ? L"<decision result=\"2\" />"
                        : L"<decision result=\"1\"><DataModifications><EmailSubject value=\"[Secret] Plans\" />" +
                              (flow == 'n' ? L"" : all) + L"</DataModifications></decision>"));
    }

    static std::wstring Changes(const ItemData& sent, char flow) {
        const bool subject = sent.subject == L"[Secret] Plans";
        const bool body = flow == 'n' || sent.body.find(L"labelled") != std::wstring::npos;
        const bool attachments =
            flow == 'n' || (sent.attachments.size() == 1 && sent.attachments[0].content == "Removed.");
        return !attachments      ? L"sent without its attachments"
               : subject && body ? kAsDecided
               : subject         ? kWithoutBody
               : flow == 'n'     ? L"sent without its subject label"
               : !body           ? kWithoutLabels
                                 : L"sent without its subject label";
    }

    std::size_t Deliveries() const {
        const std::filesystem::directory_iterator files(outlook->DeliveredFolder());
        return static_cast<std::size_t>(std::distance(begin(files), end(files)));
    }

    ItemData LastDelivered() const {
        std::filesystem::path last;
        for (const auto& file : std::filesystem::directory_iterator(outlook->DeliveredFolder())) {
            last = std::max(last, file.path());
        }
        return stand_ins::ReadItemFile(last);
    }

    static const Row* Find(const std::vector<Row>& table, char flow, const FailingCall& call) {
        const Row* any = nullptr;
        for (const Row& row : table) {
            if (std::string(row.flows).find(flow) == std::string::npos || call.member != row.member) {
                continue;
            }
            if (row.nth == call.nth) {
                return &row;
            }
            any = row.nth == 0 ? &row : any;
        }
        return any;
    }

    static std::wstring FirstNew(const std::vector<std::wstring>& usual, const std::vector<std::wstring>& lines) {
        for (const std::wstring& line : lines) {
            if (std::ranges::count(lines, line) > std::ranges::count(usual, line)) {
                return line;
            }
        }
        return {};
    }

    static std::wstring WithError(std::wstring line) {
        const std::size_t place = line.find(L'%');
        return place == std::wstring::npos ? line : line.replace(place, 1, ErrorText(kAccessDenied));
    }

    std::optional<RedemptionLibrary> redemption_{std::in_place};
};

class OldMemberFailureInFlow : public OldMemberFailure, public testing::WithParamInterface<char> {
protected:
    OldMemberFailureInFlow() {
        if (GetParam() == 'n') {
            RemoveRedemption();
        }
    }
};

std::string NameOf(const testing::TestParamInfo<char>& flow) {
    static const std::map<char, std::string> names = {
        {'p', "Plain"}, {'h', "Html"}, {'r', "RichText"}, {'b', "Blocked"}, {'n', "WithoutRedemption"}};
    return names.at(flow.param);
}

INSTANTIATE_TEST_SUITE_P(Each, OldMemberFailureInFlow, testing::Values('p', 'h', 'r', 'b', 'n'), NameOf);

TEST_P(OldMemberFailureInFlow, InsideTheEventEachHasTheOutcomeOfItsRow) {
    stand_ins::Agent agent;
    peer.SetEmbedded(true);
    Check(GetParam(), kInside, [&] { return SendOne(agent, GetParam()); });
}

TEST_P(OldMemberFailureInFlow, BesideTheEventEachHasTheOutcomeOfItsRow) {
    stand_ins::Agent agent;
    Check(GetParam(), kBeside, [&] { return SendOne(agent, GetParam()); });
}

TEST_F(OldMemberFailure, AtTheNextStartEachHasTheOutcomeOfItsRow) {
    Check('s', kStart, [&] {
        const auto item = outlook->SavedItem(outlook_tests::kMail);
        const std::wstring id = stand_ins::GetText(item, L"EntryID");
        CommonUtils::AddToInspectedItems(id, id, nullptr);
        outlook->Calls().Clear();
        log.Clear();
        controller.HandleIncompleteInspections();
        Fate fate{outlook->IsOpen(id) ? kOnScreen : L"in Drafts", Lines(), outlook->Calls().Members()};
        EXPECT_TRUE(outlook->Delivered().empty());
        ForgetLedger(fate.outcome);
        return fate;
    });
}

} // namespace
} // namespace vorlek
