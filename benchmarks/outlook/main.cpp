#include <log4cxx/level.h>
#include <log4cxx/logger.h>

#include "benchmarks/support/Run.h"

int main(int argc, char** argv) {
    // As on a desk without a log configuration.
    log4cxx::Logger::getRootLogger()->setLevel(log4cxx::Level::getOff());
    return benchmark_support::Run(argc, argv);
}
