#pragma once
#include <memory>

#include "stand-ins/outlook/ItemRecord.h"
#include "stand-ins/outlook/Object.h"

namespace stand_ins::redemption {

/// The attachments of an item as its view shows them: besides what Outlook's own can, they go all at once.
DispatchPtr MakeRdoAttachments(const std::shared_ptr<Session>& session, const std::shared_ptr<ItemRecord>& record);

} // namespace stand_ins::redemption
