#include "tests/outlook/MeetingTest.h"

namespace vorlek {
namespace {

using outlook_tests::ErrorText;
using outlook_tests::Forward;
using outlook_tests::kAccessDenied;
using outlook_tests::kResponse;
using outlook_tests::Meeting;
using outlook_tests::MeetingTest;
using outlook_tests::OfClass;
using outlook_tests::Request;
using outlook_tests::ThrowNumber;
using outlook_tests::ThrowStandard;
using stand_ins::GetText;
using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::IsSupersetOf;
using testing::SizeIs;

const std::string kNewBody("\xFF\xFEN\0e\0w\0", 8);

/// A meeting that is not on the spot, whatever it is.
class Postponed : public Meeting {
public:
    using Meeting::Meeting;
    bool HandleOnSpot() override { return false; }
};

class MeetingHandlerLabelsTest : public MeetingTest {
protected:
    HRESULT ErrorOf(const std::function<void()>& body) {
        try {
            body();
            return S_OK;
        } catch (const _com_error& failure) {
            return failure.Error();
        }
    }
    std::unique_ptr<Postponed> PostponedOf(const stand_ins::ItemData& meeting) {
        InstallRedemption();
        Start(meeting);
        auto postponed = std::make_unique<Postponed>(Outlook::_MeetingItemPtr(item.GetInterfacePtr()));
        BecomeOld();
        ClearTraces();
        return postponed;
    }
    /// The names of an item's attachments.
    static std::vector<std::wstring> Attachments(const stand_ins::DispatchPtr& of) {
        const auto all = stand_ins::GetObject(of, L"Attachments");
        std::vector<std::wstring> names;
        for (long index = 1; index <= stand_ins::GetNumber(all, L"Count"); ++index) {
            names.push_back(GetText(stand_ins::GetObject(all, L"Item", {index}), L"DisplayName"));
        }
        return names;
    }
    InspectionDecision::Attachments TwoFiles() {
        return {{File(L"a.bin", "A"), L"a.txt"}, {File(L"b.bin", "B"), L"b.txt"}};
    }
};

TEST_F(MeetingHandlerLabelsTest, TheSubjectOfARequestIsThatOfItsAppointment) {
    Start(Request());
    handler->LabelSubject(L"[Secret] Review");
    EXPECT_EQ(GetText(appointment, L"Subject"), L"[Secret] Review");
    EXPECT_EQ(GetText(item, L"Subject"), L"Review");
}

TEST_F(MeetingHandlerLabelsTest, WhereTheAppointmentIsNotFoundTheSubjectGoesThroughRedemptionAndIsSaved) {
    InstallRedemption();
    Start(Request());
    outlook->Failures().Answer(L"MeetingItem.GetAssociatedAppointment", stand_ins::NoObject());
    handler->LabelSubject(L"[Secret] Review");
    EXPECT_EQ(Errors().back(), L"Error getting related appointment. Attempting with RDO.");
    EXPECT_EQ(outlook->ItemsIn(L"Calendar").at(0).subject, L"[Secret] Review") << "on disk";
    EXPECT_TRUE(outlook->Calls().Before(L"RDOAppointmentItem.Subject put", L"RDOAppointmentItem.Save"));
}

TEST_F(MeetingHandlerLabelsTest, WhereRedemptionFindsNothingEitherTheSubjectRaises) {
    StartWithoutAppointment();
    EXPECT_EQ(ErrorOf([&] { handler->LabelSubject(L"x"); }), E_POINTER);
    EXPECT_THAT(Errors(), Contains(L"Error getting related appointment. Attempting with RDO."));
    BecomeOld();
    EXPECT_EQ(ErrorOf([&] { handler->LabelSubject(L"x"); }), E_POINTER);
}

TEST_F(MeetingHandlerLabelsTest, BeforeOutlook2007TheSubjectOfARequestGoesThroughRedemptionAlone) {
    InstallRedemption();
    Start(Request());
    BecomeOld();
    handler->LabelSubject(L"[Secret] Review");
    EXPECT_EQ(outlook->ItemsIn(L"Calendar").at(0).subject, L"[Secret] Review");
    EXPECT_EQ(outlook->Calls().Count(L"MeetingItem.GetAssociatedAppointment"), 0u);
    EXPECT_EQ(outlook->Calls().Count(L"AppointmentItem.Subject put"), 0u);
}

TEST_F(MeetingHandlerLabelsTest, TheSubjectOfAForwardIsItsOwn) {
    Start(Forward());
    handler->LabelSubject(L"[Secret] FW: Review");
    EXPECT_EQ(GetText(item, L"Subject"), L"[Secret] FW: Review");
    EXPECT_EQ(GetText(appointment, L"Subject"), L"Review");
}

TEST_F(MeetingHandlerLabelsTest, AResponseOnTheSpotTakesTheObjectModelsRoadInEveryVersion) {
    Start(OfClass(kResponse));
    BecomeOld();
    handler->LabelSubject(L"[Secret]");
    handler->LabelBody(File(L"body.txt", kNewBody));
    EXPECT_TRUE(handler->OverrideItemAttachments(TwoFiles()));
    EXPECT_EQ(GetText(item, L"Subject"), L"[Secret]");
    EXPECT_EQ(GetText(item, L"Body"), L"New");
    EXPECT_THAT(Attachments(item), ElementsAre(L"a.txt", L"b.txt"));
    EXPECT_EQ(GetText(appointment, L"Subject"), L"Review");
    EXPECT_THAT(Errors(), IsEmpty());
}

TEST_F(MeetingHandlerLabelsTest, BeforeOutlook2007WhatIsNotOnTheSpotIsChangedThroughRedemption) {
    const auto postponed = PostponedOf(Forward());
    postponed->LabelSubject(L"[Secret]");
    postponed->LabelBody(File(L"body.txt", kNewBody));
    EXPECT_TRUE(postponed->OverrideItemAttachments(TwoFiles()));
    EXPECT_THAT(Debug(), IsSupersetOf({L"Using Redemption to set new body.",
                                       L"Legacy Outlook version - handling attachments with RDO."}));
    const auto saved = outlook->ItemsIn(L"Drafts").at(0);
    EXPECT_EQ(saved.subject, L"[Secret]");
    EXPECT_EQ(saved.body, L"New");
    EXPECT_THAT(saved.attachments, SizeIs(2));
    EXPECT_EQ(outlook->Calls().Count(L"MeetingItem.Subject put"), 0u);
    EXPECT_EQ(outlook->Calls().Count(L"MeetingItem.Body put"), 0u);
    EXPECT_EQ(outlook->Calls().Count(L"RDOMeetingItem.Save"), 3u);
}

TEST_F(MeetingHandlerLabelsTest, WithoutRedemptionItRaisesThereAndTheAttachmentsAreNotReplaced) {
    Start(Forward());
    Postponed postponed(Outlook::_MeetingItemPtr(item.GetInterfacePtr()));
    BecomeOld();
    EXPECT_EQ(ErrorOf([&] { postponed.LabelSubject(L"x"); }), E_POINTER);
    EXPECT_EQ(ErrorOf([&] { postponed.LabelBody(File(L"body.txt", kNewBody)); }), E_POINTER);
    EXPECT_FALSE(postponed.OverrideItemAttachments(TwoFiles()));
    EXPECT_EQ(Errors().back(), L"Caught a com exception while replacing attachments: " + ErrorText(E_POINTER));
}

TEST_F(MeetingHandlerLabelsTest, AHandlerWithoutAnItemChangesNothing) {
    Meeting on(Outlook::_MeetingItemPtr{});
    const std::wstring body = File(L"body.txt", kNewBody);
    log.Clear();
    on.LabelSubject(L"x");
    EXPECT_EQ(Errors().back(), L"item_ is NULL.  doing nothing");
    on.LabelBody(body);
    EXPECT_EQ(Errors().back(), L"item_ is NULL, doing nothing");
    EXPECT_FALSE(on.OverrideItemAttachments({}));
    EXPECT_EQ(Infos().back(), L" item_ == NULL doing nothing");
    EXPECT_EQ(Errors().back(), L"Failed to get Associated Appointment! Handle on spot."); // and no failure of its own
}

TEST_F(MeetingHandlerLabelsTest, TheBodyOfARequestIsThatOfItsAppointment) {
    Start(Request());
    handler->LabelBody(File(L"body.txt", kNewBody));
    EXPECT_EQ(GetText(appointment, L"Body"), L"New");
    EXPECT_EQ(GetText(item, L"Body"), L"Room 4.");
    EXPECT_THAT(Debug(), IsSupersetOf({L"Item is a meeting request", L"Outlook2007+ - using related appointment"}));
}

TEST_F(MeetingHandlerLabelsTest, ABodyOfHtmlIsPlacedAsText) {
    auto meeting = Request();
    meeting.htmlBody = L"<p>Room 4.</p>";
    Start(meeting);
    const std::wstring html = L"<b>New</b>";
    handler->LabelBody(File(L"body.html", std::string(reinterpret_cast<const char*>(html.data()), 2 * html.size())));
    EXPECT_EQ(GetText(appointment, L"Body"), html);
}

TEST_F(MeetingHandlerLabelsTest, WithoutAnAppointmentTheBodyRaisesAndNeverTriesRedemption) {
    InstallRedemption();
    Start(Request());
    outlook->Failures().Answer(L"MeetingItem.GetAssociatedAppointment", stand_ins::NoObject());
    EXPECT_EQ(ErrorOf([&] { handler->LabelBody(File(L"body.txt", kNewBody)); }), E_POINTER);
    EXPECT_EQ(outlook->Calls().Count(L"RDOSession.CreateInstance"), 0u);
}

TEST_F(MeetingHandlerLabelsTest, BeforeOutlook2007TheBodyOfARequestGoesThroughRedemptionAndIsSaved) {
    InstallRedemption();
    Start(Request());
    BecomeOld();
    handler->LabelBody(File(L"body.txt", kNewBody));
    EXPECT_EQ(outlook->ItemsIn(L"Calendar").at(0).body, L"New");
    EXPECT_THAT(Debug(),
                IsSupersetOf({L"Item is a meeting request", L"Outlook2003 - using Redemption related appointment"}));
    EXPECT_TRUE(outlook->Calls().Before(L"RDOAppointmentItem.Body put", L"RDOAppointmentItem.Save"));
}

TEST_F(MeetingHandlerLabelsTest, TheBodyOfAnyOtherIsItsOwn) {
    Start(OfClass(kResponse));
    handler->LabelBody(File(L"body.txt", kNewBody));
    EXPECT_EQ(GetText(item, L"Body"), L"New");
    EXPECT_EQ(GetText(appointment, L"Body"), L"Room 4.");
    EXPECT_THAT(Debug(), Contains(L"Item is a meeting response or cancellation"));
}

TEST_F(MeetingHandlerLabelsTest, ABodyThatCannotBeReadPasses) {
    Start(Request());
    EXPECT_THROW(handler->LabelBody((folder / L"missing.txt").wstring()), Exception);
    EXPECT_EQ(GetText(appointment, L"Body"), L"Room 4.");
}

TEST_F(MeetingHandlerLabelsTest, TheAttachmentsOfARequestAreReplacedOnItsAppointment) {
    Start(Request());
    EXPECT_TRUE(handler->OverrideItemAttachments(TwoFiles()));
    EXPECT_THAT(Attachments(appointment), ElementsAre(L"a.txt", L"b.txt"));
    EXPECT_THAT(Attachments(item), ElementsAre(L"plan.txt"));
    EXPECT_EQ(Infos().front(),
              L"The meeting request is a request type - attachments will be changed in the appointment.");
    EXPECT_THAT(Infos(), Contains(L"Successfully set new attachments.").Times(2)) << "the template's, and its own";
    EXPECT_THAT(Debug(), Contains(L"Newer outlook version - trying to handle attachments with OOM."));
}

TEST_F(MeetingHandlerLabelsTest, AnEmptyListRemovesAllAttachmentsOfTheAppointment) {
    Start(Request());
    EXPECT_TRUE(handler->OverrideItemAttachments({}));
    EXPECT_THAT(Attachments(appointment), IsEmpty());
}

TEST_F(MeetingHandlerLabelsTest, AppointmentsAttachmentsThatAreNoCollectionAreNotReplaced) {
    Start(Request());
    outlook->Failures().Answer(L"AppointmentItem.Attachments", stand_ins::NoObject());
    EXPECT_FALSE(handler->OverrideItemAttachments(TwoFiles()));
    EXPECT_THAT(Errors(), ElementsAre(L"Could not get pointer to current attachments"));
    EXPECT_THAT(Infos(), testing::Not(Contains(L"Successfully set new attachments.")));
}

TEST_F(MeetingHandlerLabelsTest, TheAttachmentsOfAForwardAreReplacedOnTheItem) {
    Start(Forward());
    EXPECT_TRUE(handler->OverrideItemAttachments(TwoFiles()));
    EXPECT_THAT(Attachments(item), ElementsAre(L"a.txt", L"b.txt"));
    EXPECT_THAT(Attachments(appointment), ElementsAre(L"plan.txt"));
    EXPECT_THAT(Infos(), Contains(L"Either on-spot or non-request. Replacing attachments."));
}

TEST_F(MeetingHandlerLabelsTest, WhereTheAppointmentIsNotFoundRedemptionReplacesTheAttachments) {
    InstallRedemption();
    Start(Request());
    outlook->Failures().Answer(L"MeetingItem.GetAssociatedAppointment", stand_ins::NoObject());
    EXPECT_TRUE(handler->OverrideItemAttachments(TwoFiles()));
    EXPECT_EQ(Errors().back(), L"Error getting related appointment. Attempting with RDO.");
    EXPECT_THAT(outlook->ItemsIn(L"Calendar").at(0).attachments, SizeIs(2));
}

TEST_F(MeetingHandlerLabelsTest, WhereRedemptionFindsNothingEitherTheAttachmentsAreNotReplaced) {
    StartWithoutAppointment();
    EXPECT_FALSE(handler->OverrideItemAttachments(TwoFiles()));
    EXPECT_EQ(Errors().back(), L"Failed to get Associated Appointment!");
    EXPECT_THAT(Attachments(item), ElementsAre(L"plan.txt"));
}

TEST_F(MeetingHandlerLabelsTest, BeforeOutlook2007TheAttachmentsOfARequestAreReplacedThroughRedemption) {
    InstallRedemption();
    Start(Request());
    BecomeOld();
    EXPECT_TRUE(handler->OverrideItemAttachments(TwoFiles()));
    EXPECT_THAT(outlook->ItemsIn(L"Calendar").at(0).attachments, SizeIs(2));
    EXPECT_THAT(Debug(), Contains(L"Legacy Outlook version - handling attachments with RDO."));
    EXPECT_EQ(outlook->Calls().Count(L"AppointmentItem.Attachments"), 0u);
}

TEST_F(MeetingHandlerLabelsTest, EveryFailureOfReplacingAttachmentsIsReportedAndFalse) {
    Start(Forward());
    outlook->Failures().Fail(L"MeetingItem.Attachments", kAccessDenied, 1);
    EXPECT_FALSE(handler->OverrideItemAttachments({}));
    outlook->Failures().On(L"MeetingItem.Attachments", ThrowStandard("lost"), 1);
    EXPECT_FALSE(handler->OverrideItemAttachments({}));
    outlook->Failures().On(L"MeetingItem.Attachments", ThrowNumber(), 1);
    EXPECT_FALSE(handler->OverrideItemAttachments({}));
    EXPECT_THAT(Errors(),
                ElementsAre(L"Caught a com exception while replacing attachments: " + ErrorText(kAccessDenied),
                            L"Caught an exception while replacing attachments: lost",
                            L"Caught an exception while replacing attachments - Unknown error."));
}

} // namespace
} // namespace vorlek
