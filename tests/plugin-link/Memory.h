#pragma once
#include <cstddef>

namespace plugin_link_tests {

/// What this process has to itself at the moment, in bytes.
std::size_t PrivateBytes();
/// The most that it ever had in memory, in bytes. Wine keeps no account of what was ever committed.
std::size_t PeakBytes();

} // namespace plugin_link_tests
