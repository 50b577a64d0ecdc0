#include "tests/end-to-end/Crash.h"

#include <algorithm>
#include <fstream>
#include <stdexcept>

#include <gmock/gmock.h>

namespace end_to_end {
namespace {

constexpr DWORD kDied = 86; // the status that outlook.exe dies with
constexpr DWORD kLongMs = 20000;
constexpr const char* kFinished = "INFO Finished Async inspection successfully.";

/// Whether the item is as the agent wants it; otherwise it is as its writer sent it, and nothing in between.
bool IsLabelled(const Json& item) {
    const bool labelled = item["subject"] == "[Internal] Plans";
    EXPECT_TRUE(labelled || item["subject"] == "Plans") << item["subject"];
    EXPECT_EQ(item["body"].get<std::string>().starts_with("Internal"), labelled);
    EXPECT_EQ(item["attachments"].size(), 1u);
    EXPECT_EQ(item["attachments"].at(0).value("displayName", "") == "notice.txt", labelled);
    return labelled;
}

/// The rows of the table under a title.
std::vector<std::string> Table(const std::string& title) {
    std::ifstream file(std::filesystem::path(L"Z:") / CRASH_TABLES);
    std::vector<std::string> rows;
    bool found = false;
    for (std::string line; std::getline(file, line);) {
        found = line.starts_with('#') ? line.ends_with("# " + title) : found;
        if (found && line.starts_with('|')) {
            rows.push_back(line);
        }
    }
    return rows;
}

Json WithAttachment(Json fields) {
    fields["attachments"] = {{{"fileName", "a.txt"}, {"content", "YQ=="}}};
    return fields;
}

} // namespace

WatchedAgent::WatchedAgent(const Road& road, const std::wstring& awaited, std::function<bool()> mayAnswer)
    : agent_(Options_(road, awaited, std::move(mayAnswer))) {}

std::size_t WatchedAgent::Inspections() const {
    return static_cast<std::size_t>(
        std::ranges::count(agent_.Requests(), std::wstring(L"Inspect"), &stand_ins::Request::method));
}

stand_ins::AgentOptions WatchedAgent::Options_(const Road& road, const std::wstring& awaited,
                                               std::function<bool()> mayAnswer) {
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

CrashTest::CrashTest(Traveller traveller, Json fields)
    : traveller_(std::move(traveller)), item_(Item(WithAttachment(std::move(fields)))) {}

void CrashTest::Expect(const std::string& title, const Road& road, const std::vector<Step>& steps) {
    std::vector<std::string> rows = {"| Outlook is killed | the " + traveller_.name + " then | after the next start |",
                                     "|---|---|---|"};
    if (road.interrupted) {
        StartAfresh();
        KillAt_(*road.interrupted, Road(), {item_}, {});
        Keep();
    }
    for (const Step& step : steps) {
        SCOPED_TRACE(step.words);
        rows.push_back(Walk_(road, step));
        std::printf("%s\n", rows.back().c_str());
        if (HasFatalFailure()) {
            return;
        }
    }
    EXPECT_THAT(rows, testing::ElementsAreArray(Table(title)));
}

std::string CrashTest::Walk_(const Road& road, const Step& step) {
    if (road.interrupted) {
        Restore();
        KillAt_(step, road, {}, road.options);
    } else {
        StartAfresh();
        KillAt_(step, road, {item_}, road.options);
    }
    const std::string then = Whereabouts_();
    const WatchedAgent agent(Road{.policy = road.policy}, {}, [] { return true; });
    const bool wasSent = !Delivered().empty();
    Open({});
    EXPECT_TRUE(Await([] { return ExplorerWindow() != nullptr; }));
    const bool shown = FindWindowW(nullptr, traveller_.window.c_str()) != nullptr;
    EXPECT_EQ(Close().status, 0u);
    EXPECT_LE(Delivered().size(), 1u);
    EXPECT_EQ(Delivered().size(), ItemsIn("Sent Items").size());
    if (!Delivered().empty()) {
        EXPECT_EQ(agent.Inspections(), wasSent ? 0u : 1u);
    }
    return "| " + step.words + " | " + then + " | " + Whereabouts_() + (shown ? ", on the screen" : "") + " |";
}

void CrashTest::KillAt_(const Step& step, const Road& road, const std::vector<std::filesystem::path>& items,
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

bool CrashTest::HasCome_(const std::wstring& moment, const WatchedAgent& agent) const {
    if (moment == L"box") {
        return IsWindowVisible(FindWindowW(L"#32770", L"Microsoft Outlook")) != FALSE;
    }
    if (moment == L"unlisted") {
        return Logged(kFinished) && Ledger().empty();
    }
    return moment == L"finished" ? Logged(kFinished) : agent.IsAsked();
}

bool CrashTest::IsEdited_(const std::string& ending) const {
    const std::string folder = traveller_.home.empty() ? "Drafts" : traveller_.home;
    return Await([&] { return ItemsIn(folder).at(0)["body"].get<std::string>().ends_with(ending); });
}

std::string CrashTest::Whereabouts_() const {
    const std::size_t drafts = ItemsIn("Drafts").size();
    const bool atHome = !traveller_.home.empty() && !ItemsIn(traveller_.home).empty();
    std::string places;
    const auto add = [&](bool there, const std::string& place) {
        if (there) {
            places += (places.empty() ? "" : " and ") + place;
        }
    };
    add(!Delivered().empty(), "sent");
    add(drafts != 0, drafts > 1 ? "twice in Drafts" : "in Drafts");
    add(!ItemsIn("Deleted Items").empty(), "in Deleted Items");
    if (places.empty()) {
        places = atHome ? traveller_.atHome + " only" : "not saved";
    } else if (!traveller_.home.empty() && !atHome) {
        places += ", not " + traveller_.atHome;
    }
    return places + Listed_(drafts) + Labelled_();
}

std::string CrashTest::Listed_(std::size_t drafts) const {
    const std::size_t listed = Ledger().size();
    if (listed != 0) {
        return listed < drafts ? ", one listed" : ", listed";
    }
    return drafts != 0 ? ", not listed" : "";
}

std::string CrashTest::Labelled_() const {
    const auto delivered = Delivered();
    const auto home = traveller_.home.empty() ? delivered : ItemsIn(traveller_.home);
    const bool sent = !delivered.empty() && IsLabelled(delivered[0]);
    const bool atHome = !home.empty() && IsLabelled(home[0]);
    if (sent == atHome) {
        return sent ? ", labelled" : "";
    }
    return sent ? ", labelled, but not " + traveller_.atHome : ", labelled " + traveller_.atHome + " only";
}

} // namespace end_to_end
