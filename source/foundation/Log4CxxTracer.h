#pragma once
#include <memory>
#include <string>

#include <log4cxx/logger.h>
#include <log4cxx/spi/location/locationinfo.h>

#include "foundation/LoggerHolder.h"

namespace vorlek {

/// Logs that a function was entered and left, at Trace:
///     Log4CxxTracer tracer(logger_);
///     if (log4cxx::Logger::isTraceEnabledFor(logger_)) { tracer.Trace(LOG_SITE); }
class Log4CxxTracer {
public:
    explicit Log4CxxTracer(const LoggerHolder& holder);
    Log4CxxTracer(const Log4CxxTracer&) = delete;
    Log4CxxTracer& operator=(const Log4CxxTracer&) = delete;
    virtual ~Log4CxxTracer();

    /// Says "Entered" now and "Left" when the scope ends; nothing where Trace is off.
    void Trace(const log4cxx::spi::LocationInfo& location);

private:
    std::string text_;
    log4cxx::LoggerPtr logger_;
    bool entered_ = false;
    std::unique_ptr<log4cxx::spi::LocationInfo> location_;
};

} // namespace vorlek
