#include "foundation/EnvUtils.h"

#include "platform/Windows.h"

#include <versionhelpers.h>

#include "foundation/Exception.h"
#include "foundation/FileUtils.h"
#include "foundation/PathUtils.h"
#include "foundation/QueryText.h"
#include "foundation/RegistryKey.h"

using vorlek::Exception;
using vorlek::QueryText;
using vorlek::Throw;

namespace {

constexpr wchar_t kShellFolders[] = L"SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\Explorer\\Shell Folders";
// FOLDERID_LocalAppDataLow, under which Explorer keeps the folder's path.
constexpr wchar_t kLocalLow[] = L"{A520A1A4-1780-4FF6-BD18-167343C5AF16}";

std::wstring ReadShellFolder_(const RegistryKey& root, const wchar_t* name) {
    std::wstring path;
    root.OpenSubKey(kShellFolders)->GetValue(name, path);
    return path;
}

} // namespace

std::wstring EnvUtils::GetVariable(const std::wstring& name) {
    return QueryText<Exception>(
        L"EnvUtils::GetVariable",
        [&](wchar_t* buffer, DWORD room) { return GetEnvironmentVariableW(name.c_str(), buffer, room); },
        L"Failed to get size of system variable: " + name + L", with: ",
        L"Failed to open system variable: " + name + L", with: ");
}

std::wstring EnvUtils::GetTempDirectory() {
    return QueryText<Exception>(
        L"EnvUtils::GetTempDirectory", [](wchar_t* buffer, DWORD room) { return GetTempPathW(room, buffer); },
        L"GetTempPath failed with: ", L"GetTempPath failed with: ");
}

std::wstring EnvUtils::GetLocalLowTempDirectory() {
    if (!IsWindowsVistaOrGreater()) {
        return GetTempDirectory(); // integrity levels, and a folder for the lowest, came with Vista
    }
    std::wstring path = ReadShellFolder_(RegistryKey::GetCurrentUser(), kLocalLow);
    if (!vorlek::FileUtils::Exists(path)) {
        Throw(L"EnvUtils::GetLocalLowTempDirectory", L"\"", path, L"\" doesn't exist!");
    }
    return path;
}

std::wstring EnvUtils::GetTempFile(const std::wstring& prefix) {
    wchar_t path[MAX_PATH] = {};
    if (GetTempFileNameW(GetTempDirectory().c_str(), prefix.c_str(), 0, path) == 0) {
        const DWORD error = GetLastError();
        Throw(L"EnvUtils::GetTempFile", L"GetTempFileName failed with: ", error);
    }
    return path;
}

std::wstring EnvUtils::GetMachineName() {
    wchar_t name[MAX_COMPUTERNAME_LENGTH + 1] = {};
    DWORD size = MAX_COMPUTERNAME_LENGTH + 1;
    if (!GetComputerNameExW(ComputerNameNetBIOS, name, &size)) {
        const DWORD error = GetLastError();
        Throw(L"EnvUtils::GetMachineName", L"GetComputerNameEx failed with: ", error);
    }
    return name;
}

std::wstring EnvUtils::GetCommonAppDataDirectory() {
    return ReadShellFolder_(RegistryKey::GetLocalMachine(), L"Common AppData");
}
