#include "tests/support/TemporaryFolder.h"

#include <fstream>
#include <iterator>
#include <system_error>

#include "platform/Windows.h"

namespace test_support {

TemporaryFolder::TemporaryFolder() {
    wchar_t name[MAX_PATH];
    GetTempFileNameW(std::filesystem::temp_directory_path().c_str(), L"fol", 0, name);
    DeleteFileW(name); // the name is taken; its file gives way to the folder
    path_ = name;
    std::filesystem::create_directory(path_);
}

TemporaryFolder::~TemporaryFolder() {
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
}

std::string ReadBytes(const std::filesystem::path& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

void WriteBytes(const std::filesystem::path& path, const std::string& bytes) {
    std::ofstream(path, std::ios::binary).write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
}

} // namespace test_support
