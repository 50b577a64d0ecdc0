#pragma once
#include <gtest/gtest.h>

#include "platform/Windows.h"

namespace test_support {

/// Ends the process, with the name of the test that hangs, when one test takes longer than kLimitMs.
class HangGuard {
public:
    static constexpr DWORD kLimitMs = 480000; // no test is a matter of time, however busy the machine

    HangGuard();
    ~HangGuard();
    HangGuard(const HangGuard&) = delete;
    HangGuard& operator=(const HangGuard&) = delete;

    /// Tells the guard where each test begins; GoogleTest owns the result.
    testing::TestEventListener* NewListener();

private:
    static DWORD WINAPI Watch_(void* self);

    HANDLE progress_; ///< set at each beginning of a test
    HANDLE finished_;
    HANDLE watcher_;
};

} // namespace test_support
