#pragma once
#include <string>

namespace vorlek {

/// Privileges of the calling thread. The first change gives the thread a token of its own, a copy of the
/// process's, which stays with it: the process and its other threads keep their privileges.
class PrivilegeUtils {
public:
    /// name: one of the system's, such as "SeDebugPrivilege". Raises Exception, also where the account does
    /// not hold the privilege.
    static void SetPrivilege(const std::wstring& name, bool enable);

    static void EnableShutdownPrivilege();
    static void DisableShutdownPrivilege();
    static void EnableBackupPrivilege();
    static void DisableBackupPrivilege();
    static void EnableRestorePrivilege();
    static void DisableRestorePrivilege();
    static void EnableDebugPrivilege();
    static void DisableDebugPrivilege();
};

} // namespace vorlek
