#pragma once
#include "platform/Windows.h"

namespace test_support {

/// The process ends with this one, however that ends: by itself, by its guard or killed from outside. Otherwise a test
/// that hangs would leave programs behind that hold the service's name against all later tests.
void EndWithThisProcess(HANDLE process);

} // namespace test_support
