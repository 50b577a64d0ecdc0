#include "benchmarks/support/Run.h"

#include "benchmarks/support/Row.h"

namespace benchmark_support {

int Run(int argc, char** argv) {
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) {
        return 1;
    }
    RowReporter reporter;
    benchmark::RunSpecifiedBenchmarks(&reporter);
    return 0;
}

} // namespace benchmark_support
