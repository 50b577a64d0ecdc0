// Task requests, which are always inspected inside the send event, in whole processes.
#include <gmock/gmock.h>
#include <map>

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

Json Rule(const Json& actions) {
    return {{"rules", {{{"name", "the rule"}, {"then", actions}}}}};
}

const Json kLabel = Rule({{"subject", "[Internal] {subject}"}, {"body", {{"before", "Internal"}}}});
const Json kReplace =
    Rule({{"replaceAttachments", {{"name", "salaries"}, {"text", "Removed."}, {"displayName", "notice.txt"}}}});

constexpr const wchar_t* kUnsentText = L"One message or more could not be sent.\nPlease check your Drafts folder";
constexpr const wchar_t* kUnsentKey = L"SOFTWARE\\Vorlek\\OutlookQLTPlugin\\Unsent";

class TaskRequest : public Desk {
protected:
    /// A task that the user assigns to somebody.
    std::filesystem::path Task(const Json& fields = Json::object()) {
        Json task = {{"kind", "task"}, {"attachments", {Attachment_("salaries.csv")}}};
        task.update(fields);
        return Item(task);
    }
    /// An item about a task of his that he has kept before.
    std::filesystem::path Request(const std::string& messageClass, const std::string& subject) {
        return Item({{"kind", "taskRequest"},
                     {"messageClass", messageClass},
                     {"subject", subject},
                     {"attachments", {Attachment_("salaries.csv")}},
                     {"related",
                      {{{"kind", "task"},
                        {"subject", "Plans"},
                        {"body", "The plans for next week."},
                        {"recipients", {{{"name", "Ben"}, {"address", "ben@example.com"}}}},
                        {"attachments", {Attachment_("salaries.csv")}}}}}});
    }

    void ExpectSent(const OutlookRun& run) {
        EXPECT_THAT(run.output, HasSubstr(": sent\r\n")) << run.output;
        EXPECT_THAT(Delivered(), SizeIs(1));
        EXPECT_THAT(ItemsIn("Drafts"), IsEmpty());
        EXPECT_THAT(ItemsIn("Tasks"), SizeIs(1));
        EXPECT_THAT(Ledger(), IsEmpty());
    }
    void ExpectStopped(const OutlookRun& run) {
        EXPECT_THAT(run.output, HasSubstr("stopped by the add-in: saved in Tasks, its window is open")) << run.output;
        EXPECT_THAT(Delivered(), IsEmpty());
        EXPECT_THAT(ItemsIn("Drafts"), SizeIs(1));
        EXPECT_THAT(Ledger(), IsEmpty());
    }
    /// A request of an earlier run that the ledger still lists.
    void LeaveARequestBehind() {
        StartAgent(Rule({{"block", true}}));
        Send({Task()}, {});
        StopAgent();
        const std::string id = ItemsIn("Drafts").at(0)["entryId"];
        const std::wstring name(id.begin(), id.end());
        RegSetKeyValueW(HKEY_CURRENT_USER, kUnsentKey, name.c_str(), REG_SZ, name.c_str(),
                        static_cast<DWORD>((name.size() + 1) * sizeof(wchar_t)));
        ASSERT_THAT(Ledger(), SizeIs(1));
    }

private:
    static Json Attachment_(const std::string& name) { return {{"fileName", name}, {"content", "MSwyLDM="}}; }
};

TEST_F(TaskRequest, AllowedRequestLeavesInsideTheSendAsItWas) {
    StartAgent(kAllow);
    const OutlookRun run = Send({Task()}, {});
    ExpectSent(run);
    EXPECT_EQ(run.boxes, 0);
    const Json request = Delivered().at(0);
    EXPECT_EQ(request["messageClass"], "IPM.TaskRequest");
    EXPECT_EQ(request["subject"], "Plans");
    EXPECT_EQ(request["body"], "The plans for next week.");
    EXPECT_EQ(request["attachments"].at(0)["content"], "MSwyLDM=");
    EXPECT_THAT(Log(), Contains("DEBUG Always inspecting task requests on spot"));
    EXPECT_THAT(Log(), Not(Contains("INFO Started Async inspection.")));
}

TEST_F(TaskRequest, AgentIsShownTheRequestAndItsSenderButNoRecipients) {
    StartAgent(kAllow);
    Send({Task()}, {});
    ASSERT_THAT(Documents(), SizeIs(1));
    const std::string document = Documents().at(0);
    EXPECT_THAT(document, HasSubstr("The plans for next week."));
    EXPECT_THAT(document, HasSubstr("salaries.csv"));
    EXPECT_THAT(document, HasSubstr("anna@example.com"));
    EXPECT_THAT(document, Not(HasSubstr("ben@example.com")));
    EXPECT_THAT(Log(), Contains("WARN Could not get recipients"));
}

TEST_F(TaskRequest, BlockedRequestStaysOnTheScreen) {
    StartAgent(Rule({{"block", true}}));
    const OutlookRun run = Send({Task()}, {});
    ExpectStopped(run);
    EXPECT_EQ(run.boxes, 0);
    EXPECT_THAT(Log(), Contains("INFO Message should be blocked!"));
}

TEST_F(TaskRequest, LabelsReachTheReceiverAndStayInTheTask) {
    StartAgent(kLabel);
    ExpectSent(Send({Task()}, {}));
    EXPECT_EQ(Delivered().at(0)["subject"], "[Internal] Plans");
    EXPECT_THAT(Delivered().at(0)["body"].get<std::string>(), StartsWith("Internal"));
    EXPECT_EQ(ItemsIn("Tasks").at(0)["subject"], "[Internal] Plans");
    EXPECT_THAT(Log(), Contains("INFO Task item class IPM.TaskRequest is 2"));
}

TEST_F(TaskRequest, LabelsOfAForwardReachTheReceiverToo) {
    StartAgent(kLabel);
    ExpectSent(Send({Request("IPM.TaskRequest", "FW: Plans")}, {}));
    EXPECT_EQ(Delivered().at(0)["subject"], "[Internal] FW: Plans");
    EXPECT_THAT(Delivered().at(0)["body"].get<std::string>(), StartsWith("Internal"));
    EXPECT_THAT(Log(), Contains("INFO Task item class IPM.TaskRequest is 1"));
}

TEST_F(TaskRequest, LabelsOfAResponseLeaveItsTaskAlone) {
    StartAgent(kLabel);
    ExpectSent(Send({Request("IPM.TaskRequest.Accept", "Accepted: Plans")}, {}));
    EXPECT_EQ(Delivered().at(0)["subject"], "[Internal] Accepted: Plans");
    EXPECT_THAT(Delivered().at(0)["body"].get<std::string>(), StartsWith("Internal"));
    EXPECT_EQ(ItemsIn("Tasks").at(0)["subject"], "Plans");
    EXPECT_EQ(ItemsIn("Tasks").at(0)["body"], "The plans for next week.");
    EXPECT_THAT(Log(), Contains("INFO Task item class IPM.TaskRequest.Accept is 0"));
}

TEST_F(TaskRequest, ReplacedAttachmentDoesNotLeaveWhateverTheRequestIs) {
    StartAgent(kReplace);
    Send({Task(), Request("IPM.TaskRequest.Update", "Plans"), Request("IPM.TaskRequest", "FW: Plans"),
          Request("IPM.TaskRequest.Decline", "Declined: Plans")},
         {});
    ASSERT_THAT(Delivered(), SizeIs(4));
    for (const Json& item : Delivered()) {
        ASSERT_THAT(item["attachments"], SizeIs(1)) << item["subject"];
        EXPECT_EQ(item["attachments"].at(0)["displayName"], "notice.txt") << item["subject"];
    }
}

TEST_F(TaskRequest, AttachmentsThatOutlookKeepsStopTheRequest) {
    StartAgent(kReplace);
    ExpectStopped(Send({Task()}, {L"--fail", L"Attachments.Add=0x80070005"}));
    EXPECT_THAT(Log(), Contains("ERROR Failed to override attachments - cannot send the email"));
}

TEST_F(TaskRequest, AgentThatDoesNotRunStopsTheRequestAndTellsTheUser) {
    const OutlookRun run = Send({Task()}, {});
    ExpectStopped(run);
    EXPECT_EQ(run.boxes, 1);
    ASSERT_TRUE(run.box);
    EXPECT_EQ(run.box->text, kUnsentText);
}

TEST_F(TaskRequest, AgentLostDuringTheInspectionLetsTheRequestPass) {
    StartAgent(Rule({{"block", true}}), {L"--misbehave", L"die:Inspect"});
    const OutlookRun run = Send({Task()}, {});
    ExpectSent(run);
    EXPECT_EQ(run.boxes, 0);
    EXPECT_THAT(Log(), Contains("ERROR Failed to call Inspect."));
}

TEST_F(TaskRequest, EmbeddedOutlookInspectsItWithoutAskingForTheSpot) {
    StartAgent(kLabel);
    ExpectSent(Send({Task()}, {L"-Embedding"}));
    EXPECT_EQ(Delivered().at(0)["subject"], "[Internal] Plans");
    EXPECT_THAT(Log(), Not(Contains("DEBUG Always inspecting task requests on spot")));
}

TEST_F(TaskRequest, RequestOfAnEarlierRunIsReplacedByWhatItsTaskSends) {
    LeaveARequestBehind();
    StartAgent(kLabel);
    Send({}, {});
    ASSERT_THAT(Delivered(), SizeIs(1));
    EXPECT_EQ(Delivered().at(0)["subject"], "[Internal] Plans");
    EXPECT_THAT(ItemsIn("Drafts"), IsEmpty());
    EXPECT_THAT(ItemsIn("Deleted Items"), SizeIs(1));
    EXPECT_THAT(ItemsIn("Tasks"), SizeIs(1));
    EXPECT_THAT(Ledger(), IsEmpty());
    EXPECT_THAT(Log(), Contains("DEBUG Delete the task request item."));
}

TEST_F(TaskRequest, RequestOfAnEarlierRunStaysWhereTheSendFails) {
    LeaveARequestBehind();
    StartAgent(kAllow);
    Send({}, {L"--fail", L"Transport.Submit=0x80040119"});
    EXPECT_THAT(Delivered(), IsEmpty());
    EXPECT_THAT(ItemsIn("Drafts"), SizeIs(1));
    EXPECT_THAT(ItemsIn("Deleted Items"), IsEmpty());
    EXPECT_THAT(Ledger(), IsEmpty());
    EXPECT_THAT(Log(), Contains(StartsWith("ERROR Caught(TaskHandler::Send) a com exception during Send: ")));
}

TEST_F(TaskRequest, RequestOfAnEarlierRunStaysWhereTheAgentBlocksItAnew) {
    LeaveARequestBehind();
    StartAgent(Rule({{"block", true}}));
    Send({}, {});
    EXPECT_THAT(Delivered(), IsEmpty());
    EXPECT_THAT(ItemsIn("Drafts"), SizeIs(1));
    EXPECT_THAT(Ledger(), IsEmpty());
    EXPECT_THAT(Log(), Contains("INFO Message should be blocked!").Times(2));
    EXPECT_THAT(Log(), Contains(StartsWith("ERROR Caught(TaskHandler::Send) a com exception during Send: ")));
}

TEST_F(TaskRequest, TwoHundredLeaveNothingBehind) {
    constexpr int kRequests = 200;
    StartAgent(kLabel);
    std::vector<std::filesystem::path> tasks;
    for (int i = 0; i < kRequests; ++i) {
        tasks.push_back(Task({{"subject", "Task " + std::to_string(i)}}));
    }
    const OutlookRun run = Send(tasks, {L"--figures"});
    EXPECT_EQ(run.boxes, 0);
    ASSERT_THAT(Delivered(), SizeIs(kRequests));
    for (const Json& request : Delivered()) {
        EXPECT_THAT(request["subject"].get<std::string>(), StartsWith("[Internal] Task "));
    }
    EXPECT_THAT(ItemsIn("Drafts"), IsEmpty());
    EXPECT_THAT(Ledger(), IsEmpty());
    const std::map<int, Figures> figures = FiguresOf(run.output);
    ASSERT_THAT(figures, SizeIs(2));
    const Figures& before = figures.at(1);
    const Figures& after = figures.at(kRequests);
    EXPECT_EQ(after.objects, before.objects);
    EXPECT_EQ(after.threads, before.threads);
    EXPECT_LT(after.handles, before.handles + kRequests / 10);
    EXPECT_LT(after.heapBlocks, before.heapBlocks + kRequests) << "a request leaves something behind";
}

} // namespace
} // namespace end_to_end
