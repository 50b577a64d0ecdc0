#pragma once
#include <filesystem>

#include "platform/Windows.h"

namespace stand_ins {

/// Holds a profile for one Outlook at a time; the system gives it back when the process dies.
class ProfileLock {
public:
    /// Creates the profile's folder when it is missing. Failure: std::runtime_error with one line.
    explicit ProfileLock(const std::filesystem::path& profile);
    ~ProfileLock();
    ProfileLock(const ProfileLock&) = delete;
    ProfileLock& operator=(const ProfileLock&) = delete;

private:
    HANDLE file_;
};

} // namespace stand_ins
