#include "tests/support/OpenHandles.h"

#include <cstdint>

namespace test_support {

DWORD CountOpenHandles() {
    // One by one, since Wine's GetProcessHandleCount answers 0 whatever is open.
    constexpr std::uintptr_t kFirst = 4;
    constexpr std::uintptr_t kBeyond = 0x4000;
    DWORD count = 0;
    for (std::uintptr_t value = kFirst; value < kBeyond; value += kFirst) {
        DWORD flags = 0;
        count += GetHandleInformation(reinterpret_cast<HANDLE>(value), &flags) ? 1u : 0u;
    }
    return count;
}

} // namespace test_support
