#include "stand-ins/outlook/Figures.h"

#include <cstdint>
#include <vector>

#include "stand-ins/outlook/Com.h"

#include <tlhelp32.h>

#include "stand-ins/outlook/Object.h"

namespace stand_ins {
namespace {

// Probed one by one: not every system that this runs on counts them. Low numbers are given out first.
std::size_t Handles() {
    constexpr int kGap = 1000; // that many free numbers in a row are the end
    std::size_t count = 0;
    for (std::uintptr_t value = 4, last = 0; (value - last) / 4 < kGap; value += 4) {
        DWORD flags = 0;
        if (GetHandleInformation(reinterpret_cast<HANDLE>(value), &flags)) {
            ++count;
            last = value;
        }
    }
    return count;
}

std::size_t HeapBlocks() {
    std::vector<HANDLE> heaps(GetProcessHeaps(0, nullptr));
    heaps.resize(GetProcessHeaps(static_cast<DWORD>(heaps.size()), heaps.data()));
    std::size_t count = 0;
    for (const HANDLE heap : heaps) {
        HeapLock(heap);
        for (PROCESS_HEAP_ENTRY entry{}; HeapWalk(heap, &entry);) {
            count += (entry.wFlags & PROCESS_HEAP_ENTRY_BUSY) != 0 ? 1U : 0U;
        }
        HeapUnlock(heap);
    }
    return count;
}

} // namespace

std::size_t CountThreads() {
    const HANDLE snapshot = CreateToolhelp32Snapshot(TH32CS_SNAPTHREAD, 0);
    std::size_t count = 0;
    THREADENTRY32 thread{};
    thread.dwSize = sizeof thread;
    for (BOOL found = Thread32First(snapshot, &thread); found; found = Thread32Next(snapshot, &thread)) {
        count += thread.th32OwnerProcessID == GetCurrentProcessId() ? 1U : 0U;
    }
    CloseHandle(snapshot);
    return count;
}

Figures Figures::Measure() {
    return {Handles(), HeapBlocks(), CountThreads(), Object::Living()};
}

std::wstring Figures::ToString() const {
    return L"handles " + std::to_wstring(handles) + L", heap blocks " + std::to_wstring(heapBlocks) + L", threads " +
           std::to_wstring(threads) + L", objects " + std::to_wstring(objects);
}

} // namespace stand_ins
