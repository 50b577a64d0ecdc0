#pragma once
#include "tests/support/ReplacedImport.h"

namespace test_support {

/// Watches, while it lives, which critical sections this program's own calls take and give back on the calling
/// thread.
class HeldSections {
public:
    /// How often one is held now; a section that its owner took twice counts twice.
    int Count() const { return count_; }
    /// How often the last one that was held was given back.
    int Releases() const { return releases_; }

private:
    bool IsWatched_() const { return GetCurrentThreadId() == thread_; }

    DWORD thread_ = GetCurrentThreadId();
    int count_ = 0;
    int releases_ = 0;
    ReplacedImport<"EnterCriticalSection", decltype(EnterCriticalSection)> enter_{[this](CRITICAL_SECTION* section) {
        enter_.Original(section);
        count_ += IsWatched_() ? 1 : 0;
    }};
    ReplacedImport<"LeaveCriticalSection", decltype(LeaveCriticalSection)> leave_{[this](CRITICAL_SECTION* section) {
        if (IsWatched_() && --count_ == 0) {
            ++releases_;
        }
        leave_.Original(section);
    }};
};

} // namespace test_support
