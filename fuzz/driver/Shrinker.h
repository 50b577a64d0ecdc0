#pragma once
#include "fuzz/driver/Supervisor.h"

namespace fuzz {

/// The fault with the smallest input that still brings it about, as far as leaving out parts leads and in half a
/// minute.
Fault Shrink(const Target& target, Fault fault);

} // namespace fuzz
