#pragma once
#include "foundation/AutoHandle.h"
#include "foundation/Throw.h"

namespace vorlek {

/// The process opened for what access says; raises Failure.
template <class Failure>
FileHandle OpenProcessById(ThrowSite site, DWORD access, DWORD pid) {
    const HANDLE process = OpenProcess(access, FALSE, pid);
    if (process == nullptr) {
        Throw<Failure>(site, L"OpenProcess failed with: ", GetLastError());
    }
    return FileHandle(process);
}

/// For looking into a process other than the current one: enables the privilege to do so, where the
/// account holds it. Without it the processes of the account itself can still be looked into.
void PrepareToInspect(DWORD pid);

/// The access to ask a process about itself: the smaller one that Windows Vista brought, where there is it.
DWORD GetQueryAccess();

} // namespace vorlek
