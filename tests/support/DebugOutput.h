#pragma once
#include <string>
#include <vector>

#include "platform/Windows.h"

namespace test_support {

/// Collects what this thread gives to OutputDebugString while it lives. One at a time.
class DebugOutput {
public:
    DebugOutput();
    ~DebugOutput();
    DebugOutput(const DebugOutput&) = delete;
    DebugOutput& operator=(const DebugOutput&) = delete;

    const std::vector<std::string>& Lines() const { return lines_; }

private:
    static LONG CALLBACK Collect_(EXCEPTION_POINTERS* raised);

    static thread_local DebugOutput* current_;
    void* handler_;
    std::vector<std::string> lines_;
};

} // namespace test_support
