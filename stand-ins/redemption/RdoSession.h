#pragma once
#include "stand-ins/outlook/Object.h"

namespace stand_ins::redemption {

/// Where views of Outlook's items come from. It needs no logon.
class RdoSession : public Object {
public:
    explicit RdoSession(std::shared_ptr<Session> session);

    /// The view of one of Outlook's items. Failure: E_INVALIDARG for what is none, or for a view that is not shallow:
    /// what such a one shows of unsaved changes is not known.
    DispatchPtr View(const DispatchPtr& item, bool shallow);
};

} // namespace stand_ins::redemption
