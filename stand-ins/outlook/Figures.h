#pragma once
#include <cstddef>
#include <string>

namespace stand_ins {

/// The threads of this process.
std::size_t CountThreads();

/// What this process holds at a moment: what must not grow from one mail to the next.
struct Figures {
    std::size_t handles = 0;
    std::size_t heapBlocks = 0;
    std::size_t threads = 0;
    std::size_t objects = 0; ///< of the object model, alive

    static Figures Measure();
    /// "handles 12, heap blocks 345, threads 1, objects 6"
    std::wstring ToString() const;
};

} // namespace stand_ins
