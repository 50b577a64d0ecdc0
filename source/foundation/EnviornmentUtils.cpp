#include "foundation/EnviornmentUtils.h"

#include <shlobj.h>

#include "foundation/Exception.h"
#include "foundation/FileRemoval.h"
#include "foundation/Throw.h"

namespace vorlek::PluginUtils {

bool EnviornmentUtils::CreateDir(const std::wstring& path, SECURITY_ATTRIBUTES* security) {
    if (path.empty()) {
        Throw<IOException>(L"vorlek::PluginUtils::EnviornmentUtils::CreateDir", L"Invalid path!");
    }
    const int error = SHCreateDirectoryExW(nullptr, path.c_str(), security);
    if (error != ERROR_SUCCESS && error != ERROR_ALREADY_EXISTS && error != ERROR_FILE_EXISTS) {
        Throw<IOException>(L"vorlek::PluginUtils::EnviornmentUtils::CreateDir", L"Failed to create a directory <", path,
                           L"> Error: ", error);
    }
    return error == ERROR_SUCCESS;
}

void EnviornmentUtils::RemoveFile(const std::wstring& path) {
    RemoveFileFrom(L"vorlek::PluginUtils::EnviornmentUtils::RemoveFile", path);
}

void EnviornmentUtils::RemovePath(const std::wstring& path) {
    RemovePathFrom(L"vorlek::PluginUtils::EnviornmentUtils::RemovePath", path);
}

} // namespace vorlek::PluginUtils
