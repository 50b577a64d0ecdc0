#include "benchmarks/support/Run.h"

int main(int argc, char** argv) {
    return benchmark_support::Run(argc, argv);
}
