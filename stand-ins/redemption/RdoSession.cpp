#include "stand-ins/redemption/RdoSession.h"

#include "stand-ins/outlook/Failure.h"
#include "stand-ins/outlook/Item.h"
#include "stand-ins/redemption/Interfaces.h"
#include "stand-ins/redemption/RdoMail.h"

namespace stand_ins::redemption {
namespace {

const Class& RdoSessionClass() {
    static const Class members =
        ClassOf<RdoSession>(L"RDOSession", kSessionId)
            .Call(L"GetRDOObjectFromOutlookObject", 1, 2, [](RdoSession& self, const Arguments& a) {
                return ObjectValue(self.View(a.Object(0), a.Has(1) && a.Truth(1)));
            });
    return members;
}

} // namespace

RdoSession::RdoSession(std::shared_ptr<Session> session) : Object(std::move(session), RdoSessionClass()) {}

DispatchPtr RdoSession::View(const DispatchPtr& item, bool shallow) {
    const auto record = RecordOf(item);
    if (!record || !shallow) {
        throw Failure{E_INVALIDARG, record ? L"Views are shallow here." : L"This is no item of Outlook's."};
    }
    record->CheckAlive();
    return MakeView(SharedOwner(), record);
}

} // namespace stand_ins::redemption
