#include "stand-ins/agent/Directives.h"

#include <cwchar>

#include "stand-ins/agent/Inspection.h"
#include "stand-ins/agent/Text.h"

namespace stand_ins::agent {
namespace {

std::wstring_view Trimmed_(std::wstring_view text) {
    const std::size_t begin = text.find_first_not_of(L" \t");
    return begin == std::wstring_view::npos ? std::wstring_view()
                                            : text.substr(begin, text.find_last_not_of(L" \t") + 1 - begin);
}

/// Whether the words begin with the key; what stands behind it, a colon left out, goes to `rest`.
bool Begins_(std::wstring_view words, std::wstring_view key, std::wstring_view& rest) {
    if (Lower(words.substr(0, key.size())) != key) {
        return false;
    }
    rest = Trimmed_(words.substr(key.size()));
    const bool isApart = rest.starts_with(L':') || words.size() == key.size() || words[key.size()] == L' ';
    if (rest.starts_with(L':')) {
        rest = Trimmed_(rest.substr(1));
    }
    return isApart;
}

bool Apply_(std::wstring_view words, Actions& actions) {
    std::wstring_view rest;
    if (Begins_(words, L"block", rest) && rest.empty()) {
        actions.block = true;
    } else if (Begins_(words, L"allow", rest) && rest.empty()) {
        // Named so that no rule is asked.
    } else if (Begins_(words, L"label", rest) && !rest.empty()) {
        actions.subject = L"[" + std::wstring(rest) + L"] {subject}";
        actions.bodyBefore = rest;
    } else if (Begins_(words, L"replace attachment", rest)) {
        actions.replacement = Replacement{.name = std::wstring(rest),
                                          .file = {},
                                          .text = L"\"{name}\" was taken out of this mail, as its sender asked.\r\n",
                                          .displayName = L"{name}.txt"};
    } else if (Begins_(words, L"delay", rest) && ReadDuration(rest)) {
        actions.delay = *ReadDuration(rest);
    } else {
        return false;
    }
    return true;
}

} // namespace

std::optional<Actions> ReadDirectives(const Inspection& inspection) {
    Actions actions;
    bool hasAny = false;
    for (const std::wstring_view text : {std::wstring_view(inspection.subject), std::wstring_view(inspection.body)}) {
        for (std::size_t at = text.find(L"[["); at != std::wstring_view::npos; at = text.find(L"[[", at + 2)) {
            const std::size_t end = text.find(L"]]", at);
            if (end != std::wstring_view::npos) {
                hasAny |= Apply_(Trimmed_(text.substr(at + 2, end - at - 2)), actions);
            }
        }
    }
    return hasAny ? std::optional(actions) : std::nullopt;
}

std::optional<std::uint32_t> ReadDuration(std::wstring_view text) {
    const std::size_t digits = std::min(text.find_first_not_of(L"0123456789"), text.size());
    const std::wstring_view unit = Trimmed_(text.substr(digits));
    const bool isSeconds = unit == L"s";
    if (digits == 0 || digits > 9 || !(unit.empty() || unit == L"ms" || isSeconds)) {
        return std::nullopt;
    }
    const unsigned long long time = std::wcstoull(std::wstring(text.substr(0, digits)).c_str(), nullptr, 10);
    const unsigned long long milliseconds = isSeconds ? time * 1000 : time;
    constexpr unsigned long long kMost = 600000;
    return milliseconds > kMost ? std::nullopt : std::optional(static_cast<std::uint32_t>(milliseconds));
}

} // namespace stand_ins::agent
