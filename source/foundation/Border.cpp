#include "foundation/Border.h"

namespace vorlek::border {
namespace {

template <class Text>
void Report_(const log4cxx::LoggerPtr& logger, const log4cxx::LevelPtr& level, const Phrase& phrase,
             const log4cxx::spi::LocationInfo& site, const Text* text) {
    if (!logger || !logger->isEnabledFor(level)) {
        return;
    }
    log4cxx::helpers::MessageBuffer buffer;
    buffer << phrase.words;
    if (phrase.index >= 0) {
        buffer << phrase.index << phrase.ending;
    }
    logger->forcedLog(level, buffer.str(buffer << text), site);
}

} // namespace

void Report(const log4cxx::LoggerPtr& logger, const log4cxx::LevelPtr& level, const Phrase& phrase,
            const log4cxx::spi::LocationInfo& site, const wchar_t* text) {
    Report_(logger, level, phrase, site, text);
}

void Report(const log4cxx::LoggerPtr& logger, const log4cxx::LevelPtr& level, const Phrase& phrase,
            const log4cxx::spi::LocationInfo& site, const char* text) {
    Report_(logger, level, phrase, site, text);
}

} // namespace vorlek::border
