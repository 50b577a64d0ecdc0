#include "stand-ins/outlook/Recorder.h"

#include <algorithm>

#include "stand-ins/outlook/Text.h"

namespace stand_ins {
namespace {

constexpr size_t kLongestText = 80;

std::wstring Render(const _variant_t& value) {
    switch (value.vt) {
    case VT_BSTR: {
        std::wstring text(value.bstrVal != nullptr ? value.bstrVal : L"", SysStringLen(value.bstrVal));
        std::ranges::replace_if(
            text, [](wchar_t c) { return c < L' '; }, L' ');
        return L"\"" + (text.size() > kLongestText ? text.substr(0, kLongestText) + L"..." : text) + L"\"";
    }
    case VT_ERROR:
        return L"missing";
    case VT_BOOL:
        return value.boolVal != VARIANT_FALSE ? L"true" : L"false";
    default:
        break;
    }
    _variant_t text;
    return SUCCEEDED(VariantChangeType(&text, const_cast<_variant_t*>(&value), 0, VT_BSTR)) && text.bstrVal != nullptr
               ? text.bstrVal
               : L"value of type " + std::to_wstring(value.vt);
}

} // namespace

std::wstring Call::ToString() const {
    std::wstring text;
    for (const _variant_t& argument : arguments) {
        text += (text.empty() ? L"" : L", ") + Render(argument);
    }
    return arguments.empty() ? member : member + L"(" + text + L")";
}

bool IsMember(std::wstring_view recorded, std::wstring_view name) {
    return recorded == name || (recorded.starts_with(name) &&
                                (recorded.substr(name.size()) == L" get" || recorded.substr(name.size()) == L" put"));
}

void Recorder::Add(Call call) {
    for (_variant_t& argument : call.arguments) {
        if (argument.vt == VT_DISPATCH || argument.vt == VT_UNKNOWN) {
            argument = argument.punkVal != nullptr ? L"<object>" : L"<nothing>";
        }
    }
    const std::scoped_lock lock(lock_);
    if (enabled_) {
        calls_.push_back(std::move(call));
    }
}

void Recorder::Enable(bool enabled) {
    const std::scoped_lock lock(lock_);
    enabled_ = enabled;
}

void Recorder::Clear() {
    const std::scoped_lock lock(lock_);
    calls_.clear();
}

std::vector<Call> Recorder::All() const {
    const std::scoped_lock lock(lock_);
    return calls_;
}

std::vector<std::wstring> Recorder::Members() const {
    std::vector<std::wstring> members;
    for (const Call& call : All()) {
        members.push_back(call.member);
    }
    return members;
}

size_t Recorder::Count(std::wstring_view member) const {
    const auto calls = All();
    return static_cast<size_t>(
        std::ranges::count_if(calls, [&](const Call& call) { return IsMember(call.member, member); }));
}

bool Recorder::Before(std::wstring_view first, std::wstring_view second) const {
    const auto calls = All();
    const auto find = [&](std::wstring_view member) {
        return std::ranges::find_if(calls, [&](const Call& call) { return IsMember(call.member, member); });
    };
    return find(second) != calls.end() && find(first) < find(second);
}

} // namespace stand_ins
