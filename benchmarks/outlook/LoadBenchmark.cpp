#include "benchmarks/outlook/AddIn.h"
#include "benchmarks/outlook/Desk.h"
#include "benchmarks/support/Row.h"

namespace {

using namespace outlook_benchmarks;
using benchmark_support::Row;

constexpr double kOutlooksLimit = 1e9; // ns, at which Outlook disables an add-in

void LoadAndConnect_(benchmark::State& state) {
    const Folder folder;
    stand_ins::Outlook outlook({.profile = folder.Path() / L"profile"});
    for (auto turn : state) {
        auto addIn = std::make_unique<AddIn>(outlook.Application());
        state.PauseTiming();
        addIn.reset();
        if (AddIn::IsLoaded()) {
            return state.SkipWithError("the add-in stays loaded");
        }
        state.ResumeTiming();
    }
}

const Row load("load and OnConnection / 1000 ms", "at most 0.05", LoadAndConnect_, kOutlooksLimit);

} // namespace
