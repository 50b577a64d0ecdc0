#include "benchmarks/support/Row.h"

#include <cstdio>
#include <map>
#include <vector>

namespace benchmark_support {
namespace {

constexpr double kSecondsPerRepetition = 0.05;
const std::string kFloor = " (floor)";

struct Line {
    std::string name;
    std::string goal;
    double floor = 0; ///< 0: it is measured, too
};

std::vector<Line>& Lines_() {
    static std::vector<Line> lines;
    return lines;
}

/// Nanoseconds by the name of the benchmark; only what was measured without an error.
std::map<std::string, double>& Medians_() {
    static std::map<std::string, double> medians;
    return medians;
}

void Register_(const std::string& name, Body body, int repetitions, int iterations) {
    auto* const registered = benchmark::RegisterBenchmark(name.c_str(), body)->UseRealTime()->Repetitions(repetitions);
    if (iterations == 0) {
        registered->MinTime(kSecondsPerRepetition);
    } else {
        registered->Iterations(iterations);
    }
}

} // namespace

Row::Row(const std::string& name, const std::string& goal, Body operation, Body floor, const Effort& effort) {
    Lines_().push_back({name, goal});
    Register_(name, operation, effort.repetitions, effort.iterations);
    Register_(name + kFloor, floor, effort.repetitions, effort.floorIterations);
}

Row::Row(const std::string& name, const std::string& goal, Body operation, double floor) {
    Lines_().push_back({name, goal, floor});
    Register_(name, operation, Effort().repetitions, 0);
}

bool RowReporter::ReportContext(const Context&) {
    return true;
}

void RowReporter::ReportRuns(const std::vector<Run>& runs) {
    for (const Run& run : runs) {
        if (run.error_occurred) {
            std::printf("%s: %s\n", run.run_name.function_name.c_str(), run.error_message.c_str());
        } else if (run.aggregate_name == "median") {
            Medians_()[run.run_name.function_name] = run.GetAdjustedRealTime();
        }
    }
}

void RowReporter::Finalize() {
    std::printf("%-53s %14s %14s %14s %7s  %s\n", "median, ns", "operation", "floor", "difference", "ratio", "goal");
    for (const auto& [name, goal, given] : Lines_()) {
        if (given != 0) {
            Medians_()[name + kFloor] = given;
        }
        const auto operation = Medians_().find(name);
        const auto floor = Medians_().find(name + kFloor);
        if (operation != Medians_().end() && floor != Medians_().end()) {
            std::printf("%-53s %14.1f %14.1f %14.1f %7.2f  %s\n", name.c_str(), operation->second, floor->second,
                        operation->second - floor->second, operation->second / floor->second, goal.c_str());
        }
    }
}

} // namespace benchmark_support
