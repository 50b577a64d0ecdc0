// A log that fails, for want of room on the disk say, is not felt by what is logged.
#include <gmock/gmock.h>

#include <log4cxx/helpers/exception.h>

#include "foundation/Border.h"
#include "foundation/Log.h"
#include "foundation/Log4CxxHelper.h"
#include "foundation/Log4CxxTracer.h"
#include "tests/support/ChildProcess.h"
#include "tests/support/FailingLog.h"
#include "tests/support/LogCapture.h"

using namespace vorlek;
using test_support::ChildProcess;
using test_support::FailingLog;
using test_support::LogCapture;
using testing::ElementsAre;

namespace {

[[noreturn]] void RaiseFullDisk_() {
    throw log4cxx::helpers::IOException(L"add-in.log: no room on the disk");
}

class LogFailure : public testing::Test {
protected:
    LogFailure() { holder_.Fill(log4cxx::Logger::getLogger(L"log.failure")); }

    LogCapture log_;
    LoggerHolder holder_;
};

/// Whether a line of the legacy log comes back, in a process whose session has started.
std::wstring LogLegacyLine_(const std::wstring& /*argument*/) {
    StartLogSession(L"C:\\no\\such.properties", GetModuleHandleW(L"kernel32.dll"), false);
    const LogCapture log;
    const FailingLog failing(L"line", RaiseFullDisk_);
    LogLegacy(0x100000, 1, "line", "Old.cpp", "SwapInPlace", 7);
    return L"came back";
}
const test_support::ChildRoleName legacyRole(L"LogFailure.LegacyLine", LogLegacyLine_);

} // namespace

TEST_F(LogFailure, StatementGoesOn) {
    const FailingLog failing(L"no room", RaiseFullDisk_);
    LOG_ERROR(holder_, L"no room");
    LOG_ERROR(holder_, L"room again");
    EXPECT_THAT(log_.Texts(L"ERROR"), ElementsAre(L"no room", L"room again"));
}

TEST_F(LogFailure, FailuresOfTheProgramItselfPass) {
    const FailingLog failing(L"line", [] { throw IOException(L"Disk.cpp", 7, L"vorlek::Disk::Read", L"broken"); });
    EXPECT_THROW(LOG_ERROR(holder_, L"line"), IOException);
}

TEST_F(LogFailure, TracerEntersAndLeaves) {
    const FailingLog entering(L"Entered", RaiseFullDisk_);
    const FailingLog leaving(L"Left", RaiseFullDisk_);
    Log4CxxTracer tracer(holder_);
    tracer.Trace(LOG_SITE);
}

TEST_F(LogFailure, BorderHolds) {
    const FailingLog failing(L"Failed: unknown", RaiseFullDisk_);
    const BorderPhrases phrases = {.stdException = {L"Failed: "}, .other = {L"Failed"}};
    EXPECT_FALSE(Guard(holder_, LOG_SITE, phrases, [] { throw std::runtime_error("unknown"); }));
}

TEST_F(LogFailure, ReportOfAnExceptionGoesOn) {
    const FailingLog failing(L"Failed. unknown", RaiseFullDisk_);
    try {
        throw std::runtime_error("unknown");
    } catch (const std::exception&) {
        LogCurrentException(holder_, L"Failed.", LOG_SITE);
    }
    EXPECT_THAT(log_.Texts(L"FATAL"), ElementsAre(L"Failed. unknown"));
}

TEST_F(LogFailure, LegacyLineGoesOn) {
    EXPECT_EQ(ChildProcess(L"LogFailure.LegacyLine").Result(), L"came back");
}
