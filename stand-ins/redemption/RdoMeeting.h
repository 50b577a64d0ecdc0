#pragma once
#include "stand-ins/outlook/Class.h"

namespace stand_ins::redemption {

/// The members of the view of a meeting item, which leads to that of its appointment.
const Class& RdoMeetingItemClass();
/// The members of the view of an appointment. Its Send delivers an invitation, of which Outlook hears nothing.
const Class& RdoAppointmentItemClass();

} // namespace stand_ins::redemption
