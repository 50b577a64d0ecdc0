#include "foundation/Border.h"

#include <string>

#include "foundation/StringUtils.h"

namespace vorlek::border {

void Report(const log4cxx::LoggerPtr& logger, const log4cxx::LevelPtr& level, const Phrase& phrase,
            const log4cxx::spi::LocationInfo& site, const wchar_t* text) {
    if (!logger || !logger->isEnabledFor(level)) {
        return;
    }
    std::wstring line = phrase.words;
    if (phrase.index >= 0) {
        line += std::to_wstring(phrase.index) + phrase.ending;
    }
    WriteLog(logger, level, line + text, site);
}

void Report(const log4cxx::LoggerPtr& logger, const log4cxx::LevelPtr& level, const Phrase& phrase,
            const log4cxx::spi::LocationInfo& site, const char* text) {
    Report(logger, level, phrase, site, StringUtils::FromUtf8(text).c_str());
}

} // namespace vorlek::border
