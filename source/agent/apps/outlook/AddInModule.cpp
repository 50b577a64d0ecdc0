#include "agent/apps/outlook/AddInModule.h"

#include "agent/apps/outlook/Connect.h"

vorlek::CAddInModule _AtlModule;

namespace vorlek {

OBJECT_ENTRY_AUTO(CLSID_Connect, CConnect)

} // namespace vorlek

STDAPI DllCanUnloadNow() {
    return _AtlModule.DllCanUnloadNow();
}

STDAPI DllGetClassObject(REFCLSID classId, REFIID iid, void** object) {
    return _AtlModule.DllGetClassObject(classId, iid, object);
}

STDAPI DllRegisterServer() {
    return _AtlModule.DllRegisterServer();
}

STDAPI DllUnregisterServer() {
    return _AtlModule.DllUnregisterServer();
}
