// Meetings in whole processes, on both roads and both generations: what becomes of the request, of its appointment and
// of the ledger.
#include <gmock/gmock.h>

#include "stand-ins/agent/Agent.h"
#include "tests/end-to-end/Desk.h"

namespace end_to_end {
namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::SizeIs;
using testing::StartsWith;

const Json kAllow = Json::object();
const Json kBlock = {{"rules", {{{"name", "all"}, {"then", {{"block", true}}}}}}};
const Json kChange = {{"rules",
                       {{{"name", "all"},
                         {"then",
                          {{"subject", "[Internal] {subject}"},
                           {"body", {{"before", "Internal"}}},
                           {"replaceAttachments", {{"text", "Removed."}, {"displayName", "notice.txt"}}}}}}}}};
const Json kAttachment = {{{"fileName", "plan.txt"}, {"content", "YQ=="}}};

constexpr const char* kStarted = "INFO Started Async inspection.";
#ifdef _GLIBCXX_ASSERTIONS // its heap takes pages of their own for each block, and the system has so many
constexpr int kMeetings = 40;
#else
constexpr int kMeetings = 100; // each takes as long as two mails
#endif

class MeetingInspection : public Desk {
protected:
    /// An appointment whose writer sends the invitation.
    std::filesystem::path Invitation(Json fields = Json::object()) {
        fields["kind"] = "appointment";
        return Item(fields);
    }
    std::filesystem::path Forward(Json fields = Json::object()) {
        fields.update({{"kind", "meeting"}, {"subject", "FW: Plans"}});
        return Item(fields);
    }
    std::filesystem::path OfClass(const char* messageClass) {
        return Item({{"kind", "meeting"}, {"subject", "Accepted: Plans"}, {"messageClass", messageClass}});
    }
    /// It has left, it stands in the calendar, and nothing else of it is anywhere.
    void ExpectSent(std::size_t meetings = 1) {
        EXPECT_THAT(Delivered(), SizeIs(meetings));
        EXPECT_THAT(ItemsIn("Sent Items"), SizeIs(meetings));
        EXPECT_THAT(ItemsIn("Calendar"), SizeIs(meetings));
        EXPECT_THAT(ItemsIn("Drafts"), IsEmpty());
        EXPECT_THAT(ItemsIn("Deleted Items"), IsEmpty());
        EXPECT_THAT(Ledger(), IsEmpty());
    }
    void ExpectBesideTheEvent() const { EXPECT_THAT(Log(), Contains(kStarted)); }
    void ExpectInsideTheEvent() const { EXPECT_THAT(Log(), Not(Contains(kStarted))); }
    std::vector<std::string> Errors() const {
        std::vector<std::string> errors;
        for (const auto& line : Log()) {
            if (line.starts_with("ERROR ")) {
                errors.push_back(line);
            }
        }
        return errors;
    }
};

TEST_F(MeetingInspection, InvitationLeavesOnceTheAgentHasAnswered) {
    StartAgent(kAllow);
    const OutlookRun run = Send({Invitation()}, {});
    ExpectSent();
    ExpectBesideTheEvent();
    EXPECT_EQ(run.boxes, 0);
    EXPECT_THAT(run.output, HasSubstr("item-1.json \"Plans\": sent by the add-in"));
    EXPECT_THAT(Documents(), SizeIs(1));
    EXPECT_THAT(Documents().at(0), HasSubstr("anna@example.com")) << "the appointment's account";
    EXPECT_EQ(Delivered().at(0)["kind"], "meeting");
    EXPECT_THAT(Log(), Contains("INFO Meeting item class IPM.Schedule.Meeting.Request is 3"));
    EXPECT_THAT(Log(), Contains("INFO Item was already inspected by the plugin so we don't reinspect it"));
    EXPECT_THAT(Log(), Contains("DEBUG Deleting the meeting item."));
    EXPECT_THAT(Errors(), IsEmpty());
}

TEST_F(MeetingInspection, InvitationWaitsInDraftsAndInTheLedgerWhileTheAgentThinks) {
    std::size_t drafts = 0;
    std::size_t calendar = 0;
    std::size_t listed = 0;
    stand_ins::AgentOptions options;
    options.responder = [&](const stand_ins::Request& request) {
        if (request.method == L"Inspect") {
            drafts = ItemsIn("Drafts").size();
            calendar = ItemsIn("Calendar").size();
            listed = Ledger().size();
        }
        return std::optional<stand_ins::Answer>();
    };
    const stand_ins::Agent agent(options);
    Send({Invitation()}, {});
    EXPECT_EQ(drafts, 1u);
    EXPECT_EQ(calendar, 1u);
    EXPECT_EQ(listed, 1u);
    ExpectSent();
}

TEST_F(MeetingInspection, ForwardedMeetingLeavesItselfAndItsAppointmentIsUntouched) {
    StartAgent(kChange);
    Send({Forward({{"attachments", kAttachment}})}, {});
    ExpectSent();
    ExpectBesideTheEvent();
    const Json meeting = Delivered().at(0);
    EXPECT_EQ(meeting["subject"], "[Internal] FW: Plans");
    EXPECT_EQ(meeting["attachments"].at(0)["displayName"], "notice.txt");
    const Json appointment = ItemsIn("Calendar").at(0);
    EXPECT_EQ(appointment["subject"], "Plans");
    EXPECT_EQ(appointment["attachments"].at(0)["fileName"], "plan.txt");
    EXPECT_THAT(Log(), Contains("DEBUG This is a forwarded meeting - sending the item itself"));
}

TEST_F(MeetingInspection, ResponsesAndCancellationsLeaveInsideTheEvent) {
    StartAgent(kAllow);
    Send({OfClass("IPM.Schedule.Meeting.Resp.Pos"), OfClass("IPM.Schedule.Meeting.Resp.Neg"),
          OfClass("IPM.Schedule.Meeting.Resp.Tent"), OfClass("IPM.Schedule.Meeting.Canceled")},
         {});
    ExpectSent(4);
    ExpectInsideTheEvent();
    EXPECT_THAT(Documents(), SizeIs(4));
}

TEST_F(MeetingInspection, ResponseIsLabelledInsideTheEventOnItself) {
    StartAgent(kChange);
    Send({OfClass("IPM.Schedule.Meeting.Resp.Pos")}, {});
    ExpectSent();
    EXPECT_EQ(Delivered().at(0)["subject"], "[Internal] Accepted: Plans");
    EXPECT_EQ(ItemsIn("Calendar").at(0)["subject"], "Plans");
}

TEST_F(MeetingInspection, BlockedResponseStaysOnTheScreen) {
    StartAgent(kBlock);
    const OutlookRun run = Send({OfClass("IPM.Schedule.Meeting.Resp.Pos")}, {});
    EXPECT_THAT(run.output, HasSubstr("stopped by the add-in: saved in Drafts, its window is open"));
    EXPECT_THAT(Delivered(), IsEmpty());
    EXPECT_THAT(ItemsIn("Drafts"), SizeIs(1));
    EXPECT_THAT(Ledger(), IsEmpty());
}

TEST_F(MeetingInspection, SeriesLeavesInsideTheEvent) {
    StartAgent(kAllow);
    const OutlookRun run = Send({Invitation({{"recurrenceState", 1}})}, {});
    ExpectSent();
    ExpectInsideTheEvent();
    EXPECT_THAT(run.output, HasSubstr("item-1.json \"Plans\": sent\r\n"));
    EXPECT_THAT(Log(), Contains("INFO The related appointment is recurring - and should be handled \"OnSpot\". "
                                "Recurrence state: 1"));
}

TEST_F(MeetingInspection, BlockedSeriesKeepsItsAppointmentOnTheScreen) {
    StartAgent(kBlock);
    const OutlookRun run = Send({Invitation({{"recurrenceState", 1}})}, {});
    EXPECT_THAT(run.output, HasSubstr("stopped by the add-in: saved in Calendar, its window is open"));
    EXPECT_THAT(Delivered(), IsEmpty());
    EXPECT_THAT(ItemsIn("Calendar"), SizeIs(1));
    EXPECT_THAT(ItemsIn("Drafts"), IsEmpty());
}

TEST_F(MeetingInspection, EmbeddedAnInvitationLeavesInsideTheEventWithItsLabels) {
    StartAgent(kChange);
    Send({Invitation({{"attachments", kAttachment}})}, {L"-Embedding"});
    EXPECT_THAT(Delivered(), SizeIs(1));
    ExpectInsideTheEvent();
    EXPECT_EQ(ItemsIn("Calendar").at(0)["subject"], "[Internal] Plans") << "a request is labelled on its appointment";
}

TEST_F(MeetingInspection, BlockedInvitationComesBackAsItsAppointment) {
    StartAgent(kBlock);
    const OutlookRun run = Send({Invitation()}, {});
    EXPECT_THAT(run.output, HasSubstr("stopped by the add-in: brought back to the screen"));
    EXPECT_EQ(run.boxes, 0);
    EXPECT_THAT(Delivered(), IsEmpty());
    EXPECT_THAT(ItemsIn("Calendar"), SizeIs(1));
    EXPECT_THAT(ItemsIn("Drafts"), IsEmpty()) << "the next send makes the request anew";
    EXPECT_THAT(ItemsIn("Deleted Items"), IsEmpty());
    EXPECT_THAT(Ledger(), IsEmpty());
}

TEST_F(MeetingInspection, InvitationIsLabelledAndItsAttachmentsReplacedOnTheAppointment) {
    StartAgent(kChange);
    Send({Invitation({{"attachments", kAttachment}})}, {});
    ExpectSent();
    for (const Json& each : {Delivered().at(0), ItemsIn("Calendar").at(0)}) {
        EXPECT_EQ(each["subject"], "[Internal] Plans");
        EXPECT_THAT(each["body"].get<std::string>(), StartsWith("Internal"));
        ASSERT_THAT(each["attachments"], SizeIs(1));
        EXPECT_EQ(each["attachments"].at(0)["displayName"], "notice.txt");
    }
}

TEST_F(MeetingInspection, AppointmentThatItsOrganizerChangesMeanwhileComesBack) {
    stand_ins::AgentOptions agentOptions;
    agentOptions.responder = [&](const stand_ins::Request& request) {
        if (request.method == L"Inspect") {
            EXPECT_TRUE(Await([&] {
                const auto calendar = ItemsIn("Calendar");
                return !calendar.empty() && calendar[0]["body"].get<std::string>().ends_with("Friday.");
            }));
        }
        return std::optional<stand_ins::Answer>();
    };
    const stand_ins::Agent agent(agentOptions);
    Open({Invitation()}, {L"--meanwhile", L"edit:Plans"});
    const auto box = AwaitBox();
    ASSERT_TRUE(box);
    EXPECT_EQ(box->text, L"The mail item was modified during inspection and was not sent.");
    EXPECT_TRUE(Await([] { return Ledger().empty(); }));
    const OutlookRun run = Close();
    EXPECT_THAT(run.output, HasSubstr("brought back to the screen"));
    EXPECT_THAT(Delivered(), IsEmpty());
    EXPECT_THAT(Ledger(), IsEmpty());
}

TEST_F(MeetingInspection, AppointmentThatOutlookDoesNotSendLeavesTheRequestWhereItIs) {
    StartAgent(kAllow);
    Send({Invitation()}, {L"--wait", L"1", L"--fail", L"AppointmentItem.Send=0x80040119"});
    EXPECT_THAT(Delivered(), IsEmpty());
    EXPECT_THAT(ItemsIn("Drafts"), SizeIs(1));
    EXPECT_THAT(ItemsIn("Calendar"), SizeIs(1));
    EXPECT_THAT(Ledger(), IsEmpty());
    EXPECT_THAT(Errors(), ElementsAre("ERROR MeetingHandler::Send - failed to send the item.",
                                      StartsWith("ERROR MeetingHandler::Send: Caught a com exception during Send: ")));
}

TEST_F(MeetingInspection, InvitationOfALostAgentIsSentAtTheNextStart) {
    {
        stand_ins::AgentOptions options;
        options.responder = [](const stand_ins::Request& request) -> std::optional<stand_ins::Answer> {
            if (request.method == L"Inspect") {
                throw std::runtime_error("no answer today");
            }
            return std::nullopt;
        };
        const stand_ins::Agent agent(options);
        const OutlookRun run = Send({Invitation()}, {L"--wait", L"1"});
        EXPECT_EQ(run.boxes, 1);
        EXPECT_THAT(Delivered(), IsEmpty());
        EXPECT_THAT(ItemsIn("Drafts"), SizeIs(1));
        EXPECT_THAT(Ledger(), SizeIs(1));
    }
    StartAgent(kAllow);
    Send({}, {});
    ExpectSent();
}

TEST_F(MeetingInspection, ManyInvitationsAtOnceAllLeave) {
    StartAgent(kAllow);
    const std::vector<std::filesystem::path> invitations(kMeetings, Invitation());
    const OutlookRun run = Send(invitations, {});
    EXPECT_EQ(run.boxes, 0);
    EXPECT_THAT(Delivered(), SizeIs(kMeetings));
    EXPECT_THAT(ItemsIn("Calendar"), SizeIs(kMeetings));
    EXPECT_THAT(ItemsIn("Drafts"), IsEmpty());
    EXPECT_THAT(ItemsIn("Deleted Items"), IsEmpty());
    EXPECT_THAT(Ledger(), IsEmpty());
    EXPECT_THAT(Documents(), SizeIs(kMeetings));
}

/// Outlook 2003 with Redemption.
class OldMeetingInspection : public MeetingInspection {
protected:
    OldMeetingInspection() { Register(REDEMPTION_MODULE); }
    ~OldMeetingInspection() override { Unregister(REDEMPTION_MODULE); }

    static std::vector<std::wstring> Old(std::vector<std::wstring> options = {}) {
        options.insert(options.begin(), {L"--version", L"11.0.8169.0"});
        return options;
    }
};

TEST_F(OldMeetingInspection, InvitationIsSentByRedemptionPastTheEvent) {
    StartAgent(kChange);
    Send({Invitation({{"attachments", kAttachment}})}, Old());
    ASSERT_THAT(Delivered(), SizeIs(1));
    ExpectBesideTheEvent();
    EXPECT_EQ(Delivered().at(0)["subject"], "[Internal] Plans");
    EXPECT_EQ(Delivered().at(0)["attachments"].at(0)["displayName"], "notice.txt");
    EXPECT_THAT(Ledger(), IsEmpty());
    EXPECT_THAT(ItemsIn("Drafts"), SizeIs(1)) << "only the object model's road deletes the request";
    EXPECT_THAT(Log(), Contains("DEBUG Successfully sent item using RDO object module!"));
    EXPECT_THAT(Log(), Not(Contains("INFO Item was already inspected by the plugin so we don't reinspect it")));
}

TEST_F(OldMeetingInspection, ForwardedMeetingLeavesInsideTheEvent) {
    StartAgent(kAllow);
    Send({Forward()}, Old());
    ExpectSent();
    ExpectInsideTheEvent();
}

TEST_F(OldMeetingInspection, BlockedInvitationComesBackAsItsAppointment) {
    StartAgent(kBlock);
    const OutlookRun run = Send({Invitation()}, Old());
    EXPECT_THAT(run.output, HasSubstr("stopped by the add-in: brought back to the screen"));
    EXPECT_THAT(Delivered(), IsEmpty());
    EXPECT_THAT(ItemsIn("Drafts"), IsEmpty());
    EXPECT_THAT(Ledger(), IsEmpty());
}

TEST_F(OldMeetingInspection, WithoutRedemptionAnInvitationLeavesInsideTheEvent) {
    Unregister(REDEMPTION_MODULE);
    StartAgent(kAllow);
    Send({Invitation()}, Old());
    EXPECT_THAT(Delivered(), SizeIs(1));
    ExpectInsideTheEvent();
    EXPECT_THAT(Errors(), Contains("ERROR Failed to get Associated Appointment! Handle on spot."));
    Register(REDEMPTION_MODULE);
}

} // namespace
} // namespace end_to_end
