#pragma once
#include "platform/Windows.h"

namespace stand_ins::redemption {

/// Makes an object of one of the coclasses, over the items of the Outlook that runs in this process. It is recorded
/// as a call, "RDOSession.CreateInstance", which may be told to fail. Failure: CLASS_E_CLASSNOTAVAILABLE for another
/// class, CO_E_NOTINITIALIZED without an Outlook.
HRESULT Make(REFCLSID classId, REFIID interfaceId, void** object);

} // namespace stand_ins::redemption
