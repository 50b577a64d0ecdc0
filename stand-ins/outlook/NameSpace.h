#pragma once
#include "stand-ins/outlook/Object.h"

namespace stand_ins {

/// The MAPI session.
class NameSpace : public Object {
public:
    explicit NameSpace(std::shared_ptr<Session> session);
};

} // namespace stand_ins
