#pragma once
#include "stand-ins/outlook/Object.h"

namespace stand_ins {

/// The main window.
class Explorer : public Object {
public:
    explicit Explorer(std::shared_ptr<Session> session);
};

} // namespace stand_ins
