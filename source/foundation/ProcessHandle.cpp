#include "foundation/ProcessHandle.h"

#include <versionhelpers.h>

#include "foundation/PrivilegeUtils.h"

namespace vorlek {

void PrepareToInspect(DWORD pid) {
    if (pid == GetCurrentProcessId()) {
        return;
    }
    try {
        PrivilegeUtils::EnableDebugPrivilege();
    } catch (const Exception&) {
        // Whether it was needed, opening the process tells.
    }
}

DWORD GetQueryAccess() {
    return IsWindowsVistaOrGreater() ? PROCESS_QUERY_LIMITED_INFORMATION : PROCESS_QUERY_INFORMATION;
}

} // namespace vorlek
