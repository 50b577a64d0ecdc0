#include "foundation/Border.h"

#include <new>
#include <stdexcept>

#include <gtest/gtest.h>

#include "foundation/Throw.h"
#include "tests/support/LogCapture.h"

using namespace vorlek;
using test_support::LogCapture;
using testing::Test;
using Lines = std::vector<std::wstring>;

namespace {

const BorderPhrases kAll = {.exception = {L"Exception: "},
                            .comError = {L"COM error: "},
                            .stdException = {L"Standard: "},
                            .other = {L"Unknown"}};

class Border : public Test {
protected:
    template <class Body>
    bool Guarded(const BorderPhrases& phrases, const Body& body) {
        return Guard(logger_, LOG_SITE, phrases, body);
    }

    LogCapture log_;
    log4cxx::LoggerPtr logger_ = log4cxx::Logger::getLogger(L"border");
};

[[noreturn]] void RaiseException_() {
    throw IOException(L"File.cpp", 7, L"vorlek::Place", L"words");
}

} // namespace

TEST_F(Border, BodyThatRunsToItsEndLogsNothing) {
    bool ran = false;
    EXPECT_TRUE(Guarded(kAll, [&] { ran = true; }));
    EXPECT_TRUE(ran);
    EXPECT_TRUE(log_.Lines().empty());
}

TEST_F(Border, ExceptionIsLoggedWithItsRendering) {
    EXPECT_FALSE(Guarded(kAll, RaiseException_));
    EXPECT_EQ(log_.Texts(L"ERROR"), Lines{L"Exception: File.cpp(7): vorlek::Place: IOException: words"});
}

TEST_F(Border, ComErrorIsLoggedWithItsMessage) {
    EXPECT_FALSE(Guarded(kAll, [] { _com_raise_error(E_OUTOFMEMORY); }));
    EXPECT_EQ(log_.Texts(L"ERROR"), Lines{std::wstring(L"COM error: ") + _com_error(E_OUTOFMEMORY).ErrorMessage()});
}

TEST_F(Border, StandardExceptionIsLoggedBehindItsPhrase) {
    EXPECT_FALSE(Guarded(kAll, [] { throw std::runtime_error("caf\xC3\xA9 closed"); }));
    EXPECT_EQ(log_.Texts(L"ERROR"), Lines{L"Standard: caf\x00E9 closed"});
}

TEST_F(Border, AnythingElseIsLoggedWithThePhraseAlone) {
    EXPECT_FALSE(Guarded(kAll, [] { throw 5; }));
    EXPECT_EQ(log_.Texts(L"ERROR"), Lines{L"Unknown"});
}

TEST_F(Border, PhraseLeftOutFallsToTheLastOneWithoutText) {
    const BorderPhrases last = {.other = {L"Unknown"}};
    EXPECT_FALSE(Guarded(last, RaiseException_));
    EXPECT_FALSE(Guarded(last, [] { _com_raise_error(E_FAIL); }));
    EXPECT_FALSE(Guarded(last, [] { throw std::bad_alloc(); }));
    EXPECT_FALSE(Guarded(last, [] { throw L'x'; }));
    EXPECT_EQ(log_.Texts(L"ERROR"), (Lines{L"Unknown", L"Unknown", L"Unknown", L"Unknown"}));
}

TEST_F(Border, FailureWithoutAnyPhrasePassesUnchanged) {
    const BorderPhrases none;
    EXPECT_THROW(Guarded(none, RaiseException_), IOException);
    EXPECT_THROW(Guarded(none, [] { _com_raise_error(E_FAIL); }), _com_error);
    EXPECT_THROW(Guarded(none, [] { throw std::out_of_range("x"); }), std::out_of_range);
    EXPECT_THROW(Guarded(none, [] { throw 5; }), int);
    EXPECT_TRUE(log_.Lines().empty());
}

TEST_F(Border, EachKindHasAHandlerOfItsOwn) {
    EXPECT_THROW(Guarded({.comError = {L"COM error: "}}, RaiseException_), IOException);
    EXPECT_THROW(Guarded({.exception = {L"Exception: "}}, [] { _com_raise_error(E_FAIL); }), _com_error);
    EXPECT_THROW(Guarded({.exception = {L"E"}, .comError = {L"C"}}, [] { throw std::bad_alloc(); }), std::bad_alloc);
    EXPECT_THROW(Guarded({.stdException = {L"Standard: "}}, [] { throw 5; }), int);
    EXPECT_TRUE(log_.Lines().empty());
}

TEST_F(Border, EmptyPhraseIsTheTextAlone) {
    EXPECT_FALSE(Guarded({.exception = {L""}}, RaiseException_));
    EXPECT_EQ(log_.Texts(L"ERROR"), Lines{L"File.cpp(7): vorlek::Place: IOException: words"});
}

TEST_F(Border, IndexStandsBetweenTheWordsAndTheEnding) {
    const BorderPhrases phrases = {.exception = {L"Failed at ", L": ", 0}, .other = {L"Unknown at ", L"", 12}};
    EXPECT_FALSE(Guarded(phrases, RaiseException_));
    EXPECT_FALSE(Guarded(phrases, [] { throw 5; }));
    EXPECT_EQ(log_.Texts(L"ERROR"),
              (Lines{L"Failed at 0: File.cpp(7): vorlek::Place: IOException: words", L"Unknown at 12"}));
}

TEST_F(Border, GuardAtLogsAtTheLevelGiven) {
    EXPECT_FALSE(GuardAt(log4cxx::Level::getWarn(), logger_, LOG_SITE, kAll, RaiseException_));
    EXPECT_EQ(log_.Texts(L"WARN"), Lines{L"Exception: File.cpp(7): vorlek::Place: IOException: words"});
    EXPECT_TRUE(log_.Texts(L"ERROR").empty());
}

TEST_F(Border, DisabledLevelStillEndsTheFailure) {
    logger_->setLevel(log4cxx::Level::getOff());
    EXPECT_FALSE(Guarded(kAll, RaiseException_));
    logger_->setLevel(nullptr);
    EXPECT_TRUE(log_.Lines().empty());
}

TEST_F(Border, NullLoggerStillEndsTheFailure) {
    const LoggerHolder empty;
    EXPECT_FALSE(Guard(empty, LOG_SITE, kAll, RaiseException_));
    EXPECT_TRUE(log_.Lines().empty());
}
