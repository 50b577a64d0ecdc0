#pragma once
#include <string>

#include "foundation/AutoHandle.h"
#include "fuzz/driver/Board.h"
#include "fuzz/driver/Target.h"

namespace fuzz {

/// A board in memory that child processes inherit.
class SharedBoard {
public:
    /// A new one, zero-filled. Throws std::runtime_error.
    SharedBoard();
    /// The one that this process inherited.
    explicit SharedBoard(HANDLE inherited);

    Board& operator*() const { return *reinterpret_cast<Board*>(view_.Get()); }
    Board* operator->() const { return &**this; }
    HANDLE Handle() const { return section_.Get(); }

private:
    void Map_();

    vorlek::FileHandle section_;
    vorlek::ViewHandle view_;
};

/// The fault of a run that takes too long.
constexpr const char* kHang = "hang";

/// Lets a process do what the board asks for, and returns when it has ended: with the fault that ended it, or empty.
/// deadline: in GetTickCount64's time, when it is asked to end. longestRun: in milliseconds. Throws std::runtime_error
/// if no process can be started.
std::string RunWorker(const SharedBoard& board, const Target& target, ULONGLONG deadline, DWORD longestRun);

/// For main: plays the worker that the command line asks for and returns true, or returns false where it asks for none.
bool PlayWorker(int argc, char** argv, int& status);

} // namespace fuzz
