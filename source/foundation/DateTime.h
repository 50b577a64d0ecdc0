#pragma once
#include <cstdint>

namespace vorlek {

/// A moment, in UTC or in local time. Local times are read as standard time throughout the year.
/// Every operation raises Exception for a kind that is neither, or a moment that cannot be told.
class DateTime {
public:
    enum Kind : std::int32_t { Utc = 0, Local = 1 };

    /// Now.
    explicit DateTime(std::int32_t kind);
    /// From seconds since 1970-01-01 UTC; the millisecond is 0.
    DateTime(std::int64_t unixTime, std::int32_t kind);
    /// From the clock's fields: month 1 to 12, day 1 to 31, millisecond 0 to 999.
    DateTime(std::int32_t year, std::int32_t month, std::int32_t day, std::int32_t hour, std::int32_t minute,
             std::int32_t second, std::int32_t millisecond, std::int32_t kind);
    DateTime(const DateTime&) = default;
    DateTime& operator=(const DateTime&) = default;
    virtual ~DateTime() = default;

    /// Milliseconds since 1970-01-01.
    std::int64_t ToMilliseconds() const { return unixTime_ * 1000 + millisecond_; }

    std::int32_t GetYear() const { return year_; }
    std::int32_t GetMonth() const { return month_; }
    std::int32_t GetDay() const { return day_; }
    std::int32_t GetHour() const { return hour_; }
    std::int32_t GetMinute() const { return minute_; }
    std::int32_t GetSecond() const { return second_; }
    std::int32_t GetMillisecond() const { return millisecond_; }
    std::int32_t GetKind() const { return kind_; }
    /// Seconds since 1970-01-01.
    std::int64_t GetUnixTime() const { return unixTime_; }

    /// By second, then by millisecond. Raises Exception when the kinds differ, even for the same moment.
    bool operator<(const DateTime& other) const;
    bool operator>(const DateTime& other) const { return other < *this; }
    bool operator<=(const DateTime& other) const { return !(other < *this); }
    bool operator>=(const DateTime& other) const { return !(*this < other); }
    bool operator==(const DateTime& other) const { return !(*this < other) && !(other < *this); }

private:
    void ComputeUnixTime();

    std::int32_t year_ = 0;
    std::int32_t month_ = 0;
    std::int32_t day_ = 0;
    std::int32_t hour_ = 0;
    std::int32_t minute_ = 0;
    std::int32_t second_ = 0;
    std::int32_t millisecond_ = 0;
    std::int32_t kind_;
    std::int64_t unixTime_ = 0;
};

} // namespace vorlek
