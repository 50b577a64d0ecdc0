#include "tests/support/ResourceCount.h"

#include <vector>

#include "platform/Windows.h"
#include "tests/support/OpenHandles.h"

namespace test_support {
namespace {

constexpr int kAllSlots = 1 << 16; // more than any system has

int HeapBlocks_() {
    std::vector<HANDLE> heaps(GetProcessHeaps(0, nullptr));
    GetProcessHeaps(static_cast<DWORD>(heaps.size()), heaps.data());
    int count = 0;
    for (const HANDLE heap : heaps) {
        PROCESS_HEAP_ENTRY entry{};
        HeapLock(heap);
        while (HeapWalk(heap, &entry)) {
            count += (entry.wFlags & PROCESS_HEAP_ENTRY_BUSY) != 0 ? 1 : 0;
        }
        HeapUnlock(heap);
    }
    return count;
}

/// Takes all that are left, and gives them back.
template <class Allocate, class Free>
int FreeSlots_(Allocate allocate, Free free) {
    std::vector<DWORD> slots;
    for (DWORD slot = allocate(); slot != TLS_OUT_OF_INDEXES; slot = allocate()) {
        slots.push_back(slot);
    }
    for (const DWORD slot : slots) {
        free(slot);
    }
    return static_cast<int>(slots.size());
}

} // namespace

ResourceCount ResourceCount::Now() {
    // First, since the system keeps memory for each slot that was ever taken.
    const int freeSlots =
        FreeSlots_([] { return TlsAlloc(); }, TlsFree) + FreeSlots_([] { return FlsAlloc(nullptr); }, FlsFree);
    return {static_cast<int>(CountOpenHandles()), HeapBlocks_(), kAllSlots - freeSlots};
}

std::wstring ResourceCount::Since(const ResourceCount& earlier) const {
    return std::to_wstring(handles - earlier.handles) + L" handles, " +
           std::to_wstring(heapBlocks - earlier.heapBlocks) + L" heap blocks, " +
           std::to_wstring(threadSlots - earlier.threadSlots) + L" thread slots";
}

} // namespace test_support
