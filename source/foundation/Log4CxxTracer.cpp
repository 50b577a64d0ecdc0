#include "foundation/Log4CxxTracer.h"

#include <string>

#include <log4cxx/level.h>

namespace vorlek {

Log4CxxTracer::Log4CxxTracer(const LoggerHolder& holder) : logger_(holder.Get()) {}

Log4CxxTracer::~Log4CxxTracer() {
    if (entered_) {
        logger_->forcedLog(log4cxx::Level::getTrace(), std::wstring(L"Left"), *location_);
    }
}

void Log4CxxTracer::Trace(const log4cxx::spi::LocationInfo& location) {
    if (!log4cxx::Logger::isTraceEnabledFor(logger_)) {
        return;
    }
    entered_ = true;
    location_ = std::make_unique<log4cxx::spi::LocationInfo>(location);
    logger_->forcedLog(log4cxx::Level::getTrace(), std::wstring(L"Entered"), *location_);
}

} // namespace vorlek
