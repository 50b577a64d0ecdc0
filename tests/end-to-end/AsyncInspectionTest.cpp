// Mails inspected beside the send event, in whole processes: what becomes of each, seen from outside.
#include <gmock/gmock.h>
#include <map>

#include "stand-ins/agent/Agent.h"
#include "tests/end-to-end/Desk.h"
#include "tests/end-to-end/Figures.h"

namespace end_to_end {
namespace {

using testing::Contains;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::SizeIs;
using testing::StartsWith;

const Json kAllow = Json::object();
const Json kBlock = {{"rules", {{{"name", "all"}, {"then", {{"block", true}}}}}}};

constexpr const wchar_t* kUnsentText = L"One message or more could not be sent.\nPlease check your Drafts folder";
constexpr const wchar_t* kModifiedText = L"The mail item was modified during inspection and was not sent.";
constexpr int kMails = 200;
constexpr const char* kFinished = "INFO Finished Async inspection successfully.";
/// Outlook stays until the workers have ended, to tell its figures: a mail leaves before its worker is done.
const std::vector<std::wstring> kToTheWorkersEnd = {L"--figures"};

class AsyncInspection : public Desk {
protected:
    /// An agent in this process, whose answers to inspections come when `ready` returns.
    static stand_ins::AgentOptions Answering(std::function<void(const stand_ins::Request&)> ready) {
        stand_ins::AgentOptions options;
        options.responder = [ready = std::move(ready)](const stand_ins::Request& request) {
            if (request.method == L"Inspect") {
                ready(request);
            }
            return std::optional<stand_ins::Answer>();
        };
        return options;
    }
    void ExpectSent(std::size_t mails = 1) {
        EXPECT_THAT(Delivered(), SizeIs(mails));
        EXPECT_THAT(ItemsIn("Sent Items"), SizeIs(mails));
        EXPECT_THAT(ItemsIn("Drafts"), IsEmpty());
        EXPECT_THAT(Ledger(), IsEmpty());
    }
    void ExpectWaiting() {
        EXPECT_THAT(Delivered(), IsEmpty());
        EXPECT_THAT(ItemsIn("Drafts"), SizeIs(1));
        EXPECT_THAT(Ledger(), SizeIs(1));
    }
    std::size_t Lines(const std::string& line) const {
        const auto log = Log();
        return static_cast<std::size_t>(std::ranges::count(log, line));
    }
};

TEST_F(AsyncInspection, MailLeavesOnceTheAgentHasAnswered) {
    StartAgent(kAllow);
    const OutlookRun run = Send({Item()}, kToTheWorkersEnd);
    ExpectSent();
    EXPECT_EQ(run.boxes, 0);
    EXPECT_THAT(run.output, HasSubstr("item-1.json \"Plans\": sent by the add-in"));
    EXPECT_THAT(Documents(), SizeIs(1));
    EXPECT_THAT(Log(), Contains(kFinished));
    EXPECT_THAT(Log(), Contains("INFO Item was already inspected by the plugin so we don't reinspect it"));
}

TEST_F(AsyncInspection, OutlooksLoopAnswersWhileTheAgentDoesNot) {
    std::atomic<int> heartbeats = 0;
    std::atomic<bool> answered = true;
    const stand_ins::Agent agent(Answering([&](const stand_ins::Request&) {
        // Were Outlook's loop to wait for this answer, each would wait for the other.
        for (int i = 0; i < 10; ++i) {
            DWORD_PTR result = 0;
            answered = answered && SendMessageTimeoutW(ExplorerWindow(), WM_NULL, 0, 0, SMTO_NORMAL, 20000, &result);
            ++heartbeats;
        }
    }));
    Send({Item()}, {});
    EXPECT_TRUE(answered);
    EXPECT_EQ(heartbeats, 10);
    ExpectSent();
}

TEST_F(AsyncInspection, MailWaitsInDraftsAndInTheLedgerWhileTheAgentThinks) {
    std::size_t drafts = 0;
    std::size_t listed = 0;
    const stand_ins::Agent agent(Answering([&](const stand_ins::Request&) {
        drafts = ItemsIn("Drafts").size();
        listed = Ledger().size();
    }));
    Send({Item()}, {});
    EXPECT_EQ(drafts, 1u);
    EXPECT_EQ(listed, 1u);
    ExpectSent();
}

TEST_F(AsyncInspection, BlockedMailComesBackToTheScreen) {
    StartAgent(kBlock);
    const OutlookRun run = Send({Item()}, {});
    EXPECT_THAT(run.output, HasSubstr("stopped by the add-in: brought back to the screen"));
    EXPECT_EQ(run.boxes, 0);
    EXPECT_THAT(Delivered(), IsEmpty());
    EXPECT_THAT(ItemsIn("Drafts"), SizeIs(1));
    EXPECT_THAT(Ledger(), IsEmpty());
}

TEST_F(AsyncInspection, MailIsLabelledAndItsAttachmentsReplacedBeforeItLeaves) {
    StartAgent({{"rules",
                 {{{"name", "all"},
                   {"then",
                    {{"subject", "[Internal] {subject}"},
                     {"body", {{"before", "Internal"}}},
                     {"replaceAttachments", {{"text", "Removed."}, {"displayName", "notice.txt"}}}}}}}}});
    Send({Item({{"attachments", {{{"fileName", "a.txt"}, {"content", "YQ=="}}}}})}, kToTheWorkersEnd);
    ExpectSent();
    const Json mail = Delivered().at(0);
    EXPECT_EQ(mail["subject"], "[Internal] Plans");
    EXPECT_THAT(mail["body"].get<std::string>(), StartsWith("Internal"));
    EXPECT_EQ(mail["attachments"].at(0)["displayName"], "notice.txt");
    EXPECT_EQ(mail["attachments"].at(0)["content"], "UmVtb3ZlZC4=");
    EXPECT_TRUE(std::filesystem::is_empty(folder_ / "agent")); // its files went with the decision
}

TEST_F(AsyncInspection, MailEditedWhileTheAgentThinksIsToldAndComesBack) {
    const stand_ins::Agent agent(Answering([&](const stand_ins::Request&) {
        EXPECT_TRUE(Await([&] { return ItemsIn("Drafts").at(0)["body"].get<std::string>().ends_with("Friday."); }));
    }));
    Open({Item()}, {L"--meanwhile", L"edit:Plans"});
    const auto box = AwaitBox();
    ASSERT_TRUE(box);
    EXPECT_EQ(box->caption, L"Microsoft Outlook");
    EXPECT_EQ(box->text, kModifiedText);
    EXPECT_TRUE(Await([&] { return Logged(kFinished) && Ledger().empty(); }));
    const OutlookRun run = Close();
    EXPECT_THAT(run.output, HasSubstr("stopped by the add-in: brought back to the screen"));
    EXPECT_THAT(Delivered(), IsEmpty());
    EXPECT_THAT(ItemsIn("Drafts"), SizeIs(1));
}

TEST_F(AsyncInspection, OutlooksLoopAnswersWhileTheBoxWaitsForItsUser) {
    const stand_ins::Agent agent(Answering([&](const stand_ins::Request&) {
        EXPECT_TRUE(Await([&] { return ItemsIn("Drafts").at(0)["body"].get<std::string>().ends_with("Friday."); }));
    }));
    Open({Item()}, {L"--meanwhile", L"edit:Plans"});
    ASSERT_TRUE(Await([] { return FindWindowW(L"#32770", L"Microsoft Outlook") != nullptr; }));
    DWORD_PTR result = 0;
    EXPECT_TRUE(SendMessageTimeoutW(ExplorerWindow(), WM_NULL, 0, 0, SMTO_NORMAL, 20000, &result));
    EXPECT_TRUE(AwaitBox());
    Close();
}

TEST_F(AsyncInspection, MailMovedWhileTheAgentThinksIsSentFromThere) {
    const stand_ins::Agent agent(Answering(
        [&](const stand_ins::Request&) { EXPECT_TRUE(Await([&] { return ItemsIn("Archive").size() == 1; })); }));
    Open({Item()}, {L"--keep-ids", L"--meanwhile", L"move:Plans"});
    EXPECT_TRUE(Await([&] { return Logged(kFinished); }));
    Close();
    ExpectSent();
    EXPECT_THAT(ItemsIn("Archive"), IsEmpty());
}

TEST_F(AsyncInspection, MailMovedUnderAnotherIdStaysAndStaysListed) {
    const stand_ins::Agent agent(Answering(
        [&](const stand_ins::Request&) { EXPECT_TRUE(Await([&] { return ItemsIn("Archive").size() == 1; })); }));
    Open({Item()}, {L"--meanwhile", L"move:Plans"});
    EXPECT_TRUE(Await([&] { return Logged(kFinished); }));
    const OutlookRun run = Close();
    EXPECT_THAT(run.output, HasSubstr("moved or deleted while the add-in had it"));
    EXPECT_EQ(run.boxes, 0);
    EXPECT_THAT(Delivered(), IsEmpty());
    EXPECT_THAT(ItemsIn("Archive"), SizeIs(1));
    EXPECT_THAT(Ledger(), SizeIs(1));
    EXPECT_THAT(Log(), Contains(StartsWith("ERROR Caught a vorlek exception: ")));
}

TEST_F(AsyncInspection, MailDeletedWhileTheAgentThinksIsNotSentNowNorAtTheNextStart) {
    {
        const stand_ins::Agent agent(Answering([&](const stand_ins::Request&) {
            EXPECT_TRUE(Await([&] { return ItemsIn("Deleted Items").size() == 1; }));
        }));
        Open({Item()}, {L"--meanwhile", L"delete:Plans"});
        EXPECT_TRUE(Await([&] { return Logged(kFinished); }));
        EXPECT_EQ(Close().status, 0u);
    }
    EXPECT_THAT(Ledger(), SizeIs(1));
    StartAgent(kAllow);
    EXPECT_EQ(Send({}, {}).status, 0u);
    EXPECT_THAT(Delivered(), IsEmpty());
    EXPECT_THAT(Ledger(), SizeIs(1));
    EXPECT_THAT(Log(), Contains(StartsWith("ERROR Failed to find and resend an item: ")));
}

TEST_F(AsyncInspection, MailWhoseMainWindowWasClosedLeavesAtTheNextStart) {
    {
        const stand_ins::Agent agent(Answering(
            [&](const stand_ins::Request&) { EXPECT_TRUE(Await([] { return ExplorerWindow() == nullptr; })); }));
        Open({Item()}, {L"--meanwhile", L"close-explorer:Plans"});
        EXPECT_TRUE(Await([&] { return Logged(kFinished); }));
        EXPECT_THAT(Close().output, HasSubstr("nothing more was heard of it"));
    }
    ExpectWaiting();
    StartAgent(kAllow);
    Send({}, {});
    ExpectSent();
}

TEST_F(AsyncInspection, AgentLostWhileItThinksStopsTheMailTellsTheUserOnceAndTheNextStartSendsIt) {
    StartAgent(kAllow, {L"--misbehave", L"die:Inspect"});
    Open({Item()});
    const auto box = AwaitBox();
    ASSERT_TRUE(box);
    EXPECT_EQ(box->text, kUnsentText);
    EXPECT_EQ(Close().boxes, 0);
    ExpectWaiting();
    EXPECT_THAT(Log(), Contains(StartsWith("ERROR Exception:Failed to process message asynchronously: ")));
    StartAgent(kAllow);
    Send({}, {});
    ExpectSent();
}

TEST_F(AsyncInspection, SecondMailMayFinishBeforeTheFirst) {
    const stand_ins::Agent agent(Answering([&](const stand_ins::Request& request) {
        if (request.param.find(L"The first") != request.param.npos) {
            EXPECT_TRUE(Await([&] { return Delivered().size() == 1; }));
        }
    }));
    Open({Item({{"subject", "The first"}}), Item({{"subject", "The second"}})});
    EXPECT_TRUE(Await([&] { return Lines(kFinished) == 2; }));
    Close();
    ExpectSent(2);
    EXPECT_EQ(Delivered().at(0)["subject"], "The second");
    EXPECT_EQ(Delivered().at(1)["subject"], "The first");
}

TEST_F(AsyncInspection, ManyMailsAtOnceLeaveEachOnceAndNothingStaysBehind) {
    StartAgent({{"rules", {{{"name", "all"}, {"then", {{"delay", "2s"}}}}}}});
    std::vector<std::filesystem::path> items;
    for (int i = 0; i < kMails; ++i) {
        items.push_back(Item({{"subject", "Mail " + std::to_string(i)}}));
    }
    const OutlookRun run = Send(items, {L"--figures"});
    EXPECT_EQ(run.boxes, 0);
    ExpectSent(kMails);
    std::map<std::string, int> subjects;
    for (const Json& mail : Delivered()) {
        ++subjects[mail["subject"]];
    }
    EXPECT_THAT(subjects, SizeIs(kMails));
    EXPECT_EQ(Lines("INFO Got decision: 1"), static_cast<std::size_t>(kMails));
    const std::map<int, Figures> figures = FiguresOf(run.output);
    ASSERT_THAT(figures, SizeIs(2));
    const Figures& before = figures.at(1);
    const Figures& after = figures.at(kMails);
    EXPECT_EQ(after.objects, before.objects);
    EXPECT_EQ(after.threads, before.threads);
    EXPECT_LT(after.handles, before.handles + kMails / 10);
    EXPECT_LT(after.heapBlocks, before.heapBlocks + kMails) << "a mail leaves something behind";
}

TEST_F(AsyncInspection, OutlookEndsByItselfWhileTheAgentThinksAndTheNextStartSendsTheMail) {
    for (const bool told : {false, true}) {
        SCOPED_TRACE(told);
        StartAgent(kAllow, {L"--misbehave", L"silent:Inspect"});
        Open({Item()}, told ? std::vector<std::wstring>{L"--tell-shutdown"} : std::vector<std::wstring>{});
        ASSERT_TRUE(Await([&] { return Logged("INFO Started Async inspection."); }));
        const OutlookRun run = Close();
        EXPECT_EQ(run.status, 0u) << run.output;
        EXPECT_EQ(run.boxes, 0);
        EXPECT_THAT(Ledger(), SizeIs(1));
        StopAgent();
        StartAgent(kAllow);
        Send({}, {});
        ExpectSent(told ? 2 : 1);
        StopAgent();
    }
}

TEST_F(AsyncInspection, MailOfAnEarlierRunGoesTheSameRoadAgainWhereTheMainWindowComesFirst) {
    StartAgent(kAllow, {L"--misbehave", L"silent:Inspect"});
    Open({Item()});
    ASSERT_TRUE(Await([&] { return Logged("INFO Started Async inspection."); }));
    Close();
    StopAgent();
    StartAgent(kAllow);
    Open({}, {L"--early-explorer"});
    EXPECT_TRUE(Await([&] { return Logged(kFinished); }));
    Close();
    ExpectSent();
    EXPECT_EQ(Lines("INFO Started Async inspection."), 2u);
}

TEST_F(AsyncInspection, EmbeddedStartLeavesTheMailsOfAnEarlierRunAlone) {
    StartAgent(kAllow, {L"--misbehave", L"silent:Inspect"});
    Open({Item()});
    ASSERT_TRUE(Await([&] { return Logged("INFO Started Async inspection."); }));
    Close();
    StopAgent();
    StartAgent(kAllow);
    Send({}, {L"-Embedding"});
    ExpectWaiting();
    EXPECT_THAT(Log(), Contains("INFO Outlook is embedded - skipping resending of inspected items"));
}

TEST_F(AsyncInspection, OutlookThatRefusesForeignThreadsSendsTheMail) {
    StartAgent(kAllow);
    Send({Item()}, {L"--strict-threads"});
    ExpectSent();
    EXPECT_EQ(Lines("ERROR Could not get item and last modification - returning old date"), 2u);
}

TEST_F(AsyncInspection, UsersOfAgentsThatAreGoneAreToldInsideTheEvent) {
    const OutlookRun run = Send({Item()}, {});
    EXPECT_EQ(run.boxes, 1);
    EXPECT_THAT(Delivered(), IsEmpty());
    EXPECT_THAT(Ledger(), IsEmpty());
    EXPECT_THAT(Log(), Not(Contains("INFO Started Async inspection.")));
}

} // namespace
} // namespace end_to_end
