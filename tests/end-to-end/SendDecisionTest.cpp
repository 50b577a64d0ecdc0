// What the add-in decides over a mail that leaves: each way out of the decision, seen from outside.
#include <gmock/gmock.h>

#include "tests/end-to-end/Desk.h"

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

Json Attachment(const std::string& name, const std::string& base64) {
    return {{"fileName", name}, {"content", base64}};
}

constexpr const wchar_t* kUnsentText = L"One message or more could not be sent.\nPlease check your Drafts folder";
constexpr const char* kPassed = "INFO Message can be sent";
constexpr const char* kBlocked = "INFO Message should be blocked!";
constexpr const char* kPassedUninspected = "ERROR InspectItemBeforeSending:exception occured ";

class SendDecision : public Desk {
protected:
    void ExpectSent(const OutlookRun& run) {
        EXPECT_EQ(run.status, 0u) << run.output;
        EXPECT_THAT(run.output, HasSubstr("sent")) << run.output;
        EXPECT_THAT(Delivered(), SizeIs(1));
        EXPECT_THAT(ItemsIn("Sent Items"), SizeIs(1));
        EXPECT_THAT(ItemsIn("Drafts"), IsEmpty());
    }

    void ExpectStopped(const OutlookRun& run) {
        EXPECT_THAT(run.output, HasSubstr("stopped")) << run.output;
        EXPECT_THAT(Delivered(), IsEmpty());
        EXPECT_THAT(ItemsIn("Sent Items"), IsEmpty());
        EXPECT_THAT(ItemsIn("Drafts"), SizeIs(1));
    }
};

TEST_F(SendDecision, AgentThatDoesNotRunStopsTheMailAndTellsTheUser) {
    const OutlookRun run = Send({Item()});
    ExpectStopped(run);
    ASSERT_TRUE(run.box);
    EXPECT_EQ(run.boxes, 1);
    EXPECT_EQ(run.box->caption, L"Microsoft Outlook");
    EXPECT_EQ(run.box->text, kUnsentText);
    EXPECT_THAT(Log(), Contains("ERROR Failed to call GetExecutionMode."));
}

TEST_F(SendDecision, AgentThatDoesNotRunTellsTheUserOncePerSend) {
    const OutlookRun run = Send({Item(), Item()});
    EXPECT_EQ(run.boxes, 2);
    EXPECT_THAT(Delivered(), IsEmpty());
    EXPECT_THAT(ItemsIn("Drafts"), SizeIs(2));
}

TEST_F(SendDecision, ExecutionModeZeroLetsTheMailPassUninspected) {
    StartAgent(
        {{"executionMode", {{"Email", 0}}}, {"rules", {{{"name", "never asked"}, {"then", {{"block", true}}}}}}});
    ExpectSent(Send({Item()}));
    EXPECT_THAT(Documents(), IsEmpty());
    EXPECT_THAT(Log(), Contains("INFO Plugin disabled. Canceling Inspecting outbox folder."));
    EXPECT_THAT(Log(), Not(Contains("DEBUG Trying to create an item wrapper...")));
}

TEST_F(SendDecision, NegativeExecutionModeMeansEnabled) {
    StartAgent({{"executionMode", {{"Email", -1}}}, {"rules", {{{"name", "all"}, {"then", {{"block", true}}}}}}});
    ExpectStopped(Send({Item()}));
}

TEST_F(SendDecision, PostItemPassesAsUnsupported) {
    StartAgent(Rule({{"block", true}}));
    const OutlookRun run = Send({Item({{"kind", "post"}})});
    EXPECT_EQ(run.status, 0u);
    EXPECT_THAT(Documents(), IsEmpty());
    EXPECT_THAT(Log(), Contains("INFO Unsupported item was passed -> allowing to send the item"));
}

TEST_F(SendDecision, BlockVerdictStopsTheMail) {
    StartAgent(Rule({{"block", true}}));
    const OutlookRun run = Send({Item()});
    ExpectStopped(run);
    EXPECT_EQ(run.boxes, 0);
    EXPECT_THAT(Log(), Contains("INFO Got decision: 2"));
    EXPECT_THAT(Log(), Contains(kBlocked));
}

TEST_F(SendDecision, AllowVerdictSendsTheMailAsItWas) {
    StartAgent(kAllow);
    ExpectSent(Send({Item({{"subject", "Plans"}, {"body", "Tuesday."}})}));
    const Json mail = Delivered().at(0);
    EXPECT_EQ(mail["subject"], "Plans");
    EXPECT_EQ(mail["body"], "Tuesday.");
    EXPECT_THAT(Log(), Contains(kPassed));
}

TEST_F(SendDecision, SubjectLabelAloneLeavesTheAttachmentsAlone) {
    StartAgent(Rule({{"subject", "[Internal] {subject}"}}));
    ExpectSent(Send({Item({{"attachments", {Attachment("a.txt", "YQ==")}}})}));
    const Json mail = Delivered().at(0);
    EXPECT_EQ(mail["subject"], "[Internal] Plans");
    EXPECT_EQ(mail["attachments"].at(0)["content"], "YQ==");
    EXPECT_THAT(Log(), Contains("INFO Replacing subject with: [Internal] Plans"));
    EXPECT_THAT(Log(), Not(Contains("INFO Replacing attachments - using Outlook OM")));
}

TEST_F(SendDecision, BodyLabelReplacesThePlainBody) {
    StartAgent(Rule({{"body", {{"before", "Internal"}}}}));
    ExpectSent(Send({Item({{"body", "Tuesday."}})}));
    const std::string body = Delivered().at(0)["body"];
    EXPECT_THAT(body, StartsWith("Internal"));
    EXPECT_THAT(body, HasSubstr("Tuesday."));
}

TEST_F(SendDecision, BodyLabelReplacesTheHtmlBody) {
    StartAgent(Rule({{"body", {{"before", "Internal"}}}}));
    ExpectSent(
        Send({Item({{"body", ""}, {"htmlBody", "<html><body><p>Tuesday.</p></body></html>"}, {"bodyFormat", 2}})}));
    const std::string body = Delivered().at(0)["htmlBody"];
    EXPECT_THAT(body, HasSubstr("Internal"));
    EXPECT_THAT(body, HasSubstr("<p>Tuesday.</p>"));
    EXPECT_LT(body.find("Internal"), body.find("Tuesday."));
}

TEST_F(SendDecision, ReplacedAttachmentTakesThePlaceOfTheOldOne) {
    StartAgent(
        Rule({{"replaceAttachments", {{"name", "salaries"}, {"text", "Removed."}, {"displayName", "notice.txt"}}}}));
    ExpectSent(Send(
        {Item({{"attachments", {Attachment("salaries.csv", "MSwyLDM="), Attachment("agenda.txt", "YWdlbmRh")}}})}));
    const Json mail = Delivered().at(0);
    std::vector<std::string> names;
    for (const Json& attachment : mail["attachments"]) {
        names.push_back(attachment["displayName"]);
        EXPECT_NE(attachment["content"], "MSwyLDM=");
    }
    EXPECT_THAT(names, testing::UnorderedElementsAre("notice.txt", "agenda.txt"));
}

TEST_F(SendDecision, OverrideThatOutlookRefusesStopsTheMail) {
    StartAgent(
        Rule({{"replaceAttachments", {{"name", "salaries"}, {"text", "Removed."}, {"displayName", "notice.txt"}}}}));
    const OutlookRun run = Send({Item({{"attachments", {Attachment("salaries.csv", "MSwyLDM=")}}})},
                                {L"-Embedding", L"--fail", L"Attachments.Add=0x80070005"});
    ExpectStopped(run);
    EXPECT_THAT(Log(), Contains("ERROR Failed to override attachments - cannot send the email"));
    EXPECT_THAT(Log(), Contains(StartsWith("ERROR Caught a com exception while replacing attachments: ")));
}

TEST_F(SendDecision, AgentLostDuringTheInspectionLetsTheMailPass) {
    StartAgent(Rule({{"block", true}}), {L"--misbehave", L"die:Inspect"});
    const OutlookRun run = Send({Item()});
    ExpectSent(run);
    EXPECT_EQ(run.boxes, 0);
    EXPECT_THAT(Log(), Contains("ERROR Failed to call Inspect."));
    EXPECT_THAT(Log(), Contains(kPassedUninspected));
}

TEST_F(SendDecision, ErrorAnswerToTheInspectionLetsTheMailPass) {
    StartAgent(Rule({{"block", true}}), {L"--misbehave", L"error:Inspect:no room"});
    ExpectSent(Send({Item()}));
    EXPECT_THAT(Log(), Contains("ERROR Failed to call Inspect: no room"));
    EXPECT_THAT(Log(), Contains(kPassedUninspected));
}

TEST_F(SendDecision, ErrorAnswerToTheFirstQuestionStopsTheMail) {
    StartAgent(kAllow, {L"--misbehave", L"error:GetExecutionMode:no room"});
    const OutlookRun run = Send({Item()});
    ExpectStopped(run);
    EXPECT_EQ(run.boxes, 1);
    EXPECT_THAT(Log(), Contains(HasSubstr("RemoteException: no room")));
}

TEST_F(SendDecision, DecisionThatCannotBeReadBlocks) {
    StartAgent(Rule({{"decision", "this is no XML"}}));
    ExpectStopped(Send({Item()}));
    EXPECT_THAT(Log(), Contains(StartsWith("ERROR Error parsing inspection message result: ")));
}

TEST_F(SendDecision, AgentThatAnswersByteByByteIsUnderstood) {
    StartAgent(Rule({{"subject", "[Internal] {subject}"}}), {L"--misbehave", L"byte-by-byte"});
    ExpectSent(Send({Item()}));
    EXPECT_EQ(Delivered().at(0)["subject"], "[Internal] Plans");
}

TEST_F(SendDecision, SwitchForTheSpotInspectsInsideTheEventOfAnInteractiveOutlook) {
    SetOnSpot(true);
    StartAgent(Rule({{"block", true}}));
    ExpectStopped(Send({Item()}, {}));
    EXPECT_THAT(Log(), Contains("INFO OnSpot override enabled."));
    EXPECT_THAT(Log(), Contains("DEBUG Active explorer window IsWindowEnabled == 1"));
}

TEST_F(SendDecision, SpotLabelsAndSendsAsTheEmbeddedRoadDoes) {
    SetOnSpot(true);
    StartAgent(Rule({{"subject", "[Internal] {subject}"}}));
    ExpectSent(Send({Item()}, {}));
    EXPECT_EQ(Delivered().at(0)["subject"], "[Internal] Plans");
}

TEST_F(SendDecision, SpotStopsAMailWhoseAttachmentsCannotBeReplaced) {
    SetOnSpot(true);
    StartAgent(
        Rule({{"replaceAttachments", {{"name", "salaries"}, {"text", "Removed."}, {"displayName", "notice.txt"}}}}));
    ExpectStopped(Send({Item({{"attachments", {Attachment("salaries.csv", "MSwyLDM=")}}})},
                       {L"--fail", L"Attachments.Remove=0x80070005"}));
}

TEST_F(SendDecision, VotingResponseIsInspectedOnTheSpot) {
    StartAgent(Rule({{"block", true}}));
    ExpectStopped(Send({Item({{"votingResponse", "Yes"}})}, {}));
}

TEST_F(SendDecision, AutoForwardedMailIsInspectedOnTheSpot) {
    StartAgent(Rule({{"block", true}}));
    ExpectStopped(Send({Item({{"autoForwarded", true}})}, {}));
}

TEST_F(SendDecision, InteractiveOutlookInspectsOtherMailBesideTheEvent) {
    StartAgent(Rule({{"block", true}}));
    ExpectStopped(Send({Item()}, {}));
    EXPECT_THAT(Documents(), SizeIs(1));
    EXPECT_THAT(Log(), Contains("INFO Non-embedded Outlook -> Sending for \"async\" inspection. Stopping the send "
                                "process until inspection ends."));
}

TEST_F(SendDecision, OutlookWithoutAnExplorerCountsAsEmbedded) {
    StartAgent(Rule({{"block", true}}));
    ExpectStopped(Send({Item()}, {L"--explorer", L"missing"}));
    EXPECT_THAT(Log(), Contains("DEBUG Couldn't find active explorer - assuming Outlook is embedded"));
}

TEST_F(SendDecision, OutlookWithADisabledExplorerCountsAsEmbedded) {
    StartAgent(Rule({{"block", true}}));
    ExpectStopped(Send({Item()}, {L"--explorer", L"disabled"}));
    EXPECT_THAT(Log(), Contains("DEBUG Active explorer window IsWindowEnabled == 0"));
}

TEST_F(SendDecision, EmbeddedStartNeverAsksForTheSpot) {
    SetOnSpot(true);
    StartAgent(Rule({{"block", true}}));
    ExpectStopped(Send({Item()}, {L"embedding"}));
    EXPECT_THAT(Log(), Contains("DEBUG Outlook process was loaded as embedded, embeddedProcess_ == true"));
    EXPECT_THAT(Log(), Not(Contains("DEBUG Checking for OnSpot override")));
}

TEST_F(SendDecision, SlashFormOfTheSwitchIsNotRecognised) {
    StartAgent(Rule({{"block", true}}));
    ExpectStopped(Send({Item()}, {L"/Embedding"}));
    EXPECT_THAT(Log(), Contains("INFO Started Async inspection."));
    EXPECT_THAT(Log(), Not(Contains("DEBUG Outlook process was loaded as embedded, embeddedProcess_ == true")));
}

TEST_F(SendDecision, MailIsNotSavedBeforeTheInspection) {
    StartAgent(kAllow);
    Send({Item()});
    EXPECT_THAT(Log(), Not(Contains("DEBUG Saving item...")));
}

TEST_F(SendDecision, ManyMailsInOneSessionEachGetTheirOwnVerdict) {
    StartAgent({{"rules",
                 {{{"name", "secret"}, {"match", {{"subject", "secret"}}}, {"then", {{"block", true}}}},
                  {{"name", "rest"}, {"then", {{"subject", "[Internal] {subject}"}}}}}}});
    std::vector<std::filesystem::path> items;
    for (int i = 0; i < 20; ++i) {
        items.push_back(Item({{"subject", (i % 2 ? "secret " : "plain ") + std::to_string(i)}}));
    }
    const OutlookRun run = Send(items);
    EXPECT_THAT(ItemsIn("Drafts"), SizeIs(10));
    EXPECT_THAT(Delivered(), SizeIs(10));
    for (const Json& mail : Delivered()) {
        EXPECT_THAT(mail["subject"].get<std::string>(), StartsWith("[Internal] plain "));
    }
}

} // namespace
} // namespace end_to_end
