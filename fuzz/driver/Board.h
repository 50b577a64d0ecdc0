#pragma once
#include <array>
#include <atomic>
#include <cstdint>

#include "fuzz/driver/Material.h"

namespace fuzz {

enum class Task : std::uint32_t {
    Runs,   ///< the runs from `run` to `end`
    Replay, ///< `input` once
    Shrink, ///< `base` without each part of it, from `begin` and `part` on
};

/// A kind of result and how often it came.
struct OutcomeCount {
    char words[160];
    std::uint64_t runs;
};

/// What a supervisor and its worker share. It outlives the worker, so the last input stands here when a run ends it.
struct Board {
    Task task;
    std::uint64_t seed;
    std::uint64_t end;
    std::atomic<std::uint64_t> run;
    std::atomic<std::uint64_t> heartbeat; ///< goes up with each run
    std::atomic<bool> stop;               ///< asks the worker to end after the present run

    std::uint32_t inputSize;
    wchar_t input[kMaxUnits];

    std::uint32_t baseSize;
    wchar_t base[kMaxUnits];
    std::uint32_t part;  ///< size of the parts left out
    std::uint32_t begin; ///< of the part left out at present

    char fault[256];  ///< what happened; the same words are the same fault
    char detail[512]; ///< what else helps to understand it

    std::uint32_t outcomeCount;
    std::array<OutcomeCount, 128> outcomes; ///< the last one counts what found no room
};

/// The worker's exit codes.
constexpr std::uint32_t kDone = 0;
constexpr std::uint32_t kFault = 77; ///< it stands on the board

} // namespace fuzz
