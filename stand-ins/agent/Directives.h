#pragma once
#include <cstdint>
#include <optional>
#include <string_view>

#include "stand-ins/agent/Policy.h"

namespace stand_ins::agent {

/// What a mail asks for itself, in its subject or body; nullopt if nothing:
/// [[block]], [[allow]], [[label: WORDS]], [[replace attachment]], [[replace attachment: PART OF A NAME]], [[delay
/// 2s]]. Several may stand together; anything else in double brackets is the writer's own text.
std::optional<Actions> ReadDirectives(const Inspection& inspection);

/// "2s", "1500ms" or "1500" in milliseconds, 10 minutes at most; nullopt for anything else.
std::optional<std::uint32_t> ReadDuration(std::wstring_view text);

} // namespace stand_ins::agent
