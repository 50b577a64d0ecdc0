#include "tests/plugin-link/Memory.h"

#include "platform/Windows.h"

#include <psapi.h>

namespace plugin_link_tests {
namespace {

PROCESS_MEMORY_COUNTERS Counters() {
    PROCESS_MEMORY_COUNTERS counters{};
    GetProcessMemoryInfo(GetCurrentProcess(), &counters, sizeof counters);
    return counters;
}

} // namespace

std::size_t PrivateBytes() {
    return Counters().PagefileUsage;
}

std::size_t PeakBytes() {
    return Counters().PeakWorkingSetSize;
}

} // namespace plugin_link_tests
