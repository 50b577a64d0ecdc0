#pragma once
#include "fuzz/driver/Material.h"

namespace fuzz {

/// Messages as they were exchanged, without the delimiter, and the words of their format.
Material MessageMaterial();

} // namespace fuzz
