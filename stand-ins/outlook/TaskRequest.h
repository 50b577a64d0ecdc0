#pragma once
#include <memory>

#include "stand-ins/outlook/ItemRecord.h"

namespace stand_ins {

class Session;

/// The request that goes to whom a task is assigned: a new one, not saved. It starts as a copy of the task.
std::shared_ptr<ItemRecord> RequestFor(const std::shared_ptr<ItemRecord>& task);

/// The task of a request; null when it is linked to none. Failure: as of GetItemFromID for a task that is gone.
std::shared_ptr<ItemRecord> TaskOf(Session& session, ItemRecord& request);

/// What a request says when it leaves is what its task says at that moment, behind the prefix that a forward has; the
/// task is saved. Nothing happens to a response, to a request without a task, and to items of other kinds.
void TakeOverTask(Session& session, ItemRecord& request);

} // namespace stand_ins
