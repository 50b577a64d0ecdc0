#pragma once
#include <string>
#include <vector>

#include "stand-ins/outlook/Com.h"
#include "stand-ins/outlook/Dispatch.h"

namespace stand_ins {

/// How the load of one add-in went.
struct AddInLoad {
    std::wstring progId;
    bool loaded = false;
    std::wstring failure;    ///< the step that failed and its HRESULT
    double milliseconds = 0; ///< creation and OnConnection
};

/// The add-ins of a running Outlook: found under SOFTWARE\Microsoft\Office\Outlook\Addins of HKLM and HKCU, those
/// whose LoadBehavior is 3. A failed load sets it to 2.
class AddIns {
public:
    std::vector<AddInLoad> Load(IDispatch* application);
    void TellShutdown();

private:
    std::vector<UnknownPtr> loaded_;
};

} // namespace stand_ins
