#pragma once
#include "stand-ins/outlook/Object.h"

namespace stand_ins {

/// The account that an item is sent by.
class Account : public Object {
public:
    Account(std::shared_ptr<Session> session, std::wstring address);

    const std::wstring& Address() const { return address_; }

private:
    std::wstring address_;
};

} // namespace stand_ins
