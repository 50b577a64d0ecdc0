#pragma once
#include <string>

namespace test_support {

/// What this process has of the system at one moment. What leaks shows in the difference of two.
struct ResourceCount {
    int handles;
    int heapBlocks;  ///< in all heaps
    int threadSlots; ///< taken with TlsAlloc and FlsAlloc

    static ResourceCount Now();

    /// What came to this one since an earlier one: "0 handles, 0 heap blocks, 0 thread slots".
    std::wstring Since(const ResourceCount& earlier) const;
};

} // namespace test_support
