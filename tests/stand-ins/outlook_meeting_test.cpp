// Meetings: what travels, what stands in the calendar, and the link between the two.
#include "stand-ins/outlook/Store.h"
#include "tests/stand-ins/OutlookTest.h"

namespace stand_ins {
namespace {

using testing::IsEmpty;
using testing::SizeIs;
using Outcome = SendResult::Outcome;

constexpr HRESULT kNotFound = static_cast<HRESULT>(0x8004010F);

class OutlookMeeting : public RunningOutlookTest {
protected:
    DispatchPtr Meeting(const std::wstring& messageClass = {}) {
        return outlook_.NewItem({.kind = ItemKind::Meeting,
                                 .subject = L"FW: Review",
                                 .body = L"Room 4.",
                                 .recipients = {kBen},
                                 .messageClass = messageClass});
    }
    DispatchPtr Appointment() {
        return outlook_.NewItem({.kind = ItemKind::Appointment,
                                 .subject = L"Review",
                                 .body = L"Room 4.",
                                 .account = L"anna@example.com",
                                 .recipients = {kBen},
                                 .attachments = {{.fileName = L"a.txt", .content = "A"}}});
    }
    static DispatchPtr AppointmentOf(const DispatchPtr& meeting, bool add = false) {
        return Invoke(meeting, L"GetAssociatedAppointment", {_variant_t(add)});
    }
    static bool Answers(const DispatchPtr& item, const GUID& interfaceId) {
        UnknownPtr answer;
        return SUCCEEDED(item->QueryInterface(interfaceId, reinterpret_cast<void**>(&answer)));
    }
    DispatchPtr ById(const std::wstring& entryId, const std::wstring& storeId = {}) {
        return Invoke(Session(), L"GetItemFromID", {entryId.c_str(), storeId.c_str()});
    }
    DispatchPtr DefaultFolderOf(long number) { return Invoke(Session(), L"GetDefaultFolder", {number}); }
};

TEST_F(OutlookMeeting, KindIsToldByTheInterface) {
    const auto meeting = Meeting();
    EXPECT_TRUE(Answers(meeting, kMeetingItemId));
    EXPECT_FALSE(Answers(meeting, kMailItemId));
    const auto appointment = AppointmentOf(meeting);
    EXPECT_TRUE(Answers(appointment, kAppointmentItemId));
    EXPECT_FALSE(Answers(appointment, kMeetingItemId));
}

TEST_F(OutlookMeeting, NumberOfTheClassFollowsFromTheMessageClass) {
    const std::pair<const wchar_t*, long> classes[] = {{L"", 53},
                                                       {L"IPM.Schedule.Meeting.Canceled", 54},
                                                       {L"IPM.Schedule.Meeting.Resp.Neg", 55},
                                                       {L"IPM.Schedule.Meeting.Resp.Pos", 56},
                                                       {L"IPM.Schedule.Meeting.Resp.Tent", 57}};
    for (const auto& [messageClass, number] : classes) {
        EXPECT_EQ(GetNumber(Meeting(messageClass), L"Class"), number) << number;
    }
    EXPECT_EQ(GetText(Meeting(), L"MessageClass"), L"IPM.Schedule.Meeting.Request");
    EXPECT_EQ(GetText(AppointmentOf(Meeting()), L"MessageClass"), L"IPM.Appointment");
}

TEST_F(OutlookMeeting, NewMeetingHasItsAppointmentInTheCalendar) {
    const auto appointment = AppointmentOf(Meeting());
    ASSERT_NE(appointment, nullptr);
    EXPECT_EQ(GetText(appointment, L"Subject"), L"Review");
    EXPECT_EQ(GetText(appointment, L"Body"), L"Room 4.");
    ASSERT_THAT(outlook_.ItemsIn(L"Calendar"), SizeIs(1));
    EXPECT_EQ(outlook_.ItemsIn(L"Calendar")[0].entryId, GetText(appointment, L"EntryID"));
    EXPECT_THAT(outlook_.ItemsIn(L"Drafts"), IsEmpty());
}

TEST_F(OutlookMeeting, RecurrenceIsTheAppointments) {
    for (const long state : {0L, 1L, 2L, 3L}) {
        const auto appointment = outlook_.NewItem({.kind = ItemKind::Appointment, .recurrenceState = state});
        EXPECT_EQ(GetNumber(appointment, L"RecurrenceState"), state);
        EXPECT_EQ(GetBool(appointment, L"IsRecurring"), state != 0);
    }
}

TEST_F(OutlookMeeting, LinkLeadsToAnAppointmentOfAnyStore) {
    outlook_.AddStore(L"Archive", {L"Calendar"});
    const auto there = outlook_.SavedItem({.kind = ItemKind::Appointment, .subject = L"There"}, L"Archive\\Calendar");
    const auto meeting = outlook_.NewItem({.kind = ItemKind::Meeting, .relatedId = GetText(there, L"EntryID")});
    EXPECT_EQ(GetText(AppointmentOf(meeting), L"Subject"), L"There");
    EXPECT_THAT(outlook_.ItemsIn(L"Calendar"), IsEmpty());
}

TEST_F(OutlookMeeting, LinkThatIsBrokenLeadsNowhereAndTheAppointmentStands) {
    const auto meeting = outlook_.NewItem({.kind = ItemKind::Meeting, .subject = L"Review", .linkBroken = true});
    EXPECT_EQ(AppointmentOf(meeting), nullptr);
    EXPECT_THAT(outlook_.ItemsIn(L"Calendar"), SizeIs(1));
}

TEST_F(OutlookMeeting, LinkToADeletedAppointmentLeadsNowhereUntilOneIsAdded) {
    const auto meeting = Meeting();
    Invoke(AppointmentOf(meeting), L"Delete");
    EXPECT_EQ(AppointmentOf(meeting), nullptr);
    EXPECT_THAT(outlook_.ItemsIn(L"Calendar"), IsEmpty());
    const auto added = AppointmentOf(meeting, true);
    EXPECT_EQ(GetText(added, L"Subject"), L"Review");
    EXPECT_EQ(GetText(AppointmentOf(meeting), L"EntryID"), GetText(added, L"EntryID"));
}

TEST_F(OutlookMeeting, LinkIsSavedWithTheMeeting) {
    std::wstring id;
    {
        const auto meeting = Meeting();
        Invoke(meeting, L"Save");
        id = GetText(meeting, L"EntryID");
    }
    const ItemData onDisk = outlook_.ItemsIn(L"Drafts").at(0);
    EXPECT_EQ(onDisk.kind, ItemKind::Meeting);
    EXPECT_EQ(onDisk.relatedId, outlook_.ItemsIn(L"Calendar").at(0).entryId);
    EXPECT_EQ(GetText(AppointmentOf(ById(id)), L"Subject"), L"Review");
}

TEST_F(OutlookMeeting, SentMeetingItemLeavesAsItIs) {
    EXPECT_EQ(outlook_.Send(Meeting(L"IPM.Schedule.Meeting.Resp.Pos")).outcome, Outcome::Sent);
    ASSERT_THAT(outlook_.Delivered(), SizeIs(1));
    EXPECT_EQ(outlook_.Delivered()[0].messageClass, L"IPM.Schedule.Meeting.Resp.Pos");
    EXPECT_THAT(outlook_.ItemsIn(L"Sent Items"), SizeIs(1));
    EXPECT_THAT(outlook_.ItemsIn(L"Calendar"), SizeIs(1));
}

TEST_F(OutlookMeeting, AppointmentThatIsSentRaisesTheEventWithAMeetingItemOfItsOwn) {
    const auto appointment = Appointment();
    std::wstring seen;
    std::wstring idAtSend = L"not asked";
    Sink sink(outlook_.Application(), [&](IDispatch* item) {
        seen = Answers(item, kMeetingItemId) ? GetText(item, L"Subject") : L"no meeting item";
        idAtSend = GetText(AppointmentOf(item), L"EntryID");
        return false;
    });
    EXPECT_EQ(outlook_.Send(appointment).outcome, Outcome::Sent);
    EXPECT_EQ(seen, L"Review");
    EXPECT_EQ(idAtSend, L"") << "the appointment of a new invitation is not saved before the event";
    ASSERT_THAT(outlook_.Delivered(), SizeIs(1));
    const ItemData request = outlook_.Delivered()[0];
    EXPECT_EQ(request.kind, ItemKind::Meeting);
    EXPECT_EQ(request.body, L"Room 4.");
    EXPECT_EQ(request.account, L"anna@example.com");
    EXPECT_EQ(request.recipients.at(0).address, L"ben@example.com");
    EXPECT_EQ(request.attachments.at(0).content, "A");
    ASSERT_THAT(outlook_.ItemsIn(L"Calendar"), SizeIs(1));
    EXPECT_EQ(request.relatedId, outlook_.ItemsIn(L"Calendar")[0].entryId);
    EXPECT_EQ(outlook_.OpenInspectors(), 0u);
}

TEST_F(OutlookMeeting, InvitationThatIsStoppedLeavesTheAppointmentOnTheScreenAndNothingElse) {
    Sink sink(outlook_.Application(), [](IDispatch*) { return true; });
    const SendResult result = outlook_.Send(Appointment());
    EXPECT_EQ(result.outcome, Outcome::Stopped);
    EXPECT_TRUE(outlook_.IsOpen(result.entryId));
    ASSERT_THAT(outlook_.ItemsIn(L"Calendar"), SizeIs(1));
    EXPECT_EQ(outlook_.ItemsIn(L"Calendar")[0].entryId, result.entryId);
    EXPECT_THAT(outlook_.ItemsIn(L"Drafts"), IsEmpty());
    EXPECT_THAT(outlook_.Delivered(), IsEmpty());
    EXPECT_FALSE(Outlook::HasLeft(result));
}

TEST_F(OutlookMeeting, InvitationThatWasSavedWhenItWasStoppedStaysInDraftsWithItsLink) {
    Sink sink(outlook_.Application(), [](IDispatch* item) {
        Invoke(item, L"Save");
        return true;
    });
    const SendResult result = outlook_.Send(Appointment());
    ASSERT_THAT(outlook_.ItemsIn(L"Drafts"), SizeIs(1));
    const ItemData request = outlook_.ItemsIn(L"Drafts")[0];
    EXPECT_EQ(request.relatedId, result.entryId);
    EXPECT_EQ(GetText(AppointmentOf(ById(request.entryId)), L"EntryID"), result.entryId);
}

TEST_F(OutlookMeeting, ProgramThatSendsAnAppointmentRaisesTheEventAndHearsOfTheCancel) {
    const auto appointment =
        outlook_.SavedItem({.kind = ItemKind::Appointment, .subject = L"Review", .recipients = {kBen}}, L"Calendar");
    bool cancel = true;
    Sink sink(outlook_.Application(), [&](IDispatch*) { return cancel; });
    EXPECT_EQ(ErrorOf([&] { Invoke(appointment, L"Send"); }), E_ABORT);
    EXPECT_THAT(outlook_.Delivered(), IsEmpty());
    cancel = false;
    Invoke(appointment, L"Send");
    EXPECT_EQ(sink.calls, 2);
    EXPECT_THAT(outlook_.Delivered(), SizeIs(1));
    EXPECT_EQ(GetText(appointment, L"Subject"), L"Review") << "an appointment lives on after its send";
}

TEST_F(OutlookMeeting, StoppedInvitationThatAProgramSendsLaterHasLeft) {
    DispatchPtr appointment;
    bool cancel = true;
    Sink sink(outlook_.Application(), [&](IDispatch* item) {
        appointment = AppointmentOf(item);
        return cancel;
    });
    const SendResult result = outlook_.Send(Appointment());
    cancel = false;
    Invoke(appointment, L"Send");
    EXPECT_TRUE(Outlook::HasLeft(result));
    EXPECT_FALSE(outlook_.IsOpen(result.entryId));
}

TEST_F(OutlookMeeting, AppointmentWithoutRecipientsCannotBeSent) {
    const SendResult result = outlook_.Send(outlook_.NewItem({.kind = ItemKind::Appointment, .subject = L"Dentist"}));
    EXPECT_EQ(result.outcome, Outcome::Failed);
    EXPECT_EQ(result.error, static_cast<HRESULT>(0x80040607));
    EXPECT_THAT(outlook_.ItemsIn(L"Calendar"), SizeIs(1));
}

TEST_F(OutlookMeeting, MeetingItemMovesAndIsDeletedLikeAMail) {
    const auto meeting = Meeting();
    const DispatchPtr moved(Invoke(meeting, L"Move", {DefaultFolderOf(3).GetInterfacePtr()}));
    EXPECT_TRUE(Answers(moved, kMeetingItemId));
    const auto deleted = DefaultFolderOf(3);
    const auto found = ById(GetText(moved, L"EntryID"), GetText(deleted, L"StoreID"));
    EXPECT_TRUE(Answers(found, kMeetingItemId));
    Invoke(found, L"Delete");
    EXPECT_THAT(outlook_.ItemsIn(L"Deleted Items"), IsEmpty());
    EXPECT_THAT(outlook_.ItemsIn(L"Drafts"), IsEmpty());
    EXPECT_THAT(outlook_.ItemsIn(L"Calendar"), SizeIs(1)) << "the appointment stays";
}

TEST_F(OutlookMeeting, AppointmentThatIsClosedWithoutSavingIsAsItWas) {
    const auto appointment = outlook_.SavedItem({.kind = ItemKind::Appointment, .subject = L"Review"}, L"Calendar");
    Invoke(appointment, L"Display");
    Put(appointment, L"Subject", L"Other");
    Invoke(appointment, L"Close", {1L});
    EXPECT_EQ(GetText(appointment, L"Subject"), L"Review");
    EXPECT_EQ(outlook_.OpenInspectors(), 0u);
}

TEST_F(OutlookMeeting, ProgramCreatesAnAppointmentInTheCalendar) {
    const DispatchPtr appointment(Invoke(outlook_.Application(), L"CreateItem", {1L}));
    Put(appointment, L"Location", L"Room 4");
    Invoke(appointment, L"Save");
    ASSERT_THAT(outlook_.ItemsIn(L"Calendar"), SizeIs(1));
    EXPECT_EQ(outlook_.ItemsIn(L"Calendar")[0].location, L"Room 4");
}

TEST_F(OutlookMeeting, FileOfAMeetingTellsWhenWhereAndOfWhichSeries) {
    const auto file = folder_ / L"meeting.json";
    test_support::WriteBytes(file, R"({"kind": "appointment", "subject": "Review", "start": "2026-11-30T10:00",
        "end": "2026-11-30T11:00", "location": "Room 4", "recurrenceState": 1})");
    const auto appointment = outlook_.SavedItem(ReadItemFile(file), L"Calendar");
    const ItemData saved = outlook_.ItemsIn(L"Calendar").at(0);
    EXPECT_EQ(saved.kind, ItemKind::Appointment);
    EXPECT_EQ(saved.start, L"2026-11-30T10:00");
    EXPECT_EQ(saved.end, L"2026-11-30T11:00");
    EXPECT_EQ(saved.location, L"Room 4");
    EXPECT_EQ(saved.recurrenceState, Master);
}

TEST_F(OutlookMeeting, FileOfAnUnknownRecurrenceIsRefused) {
    const auto file = folder_ / L"item.json";
    test_support::WriteBytes(file, R"({"kind": "meeting", "recurrenceState": 4})");
    try {
        ReadItemFile(file);
        FAIL() << "it was read";
    } catch (const std::runtime_error& failure) {
        EXPECT_THAT(failure.what(),
                    testing::EndsWith("recurrenceState is not 0 (none), 1 (series), 2 (occurrence) or 3 (exception)"));
    }
}

TEST_F(OutlookMeeting, MeetingMayBringItsAppointmentAlong) {
    const auto meeting = outlook_.NewItem({.kind = ItemKind::Meeting,
                                           .subject = L"Other words",
                                           .related = {{.kind = ItemKind::Appointment, .subject = L"Review"}}});
    EXPECT_EQ(GetText(AppointmentOf(meeting), L"Subject"), L"Review");
    EXPECT_THAT(outlook_.ItemsIn(L"Calendar"), SizeIs(1));
}

class OutlookSharedCalendar : public OutlookMeeting {
protected:
    OutlookSharedCalendar() { outlook_.AddSharedCalendar(L"Anna Weber"); }

    DispatchPtr Person(const std::wstring& name) { return Invoke(Session(), L"CreateRecipient", {name.c_str()}); }
    DispatchPtr Shared(const DispatchPtr& person, long number = 9) {
        return Invoke(Session(), L"GetSharedDefaultFolder", {person.GetInterfacePtr(), number});
    }
};

TEST_F(OutlookSharedCalendar, PersonIsResolvedByName) {
    const auto anna = Person(L"Anna Weber");
    EXPECT_FALSE(GetBool(anna, L"Resolved"));
    EXPECT_TRUE(bool(Invoke(anna, L"Resolve")));
    EXPECT_TRUE(GetBool(anna, L"Resolved"));
    const auto other = Person(L"Somebody");
    EXPECT_FALSE(bool(Invoke(other, L"Resolve")));
    EXPECT_FALSE(GetBool(other, L"Resolved"));
    EXPECT_FALSE(bool(Invoke(Person(L""), L"Resolve")));
}

TEST_F(OutlookSharedCalendar, ItemsAreFoundByTheStoreOfThatCalendarOnly) {
    const auto item = outlook_.SavedItem({.kind = ItemKind::Appointment, .subject = L"Hers"}, L"Anna Weber\\Calendar");
    const std::wstring id = GetText(item, L"EntryID");
    const auto anna = Person(L"Anna Weber");
    Invoke(anna, L"Resolve");
    const auto calendar = Shared(anna);
    EXPECT_EQ(GetText(calendar, L"FolderPath"), L"\\\\Anna Weber\\Calendar");
    EXPECT_EQ(GetText(ById(id, GetText(calendar, L"StoreID")), L"Subject"), L"Hers");
    EXPECT_EQ(ErrorOf([&] { ById(id); }), kNotFound);
}

TEST_F(OutlookSharedCalendar, IsNoStoreOfTheProfileAndNoLinkLeadsThere) {
    const auto item = outlook_.SavedItem({.kind = ItemKind::Appointment}, L"Anna Weber\\Calendar");
    EXPECT_EQ(GetNumber(GetObject(Session(), L"Folders"), L"Count"), 1);
    EXPECT_EQ(AppointmentOf(outlook_.NewItem({.kind = ItemKind::Meeting, .relatedId = GetText(item, L"EntryID")})),
              nullptr);
}

TEST_F(OutlookSharedCalendar, NothingElseIsShared) {
    const auto anna = Person(L"Anna Weber");
    EXPECT_EQ(ErrorOf([&] { Shared(anna); }), E_INVALIDARG) << "not resolved yet";
    Invoke(anna, L"Resolve");
    EXPECT_EQ(ErrorOf([&] { Shared(anna, 6); }), kNotFound);
    const auto ben = Person(L"ben@example.com");
    EXPECT_TRUE(bool(Invoke(ben, L"Resolve")));
    EXPECT_EQ(ErrorOf([&] { Shared(ben); }), kNotFound);
    EXPECT_EQ(ErrorOf([&] { Shared(Session()); }), E_INVALIDARG);
}

} // namespace
} // namespace stand_ins
