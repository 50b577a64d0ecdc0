#include "stand-ins/outlook/Interfaces.h"
#include "stand-ins/outlook/Invitation.h"
#include "stand-ins/outlook/Item.h"
#include "stand-ins/outlook/Session.h"

namespace stand_ins {
namespace {

constexpr long kAppointmentClass = 26;

ClassOf<Item> BuildAppointmentItemClass() {
    ClassOf<Item> members(L"AppointmentItem", kAppointmentItemId, &SentItemClass());
    members.Get(L"Class", [](Item&) { return _variant_t(kAppointmentClass); })
        .Get(L"Location", [](Item& item) { return TextValue(item.Alive().data.location); })
        .Put(L"Location", [](Item& item, const Arguments& a) { item.Changing().data.location = a.Text(0); })
        .Get(L"IsRecurring", [](Item& item) { return _variant_t(item.Alive().data.recurrenceState != NotRecurring); })
        .Get(L"RecurrenceState", [](Item& item) { return _variant_t(item.Alive().data.recurrenceState); })
        .Call(L"Send", 0, 0, [](Item& item, const Arguments&) {
            if (!Invite(item.Owner(), item.Record())) {
                item.Owner().ReportCancelledSend();
            }
        });
    return members;
}

} // namespace

const Class& AppointmentItemClass() {
    static const Class members = BuildAppointmentItemClass();
    return members;
}

} // namespace stand_ins
