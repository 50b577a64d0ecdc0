#include "stand-ins/outlook/Class.h"

namespace stand_ins {
namespace {

// Away from the small numbers, which mean something to IDispatch and to impatient callers.
constexpr DISPID kFirstId = 0x100;

} // namespace

Class::Class(const wchar_t* name, const IID& interfaceId, const Class* base) : name_(name), interfaceId_(interfaceId) {
    if (base != nullptr) {
        members_ = base->members_;
    }
}

DISPID Class::Find(const wchar_t* name) const {
    for (size_t i = 0; i < members_.size(); ++i) {
        if (_wcsicmp(members_[i].name.c_str(), name) == 0) {
            return kFirstId + static_cast<DISPID>(i);
        }
    }
    return DISPID_UNKNOWN;
}

const Member* Class::At(DISPID id) const {
    const auto index = static_cast<size_t>(id) - static_cast<size_t>(kFirstId);
    return id >= kFirstId && index < members_.size() ? &members_[index] : nullptr;
}

Member& Class::Named_(const wchar_t* name) {
    const DISPID id = Find(name);
    return id == DISPID_UNKNOWN ? members_.emplace_back(Member{.name = name})
                                : members_[static_cast<size_t>(id - kFirstId)];
}

} // namespace stand_ins
