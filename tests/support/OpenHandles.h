#pragma once
#include "platform/Windows.h"

namespace test_support {

/// How many handles of the system this process has open.
DWORD CountOpenHandles();

} // namespace test_support
