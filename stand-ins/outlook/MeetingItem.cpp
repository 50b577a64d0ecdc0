#include <string_view>

#include "stand-ins/outlook/Interfaces.h"
#include "stand-ins/outlook/Invitation.h"
#include "stand-ins/outlook/Item.h"
#include "stand-ins/outlook/Session.h"

namespace stand_ins {
namespace {

// The numbers that Outlook gives to meeting items, by message class.
long ClassNumber(std::wstring_view messageClass) {
    struct Number {
        std::wstring_view messageClass;
        long number;
    };
    constexpr Number kNumbers[] = {{L"IPM.Schedule.Meeting.Canceled", 54},
                                   {L"IPM.Schedule.Meeting.Resp.Neg", 55},
                                   {L"IPM.Schedule.Meeting.Resp.Pos", 56},
                                   {L"IPM.Schedule.Meeting.Resp.Tent", 57}};
    constexpr long kRequest = 53;
    for (const Number& entry : kNumbers) {
        if (messageClass.starts_with(entry.messageClass)) {
            return entry.number;
        }
    }
    return kRequest;
}

DispatchPtr AssociatedAppointment(Item& item, bool addToCalendar) {
    Session& session = item.Owner();
    if (const auto appointment = AppointmentOf(session, item.Alive())) {
        return session.Show(appointment);
    }
    if (!addToCalendar) {
        return {};
    }
    item.Changing().data.linkBroken = false;
    return session.Show(AddToCalendar(session, item.Alive()));
}

ClassOf<Item> BuildMeetingItemClass() {
    ClassOf<Item> members(L"MeetingItem", kMeetingItemId, &SentItemClass());
    members.Get(L"Class", [](Item& item) { return _variant_t(ClassNumber(item.Alive().data.messageClass)); })
        .Get(L"Sent", [](Item& item) { return _variant_t(item.Alive().data.sent); })
        .Call(L"GetAssociatedAppointment", 1, 1,
              [](Item& item, const Arguments& a) { return ObjectValue(AssociatedAppointment(item, a.Truth(0))); })
        .Call(L"Send", 0, 0, [](Item& item, const Arguments&) { SendByProgram(item); });
    return members;
}

} // namespace

const Class& MeetingItemClass() {
    static const Class members = BuildMeetingItemClass();
    return members;
}

} // namespace stand_ins
