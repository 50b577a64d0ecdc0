#pragma once
#include <filesystem>
#include <string>

namespace test_support {

/// A new folder that goes with the object, whatever lies in it.
class TemporaryFolder {
public:
    TemporaryFolder();
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;
    ~TemporaryFolder();

    const std::filesystem::path& Path() const { return path_; }
    std::filesystem::path operator/(const std::wstring& name) const { return path_ / name; }

private:
    std::filesystem::path path_;
};

/// The bytes of a file.
std::string ReadBytes(const std::filesystem::path& path);
/// Makes the file anew.
void WriteBytes(const std::filesystem::path& path, const std::string& bytes);

} // namespace test_support
