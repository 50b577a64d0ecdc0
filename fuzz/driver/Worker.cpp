#include "fuzz/driver/Worker.h"

#include <algorithm>
#include <cstring>
#include <string_view>

#include "foundation/Exception.h"
#include "foundation/StringUtils.h"
#include "fuzz/driver/FaultNote.h"
#include "fuzz/driver/Mutator.h"
#include "fuzz/driver/Outcome.h"

namespace fuzz {
namespace {

/// A failure as an outcome, if the target may raise it; otherwise the end.
std::string Judge_(const Target& target, const vorlek::Exception& failure) {
    const std::string words = vorlek::StringUtils::ToUtf8(failure.GetMessage());
    std::string outcome = vorlek::StringUtils::ToUtf8(failure.GetExceptionName()) + ": " + WithoutVariables(words);
    if (std::ranges::find(target.raises, failure.GetExceptionName()) == target.raises.end()) {
        EndWithFault(("raised " + outcome).c_str(), words.c_str());
    }
    return outcome;
}

std::string RunOnce_(const Target& target, UnitsView input) {
    try {
        return target.run(input);
    } catch (const Violation& violation) {
        EndWithFault(violation.Words().c_str(), "");
    } catch (const vorlek::Exception& failure) {
        return Judge_(target, failure);
    } catch (const std::exception& failure) {
        EndWithFault(("raised " + NameOfType(failure)).c_str(), failure.what());
    } catch (...) {
        EndWithFault("raised something unknown", "");
    }
}

class Runner {
public:
    Runner(Board& board, const Target& target) : board_(board), target_(target) {}

    /// Notes the input on the board first, since the run may be the process's last.
    void Run(UnitsView input) {
        board_.inputSize = static_cast<std::uint32_t>(input.size());
        std::memcpy(board_.input, input.data(), input.size() * sizeof(wchar_t));
        ++board_.heartbeat;
        const std::string outcome = RunOnce_(target_, input);
        if (board_.task == Task::Runs) {
            CountOutcome(board_, outcome);
        }
    }

    void MakeRuns() {
        const Material material = target_.material();
        Mutator mutator(material, board_.seed ^ Hash(std::string_view(target_.name)));
        Units input;
        input.reserve(2 * kMaxUnits);
        for (; board_.run < board_.end && !board_.stop; ++board_.run) {
            mutator.Make(board_.run, input);
            Run(input);
        }
    }

    /// Leaves out ever smaller parts.
    void Shrink() {
        const UnitsView base(board_.base, board_.baseSize);
        for (; board_.part != 0; board_.part /= 2, board_.begin = 0) {
            for (; board_.begin < base.size() && !board_.stop; board_.begin += board_.part) {
                Units input(base);
                input.erase(board_.begin, board_.part);
                Run(input);
            }
        }
    }

private:
    Board& board_;
    const Target& target_;
};

} // namespace

int Work(Board& board, const Target& target) {
    NoteFaultsOn(board);
    Runner runner(board, target);
    switch (board.task) {
    case Task::Runs:
        runner.MakeRuns();
        break;
    case Task::Replay:
        runner.Run(UnitsView(Units(board.input, board.inputSize)));
        break;
    case Task::Shrink:
        runner.Shrink();
        break;
    }
    return static_cast<int>(kDone);
}

} // namespace fuzz
