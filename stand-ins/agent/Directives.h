#pragma once
#include <optional>

#include "stand-ins/agent/Policy.h"

namespace stand_ins::agent {

/// What a mail asks for itself, in its subject or body; nullopt if nothing:
/// [[block]], [[allow]], [[label: WORDS]], [[replace attachment]], [[replace attachment: PART OF A NAME]], [[delay
/// 2s]], [[misbehave: KINDS]], [[misbehave: KINDS: WORDS]]. Several may stand together; anything else in double
/// brackets is the writer's own text.
std::optional<Actions> ReadDirectives(const Inspection& inspection);

} // namespace stand_ins::agent
