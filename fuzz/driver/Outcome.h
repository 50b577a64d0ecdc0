#pragma once
#include <exception>
#include <string>
#include <string_view>

#include "fuzz/driver/Board.h"

namespace fuzz {

/// The words of a failure without what differs from input to input: what follows the first colon, numbers, and what
/// stands in quotes or angle brackets.
std::string WithoutVariables(std::string_view words);

/// The qualified name of a standard exception's class.
std::string NameOfType(const std::exception& failure);

/// Counts a run's outcome on the board.
void CountOutcome(Board& board, std::string_view words);

} // namespace fuzz
