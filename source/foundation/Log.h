#pragma once
// Log statements. The level is tested first, with one inline comparison when it is off; only then is
// the text put together: LOG_DEBUG(logger, L"Successfully added " << id << L" to the registry.").
// The logger is a LoggerHolder or a log4cxx::LoggerPtr; a null one logs nothing.
#include <string>

#include <log4cxx/helpers/messagebuffer.h>
#include <log4cxx/level.h>
#include <log4cxx/logger.h>
#include <log4cxx/spi/location/locationinfo.h>

#include "foundation/LoggerHolder.h"

namespace vorlek {

/// Logs a line, whatever its level. A log that fails, for want of room on the disk say, must not be felt by what is
/// logged, which may be a destructor or a border: what log4cxx raises ends here.
void WriteLog(const log4cxx::LoggerPtr& logger, const log4cxx::LevelPtr& level, const std::wstring& text,
              const log4cxx::spi::LocationInfo& site);

} // namespace vorlek

#define LOG_SITE                                                                                                       \
    ::log4cxx::spi::LocationInfo(__FILE__, ::log4cxx::spi::LocationInfo::calcShortFileName(__FILE__),                  \
                                 __PRETTY_FUNCTION__, __LINE__)

#define LOG_AT_LEVEL(logger, severity, text)                                                                           \
    do {                                                                                                               \
        const ::log4cxx::LoggerPtr& logTarget = (logger);                                                              \
        if (::log4cxx::Logger::is##severity##EnabledFor(logTarget)) {                                                  \
            ::log4cxx::helpers::MessageBuffer logBuffer;                                                               \
            ::vorlek::WriteLog(logTarget, ::log4cxx::Level::get##severity(), logBuffer.str(logBuffer << text),         \
                               LOG_SITE);                                                                              \
        }                                                                                                              \
    } while (false)

#define LOG_TRACE(logger, text) LOG_AT_LEVEL(logger, Trace, text)
#define LOG_DEBUG(logger, text) LOG_AT_LEVEL(logger, Debug, text)
#define LOG_INFO(logger, text) LOG_AT_LEVEL(logger, Info, text)
#define LOG_WARN(logger, text) LOG_AT_LEVEL(logger, Warn, text)
#define LOG_ERROR(logger, text) LOG_AT_LEVEL(logger, Error, text)
