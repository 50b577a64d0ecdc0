#include "foundation/Log.h"

#include <gtest/gtest.h>

#include "tests/support/LogCapture.h"
#include "tests/support/ResourceCount.h"
#include "tests/support/Threads.h"

using namespace vorlek;
using test_support::LogCapture;
using test_support::ResourceCount;
using Lines = std::vector<std::wstring>;

namespace {

class Log : public testing::Test {
protected:
    ~Log() override { logger_->setLevel(nullptr); }

    LogCapture log_;
    log4cxx::LoggerPtr logger_ = log4cxx::Logger::getLogger(L"log.test");
};

} // namespace

TEST_F(Log, EachStatementLogsAtItsLevel) {
    LOG_TRACE(logger_, L"trace");
    LOG_DEBUG(logger_, L"debug");
    LOG_INFO(logger_, L"info");
    LOG_WARN(logger_, L"warn");
    LOG_ERROR(logger_, L"error");
    std::vector<std::wstring> seen;
    for (const auto& line : log_.Lines()) {
        seen.push_back(line.level + L" " + line.logger + L" " + line.text);
    }
    EXPECT_EQ(seen, (Lines{L"TRACE log.test trace", L"DEBUG log.test debug", L"INFO log.test info",
                           L"WARN log.test warn", L"ERROR log.test error"}));
}

TEST_F(Log, ValuesAreStreamedBehindTheText) {
    const std::wstring id = L"\x05D0-1";
    LOG_DEBUG(logger_, L"Successfully added " << id << L" to the registry.");
    LOG_INFO(logger_, L"code " << 4294967295UL << L", " << -3 << L' ' << 2.5);
    EXPECT_EQ(log_.Texts(L"DEBUG"), Lines{L"Successfully added \x05D0-1 to the registry."});
    EXPECT_EQ(log_.Texts(L"INFO"), Lines{L"code 4294967295, -3 2.5"});
}

TEST_F(Log, DisabledStatementEvaluatesNothing) {
    int evaluated = 0;
    const auto count = [&evaluated] { return ++evaluated; };
    logger_->setLevel(log4cxx::Level::getWarn());
    LOG_TRACE(logger_, L"n " << count());
    LOG_DEBUG(logger_, L"n " << count());
    LOG_INFO(logger_, L"n " << count());
    EXPECT_EQ(evaluated, 0);
    LOG_WARN(logger_, L"n " << count());
    EXPECT_EQ(evaluated, 1);
    EXPECT_EQ(log_.Texts(L"WARN"), Lines{L"n 1"});
    EXPECT_EQ(log_.Lines().size(), 1U);
}

TEST_F(Log, NullLoggerLogsNothing) {
    const LoggerHolder empty;
    int evaluated = 0;
    LOG_ERROR(empty, L"n " << ++evaluated);
    EXPECT_EQ(evaluated, 0);
    EXPECT_TRUE(log_.Lines().empty());
}

TEST_F(Log, HolderStandsForItsLogger) {
    LoggerHolder holder;
    EXPECT_EQ(holder.Get(), nullptr);
    holder.Fill(logger_);
    EXPECT_EQ(holder.Get(), logger_);
    LOG_INFO(holder, L"through the holder");
    EXPECT_EQ(log_.Texts(L"INFO"), Lines{L"through the holder"});
}

TEST_F(Log, SiteNamesTheFileTheFunctionAndTheLine) {
    const log4cxx::spi::LocationInfo site = LOG_SITE;
    EXPECT_STREQ(site.getShortFileName(), "LogTest.cpp");
    EXPECT_EQ(site.getLineNumber(), __LINE__ - 2);
    EXPECT_EQ(site.getMethodName(), "TestBody");
    EXPECT_EQ(site.getClassName(), "Log_SiteNamesTheFileTheFunctionAndTheLine_Test");
}

TEST_F(Log, StatementTellsItsSite) {
    LOG_WARN(logger_, L"here");
    EXPECT_EQ(log_.Lines()[0].site, "LogTest.cpp(" + std::to_string(__LINE__ - 1) + "): TestBody");
}

TEST_F(Log, StatementIsOneStatement) {
    if (logger_ == nullptr)
        LOG_INFO(logger_, L"never");
    else
        LOG_INFO(logger_, L"always");
    EXPECT_EQ(log_.Texts(L"INFO"), Lines{L"always"});
}

TEST_F(Log, ThreadThatEndsLeavesNothing) {
    const auto logFromThreads = [this] {
        for (int number = 0; number < 50; ++number) {
            test_support::RunThreads(1, [&](int) { LOG_INFO(logger_, L"thread " << number); });
        }
        ASSERT_EQ(log_.Lines().size(), 50U);
        log_.Clear();
    };
    logFromThreads();
    const ResourceCount before = ResourceCount::Now();
    logFromThreads();
    EXPECT_EQ(ResourceCount::Now().Since(before), L"0 handles, 0 heap blocks, 0 thread slots");
}
