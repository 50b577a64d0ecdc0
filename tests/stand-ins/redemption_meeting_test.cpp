// The stand-in Redemption's views of meetings, appointments and tasks.
#include <algorithm>

#include "stand-ins/redemption/Coclasses.h"
#include "stand-ins/redemption/Interfaces.h"
#include "stand-ins/redemption/Redemption.h"
#include "tests/stand-ins/OutlookTest.h"

namespace stand_ins {
namespace {

using testing::IsEmpty;
using testing::SizeIs;

DispatchPtr Create(std::wstring_view progId) {
    const auto known = std::ranges::find(redemption::kCoclasses, progId, &redemption::Coclass::progId);
    DispatchPtr object;
    const HRESULT result = redemption::Make(known->id, IID_IDispatch, reinterpret_cast<void**>(&object));
    if (FAILED(result)) {
        throw _com_error(result);
    }
    return object;
}

bool Answers(const DispatchPtr& object, const IID& interfaceId) {
    UnknownPtr answer;
    return SUCCEEDED(object->QueryInterface(interfaceId, reinterpret_cast<void**>(&answer)));
}

class RedemptionMeeting : public RunningOutlookTest {
protected:
    DispatchPtr Meeting(bool linkBroken = false, long recurrenceState = 0) {
        return outlook_.NewItem({.kind = ItemKind::Meeting,
                                 .subject = L"Review",
                                 .body = L"Room 4.",
                                 .recipients = {kBen},
                                 .attachments = {{.fileName = L"a.txt", .content = "A"}},
                                 .properties = {{0x0042001F, L"The Board"}},
                                 .recurrenceState = recurrenceState,
                                 .linkBroken = linkBroken});
    }
    static DispatchPtr View(const DispatchPtr& item) {
        return DispatchPtr(Invoke(Create(L"Redemption.RDOSession"), L"GetRDOObjectFromOutlookObject",
                                  {_variant_t(item.GetInterfacePtr()), true}));
    }
    static DispatchPtr AppointmentOf(const DispatchPtr& view, bool add = false) {
        return Invoke(view, L"GetAssociatedAppointment", {add});
    }
    static DispatchPtr SafeItemOf(const wchar_t* progId, const DispatchPtr& item) {
        const auto safe = Create(progId);
        Put(safe, L"Item", _variant_t(item.GetInterfacePtr()));
        return safe;
    }
};

TEST_F(RedemptionMeeting, AViewIsOfTheItemsKindAndOfAMail) {
    const auto meeting = View(Meeting());
    EXPECT_TRUE(Answers(meeting, redemption::kMailId));
    EXPECT_TRUE(Answers(meeting, redemption::kMeetingItemId));
    EXPECT_FALSE(Answers(meeting, redemption::kAppointmentItemId));
    const auto appointment = AppointmentOf(meeting);
    EXPECT_TRUE(Answers(appointment, redemption::kMailId));
    EXPECT_TRUE(Answers(appointment, redemption::kAppointmentItemId));
    EXPECT_FALSE(Answers(appointment, redemption::kMeetingItemId));
    const auto mail = View(Mail());
    EXPECT_FALSE(Answers(mail, redemption::kMeetingItemId));
    EXPECT_FALSE(Answers(mail, redemption::kAppointmentItemId));
}

TEST_F(RedemptionMeeting, AMeetingLeadsToTheAppointmentOfItsLink) {
    const auto meeting = Meeting();
    const auto appointment = AppointmentOf(View(meeting));
    EXPECT_EQ(GetText(appointment, L"EntryID"),
              GetText(DispatchPtr(Invoke(meeting, L"GetAssociatedAppointment", {false})), L"EntryID"));
    EXPECT_FALSE(AppointmentOf(View(Meeting(true))));
}

TEST_F(RedemptionMeeting, AMeetingWithoutAnAppointmentGetsOneOnlyIfItIsToBeAdded) {
    const auto meeting = Meeting();
    Invoke(DispatchPtr(Invoke(meeting, L"GetAssociatedAppointment", {false})), L"Delete");
    EXPECT_FALSE(AppointmentOf(View(meeting)));
    EXPECT_THAT(outlook_.ItemsIn(L"Calendar"), IsEmpty());
    EXPECT_TRUE(AppointmentOf(View(meeting), true));
    EXPECT_THAT(outlook_.ItemsIn(L"Calendar"), SizeIs(1));
}

TEST_F(RedemptionMeeting, AMeetingsFieldsAreItsProperties) {
    EXPECT_EQ(_bstr_t(Get(View(Meeting()), L"Fields", {0x0042001FL})), _bstr_t(L"The Board"));
}

TEST_F(RedemptionMeeting, AnAppointmentTellsItsRecurrence) {
    for (const long state : {0L, 1L, 2L, 3L}) {
        const auto appointment = AppointmentOf(View(Meeting(false, state)));
        EXPECT_EQ(GetNumber(appointment, L"RecurrenceState"), state);
        EXPECT_EQ(GetBool(appointment, L"IsRecurring"), state != 0);
    }
}

TEST_F(RedemptionMeeting, AChangeOfAnAppointmentStaysOnItAndIsKeptBySaving) {
    const auto meeting = Meeting();
    const auto appointment = AppointmentOf(View(meeting));
    Put(appointment, L"Subject", L"[Secret] Review");
    Put(appointment, L"Body", L"Room 5.");
    Invoke(GetObject(appointment, L"Attachments"), L"Clear");
    EXPECT_EQ(outlook_.ItemsIn(L"Calendar").at(0).subject, L"Review");
    Invoke(appointment, L"Save");
    const ItemData saved = outlook_.ItemsIn(L"Calendar").at(0);
    EXPECT_EQ(saved.subject, L"[Secret] Review");
    EXPECT_EQ(saved.body, L"Room 5.");
    EXPECT_THAT(saved.attachments, IsEmpty());
    EXPECT_EQ(GetText(meeting, L"Subject"), L"Review");
    EXPECT_EQ(GetText(meeting, L"Body"), L"Room 4.");
}

TEST_F(RedemptionMeeting, AnAppointmentSendsItsInvitationWithoutAnEventAndStaysInTheCalendar) {
    Sink sink(outlook_.Application(), [](IDispatch*) { return true; });
    Invoke(AppointmentOf(View(Meeting())), L"Send");
    EXPECT_EQ(sink.calls, 0);
    ASSERT_THAT(outlook_.Delivered(), SizeIs(1));
    EXPECT_EQ(outlook_.Delivered()[0].kind, ItemKind::Meeting);
    EXPECT_THAT(outlook_.ItemsIn(L"Calendar"), SizeIs(1));
    sink.Unadvise();
}

TEST_F(RedemptionMeeting, AnAppointmentIsDisplayed) {
    Invoke(AppointmentOf(View(Meeting())), L"Display", {false, 0L});
    EXPECT_EQ(outlook_.OpenInspectors(), 1u);
}

TEST_F(RedemptionMeeting, CallsOfEachKindAreRecordedUnderItsName) {
    outlook_.Failures().Fail(L"RDOMeetingItem.Fields", E_ACCESSDENIED);
    outlook_.Failures().Fail(L"RDOAppointmentItem.Send", E_ACCESSDENIED);
    const auto view = View(Meeting());
    EXPECT_EQ(ErrorOf([&] { Get(view, L"Fields", {0x0042001FL}); }), E_ACCESSDENIED);
    EXPECT_EQ(ErrorOf([&] { Invoke(AppointmentOf(view), L"Send"); }), E_ACCESSDENIED);
    EXPECT_THAT(outlook_.Delivered(), IsEmpty());
}

TEST_F(RedemptionMeeting, ASafeMeetingItemHasTheMeetingsTextRecipientsAndAttachments) {
    const auto safe = SafeItemOf(L"Redemption.SafeMeetingItem", Meeting());
    EXPECT_EQ(GetText(safe, L"Body"), L"Room 4.");
    EXPECT_EQ(GetNumber(GetObject(safe, L"Recipients"), L"Count"), 1);
    EXPECT_EQ(GetNumber(GetObject(safe, L"Attachments"), L"Count"), 1);
    EXPECT_EQ(outlook_.Calls().Count(L"SafeMeetingItem.Body"), 1u);
}

TEST_F(RedemptionMeeting, ASafeTaskItemHasTheTasksText) {
    const auto task = outlook_.NewItem({.kind = ItemKind::Task, .subject = L"Report", .body = L"By Friday."});
    EXPECT_EQ(GetText(SafeItemOf(L"Redemption.SafeTaskItem", task), L"Body"), L"By Friday.");
    EXPECT_EQ(outlook_.Calls().Count(L"SafeTaskItem.Body"), 1u);
}

} // namespace
} // namespace stand_ins
