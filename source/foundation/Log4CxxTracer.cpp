#include "foundation/Log4CxxTracer.h"

#include <log4cxx/level.h>

#include "foundation/Log.h"

namespace vorlek {

Log4CxxTracer::Log4CxxTracer(const LoggerHolder& holder) : logger_(holder.Get()) {}

Log4CxxTracer::~Log4CxxTracer() {
    if (entered_) {
        WriteLog(logger_, log4cxx::Level::getTrace(), L"Left", *location_);
    }
}

void Log4CxxTracer::Trace(const log4cxx::spi::LocationInfo& location) {
    if (!log4cxx::Logger::isTraceEnabledFor(logger_)) {
        return;
    }
    entered_ = true;
    location_ = std::make_unique<log4cxx::spi::LocationInfo>(location);
    WriteLog(logger_, log4cxx::Level::getTrace(), L"Entered", *location_);
}

} // namespace vorlek
