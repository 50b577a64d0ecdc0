// Outlook is killed at each step of a mail's road and started again: what becomes of the mail. The tables of
// docs/crashes.md are what is expected.
#include <atomic>
#include <fstream>
#include <stdexcept>

#include <gmock/gmock.h>

#include "stand-ins/agent/Agent.h"
#include "tests/end-to-end/Desk.h"

namespace end_to_end {
namespace {

constexpr DWORD kDied = 86; // the status that outlook.exe dies with
constexpr DWORD kLongMs = 20000;
constexpr const char* kFinished = "INFO Finished Async inspection successfully.";

/// A step, in words and for the machine: "before:" or "after:" a call of the object model, as outlook.exe has it, or
/// a moment seen from outside: "asked:METHOD#n" (the agent has its n-th request), "box" (a message box is on the
/// screen), "unlisted" (the ledger is empty again), "finished" (the worker has said so).
struct Step {
    std::string words;
    std::wstring at;
};

/// A mail's road: what the agent says, what the user does meanwhile, and how Outlook is started.
struct Road {
    Json policy = Json::object();
    bool agentFails = false;                ///< it answers an inspection with an error
    std::string edited = {};                ///< the agent answers once a draft ends with this
    std::vector<std::wstring> options = {}; ///< of the Outlook that is killed
    std::optional<Step> interrupted = {};   ///< an earlier run was killed here: the mail is an old one
    std::string subjectAtTheEnd = "Plans";
};

const Json kBlock = {{"rules", {{{"name", "all"}, {"then", {{"block", true}}}}}}};
const Json kLabel = {{"rules",
                      {{{"name", "all"},
                        {"then",
                         {{"subject", "[Internal] {subject}"},
                          {"body", {{"before", "Internal"}}},
                          {"replaceAttachments", {{"text", "Removed."}, {"displayName", "notice.txt"}}}}}}}}};

/// An agent of this process that tells when it has a certain request, and keeps its asker waiting then.
class WatchedAgent {
public:
    WatchedAgent(const Road& road, const std::wstring& awaited, std::function<bool()> mayAnswer)
        : agent_(Options_(road, awaited, std::move(mayAnswer))) {}
    ~WatchedAgent() { SetEvent(released_.Get()); }
    WatchedAgent(const WatchedAgent&) = delete;
    WatchedAgent& operator=(const WatchedAgent&) = delete;

    bool IsAsked() const { return WaitForSingleObject(asked_.Get(), 0) == WAIT_OBJECT_0; }
    std::size_t Inspections() const {
        return static_cast<std::size_t>(
            std::ranges::count(agent_.Requests(), std::wstring(L"Inspect"), &stand_ins::Request::method));
    }

private:
    stand_ins::AgentOptions Options_(const Road& road, const std::wstring& awaited, std::function<bool()> mayAnswer) {
        stand_ins::AgentOptions options;
        options.policy = stand_ins::Policy::FromText(road.policy.dump());
        options.responder = [this, awaited, mayAnswer, fails = road.agentFails](const stand_ins::Request& request) {
            if (awaited.starts_with(L"asked:" + request.method + L"#") && awaited.ends_with(std::to_wstring(++asks_))) {
                SetEvent(asked_.Get());
                WaitForSingleObject(released_.Get(), kLongMs);
            }
            if (request.method == L"Inspect") {
                EXPECT_TRUE(mayAnswer());
                if (fails) {
                    throw std::runtime_error("no answer today");
                }
            }
            return std::optional<stand_ins::Answer>();
        };
        return options;
    }

    std::atomic<int> asks_ = 0; ///< of the method that is awaited
    vorlek::FileHandle asked_{CreateEventW(nullptr, TRUE, FALSE, nullptr)};
    vorlek::FileHandle released_{CreateEventW(nullptr, TRUE, FALSE, nullptr)};
    stand_ins::Agent agent_;
};

class Crash : public Desk {
protected:
    /// Walks the road once for each step, and compares what happened with the table under the title.
    void Expect(const std::string& title, const Road& road, const std::vector<Step>& steps) {
        std::vector<std::string> rows = {"| Outlook is killed | the mail then | after the next start |",
                                         "|---|---|---|"};
        for (const Step& step : steps) {
            SCOPED_TRACE(step.words);
            rows.push_back(Walk_(road, step));
            std::printf("%s\n", rows.back().c_str());
            if (HasFatalFailure()) {
                return;
            }
        }
        EXPECT_THAT(rows, testing::ElementsAreArray(Table_(title)));
    }

private:
    std::string Walk_(const Road& road, const Step& step) {
        StartAfresh();
        std::vector<std::filesystem::path> items = {item_};
        if (road.interrupted) {
            KillAt_(*road.interrupted, Road(), items, {});
            items.clear();
        }
        KillAt_(step, road, items, road.options);
        const std::string then = Whereabouts_();
        const WatchedAgent agent(Road{.policy = road.policy}, {}, [] { return true; });
        const bool wasSent = !Delivered().empty();
        Open({});
        EXPECT_TRUE(Await([] { return ExplorerWindow() != nullptr; }));
        const bool shown = FindWindowW(nullptr, L"Plans - Message (Plain Text) ") != nullptr;
        EXPECT_EQ(Close().status, 0u);
        ExpectNothingLostOrDoubled_(road, wasSent, agent.Inspections());
        return "| " + step.words + " | " + then + " | " + Whereabouts_() + (shown ? ", on the screen" : "") + " |";
    }

    /// Starts Outlook, which has the items to send, and kills it.
    void KillAt_(const Step& step, const Road& road, const std::vector<std::filesystem::path>& items,
                 std::vector<std::wstring> options) {
        const bool atCall = step.at.starts_with(L"before:") || step.at.starts_with(L"after:");
        if (atCall) {
            options.insert(options.end(), {L"--die", step.at});
        }
        const WatchedAgent agent(road, step.at, [&] { return road.edited.empty() || IsEdited_(road.edited); });
        Open(items, options);
        if (atCall) {
            ASSERT_EQ(AwaitEnd(), kDied) << "the step never came";
        } else {
            ASSERT_TRUE(Await([&] { return HasCome_(step.at, agent); })) << "the step never came";
            Kill();
        }
    }

    bool HasCome_(const std::wstring& moment, const WatchedAgent& agent) const {
        if (moment == L"box") {
            return IsWindowVisible(FindWindowW(L"#32770", L"Microsoft Outlook")) != FALSE;
        }
        if (moment == L"unlisted") {
            return Logged(kFinished) && Ledger().empty();
        }
        return moment == L"finished" ? Logged(kFinished) : agent.IsAsked();
    }

    bool IsEdited_(const std::string& ending) const {
        return Await([&] { return ItemsIn("Drafts").at(0)["body"].get<std::string>().ends_with(ending); });
    }

    std::string Whereabouts_() const {
        const std::string listed = Ledger().empty() ? "" : ", listed";
        if (!Delivered().empty()) {
            return "sent" + listed;
        }
        if (ItemsIn("Drafts").empty()) {
            return "not saved" + listed;
        }
        return "in Drafts" + (listed.empty() ? ", not listed" : listed);
    }

    void ExpectNothingLostOrDoubled_(const Road& road, bool wasSent, std::size_t inspections) const {
        EXPECT_EQ(Delivered().size(), ItemsIn("Sent Items").size());
        EXPECT_LE(Delivered().size() + ItemsIn("Drafts").size(), 1u);
        EXPECT_THAT(Ledger(), testing::IsEmpty()) << "the next start leaves nothing to do";
        if (!Delivered().empty()) {
            EXPECT_EQ(Delivered().at(0)["subject"], road.subjectAtTheEnd);
            EXPECT_EQ(Delivered().at(0)["attachments"].size(), 1u);
            EXPECT_EQ(inspections, wasSent ? 0u : 1u);
        }
    }

    /// The rows of the table under a title.
    static std::vector<std::string> Table_(const std::string& title) {
        std::ifstream file(std::filesystem::path(L"Z:") / CRASH_TABLES);
        std::vector<std::string> rows;
        bool found = false;
        for (std::string line; std::getline(file, line);) {
            found = line.starts_with("## ") ? line == "## " + title : found;
            if (found && line.starts_with('|')) {
                rows.push_back(line);
            }
        }
        return rows;
    }

    const std::filesystem::path item_ = Item({{"attachments", {{{"fileName", "a.txt"}, {"content", "YQ=="}}}}});
};

const Step kAgentThinks = {"while the agent thinks", L"asked:Inspect#1"};

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
    Expect("Labelling a mail and replacing its attachments", {.policy = kLabel, .subjectAtTheEnd = "[Internal] Plans"},
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
