#include "stand-ins/agent/Directives.h"

#include <stdexcept>

#include "stand-ins/agent/Inspection.h"
#include "stand-ins/agent/Quantity.h"
#include "stand-ins/agent/Text.h"

namespace stand_ins::agent {
namespace {

/// Whether the words begin with the key; what stands behind it, a colon left out, goes to `rest`.
bool Begins_(std::wstring_view words, std::wstring_view key, std::wstring_view& rest) {
    if (Lower(words.substr(0, key.size())) != key) {
        return false;
    }
    rest = Trimmed(words.substr(key.size()));
    const bool isApart = rest.starts_with(L':') || words.size() == key.size() || words[key.size()] == L' ';
    if (rest.starts_with(L':')) {
        rest = Trimmed(rest.substr(1));
    }
    return isApart;
}

bool Misbehave_(std::wstring_view kinds, Actions& actions) {
    try {
        actions.misbehaviour = Misbehaviour::OfItem(kinds);
        return true;
    } catch (const std::runtime_error&) {
        return false;
    }
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
    } else if (Begins_(words, L"misbehave", rest)) {
        return Misbehave_(rest, actions);
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
                hasAny |= Apply_(Trimmed(text.substr(at + 2, end - at - 2)), actions);
            }
        }
    }
    return hasAny ? std::optional(actions) : std::nullopt;
}

} // namespace stand_ins::agent
