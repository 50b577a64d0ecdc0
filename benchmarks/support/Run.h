#pragma once

namespace benchmark_support {

/// Measures the rows that the arguments choose and prints their table: the exit code of the program.
int Run(int argc, char** argv);

} // namespace benchmark_support
