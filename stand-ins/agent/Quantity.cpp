#include "stand-ins/agent/Quantity.h"

#include <algorithm>
#include <cwchar>
#include <string>

namespace stand_ins::agent {
namespace {

constexpr std::uint64_t kMostMilliseconds = 600000;
constexpr std::uint64_t kMostBytes = 1u << 30;

struct Unit_ {
    std::wstring_view name;
    std::uint64_t factor;
};

template <std::size_t Count>
std::optional<std::uint64_t> Read_(std::wstring_view text, const Unit_ (&units)[Count], std::uint64_t most) {
    const std::size_t digits = std::min(text.find_first_not_of(L"0123456789"), text.size());
    const auto number = ReadNumber(text.substr(0, digits));
    text.remove_prefix(std::min(text.find_first_not_of(L' ', digits), text.size()));
    const auto unit = std::ranges::find(units, text, &Unit_::name);
    if (!number || unit == std::end(units) || *number > most / unit->factor) {
        return std::nullopt;
    }
    return *number * unit->factor;
}

} // namespace

std::optional<std::size_t> ReadNumber(std::wstring_view text) {
    if (text.empty() || text.size() > 9 || text.find_first_not_of(L"0123456789") != std::wstring_view::npos) {
        return std::nullopt;
    }
    return std::wcstoul(std::wstring(text).c_str(), nullptr, 10);
}

std::optional<std::uint32_t> ReadDuration(std::wstring_view text) {
    const auto time = Read_(text, {{L"", 1}, {L"ms", 1}, {L"s", 1000}}, kMostMilliseconds);
    return time ? std::optional(static_cast<std::uint32_t>(*time)) : std::nullopt;
}

std::optional<std::size_t> ReadSize(std::wstring_view text) {
    return Read_(text, {{L"", 1}, {L"KB", 1024}, {L"MB", 1024 * 1024}}, kMostBytes);
}

} // namespace stand_ins::agent
