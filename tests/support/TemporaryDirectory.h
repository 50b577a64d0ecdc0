#pragma once
#include <string>

namespace test_support {

/// A new directory of the test's own, gone with all it holds at the end, whatever the attributes.
class TemporaryDirectory {
public:
    TemporaryDirectory();
    ~TemporaryDirectory();
    TemporaryDirectory(const TemporaryDirectory&) = delete;
    TemporaryDirectory& operator=(const TemporaryDirectory&) = delete;

    /// Without a backslash at the end.
    const std::wstring& Path() const { return path_; }
    /// The path of an entry, which need not exist.
    std::wstring operator/(const std::wstring& name) const { return path_ + L'\\' + name; }
    /// Makes a file with these bytes; returns its path.
    std::wstring MakeFile(const std::wstring& name, const std::string& bytes = {}) const;

private:
    std::wstring path_;
};

/// The bytes of a file; a failure of the test, and no bytes, if it cannot be read.
std::string ReadBytes(const std::wstring& path);

} // namespace test_support
