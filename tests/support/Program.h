#pragma once
#include <filesystem>
#include <string>
#include <vector>

#include "foundation/AutoHandle.h"
#include "platform/Windows.h"

namespace test_support {

/// A child process whose output goes to a file. What still runs at the end is terminated.
class Program {
public:
    /// Throws std::runtime_error if the process cannot be started. arguments: quoted here.
    Program(const std::filesystem::path& executable, const std::vector<std::wstring>& arguments,
            std::filesystem::path output);
    ~Program();
    Program(const Program&) = delete;
    Program& operator=(const Program&) = delete;

    HANDLE Handle() const { return process_.Get(); }
    DWORD Id() const { return id_; }
    /// Whether the process ended by itself within the time.
    bool EndsWithin(DWORD milliseconds) const;
    /// The exit status, waiting for the end. Throws std::runtime_error when the process hangs.
    DWORD Wait() const;
    void Terminate();
    /// What it has written so far, UTF-8.
    std::string Output() const;

private:
    vorlek::FileHandle process_;
    DWORD id_ = 0;
    std::filesystem::path output_;
};

/// The whole of a file, empty if there is none.
std::string ReadAll(const std::filesystem::path& path);

} // namespace test_support
