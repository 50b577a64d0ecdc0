#include "fuzz/driver/Supervisor.h"

#include <algorithm>

#include "fuzz/driver/Shrinker.h"
#include "fuzz/driver/WorkerProcess.h"

namespace fuzz {
namespace {

constexpr std::size_t kMostFaults = 20;
constexpr int kMostRestarts = 50;

bool IsKnown_(const Findings& findings, const std::string& words) {
    return std::ranges::find(findings.faults, words, &Fault::words) != findings.faults.end();
}

/// What stands on the board after a fault.
Fault FaultOf_(const SharedBoard& board, std::string words) {
    return {std::move(words), board->detail, board->run, Units(board->input, board->inputSize), false};
}

} // namespace

Findings Fuzz(const Target& target, std::uint64_t seed, const Budget& budget) {
    const SharedBoard board;
    board->seed = seed;
    Findings findings;
    const ULONGLONG start = GetTickCount64();
    ULONGLONG shrinking = 0;
    int restarts = 0;
    while (board->run < budget.runs && !findings.gaveUp) {
        const ULONGLONG deadline = budget.milliseconds == INFINITE ? ~0ULL : start + shrinking + budget.milliseconds;
        board->task = Task::Runs;
        board->end = budget.runs;
        if (target.runsPerProcess != 0) {
            board->end = std::min(budget.runs, board->run + target.runsPerProcess);
        }
        const std::string words = RunWorker(board, target, deadline, target.longestRun);
        if (words.empty()) {
            if (GetTickCount64() >= deadline) {
                break;
            }
            continue;
        }
        if (!IsKnown_(findings, words)) {
            const ULONGLONG before = GetTickCount64();
            findings.faults.push_back(Shrink(target, FaultOf_(board, words)));
            shrinking += GetTickCount64() - before;
        }
        ++board->run;
        findings.gaveUp = findings.faults.size() == kMostFaults || ++restarts == kMostRestarts;
    }
    findings.runs = board->run;
    findings.seconds = static_cast<double>(GetTickCount64() - start - shrinking) / 1000;
    findings.outcomes.assign(board->outcomes.begin(), board->outcomes.begin() + board->outcomeCount);
    return findings;
}

} // namespace fuzz
