#pragma once
#include <atomic>

#include "stand-ins/agent/Agent.h"
#include "tests/end-to-end/Desk.h"

namespace end_to_end {

/// A step, in words and for the machine: "before:" or "after:" a call of the object model, as outlook.exe has it, or
/// a moment seen from outside: "asked:METHOD#n" (the agent has its n-th request), "box" (a message box is on the
/// screen), "unlisted" (the ledger is empty again), "finished" (the worker has said so).
struct Step {
    std::string words;
    std::wstring at;
};

/// An item's road: what the agent says, what the user does meanwhile, and how Outlook is started.
struct Road {
    Json policy = Json::object();
    bool agentFails = false;                ///< it answers an inspection with an error
    std::string edited = {};                ///< the agent answers once what its writer sees ends with this
    std::vector<std::wstring> options = {}; ///< of the Outlook that is killed
    std::optional<Step> interrupted = {};   ///< an earlier run was killed here: the item is an old one
};

/// What is sent.
struct Traveller {
    std::string name;    ///< in the head of a table
    std::string home;    ///< the folder of what it is about: a meeting's appointment, a task request's task
    std::string atHome;  ///< that folder in words
    std::wstring window; ///< the title that its user sees
};

inline const Json kBlock = {{"rules", {{{"name", "all"}, {"then", {{"block", true}}}}}}};
inline const Json kLabel = {{"rules",
                             {{{"name", "all"},
                               {"then",
                                {{"subject", "[Internal] {subject}"},
                                 {"body", {{"before", "Internal"}}},
                                 {"replaceAttachments", {{"text", "Removed."}, {"displayName", "notice.txt"}}}}}}}}};
inline const Step kAgentThinks = {"while the agent thinks", L"asked:Inspect#1"};

/// An agent of this process that tells when it has a certain request, and keeps its asker waiting then.
class WatchedAgent {
public:
    WatchedAgent(const Road& road, const std::wstring& awaited, std::function<bool()> mayAnswer);
    ~WatchedAgent() { SetEvent(released_.Get()); }
    WatchedAgent(const WatchedAgent&) = delete;
    WatchedAgent& operator=(const WatchedAgent&) = delete;

    bool IsAsked() const { return WaitForSingleObject(asked_.Get(), 0) == WAIT_OBJECT_0; }
    std::size_t Inspections() const;

private:
    stand_ins::AgentOptions Options_(const Road& road, const std::wstring& awaited, std::function<bool()> mayAnswer);

    std::atomic<int> asks_ = 0; ///< of the method that is awaited
    vorlek::FileHandle asked_{CreateEventW(nullptr, TRUE, FALSE, nullptr)};
    vorlek::FileHandle released_{CreateEventW(nullptr, TRUE, FALSE, nullptr)};
    stand_ins::Agent agent_;
};

/// Outlook is killed at each step of an item's road and started again. What becomes of the item is compared with the
/// tables of docs/crashes.md.
class CrashTest : public Desk {
protected:
    /// fields: of the item, which has an attachment.
    CrashTest(Traveller traveller, Json fields);

    /// Walks the road once for each step, and compares what happened with the table under the title.
    void Expect(const std::string& title, const Road& road, const std::vector<Step>& steps);

private:
    std::string Walk_(const Road& road, const Step& step);
    /// Starts Outlook, which has the items to send, and kills it.
    void KillAt_(const Step& step, const Road& road, const std::vector<std::filesystem::path>& items,
                 std::vector<std::wstring> options);
    bool HasCome_(const std::wstring& moment, const WatchedAgent& agent) const;
    bool IsEdited_(const std::string& ending) const;

    std::string Whereabouts_() const;
    std::string Listed_(std::size_t drafts) const;
    std::string Labelled_() const;

    const Traveller traveller_;
    const std::filesystem::path item_;
};

} // namespace end_to_end
