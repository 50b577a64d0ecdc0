#pragma once
#include "fuzz/driver/Board.h"

namespace fuzz {

/// Lets a crash, a trap or an abort of this process be noted on the board before it ends.
void NoteFaultsOn(Board& board);

/// Notes a fault and ends the process.
[[noreturn]] void EndWithFault(const char* fault, const char* detail);

} // namespace fuzz
