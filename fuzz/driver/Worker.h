#pragma once
#include "fuzz/driver/Board.h"
#include "fuzz/driver/Target.h"

namespace fuzz {

/// The process that runs the code under test: does what the board asks for and returns the exit code. A fault ends the
/// process in the middle, and what can be said about it stands on the board.
int Work(Board& board, const Target& target);

} // namespace fuzz
