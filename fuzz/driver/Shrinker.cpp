#include "fuzz/driver/Shrinker.h"

#include <algorithm>

#include "fuzz/driver/WorkerProcess.h"

namespace fuzz {
namespace {

constexpr DWORD kMostMs = 30000;
constexpr DWORD kHangMs = 1000;

bool Repeats_(const SharedBoard& board, const Target& target, const Fault& fault) {
    board->task = Task::Replay;
    board->inputSize = static_cast<std::uint32_t>(fault.input.size());
    fault.input.copy(board->input, fault.input.size());
    return RunWorker(board, target, ~0ULL, target.longestRun) == fault.words;
}

/// Once through all parts of all sizes. Returns whether any could be left out.
bool ShrinkOnce_(const SharedBoard& board, const Target& target, Fault& fault, ULONGLONG deadline) {
    const DWORD longestRun = fault.words == kHang ? std::min<DWORD>(kHangMs, target.longestRun) : target.longestRun;
    bool isSmaller = false;
    board->task = Task::Shrink;
    board->begin = 0;
    board->part = static_cast<std::uint32_t>(fault.input.size() / 2);
    while (GetTickCount64() < deadline) {
        board->baseSize = static_cast<std::uint32_t>(fault.input.size());
        fault.input.copy(board->base, fault.input.size());
        const std::string words = RunWorker(board, target, deadline, longestRun);
        if (words.empty()) {
            break;
        }
        if (words == fault.words) {
            fault.input.assign(board->input, board->inputSize);
            fault.detail = board->detail;
            isSmaller = true;
        } else {
            board->begin += board->part;
        }
    }
    return isSmaller;
}

} // namespace

Fault Shrink(const Target& target, Fault fault) {
    const SharedBoard board;
    const ULONGLONG deadline = GetTickCount64() + kMostMs;
    fault.repeats = Repeats_(board, target, fault);
    while (fault.repeats && fault.input.size() > 1 && ShrinkOnce_(board, target, fault, deadline)) {
    }
    return fault;
}

} // namespace fuzz
