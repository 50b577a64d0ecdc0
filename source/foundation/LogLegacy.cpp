#include <cstdarg>
#include <cstdio>

#include "foundation/Log.h"
#include "foundation/Log4CxxHelper.h"
#include "foundation/StringUtils.h"

namespace vorlek {
namespace {

LoggerHolder legacyLogger_;

log4cxx::LevelPtr Level_(int level) {
    switch (level) {
    case 1:
        return log4cxx::Level::getError();
    case 2:
        return log4cxx::Level::getWarn();
    case 3:
        return log4cxx::Level::getInfo();
    default:
        return log4cxx::Level::getDebug();
    }
}

/// The format for the wide printf family, which reads the two string conversions the other way round.
std::wstring WideFormat_(const char* format) {
    std::wstring wide;
    StringUtils::String2WString(format, wide);
    wide = StringUtils::Replace(wide, L"%s", L"%Q");
    wide = StringUtils::Replace(wide, L"%S", L"%s");
    wide = StringUtils::Replace(wide, L"%Q", L"%S");
    if (wide.ends_with(L'\n')) {
        wide.pop_back();
    }
    return wide;
}

/// The text, empty where there is nothing to say or the format cannot be filled.
std::wstring Format_(const std::wstring& format, va_list arguments) {
    va_list again;
    va_copy(again, arguments);
    const int length = _vscwprintf(format.c_str(), again);
    va_end(again);
    if (length <= 0) {
        return {};
    }
    const auto count = static_cast<std::size_t>(length);
    std::wstring text(count, L'\0');
    const int written = _vsnwprintf_s(text.data(), count + 1, count, format.c_str(), arguments);
    return written == -1 ? std::wstring() : text;
}

} // namespace

void LogLegacy(std::uint32_t /*category*/, int level, const char* format, const char* file, const char* function,
               int line, ...) {
    if (*GetLogSessionName() == L'\0') {
        return;
    }
    InitLogger(legacyLogger_, __FILE__, true);
    const log4cxx::LevelPtr logLevel = Level_(level);
    if (!legacyLogger_.Get()->isEnabledFor(logLevel)) {
        return;
    }
    va_list arguments;
    va_start(arguments, line);
    const std::wstring text = Format_(WideFormat_(format), arguments);
    va_end(arguments);
    if (!text.empty()) {
        WriteLog(legacyLogger_.Get(), logLevel, text,
                 {file, log4cxx::spi::LocationInfo::calcShortFileName(file), function, line});
    }
}

} // namespace vorlek
