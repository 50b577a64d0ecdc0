#pragma once
#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "fuzz/driver/Material.h"

namespace fuzz {

/// Raised by a target when the code under test broke a promise.
class Violation {
public:
    explicit Violation(std::string words) : words_(std::move(words)) {}
    const std::string& Words() const { return words_; }

private:
    std::string words_;
};

/// words: what went wrong where the condition does not hold.
inline void Require(bool holds, const char* words) {
    if (!holds) {
        throw Violation(words);
    }
}

/// One operation under test.
struct Target {
    const char* name;
    Material (*material)();
    /// Runs the operation on the input, and on nothing else: the same input gives the same result. Returns the kind of
    /// result.
    std::string (*run)(UnitsView input);
    /// Names of the failures that it may raise.
    std::vector<std::wstring> raises;
    /// For an operation that remembers what it saw by design: a process makes no more runs than these. 0: no limit.
    std::uint64_t runsPerProcess = 0;
    /// In milliseconds; what takes longer hangs.
    std::uint32_t longestRun = 10000;
    /// In bytes; what takes more grows without bound. A hundred times what the longest input takes on the guard heap.
    std::size_t mostMemory = std::size_t{1} << 30;
};

/// Of this program.
const std::vector<Target>& Targets();

} // namespace fuzz
