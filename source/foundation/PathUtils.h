#pragma once
#include <string>

#include "platform/Windows.h"

namespace vorlek {

/// The text of paths. Failures raise Exception with the system's error.
class PathUtils {
public:
    /// What the system is given for the path: with the prefix "\\?\" if it is longer than MAX_PATH,
    /// unless it is so prefixed already or begins with ".".
    static std::wstring FixLongPath(const std::wstring& path);
    /// Both, with exactly one backslash put between if the left side ends in none.
    static std::wstring Combine(const std::wstring& left, const std::wstring& right);

    /// Of a path that exists.
    static std::wstring GetLongPath(const std::wstring& path);
    static std::wstring GetShortPath(const std::wstring& path);
    /// With %NAME% replaced by the environment's values.
    static std::wstring ExpandPath(const std::wstring& path);
    /// "\Device\HarddiskVolume1\x" as "C:\x"; a path of no drive's device comes back as it is.
    static std::wstring CanonizePath(const std::wstring& path);
};

} // namespace vorlek
