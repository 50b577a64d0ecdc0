#pragma once
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>

namespace stand_ins::agent {

// Numbers as a person writes them in a policy, a mail or a command line; nullopt for any other text.

/// "100000": digits alone, nine at most.
std::optional<std::size_t> ReadNumber(std::wstring_view text);

/// "2s", "1500ms" or "1500" in milliseconds, 10 minutes at most.
std::optional<std::uint32_t> ReadDuration(std::wstring_view text);

/// "100MB", "64KB" or "4096" in bytes, 1 GB at most.
std::optional<std::size_t> ReadSize(std::wstring_view text);

} // namespace stand_ins::agent
