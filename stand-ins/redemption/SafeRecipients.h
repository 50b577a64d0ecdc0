#pragma once
#include <memory>

#include "stand-ins/outlook/ItemRecord.h"
#include "stand-ins/outlook/Object.h"

namespace stand_ins::redemption {

/// The recipients of an item past the object model's guard, with their MAPI properties and their SMTP addresses.
DispatchPtr MakeSafeRecipients(const std::shared_ptr<Session>& session, const std::shared_ptr<ItemRecord>& record);

} // namespace stand_ins::redemption
