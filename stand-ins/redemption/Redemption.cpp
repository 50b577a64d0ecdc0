#include "stand-ins/redemption/Redemption.h"

#include <algorithm>

#include "stand-ins/outlook/ConnectionPoint.h"
#include "stand-ins/redemption/Coclasses.h"
#include "stand-ins/redemption/RdoSession.h"
#include "stand-ins/redemption/SafeCurrentUser.h"
#include "stand-ins/redemption/SafeItem.h"

namespace stand_ins::redemption {
namespace {

DispatchPtr MakeNamed(const std::shared_ptr<Session>& session, std::wstring_view name) {
    if (name == L"RDOSession") {
        return stand_ins::Make<RdoSession>(session);
    }
    if (name == L"SafeCurrentUser") {
        return stand_ins::Make<SafeCurrentUser>(session);
    }
    return stand_ins::Make<SafeItem>(session, name == L"SafeMailItem"      ? SafeMailItemClass()
                                              : name == L"SafeMeetingItem" ? SafeMeetingItemClass()
                                                                           : SafeTaskItemClass());
}

} // namespace

HRESULT Make(REFCLSID classId, REFIID interfaceId, void** object) {
    const auto known = std::ranges::find_if(kCoclasses, [&](const Coclass& entry) { return entry.id == classId; });
    const auto session = Session::Current();
    if (known == kCoclasses.end() || !session) {
        return known == kCoclasses.end() ? CLASS_E_CLASSNOTAVAILABLE : CO_E_NOTINITIALIZED;
    }
    const std::wstring progId = known->progId;
    const std::wstring name = progId.substr(progId.find(L'.') + 1);
    if (const HRESULT fault = RecordCall(*session, (name + L".CreateInstance").c_str()); FAILED(fault)) {
        return fault;
    }
    return MakeNamed(session, name)->QueryInterface(interfaceId, object);
}

} // namespace stand_ins::redemption
