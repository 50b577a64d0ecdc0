#pragma once
#include "stand-ins/outlook/Object.h"

namespace stand_ins::redemption {

/// The user whose profile it is.
class SafeCurrentUser : public Object {
public:
    explicit SafeCurrentUser(std::shared_ptr<Session> session);
};

} // namespace stand_ins::redemption
