#pragma once
#include <string>

#include <benchmark/benchmark.h>

namespace benchmark_support {

using Body = void (*)(benchmark::State& state);

/// How often an operation is measured.
struct Effort {
    int repetitions = 9;
    int iterations = 0; ///< of each repetition; 0: as many as fill its time
    int floorIterations = 0;
};

/// A line of the table: an operation beside its floor, measured in turns within one run. Stands at namespace scope.
class Row {
public:
    /// goal: the ratio of the medians to reach, in words; empty for none.
    Row(const std::string& name, const std::string& goal, Body operation, Body floor, const Effort& effort = {});
    /// floor: nanoseconds that are given, not measured.
    Row(const std::string& name, const std::string& goal, Body operation, double floor);
};

/// Prints a line for each row measured: both medians, their difference and ratio, and the goal.
class RowReporter : public benchmark::BenchmarkReporter {
public:
    bool ReportContext(const Context& context) override;
    void ReportRuns(const std::vector<Run>& runs) override;
    void Finalize() override;
};

} // namespace benchmark_support
