#pragma once
#include "platform/Windows.h" // before <comdef.h>, which would bring an older Winsock

#include <comdef.h>
#include <exception>
#include <utility>

#include "foundation/Exception.h"
#include "foundation/Log.h"

namespace vorlek {

/// The fixed words that a border logs for one kind of failure, the failure's own text behind them.
/// A phrase with an index has it between the words and the ending.
struct Phrase {
    const wchar_t* words = nullptr; ///< null: this border has no handler of this kind
    const wchar_t* ending = L"";
    long index = -1; ///< below 0: none
};

/// What a border says for each kind of failure, in the order in which the kinds are tried. A failure
/// without a phrase of its own takes that of `other`; without that one either, it passes.
struct BorderPhrases {
    Phrase exception = {};    ///< vorlek::Exception, with its ToString
    Phrase comError = {};     ///< _com_error, with its ErrorMessage
    Phrase stdException = {}; ///< std::exception, with its what
    Phrase other = {};        ///< everything else, with no text of its own
};

namespace border {

void Report(const log4cxx::LoggerPtr& logger, const log4cxx::LevelPtr& level, const Phrase& phrase,
            const log4cxx::spi::LocationInfo& site, const wchar_t* text);
/// text: UTF-8, as the standard library and the XML layer speak.
void Report(const log4cxx::LoggerPtr& logger, const log4cxx::LevelPtr& level, const Phrase& phrase,
            const log4cxx::spi::LocationInfo& site, const char* text);

} // namespace border

/// Runs the body; a failure is logged at the level and ends here. Returns whether the body ran to its end.
template <class Body>
bool GuardAt(const log4cxx::LevelPtr& level, const log4cxx::LoggerPtr& logger, const log4cxx::spi::LocationInfo& site,
             const BorderPhrases& phrases, Body&& body) {
    const auto report = [&](const Phrase& own, const auto* text) {
        if (own.words != nullptr) {
            border::Report(logger, level, own, site, text);
        } else if (phrases.other.words != nullptr) {
            border::Report(logger, level, phrases.other, site, L"");
        } else {
            throw;
        }
    };
    try {
        std::forward<Body>(body)();
        return true;
    } catch (const Exception& failure) {
        report(phrases.exception, failure.ToString().c_str());
    } catch (const _com_error& failure) {
        report(phrases.comError, failure.ErrorMessage());
    } catch (const std::exception& failure) {
        report(phrases.stdException, failure.what());
    } catch (...) {
        report(phrases.other, L"");
    }
    return false;
}

/// The usual border: failures are logged at Error.
template <class Body>
bool Guard(const log4cxx::LoggerPtr& logger, const log4cxx::spi::LocationInfo& site, const BorderPhrases& phrases,
           Body&& body) {
    return GuardAt(log4cxx::Level::getError(), logger, site, phrases, std::forward<Body>(body));
}

} // namespace vorlek
