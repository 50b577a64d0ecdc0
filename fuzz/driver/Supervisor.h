#pragma once
#include <cstdint>
#include <string>
#include <vector>

#include "fuzz/driver/Board.h"
#include "fuzz/driver/Target.h"
#include "platform/Windows.h"

namespace fuzz {

/// One thing that must not happen, with the smallest input found for it.
struct Fault {
    std::string words;
    std::string detail;
    std::uint64_t run; ///< the first one that it ended
    Units input;
    bool repeats; ///< whether the input brings it about by itself, in a new process
};

struct Findings {
    std::uint64_t runs = 0;
    double seconds = 0; ///< without the time for shrinking
    std::vector<OutcomeCount> outcomes;
    std::vector<Fault> faults;
    bool gaveUp = false; ///< too many faults: the rest of the runs was not made
};

/// The most of either.
struct Budget {
    std::uint64_t runs = ~0ULL;
    DWORD milliseconds = INFINITE;
};

/// Makes the runs of a seed in worker processes, a new one after each fault.
Findings Fuzz(const Target& target, std::uint64_t seed, const Budget& budget);

} // namespace fuzz
