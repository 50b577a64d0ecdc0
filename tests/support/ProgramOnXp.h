#pragma once
#include <string>

#include "tests/support/TemporaryFolder.h"

namespace test_support {

/// A copy of the test program to which the system says that it is Windows XP for 64-bit machines.
class ProgramOnXp {
public:
    ProgramOnXp();
    ProgramOnXp(const ProgramOnXp&) = delete;
    ProgramOnXp& operator=(const ProgramOnXp&) = delete;
    ~ProgramOnXp();

    const std::wstring& Path() const { return path_; }

private:
    TemporaryFolder folder_;
    std::wstring settings_;
    std::wstring path_;
};

} // namespace test_support
