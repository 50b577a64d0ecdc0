#include "stand-ins/outlook/ProfileLock.h"

#include <stdexcept>

#include "stand-ins/outlook/Text.h"

namespace stand_ins {

ProfileLock::ProfileLock(const std::filesystem::path& profile) {
    std::error_code ignored;
    std::filesystem::create_directories(profile, ignored);
    if (!std::filesystem::is_directory(profile, ignored)) {
        throw std::runtime_error("the profile " + ToUtf8(profile.wstring()) + " is no folder and cannot become one");
    }
    file_ = CreateFileW((profile / L"in-use").c_str(), GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS,
                        FILE_FLAG_DELETE_ON_CLOSE, nullptr);
    if (file_ != INVALID_HANDLE_VALUE) {
        return;
    }
    const DWORD error = GetLastError();
    const std::string name = ToUtf8(profile.wstring());
    throw std::runtime_error(error == ERROR_SHARING_VIOLATION
                                 ? "the profile " + name + " is in use by another Outlook"
                                 : "the profile " + name + " cannot be opened: error " + std::to_string(error));
}

ProfileLock::~ProfileLock() {
    CloseHandle(file_);
}

} // namespace stand_ins
