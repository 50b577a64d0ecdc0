#include "stand-ins/redemption/RdoMeeting.h"

#include "stand-ins/outlook/Invitation.h"
#include "stand-ins/outlook/Session.h"
#include "stand-ins/redemption/Interfaces.h"
#include "stand-ins/redemption/RdoMail.h"

namespace stand_ins::redemption {
namespace {

DispatchPtr AssociatedAppointment(RdoMail& meeting, bool addToCalendar) {
    auto appointment = AppointmentOf(meeting.Owner(), meeting.Alive());
    if (!appointment && addToCalendar) {
        meeting.Changing().data.linkBroken = false;
        appointment = AddToCalendar(meeting.Owner(), meeting.Alive());
    }
    return appointment ? MakeView(meeting.SharedOwner(), appointment) : DispatchPtr();
}

} // namespace

const Class& RdoMeetingItemClass() {
    static const Class members = ClassOf<RdoMail>(L"RDOMeetingItem", kMeetingItemId, &RdoMailClass())
                                     .Call(L"GetAssociatedAppointment", 1, 1, [](RdoMail& self, const Arguments& a) {
                                         return ObjectValue(AssociatedAppointment(self, a.Truth(0)));
                                     });
    return members;
}

const Class& RdoAppointmentItemClass() {
    static const Class members =
        ClassOf<RdoMail>(L"RDOAppointmentItem", kAppointmentItemId, &RdoMailClass())
            .Get(L"IsRecurring",
                 [](RdoMail& self) { return _variant_t(self.Alive().data.recurrenceState != NotRecurring); })
            .Get(L"RecurrenceState", [](RdoMail& self) { return _variant_t(self.Alive().data.recurrenceState); })
            .Call(L"Send", 0, 0,
                  [](RdoMail& self, const Arguments&) { DeliverInvitation(self.Owner(), self.Record()); });
    return members;
}

} // namespace stand_ins::redemption
