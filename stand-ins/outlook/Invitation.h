#pragma once
#include <memory>

#include "stand-ins/outlook/ItemRecord.h"

namespace stand_ins {

class Session;

/// The appointment that a meeting item is about; null when it has none or the link is broken.
std::shared_ptr<ItemRecord> AppointmentOf(Session& session, ItemRecord& meeting);

/// A new appointment in the calendar, made from what a meeting item says, and linked to it.
std::shared_ptr<ItemRecord> AddToCalendar(Session& session, ItemRecord& meeting);

/// Sends an appointment's invitation: a new meeting item, which raises ItemSend and leaves, or goes again when that is
/// cancelled, unless somebody saved it. The appointment is saved either way. Result and failure: as of Submit.
bool Invite(Session& session, const std::shared_ptr<ItemRecord>& appointment);
/// Delivers an invitation without the event. Failure: as of Deliver.
void DeliverInvitation(Session& session, const std::shared_ptr<ItemRecord>& appointment);

} // namespace stand_ins
