#pragma once
#include <string>

#include "platform/Windows.h"

namespace vorlek::PluginUtils {

/// The small family of file operations that the plug-in side uses; others know it by this spelling.
class EnviornmentUtils {
public:
    /// Creates the directory and every missing parent. Returns whether it created the last one: false
    /// when it exists. Raises IOException.
    static bool CreateDir(const std::wstring& path, SECURITY_ATTRIBUTES* security);
    /// As FileUtils has them.
    static void RemoveFile(const std::wstring& path);
    static void RemovePath(const std::wstring& path);
};

} // namespace vorlek::PluginUtils
