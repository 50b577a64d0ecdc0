#pragma once
#include <cstdint>
#include <string>

#include <log4cxx/spi/location/locationinfo.h>

#include "foundation/LoggerHolder.h"
#include "platform/Windows.h"

namespace vorlek {

/// Where the log is configured: QLTLogger.properties in the product's folder of the common application
/// data, or in the system directory where that folder cannot be found out. The file need not exist.
std::wstring GetLogConfigurationPath();

/// Configures log4cxx and writes the banner, once per process: later calls do nothing. From then on new
/// loggers carry the module's name in front. module: null for the process's executable. watch: whether
/// changes of the file are followed while the program runs; this starts a thread, so never in a DLL.
/// Raises Exception.
void StartLogSession(const std::wstring& configurationPath, HMODULE module, bool watch);

/// StartLogSession with the usual path. Safe under the loader lock without watch.
void StartLog(HMODULE module, bool watch);

/// The lower-cased base name of the module that started the session, empty before.
const wchar_t* GetLogSessionName();

/// Fills the holder on first use. name: with isFile a source file's name, else the qualified name of a
/// function, whose last part is dropped: "vorlek::TaskHandler::TaskHandler" gives the logger
/// "module.vorlek.TaskHandler". Raises Exception.
void InitLogger(LoggerHolder& holder, const char* name, bool isFile);

/// Gives back what the log keeps for the calling thread: at the end of every thread that logs.
void EndThreadLog();

/// The log of code that speaks printf. Silent until a session has started. category: not looked at.
/// level: 1 error, 2 warning, 3 information, all else debug. format: %s takes a narrow string, %S a wide
/// one; one line end at the end is dropped.
void LogLegacy(std::uint32_t category, int level, const char* format, const char* file, const char* function, int line,
               ...);

/// Inside a handler: logs the exception being handled at Fatal, behind the prefix and with its own words.
void LogCurrentException(LoggerHolder& holder, const std::wstring& prefix, const log4cxx::spi::LocationInfo& location);

} // namespace vorlek
