#include "stand-ins/outlook/Faults.h"

#include <algorithm>

#include "stand-ins/outlook/Failure.h"
#include "stand-ins/outlook/Interfaces.h"
#include "stand-ins/outlook/Text.h"

namespace stand_ins {

void Faults::Fail(std::wstring_view member, HRESULT result, size_t nth) {
    On(
        member,
        [result, name = std::wstring(member)](const Call&) -> std::optional<_variant_t> {
            throw Failure{result, name + L" was told to fail with " + Hex(result) + L"."};
        },
        nth);
}

void Faults::Answer(std::wstring_view member, const _variant_t& value, size_t nth) {
    On(
        member, [value](const Call&) { return std::optional(value); }, nth);
}

void Faults::On(std::wstring_view member, Action action, size_t nth) {
    const std::scoped_lock lock(lock_);
    faults_.push_back({std::wstring(member), std::move(action), nth});
}

void Faults::After(std::wstring_view member, std::function<void()> action, size_t nth) {
    const std::scoped_lock lock(lock_);
    const auto act = [action = std::move(action)](const Call&) {
        action();
        return std::optional<_variant_t>();
    };
    after_.push_back({std::wstring(member), act, nth});
}

void Faults::AnswerInterface(std::wstring_view className, const IID& interfaceId) {
    const std::scoped_lock lock(lock_);
    interfaces_.emplace(className, interfaceId);
}

void Faults::Clear() {
    const std::scoped_lock lock(lock_);
    faults_.clear();
    after_.clear();
    interfaces_.clear();
}

// The actions run outside the lock: they may call into the object model themselves.
std::vector<Faults::Action> Faults::Due_(std::vector<Fault_>& faults, const Call& call) {
    std::vector<Action> due;
    const std::scoped_lock lock(lock_);
    for (Fault_& fault : faults) {
        if (IsMember(call.member, fault.member) && (++fault.calls == fault.nth || fault.nth == 0)) {
            due.push_back(fault.action);
        }
    }
    return due;
}

std::optional<_variant_t> Faults::Apply(const Call& call) {
    for (const Action& action : Due_(faults_, call)) {
        if (auto answer = action(call)) {
            return answer;
        }
    }
    return std::nullopt;
}

void Faults::ApplyAfter(const Call& call) {
    for (const Action& action : Due_(after_, call)) {
        action(call);
    }
}

std::optional<HRESULT> Faults::ApplyToQuery(std::wstring_view className, const IID& interfaceId) {
    const std::wstring_view name = KnownInterfaceName(interfaceId);
    const std::wstring query = std::wstring(className) + L".QueryInterface";
    try {
        if (!name.empty()) {
            Apply({query + L" " + std::wstring(name), {}, GetCurrentThreadId()});
        }
        if (interfaceId != IID_IUnknown && interfaceId != IID_IDispatch) {
            Apply({query, {}, GetCurrentThreadId()});
        }
    } catch (const Failure& failure) {
        return failure.result;
    }
    const std::scoped_lock lock(lock_);
    const auto [first, last] = interfaces_.equal_range(className);
    return std::any_of(first, last, [&](const auto& entry) { return entry.second == interfaceId; })
               ? std::optional(S_OK)
               : std::nullopt;
}

_variant_t NoObject() {
    return _variant_t(static_cast<IDispatch*>(nullptr));
}

} // namespace stand_ins
