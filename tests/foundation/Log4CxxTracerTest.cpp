#include "foundation/Log4CxxTracer.h"

#include <gmock/gmock.h>

#include "foundation/Log.h"
#include "tests/support/LogCapture.h"

using namespace vorlek;
using test_support::LogCapture;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

class Tracer : public testing::Test {
protected:
    Tracer() { holder_.Fill(log4cxx::Logger::getLogger(L"tracer")); }
    ~Tracer() override { holder_.Get()->setLevel(nullptr); }

    LogCapture log_;
    LoggerHolder holder_;
};

} // namespace

TEST_F(Tracer, SaysEnteredAndLeft) {
    {
        Log4CxxTracer tracer(holder_);
        tracer.Trace(LOG_SITE);
        EXPECT_THAT(log_.Texts(L"TRACE"), ElementsAre(L"Entered"));
    }
    EXPECT_THAT(log_.Texts(L"TRACE"), ElementsAre(L"Entered", L"Left"));
    EXPECT_EQ(log_.Lines().size(), 2U);
    EXPECT_EQ(log_.Lines()[1].logger, L"tracer");
}

TEST_F(Tracer, BothLinesTellTheSiteOfTheEntry) {
    {
        Log4CxxTracer tracer(holder_);
        tracer.Trace({"source/Here.cpp", "Here.cpp", "vorlek::Place::Function", 7});
    }
    EXPECT_EQ(log_.Lines()[0].site, "Here.cpp(7): Function");
    EXPECT_EQ(log_.Lines()[1].site, "Here.cpp(7): Function");
}

TEST_F(Tracer, SaysLeftWhenAFailureLeavesTheScope) {
    try {
        Log4CxxTracer tracer(holder_);
        tracer.Trace(LOG_SITE);
        throw 5;
    } catch (int) {
    }
    EXPECT_THAT(log_.Texts(L"TRACE"), ElementsAre(L"Entered", L"Left"));
}

TEST_F(Tracer, SaysNothingUnlessAsked) {
    { const Log4CxxTracer tracer(holder_); }
    EXPECT_THAT(log_.Lines(), IsEmpty());
}

TEST_F(Tracer, SaysNothingWhereTraceIsOff) {
    holder_.Get()->setLevel(log4cxx::Level::getDebug());
    {
        Log4CxxTracer tracer(holder_);
        tracer.Trace(LOG_SITE);
        holder_.Get()->setLevel(log4cxx::Level::getTrace()); // too late for this scope
    }
    EXPECT_THAT(log_.Lines(), IsEmpty());
}

TEST_F(Tracer, SaysLeftEvenWhereTraceWentOffMeanwhile) {
    {
        Log4CxxTracer tracer(holder_);
        tracer.Trace(LOG_SITE);
        holder_.Get()->setLevel(log4cxx::Level::getOff());
    }
    EXPECT_THAT(log_.Texts(L"TRACE"), ElementsAre(L"Entered", L"Left"));
}

TEST_F(Tracer, SaysNothingThroughAnEmptyHolder) {
    const LoggerHolder empty;
    Log4CxxTracer tracer(empty);
    EXPECT_NO_THROW(tracer.Trace(LOG_SITE));
    EXPECT_THAT(log_.Lines(), IsEmpty());
}
