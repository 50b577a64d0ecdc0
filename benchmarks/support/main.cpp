#include "benchmarks/support/Row.h"

int main(int argc, char** argv) {
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) {
        return 1;
    }
    benchmark_support::RowReporter reporter;
    benchmark::RunSpecifiedBenchmarks(&reporter);
}
