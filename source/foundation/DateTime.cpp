#include "foundation/DateTime.h"

#include <cerrno>
#include <ctime>

#include "foundation/Throw.h"
#include "platform/Windows.h"

namespace vorlek {

DateTime::DateTime(std::int32_t kind) : kind_(kind) {
    SYSTEMTIME now = {};
    switch (kind) {
    case Utc:
        GetSystemTime(&now);
        break;
    case Local:
        GetLocalTime(&now);
        break;
    default:
        Throw(L"vorlek::DateTime::DateTime", L"Unsupported date time kind: ", kind);
    }
    year_ = now.wYear;
    month_ = now.wMonth;
    day_ = now.wDay;
    hour_ = now.wHour;
    minute_ = now.wMinute;
    second_ = now.wSecond;
    millisecond_ = now.wMilliseconds;
    ComputeUnixTime();
}

DateTime::DateTime(std::int64_t unixTime, std::int32_t kind) : kind_(kind), unixTime_(unixTime) {
    const __time64_t seconds = unixTime;
    std::tm fields = {};
    switch (kind) {
    case Utc:
        if (const errno_t error = _gmtime64_s(&fields, &seconds); error != 0) {
            Throw(L"vorlek::DateTime::DateTime", L"gmtime_s has failed with: ", error);
        }
        break;
    case Local:
        if (const errno_t error = _localtime64_s(&fields, &seconds); error != 0) {
            Throw(L"vorlek::DateTime::DateTime", L"localtime_s has failed with: ", error);
        }
        break;
    default:
        Throw(L"vorlek::DateTime::DateTime", L"Unsupported date time kind: ", kind);
    }
    year_ = fields.tm_year + 1900;
    month_ = fields.tm_mon + 1;
    day_ = fields.tm_mday;
    hour_ = fields.tm_hour;
    minute_ = fields.tm_min;
    second_ = fields.tm_sec;
}

DateTime::DateTime(std::int32_t year, std::int32_t month, std::int32_t day, std::int32_t hour, std::int32_t minute,
                   std::int32_t second, std::int32_t millisecond, std::int32_t kind)
    : year_(year),
      month_(month),
      day_(day),
      hour_(hour),
      minute_(minute),
      second_(second),
      millisecond_(millisecond),
      kind_(kind) {
    ComputeUnixTime();
}

void DateTime::ComputeUnixTime() {
    std::tm fields = {}; // its daylight flag stays 0: clocks are read as standard time all year
    fields.tm_year = year_ - 1900;
    fields.tm_mon = month_ - 1;
    fields.tm_mday = day_;
    fields.tm_hour = hour_;
    fields.tm_min = minute_;
    fields.tm_sec = second_;
    switch (kind_) {
    case Utc:
        unixTime_ = _mkgmtime64(&fields);
        if (unixTime_ == -1) {
            Throw(L"vorlek::DateTime::ComputeUnixTime", L"_mkgmtime has failed with: ", errno);
        }
        break;
    case Local:
        unixTime_ = _mktime64(&fields);
        if (unixTime_ == -1) {
            Throw(L"vorlek::DateTime::ComputeUnixTime", L"mktime has failed with: ", errno);
        }
        break;
    default:
        Throw(L"vorlek::DateTime::ComputeUnixTime", L"Unsupported date time kind: ", kind_);
    }
}

bool DateTime::operator<(const DateTime& other) const {
    if (kind_ != other.kind_) {
        Throw(L"vorlek::DateTime::operator <", L"Comparison not supported between times of different locales: ", kind_,
              L", ", other.kind_);
    }
    return unixTime_ != other.unixTime_ ? unixTime_ < other.unixTime_ : millisecond_ < other.millisecond_;
}

} // namespace vorlek
