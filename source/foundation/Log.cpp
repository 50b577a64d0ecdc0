#include "foundation/Log.h"

#include <log4cxx/helpers/exception.h>

#include "platform/Windows.h"

namespace vorlek {

void WriteLog(const log4cxx::LoggerPtr& logger, const log4cxx::LevelPtr& level, const std::wstring& text,
              const log4cxx::spi::LocationInfo& site) {
    try {
        logger->forcedLog(level, text, site);
    } catch (const log4cxx::helpers::Exception&) {
        OutputDebugStringW(L"OutlookQLTPlugin: a line could not be logged\n");
    }
}

} // namespace vorlek
