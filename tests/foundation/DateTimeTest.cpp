#include "foundation/DateTime.h"

#include <cstdlib>
#include <ctime>

#include <gtest/gtest.h>

#include "platform/Windows.h"
#include "tests/support/ExpectFailure.h"

using test_support::ExpectFailure;
using vorlek::DateTime;
using vorlek::Exception;

namespace {

/// Seconds since 1970 by the system's own calendar.
std::int64_t SystemSeconds_(const SYSTEMTIME& time) {
    FILETIME fileTime = {};
    EXPECT_TRUE(SystemTimeToFileTime(&time, &fileTime));
    const std::uint64_t ticks = static_cast<std::uint64_t>(fileTime.dwHighDateTime) << 32 | fileTime.dwLowDateTime;
    return static_cast<std::int64_t>(ticks / 10'000'000) - 11'644'473'600;
}

/// The clock in New York by the system's own calendar, at so many seconds after 1970 UTC. From 2007 on.
SYSTEMTIME SystemClock_(std::int64_t seconds) {
    const std::uint64_t ticks = static_cast<std::uint64_t>(seconds + 11'644'473'600) * 10'000'000;
    const FILETIME fileTime = {static_cast<DWORD>(ticks), static_cast<DWORD>(ticks >> 32)};
    SYSTEMTIME utc = {};
    EXPECT_TRUE(FileTimeToSystemTime(&fileTime, &utc));
    TIME_ZONE_INFORMATION zone = {};
    zone.Bias = 300;
    zone.StandardDate = {0, 11, 0, 1, 2, 0, 0, 0}; // the first Sunday of November at 2
    zone.DaylightDate = {0, 3, 0, 2, 2, 0, 0, 0};  // the second of March
    zone.DaylightBias = -60;
    SYSTEMTIME local = {};
    EXPECT_TRUE(SystemTimeToTzSpecificLocalTime(&zone, &utc, &local));
    return local;
}

/// The fields of a time as the system holds them.
SYSTEMTIME Fields_(const DateTime& time) {
    SYSTEMTIME fields = {};
    fields.wYear = static_cast<WORD>(time.GetYear());
    fields.wMonth = static_cast<WORD>(time.GetMonth());
    fields.wDay = static_cast<WORD>(time.GetDay());
    fields.wHour = static_cast<WORD>(time.GetHour());
    fields.wMinute = static_cast<WORD>(time.GetMinute());
    fields.wSecond = static_cast<WORD>(time.GetSecond());
    return fields;
}

/// The C library's time zone while it lives: five hours behind, with daylight saving.
class NewYork_ {
public:
    NewYork_() {
        Set_("EST5EDT");
        _dstbias = -3600; // which the library leaves as an earlier zone had it
    }
    ~NewYork_() { Set_(""); }

private:
    static void Set_(const char* zone) {
        _putenv_s("TZ", zone);
        _tzset();
    }
};

} // namespace

TEST(DateTime, AgreesWithTheSystemFrom1970To2100) {
    constexpr std::int64_t kEnd = 4'102'444'800; // 2100-01-01
    constexpr std::int64_t kStep = 10 * 3600 + 23 * 60 + 45;
    for (std::int64_t seconds = 0; seconds < kEnd; seconds += kStep) {
        const DateTime time(seconds, DateTime::Utc);
        ASSERT_EQ(seconds, SystemSeconds_(Fields_(time)));
        const DateTime back(time.GetYear(), time.GetMonth(), time.GetDay(), time.GetHour(), time.GetMinute(),
                            time.GetSecond(), 0, DateTime::Utc);
        ASSERT_EQ(seconds, back.GetUnixTime());
    }
}

TEST(DateTime, KnowsLeapDays) {
    EXPECT_EQ(951'782'400, DateTime(2000, 2, 29, 0, 0, 0, 0, DateTime::Utc).GetUnixTime());
    EXPECT_EQ(951'868'800, DateTime(2000, 3, 1, 0, 0, 0, 0, DateTime::Utc).GetUnixTime());
    const DateTime leap(1'709'164'800, DateTime::Utc);
    EXPECT_EQ(2024, leap.GetYear());
    EXPECT_EQ(2, leap.GetMonth());
    EXPECT_EQ(29, leap.GetDay());
}

TEST(DateTime, KeepsItsFields) {
    const DateTime time(2009, 12, 31, 23, 58, 59, 997, DateTime::Utc);
    EXPECT_EQ(2009, time.GetYear());
    EXPECT_EQ(12, time.GetMonth());
    EXPECT_EQ(31, time.GetDay());
    EXPECT_EQ(23, time.GetHour());
    EXPECT_EQ(58, time.GetMinute());
    EXPECT_EQ(59, time.GetSecond());
    EXPECT_EQ(997, time.GetMillisecond());
    EXPECT_EQ(0, time.GetKind());
    EXPECT_EQ(1'262'303'939, time.GetUnixTime());
    EXPECT_EQ(1'262'303'939'997, time.ToMilliseconds());
}

TEST(DateTime, NowLiesBetweenTwoLooksAtTheClock) {
    SYSTEMTIME before = {};
    GetSystemTime(&before);
    const DateTime now(DateTime::Utc);
    SYSTEMTIME after = {};
    GetSystemTime(&after);
    EXPECT_LE(SystemSeconds_(before) * 1000 + before.wMilliseconds, now.ToMilliseconds());
    EXPECT_GE(SystemSeconds_(after) * 1000 + after.wMilliseconds, now.ToMilliseconds());
}

TEST(DateTime, LocalNowHasTheFieldsOfTheLocalClock) {
    SYSTEMTIME before = {};
    GetLocalTime(&before);
    const DateTime now(DateTime::Local);
    SYSTEMTIME after = {};
    GetLocalTime(&after);
    EXPECT_LE(SystemSeconds_(before), SystemSeconds_(Fields_(now)));
    EXPECT_GE(SystemSeconds_(after), SystemSeconds_(Fields_(now)));
    EXPECT_EQ(1, now.GetKind());
}

TEST(DateTime, LocalSecondsAreTheLocalClocksFields) {
    const NewYork_ zone;
    const DateTime winter(1'230'768'000, DateTime::Local); // 2009-01-01 00:00:00 UTC
    EXPECT_EQ(2008, winter.GetYear());
    EXPECT_EQ(12, winter.GetMonth());
    EXPECT_EQ(31, winter.GetDay());
    EXPECT_EQ(19, winter.GetHour());
    EXPECT_EQ(1'230'768'000, winter.GetUnixTime());
}

TEST(DateTime, LocalFieldsAreReadAsStandardTimeInSummerToo) {
    const NewYork_ zone;
    EXPECT_EQ(SystemSeconds_({2009, 1, 0, 1, 17, 0, 0, 0}),
              DateTime(2009, 1, 1, 12, 0, 0, 0, DateTime::Local).GetUnixTime());
    EXPECT_EQ(SystemSeconds_({2009, 7, 0, 1, 17, 0, 0, 0}),
              DateTime(2009, 7, 1, 12, 0, 0, 0, DateTime::Local).GetUnixTime());
}

TEST(DateTime, LocalTimeAgreesWithTheSystemAcrossDaylightChanges) {
    const NewYork_ zone;
    constexpr std::int64_t kBegin = 1'167'609'600; // 2007-01-01, since when the rule is as it is
    constexpr std::int64_t kEnd = 4'102'444'800;   // 2100-01-01
    for (std::int64_t seconds = kBegin; seconds < kEnd; seconds += 3600 - 1) {
        const DateTime time(seconds, DateTime::Local);
        const SYSTEMTIME clock = SystemClock_(seconds);
        ASSERT_EQ(SystemSeconds_(clock), SystemSeconds_(Fields_(time))) << seconds;
        // The clock's hand read as standard time: in summer an hour later than it was.
        const DateTime read(clock.wYear, clock.wMonth, clock.wDay, clock.wHour, clock.wMinute, clock.wSecond, 0,
                            DateTime::Local);
        ASSERT_EQ(SystemSeconds_(clock) + 5 * 3600, read.GetUnixTime()) << seconds;
        if (clock.wMonth > 3 && clock.wMonth < 11) {
            seconds += 7 * 3600; // summer is long; the changes are seen hour by hour
        }
    }
}

TEST(DateTime, IsOrderedBySecondThenByMillisecond) {
    const DateTime early(2009, 1, 1, 0, 0, 0, 999, DateTime::Utc);
    const DateTime late(2009, 1, 1, 0, 0, 1, 0, DateTime::Utc);
    const DateTime later(2009, 1, 1, 0, 0, 1, 1, DateTime::Utc);
    EXPECT_LT(early, late);
    EXPECT_LT(late, later);
    EXPECT_GT(later, late);
    EXPECT_FALSE(late < early);
    EXPECT_FALSE(late < late);
    EXPECT_LE(late, late);
    EXPECT_GE(late, early);
    EXPECT_TRUE(late == late);
    EXPECT_FALSE(late == later);
}

TEST(DateTime, BuiltFromSecondsHasNoMilliseconds) {
    const DateTime time(1'230'768'000, DateTime::Utc);
    EXPECT_EQ(0, time.GetMillisecond());
    EXPECT_LT(time, DateTime(2009, 1, 1, 0, 0, 0, 1, DateTime::Utc));
}

TEST(DateTime, RefusesToCompareDifferentKinds) {
    const DateTime utc(1'230'768'000, DateTime::Utc);
    const DateTime local(1'230'768'000, DateTime::Local);
    ExpectFailure<Exception>([&] { (void)(utc < local); }, L"vorlek::DateTime::operator <",
                             L"Comparison not supported between times of different locales: 0, 1");
    ExpectFailure<Exception>([&] { (void)(utc >= local); }, L"vorlek::DateTime::operator <",
                             L"Comparison not supported between times of different locales: 0, 1");
    ExpectFailure<Exception>([&] { (void)(utc > local); }, L"vorlek::DateTime::operator <",
                             L"Comparison not supported between times of different locales: 1, 0");
    EXPECT_THROW((void)(utc == local), Exception);
    EXPECT_THROW((void)(utc <= local), Exception);
}

TEST(DateTime, RefusesOtherKindsInAllConstructors) {
    ExpectFailure<Exception>([] { DateTime(2); }, L"vorlek::DateTime::DateTime", L"Unsupported date time kind: 2");
    ExpectFailure<Exception>([] { DateTime(0, -1); }, L"vorlek::DateTime::DateTime", L"Unsupported date time kind: -1");
    ExpectFailure<Exception>([] { DateTime(2009, 1, 1, 0, 0, 0, 0, 3); }, L"vorlek::DateTime::ComputeUnixTime",
                             L"Unsupported date time kind: 3");
}

TEST(DateTime, RefusesMomentsThatTheCalendarCannotTell) {
    ExpectFailure<Exception>([] { DateTime(-1'000'000, DateTime::Utc); }, L"vorlek::DateTime::DateTime",
                             L"gmtime_s has failed with: 22");
    ExpectFailure<Exception>([] { DateTime(-1'000'000, DateTime::Local); }, L"vorlek::DateTime::DateTime",
                             L"localtime_s has failed with: 22");
    ExpectFailure<Exception>([] { DateTime(-40'000, 1, 1, 0, 0, 0, 0, DateTime::Utc); },
                             L"vorlek::DateTime::ComputeUnixTime", L"_mkgmtime has failed with: 22");
    ExpectFailure<Exception>([] { DateTime(-40'000, 1, 1, 0, 0, 0, 0, DateTime::Local); },
                             L"vorlek::DateTime::ComputeUnixTime", L"mktime has failed with: 22");
}
