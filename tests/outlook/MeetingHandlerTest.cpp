#include "agent/apps/outlook/MeetingHandler.h"

#include "agent/apps/outlook/CommonUtils.h"
#include "foundation/RegistryKey.h"
#include "tests/outlook/MeetingTest.h"

namespace vorlek {
namespace {

using outlook_tests::ErrorText;
using outlook_tests::Forward;
using outlook_tests::kAccessDenied;
using outlook_tests::kCancellation;
using outlook_tests::kResponse;
using outlook_tests::Meeting;
using outlook_tests::MeetingTest;
using outlook_tests::OfClass;
using outlook_tests::Recurring;
using outlook_tests::Request;
using outlook_tests::ThrowException;
using outlook_tests::ThrowNumber;
using outlook_tests::ThrowStandard;
using outlook_tests::Unlinked;
using stand_ins::GetText;
using stand_ins::ItemData;
using stand_ins::ItemKind;
using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::IsSupersetOf;
using testing::Not;
using testing::StartsWith;

constexpr wchar_t kRecurring[] =
    L"The related appointment is recurring - and should be handled \"OnSpot\". Recurrence state: ";
constexpr wchar_t kNoAppointment[] = L"Failed to get Associated Appointment! Handle on spot.";

class MeetingHandlerTest : public MeetingTest {
protected:
    /// The line that tells what a new meeting item was taken for.
    std::wstring ClassLineOf(const ItemData& meeting) {
        const auto made = outlook->NewItem(meeting);
        ClearTraces();
        const Meeting on(Outlook::_MeetingItemPtr(made.GetInterfacePtr()));
        return Infos().empty() ? L"" : Infos().back();
    }
};

TEST_F(MeetingHandlerTest, LinesBearTheNameOfTheClass) {
    Start(Request());
    handler->GetLastModificationTime();
    EXPECT_TRUE(log.Lines().front().logger.ends_with(L"vorlek.MeetingHandler"));
}

TEST_F(MeetingHandlerTest, TheTypeFollowsFromTheMessageClassAndTheSubject) {
    const auto expectType = [&](const ItemData& meeting, const wchar_t* messageClass, int type) {
        EXPECT_EQ(ClassLineOf(meeting),
                  std::wstring(L"Meeting item class ") + messageClass + L" is " + std::to_wstring(type));
    };
    expectType(OfClass(L"IPM.Schedule.Meeting.Canceled"), L"IPM.Schedule.Meeting.Canceled", 0);
    expectType(OfClass(L"IPM.Schedule.Meeting.Canceled.Own"), L"IPM.Schedule.Meeting.Canceled.Own", 0);
    expectType(OfClass(L"IPM.Schedule.Meeting.Resp.Pos"), L"IPM.Schedule.Meeting.Resp.Pos", 1);
    expectType(OfClass(L"IPM.Schedule.Meeting.Resp.Neg"), L"IPM.Schedule.Meeting.Resp.Neg", 1);
    expectType(OfClass(L"IPM.Schedule.Meeting.Resp.Tent"), L"IPM.Schedule.Meeting.Resp.Tent", 1);
    expectType(Forward(), L"IPM.Schedule.Meeting.Request", 2);
    expectType(Request(), L"IPM.Schedule.Meeting.Request", 3);
}

TEST_F(MeetingHandlerTest, EveryOtherClassIsARequest) {
    for (const wchar_t* other : {L"IPM.Schedule.Meeting.Resp", L"IPM.Schedule.Meeting.Notification.Forward",
                                 L"ipm.schedule.meeting.canceled", L"IPM.Schedule"}) {
        ItemData meeting = OfClass(other);
        meeting.subject = L"FW: Review";
        EXPECT_EQ(ClassLineOf(meeting), std::wstring(L"Meeting item class ") + other + L" is 3");
    }
}

TEST_F(MeetingHandlerTest, ARequestWithoutAnAppointmentIsARequestWhateverItsSubject) {
    StartWithoutAppointment(Forward());
    const Meeting on(Outlook::_MeetingItemPtr(item.GetInterfacePtr()));
    EXPECT_EQ(Infos().back(), L"Meeting item class IPM.Schedule.Meeting.Request is 3");
    EXPECT_TRUE(handler->HandleOnSpot());
}

TEST_F(MeetingHandlerTest, TheTypeStaysWhenTheAppointmentTurnsUpLater) {
    Start(Unlinked(Forward()));
    CommonUtils::AddToInspectedItems(ItemId(), AppointmentId(), nullptr);
    handler->LabelSubject(L"[Secret]");
    EXPECT_EQ(GetText(appointment, L"Subject"), L"[Secret]") << "a request is labelled on its appointment";
}

TEST_F(MeetingHandlerTest, ANullItemIsReportedAndHasNoType) {
    const Meeting on(Outlook::_MeetingItemPtr{});
    EXPECT_THAT(Errors(), ElementsAre(L"Null item was passed to the MeetingHandler CTOR"));
    EXPECT_THAT(Infos(), IsEmpty());
}

TEST_F(MeetingHandlerTest, OnlyAMeetingItemIsOne) {
    Start(Request());
    EXPECT_TRUE(MeetingHandler::QueryType(item.GetInterfacePtr()));
    EXPECT_FALSE(MeetingHandler::QueryType(appointment.GetInterfacePtr()));
    EXPECT_FALSE(MeetingHandler::QueryType(outlook->NewMail({}).GetInterfacePtr()));
    EXPECT_FALSE(MeetingHandler::QueryType({}));
}

TEST_F(MeetingHandlerTest, TheOverrideComesBeforeAnyOtherTest) {
    Start(Request());
    const std::vector<BYTE> on{1, 0, 0, 0, 0, 0, 0, 0};
    RegistryKey::GetCurrentUser()
        .CreateSubKey(outlook_tests::kInputKey, true)
        ->SetValue(L"onspotenabled", on, REG_QWORD);
    EXPECT_TRUE(handler->HandleOnSpot());
    EXPECT_THAT(outlook->Calls().Members(), IsEmpty());
    EXPECT_EQ(Debug().front(), L"Checking if the MeetingItem should be handled \"OnSpot\"");
    EXPECT_THAT(Infos(), ElementsAre(L"OnSpot override enabled."));
}

TEST_F(MeetingHandlerTest, ResponsesAndCancellationsAreOnTheSpotInEveryVersion) {
    for (const wchar_t* messageClass : {kResponse, kCancellation}) {
        Start(OfClass(messageClass));
        for (const wchar_t* version : {L"11.0", L"16.0"}) {
            SetVersion(version);
            ClearTraces();
            EXPECT_TRUE(handler->HandleOnSpot());
            EXPECT_THAT(Debug(), Contains(L"The MeetingItem is a response or cancellation which should be handled "
                                          L"\"OnSpot\""));
            EXPECT_THAT(outlook->Calls().Members(), IsEmpty());
        }
    }
}

TEST_F(MeetingHandlerTest, ASingleAppointmentIsNotOnTheSpotWhateverTheType) {
    for (const ItemData& meeting : {Request(), Forward()}) {
        Start(meeting);
        EXPECT_FALSE(handler->HandleOnSpot());
        EXPECT_THAT(Debug(),
                    IsSupersetOf({L"Checking if the related appointment is recurring - which should be handled "
                                  L"\"OnSpot\"",
                                  L"The related appointment is not recurring - and shouldn't be handled \"OnSpot\""}));
    }
}

TEST_F(MeetingHandlerTest, ARecurringAppointmentIsOnTheSpot) {
    for (const long state : {1L, 2L, 3L}) {
        Start(Recurring(Request(), state));
        EXPECT_TRUE(handler->HandleOnSpot());
        EXPECT_THAT(Infos(), ElementsAre(kRecurring + std::to_wstring(state)));
    }
}

TEST_F(MeetingHandlerTest, ARequestWhoseAppointmentIsNotFoundIsOnTheSpot) {
    StartWithoutAppointment();
    EXPECT_TRUE(handler->HandleOnSpot());
    EXPECT_THAT(Errors(), Contains(kNoAppointment));
}

TEST_F(MeetingHandlerTest, BeforeOutlook2007AForwardedMeetingIsOnTheSpotAndARequestIsNot) {
    InstallRedemption();
    Start(Request());
    BecomeOld();
    EXPECT_FALSE(handler->HandleOnSpot());
    SetVersion(L"16.0");
    Start(Forward());
    BecomeOld();
    EXPECT_TRUE(handler->HandleOnSpot());
    EXPECT_EQ(outlook->Calls().Count(L"AppointmentItem.IsRecurring"), 0u);
}

TEST_F(MeetingHandlerTest, BeforeOutlook2007ARecurringAppointmentIsOnTheSpot) {
    InstallRedemption();
    Start(Recurring(Request(), 2));
    BecomeOld();
    EXPECT_TRUE(handler->HandleOnSpot());
    EXPECT_THAT(Infos(), ElementsAre(std::wstring(kRecurring) + L"2"));
    EXPECT_EQ(outlook->Calls().Count(L"RDOAppointmentItem.RecurrenceState"), 1u);
}

TEST_F(MeetingHandlerTest, AFailureOfTheRecurrencePasses) {
    Start(Request());
    outlook->Failures().Fail(L"AppointmentItem.IsRecurring", kAccessDenied);
    EXPECT_THROW(handler->HandleOnSpot(), _com_error);
}

TEST_F(MeetingHandlerTest, TheSentCopyIsKnownByItsAppointment) {
    Start(Request());
    EXPECT_EQ(handler->GetSentItemUniqueID(), AppointmentId());
}

TEST_F(MeetingHandlerTest, WithoutAnAppointmentTheSentCopyIsKnownByTheItem) {
    StartWithoutAppointment();
    EXPECT_EQ(handler->GetSentItemUniqueID(), ItemId());
    EXPECT_EQ(Warnings().back(), L"Failed to get related appointment - returning MeetingItem id");
}

TEST_F(MeetingHandlerTest, EveryFailureOfTheSentCopysIdGivesNone) {
    Start(Request());
    outlook->Failures().Fail(L"AppointmentItem.EntryID", kAccessDenied, 1);
    EXPECT_EQ(handler->GetSentItemUniqueID(), L"");
    outlook->Failures().On(L"AppointmentItem.EntryID", ThrowStandard("lost"), 1);
    EXPECT_EQ(handler->GetSentItemUniqueID(), L"");
    outlook->Failures().On(L"AppointmentItem.EntryID", ThrowException(), 1);
    EXPECT_EQ(handler->GetSentItemUniqueID(), L"");
    EXPECT_THAT(Errors(),
                ElementsAre(L"Caught a com exception - returning empty ID: " + ErrorText(kAccessDenied),
                            L"Caught an exception - returning empty ID: lost", L"Unknown error - returning empty ID"));
}

TEST_F(MeetingHandlerTest, SavingAMeetingSavesAnAppointmentThatHasNoIdYet) {
    Start(Request());
    appointment = outlook->NewItem({.kind = ItemKind::Appointment, .subject = L"Review"});
    outlook->Failures().Answer(L"MeetingItem.GetAssociatedAppointment",
                               _variant_t(appointment.GetInterfacePtr())); // not saved before its first send
    handler->Save();
    EXPECT_NE(AppointmentId(), L"");
    EXPECT_THAT(Debug(), ElementsAre(L"Save called for meeting - Save the meeting item", L"Saving item...",
                                     L"Item was saved successfully", L"Checking if we need to save the appointment",
                                     L"Retrieving the MeetingItem's appointment",
                                     L"Related appointment was retrieved from the item",
                                     L"Saving related appointment - as it has no ID"));
}

TEST_F(MeetingHandlerTest, AnAppointmentWithAnIdIsNotSavedAgain) {
    Start(Request());
    handler->Save();
    EXPECT_EQ(Debug().back(), L"No need to save the related appointment, it already has ID " + AppointmentId());
    EXPECT_EQ(outlook->Calls().Count(L"MeetingItem.Save"), 1u);
    EXPECT_EQ(outlook->Calls().Count(L"AppointmentItem.Save"), 0u);
}

TEST_F(MeetingHandlerTest, AMeetingThatIsNotSavedDoesNotKeepItsAppointmentFromIt) {
    Start(Request());
    outlook->Failures().Fail(L"MeetingItem.Save", kAccessDenied);
    handler->Save();
    EXPECT_THAT(Warnings(), ElementsAre(L"COM exception: " + ErrorText(kAccessDenied) + L" item wasn't saved"));
    EXPECT_THAT(Debug(), Contains(L"Checking if we need to save the appointment"));
}

TEST_F(MeetingHandlerTest, AnAppointmentThatCannotBeSavedIsAWarning) {
    Start(Request());
    outlook->Failures().Answer(L"AppointmentItem.EntryID", _variant_t(L""));
    outlook->Failures().Fail(L"AppointmentItem.Save", kAccessDenied);
    handler->Save();
    EXPECT_THAT(Warnings(), ElementsAre(L"MeetingHandler::Save:COM exception: " + ErrorText(kAccessDenied) +
                                        L" appointment wasn't saved"));
}

TEST_F(MeetingHandlerTest, WithoutAnAppointmentTheSaveTriesRedemption) {
    StartWithoutAppointment();
    handler->Save();
    EXPECT_THAT(Errors(), IsSupersetOf({L"Couldn't get the related appointment! Save failed.",
                                        L"Failed to get Associated Appointment!"}));
    EXPECT_EQ(Errors().back(), L"Failed to get Associated Appointment!");
    EXPECT_THAT(Warnings(), Not(Contains(StartsWith(L"MeetingHandler::Save:COM exception: "))));
    EXPECT_THAT(Debug(), Contains(L"Saveing item using RDO"));
    InstallRedemption();
    Start(Request());
    outlook->Failures().Answer(L"MeetingItem.GetAssociatedAppointment", stand_ins::NoObject());
    ClearTraces();
    handler->Save();
    EXPECT_THAT(Debug(), Contains(L"Successfully save item using RDO object module!"));
    EXPECT_EQ(outlook->Calls().Count(L"RDOAppointmentItem.Save"), 1u);
}

TEST_F(MeetingHandlerTest, EveryFailureOfRedemptionsSaveIsReported) {
    InstallRedemption();
    Start(Request());
    outlook->Failures().Answer(L"MeetingItem.GetAssociatedAppointment", stand_ins::NoObject());
    outlook->Failures().Fail(L"RDOAppointmentItem.Save", kAccessDenied, 1);
    handler->Save();
    outlook->Failures().On(L"RDOAppointmentItem.Save", ThrowStandard("lost"), 1);
    handler->Save();
    outlook->Failures().On(L"RDOAppointmentItem.Save", ThrowNumber(), 1);
    handler->Save();
    EXPECT_THAT(
        Errors(),
        IsSupersetOf({L"MeetingHandler::SaveAppointmentWithRDO_:Caught a com exception: " + ErrorText(kAccessDenied),
                      std::wstring(L"MeetingHandler::SaveAppointmentWithRDO_:Caught an exception: lost"),
                      std::wstring(L"MeetingHandler::SaveAppointmentWithRDO_:Unknown error")}));
    EXPECT_THAT(Debug(), Not(Contains(L"Successfully save item using RDO object module!")));
}

TEST_F(MeetingHandlerTest, ClosingDiscardsWhatChangedInTheAppointmentAndLeavesTheItemOpen) {
    Start(Request());
    stand_ins::Invoke(appointment, L"Display");
    stand_ins::Invoke(item, L"Display");
    stand_ins::Put(appointment, L"Body", L"not saved");
    ClearTraces();
    handler->Close();
    EXPECT_FALSE(outlook->IsOpen(AppointmentId()));
    EXPECT_TRUE(outlook->IsOpen(ItemId()));
    EXPECT_EQ(GetText(appointment, L"Body"), L"Room 4.");
    EXPECT_EQ(Debug().front(), L"Closing meeting item");
    EXPECT_EQ(Debug().back(), L"Closing related appointment");
}

TEST_F(MeetingHandlerTest, WithoutAnAppointmentNothingIsClosed) {
    StartWithoutAppointment();
    stand_ins::Invoke(item, L"Display");
    handler->Close();
    EXPECT_TRUE(outlook->IsOpen(ItemId()));
    EXPECT_THAT(Debug(), Not(Contains(L"Closing related appointment")));
}

TEST_F(MeetingHandlerTest, DisplayShowsTheAppointmentAndDeletesTheItem) {
    Start(Request());
    handler->Display();
    EXPECT_TRUE(outlook->IsOpen(AppointmentId()));
    EXPECT_THAT(Debug(), Contains(L"Display the related appointment"));
    EXPECT_THAT(outlook->ItemsIn(L"Drafts"), IsEmpty());
    EXPECT_THAT(outlook->ItemsIn(L"Deleted Items"), IsEmpty());
    EXPECT_THAT(SubjectsIn(L"Calendar"), ElementsAre(L"Review"));
    EXPECT_THAT(Errors(), IsEmpty());
    for (const auto& call : outlook->Calls().All()) {
        if (call.member == L"AppointmentItem.Display") {
            EXPECT_EQ(call.arguments.at(0).vt, VT_I2);
            EXPECT_EQ(call.arguments.at(0).iVal, 0);
        }
    }
}

TEST_F(MeetingHandlerTest, BeforeOutlook2007DisplayShowsTheAppointmentThroughRedemption) {
    InstallRedemption();
    Start(Request());
    BecomeOld();
    handler->Display();
    EXPECT_TRUE(outlook->IsOpen(AppointmentId()));
    EXPECT_THAT(outlook->ItemsIn(L"Drafts"), IsEmpty());
    EXPECT_THAT(Errors(), ElementsAre(L"Failed to get appointment - attempting to display with RDO"));
    EXPECT_THAT(Debug(), Contains(L"Display item using RDO"));
    EXPECT_EQ(outlook->Calls().Count(L"AppointmentItem.Display"), 0u);
    for (const auto& call : outlook->Calls().All()) {
        if (call.member == L"RDOAppointmentItem.Display") {
            EXPECT_EQ(call.arguments.at(0).vt, VT_BOOL);
            EXPECT_EQ(call.arguments.at(0).boolVal, VARIANT_FALSE);
            EXPECT_EQ(call.arguments.at(1).vt, VT_INT);
            EXPECT_EQ(call.arguments.at(1).intVal, 0);
        }
    }
}

TEST_F(MeetingHandlerTest, WithoutAnAppointmentTheItemIsDeletedAllTheSame) {
    StartWithoutAppointment();
    handler->Display();
    EXPECT_THAT(Errors(), IsSupersetOf({L"Failed to get appointment - attempting to display with RDO",
                                        L"Failed to get Associated Appointment!"}));
    EXPECT_THAT(outlook->ItemsIn(L"Drafts"), IsEmpty());
    EXPECT_EQ(outlook->OpenInspectors(), 0u);
}

TEST_F(MeetingHandlerTest, EveryFailureOfTheDisplayIsReportedAndKeepsTheItem) {
    Start(Request());
    outlook->Failures().Fail(L"AppointmentItem.Display", kAccessDenied, 1);
    handler->Display();
    outlook->Failures().On(L"AppointmentItem.Display", ThrowStandard("lost"), 1);
    handler->Display();
    outlook->Failures().On(L"AppointmentItem.Display", ThrowNumber(), 1);
    handler->Display();
    EXPECT_THAT(Errors(),
                ElementsAre(L"Caught a com exception while displaying the meeting: " + ErrorText(kAccessDenied),
                            L"Caught an exception while displaying the meeting: lost",
                            L"Caught for Unknown error while displaying the meeting"));
    EXPECT_THAT(SubjectsIn(L"Drafts"), ElementsAre(L"Review"));
}

TEST_F(MeetingHandlerTest, TheModificationTimeIsTheAppointments) {
    Start(Request());
    outlook->Failures().Answer(L"AppointmentItem.LastModificationTime", _variant_t(45000.5, VT_DATE));
    EXPECT_EQ(handler->GetLastModificationTime(), 45000.5);
    EXPECT_EQ(Debug().front(), L"GetLastModificationTime called for meeting");
    EXPECT_EQ(Debug().back(), L"Returning modification time: 45000.5");
    EXPECT_EQ(outlook->Calls().Count(L"MeetingItem.LastModificationTime"), 0u);
}

TEST_F(MeetingHandlerTest, OneOfASeriesThatDiffersHasNoModificationTimeAndTheOthersHave) {
    for (const long state : {1L, 2L, 3L}) {
        Start(Recurring(Request(), state));
        EXPECT_EQ(handler->GetLastModificationTime() == 0, state == 3);
        EXPECT_EQ(log.Has(L"INFO", L"This is a specific occurrence - returning 0"), state == 3);
    }
}

TEST_F(MeetingHandlerTest, WithoutAnAppointmentThereIsNoModificationTime) {
    StartWithoutAppointment();
    EXPECT_EQ(handler->GetLastModificationTime(), 0);
    EXPECT_EQ(Errors().back(), L"Failed to get related appointment - returning 0");
}

TEST_F(MeetingHandlerTest, EveryFailureOfTheModificationTimeGivesNone) {
    Start(Request());
    outlook->Failures().Fail(L"AppointmentItem.IsRecurring", kAccessDenied, 1);
    EXPECT_EQ(handler->GetLastModificationTime(), 0);
    outlook->Failures().On(L"AppointmentItem.LastModificationTime", ThrowStandard("lost"), 1);
    EXPECT_EQ(handler->GetLastModificationTime(), 0);
    outlook->Failures().On(L"AppointmentItem.LastModificationTime", ThrowNumber(), 1);
    EXPECT_EQ(handler->GetLastModificationTime(), 0);
    EXPECT_THAT(Errors(), ElementsAre(L"Caught a com exception - returning old date: " + ErrorText(kAccessDenied),
                                      L"Unknown error - returning old date", L"Unknown error - returning old date"));
}

TEST_F(MeetingHandlerTest, RedemptionsViewIsThatOfAMeetingAndIsMadeOnce) {
    InstallRedemption();
    Start(Request());
    const auto first = handler->GetSafeItem();
    ASSERT_TRUE(first);
    EXPECT_EQ(handler->GetSafeItem().GetInterfacePtr(), first.GetInterfacePtr());
    EXPECT_EQ(outlook->Calls().Count(L"SafeMeetingItem.CreateInstance"), 1u);
    EXPECT_EQ(outlook->Calls().Count(L"SafeMeetingItem.Item put"), 1u);
}

TEST_F(MeetingHandlerTest, WithoutRedemptionThereIsNoView) {
    Start(Request());
    EXPECT_FALSE(handler->GetSafeItem());
    EXPECT_THAT(Errors(), ElementsAre(L"Failed to retrieve Redemption.SafeMeetingItem CLSID"));
}

TEST_F(MeetingHandlerTest, ACopyHasAHandlerOfItsOwn) {
    Start(Request());
    const std::unique_ptr<ItemHandler> copy(handler->Copy());
    ASSERT_NE(dynamic_cast<MeetingHandler*>(copy.get()), nullptr);
    EXPECT_NE(copy->GetItemUniqueID(), handler->GetItemUniqueID());
}

TEST_F(MeetingHandlerTest, ANewItemGetsItsIdByASaveOfItemAndAppointment) {
    item = outlook->NewItem(Request());
    handler = std::make_unique<Meeting>(Outlook::_MeetingItemPtr(item.GetInterfacePtr()));
    ClearTraces();
    const std::wstring id = handler->GetItemUniqueID();
    EXPECT_NE(id, L"");
    EXPECT_EQ(id, ItemId());
    EXPECT_THAT(Debug(), Contains(L"Checking if we need to save the appointment"));
}

/// What an export gives.
struct Export {
    explicit Export(MeetingHandler& handler) {
        _bstr_t plainText;
        handler.ExportBody(path, plainText);
        text = platform::ToWide(plainText);
    }
    std::wstring path;
    std::wstring text;
};

TEST_F(MeetingHandlerTest, ABodyIsExportedAsPlainTextWithItsMark) {
    Start(Request());
    const Export body(*handler);
    EXPECT_EQ(body.text, L"Room 4.");
    EXPECT_EQ(body.path.substr(body.path.size() - 4), L".txt");
    EXPECT_EQ(test_support::ReadBytes(body.path), std::string("\xFF\xFER\0o\0o\0m\0 \0004\0.\0", 16));
    EXPECT_THAT(Infos(), Contains(L"ExportBody (meeting) after doing correct GetSafeItem.length=7"));
}

TEST_F(MeetingHandlerTest, AnHtmlBodyIsExportedAsPlainTextToo) {
    ItemData meeting = Request();
    meeting.body.clear();
    meeting.htmlBody = L"<p>Room 5</p>";
    Start(meeting);
    const Export body(*handler);
    EXPECT_EQ(body.text, L"Room 5\r\n");
    EXPECT_EQ(body.path.substr(body.path.size() - 4), L".txt");
}

TEST_F(MeetingHandlerTest, AnEmptyBodyAndEveryBodyBefore2007IsReadThroughRedemption) {
    InstallRedemption();
    ItemData meeting = Request();
    meeting.body.clear();
    Start(meeting);
    EXPECT_EQ(Export(*handler).text, L"");
    EXPECT_EQ(outlook->Calls().Count(L"SafeMeetingItem.Body"), 1u);
    Start(Request());
    BecomeOld();
    EXPECT_EQ(Export(*handler).text, L"Room 4.");
    EXPECT_EQ(outlook->Calls().Count(L"SafeMeetingItem.Body"), 1u);
    EXPECT_EQ(outlook->Calls().Count(L"MeetingItem.Body"), 0u);
}

TEST_F(MeetingHandlerTest, WithoutRedemptionAnEmptyBodyIsAnEmptyText) {
    ItemData meeting = Request();
    meeting.body.clear();
    Start(meeting);
    const Export body(*handler);
    EXPECT_EQ(body.text, L"");
    EXPECT_EQ(test_support::ReadBytes(body.path), "\xFF\xFE");
    EXPECT_THAT(Errors(), ElementsAre(L"Failed to retrieve Redemption.SafeMeetingItem CLSID",
                                      L"Failed to retrieve Redemption SafeItem => exporting an empty text"));
}

} // namespace
} // namespace vorlek
