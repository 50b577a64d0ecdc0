#pragma once
#include <filesystem>
#include <string>

#include <objbase.h>

#include "platform/Windows.h"

namespace test_support {

/// A folder of the test's own under the system's temporary one, gone with all that is in it at the end.
class TemporaryFolder {
public:
    TemporaryFolder() : path_(std::filesystem::temp_directory_path() / Name_()) {
        std::filesystem::create_directories(path_);
    }
    ~TemporaryFolder() {
        std::error_code ignored; // a file that is still open stays behind
        std::filesystem::remove_all(path_, ignored);
    }
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;

    const std::filesystem::path& Path() const { return path_; }
    std::wstring operator/(const std::wstring& name) const { return (path_ / name).wstring(); }

private:
    static std::wstring Name_() {
        GUID id;
        wchar_t text[39];
        CoCreateGuid(&id);
        StringFromGUID2(id, text, 39);
        return text;
    }

    std::filesystem::path path_;
};

} // namespace test_support
