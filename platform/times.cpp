#include "platform/times.h"

#include <cerrno>
#include <chrono>

namespace {

constexpr std::int64_t kUnitsPerSecond = 10'000'000;
constexpr std::int64_t kSecondsFrom1601To1970 = 11'644'473'600;
// 3000-12-31 23:59:59 UTC, the last time that the host's C runtime accepts.
constexpr __time64_t kLastTime = 32'535'215'999;

/// The fields of an MS-DOS date and time, whatever they say.
std::tm CalendarOfDosDateTime(WORD date, WORD time) {
  std::tm calendar{};
  calendar.tm_sec = (time & 0x1F) * 2;
  calendar.tm_min = time >> 5 & 0x3F;
  calendar.tm_hour = time >> 11;
  calendar.tm_mday = date & 0x1F;
  calendar.tm_mon = (date >> 5 & 0x0F) - 1;
  calendar.tm_year = (date >> 9) + 80;
  calendar.tm_isdst = -1;
  return calendar;
}

/// Seconds from 1970 to a calendar time, without any zone.
std::int64_t SecondsOfCalendar(const std::tm& calendar) {
  const std::chrono::year_month_day day{
      std::chrono::year{calendar.tm_year + 1900},
      std::chrono::month{static_cast<unsigned>(calendar.tm_mon + 1)},
      std::chrono::day{static_cast<unsigned>(calendar.tm_mday)}};
  const std::chrono::sys_seconds time =
      std::chrono::sys_days{day} + std::chrono::hours{calendar.tm_hour} +
      std::chrono::minutes{calendar.tm_min} + std::chrono::seconds{calendar.tm_sec};
  return time.time_since_epoch().count();
}

}  // namespace

__time64_t _mktime64(std::tm* local) {
  const std::time_t time = std::mktime(local);
  return time < 0 || time > kLastTime ? -1 : time;
}

int _localtime64_s(std::tm* local, const __time64_t* time) {
  *local = {};
  if (*time < 0 || *time > kLastTime) return EINVAL;
  const auto seconds = static_cast<std::time_t>(*time);
  return localtime_r(&seconds, local) != nullptr ? 0 : EINVAL;
}

__time64_t _time64(__time64_t* time) {
  const __time64_t now = std::time(nullptr);
  if (time != nullptr) *time = now;
  return now;
}

BOOL DosDateTimeToFileTime(WORD date, WORD time, FILETIME* result) {
  const std::tm calendar = CalendarOfDosDateTime(date, time);
  const std::chrono::year_month_day day{
      std::chrono::year{calendar.tm_year + 1900},
      std::chrono::month{static_cast<unsigned>(calendar.tm_mon + 1)},
      std::chrono::day{static_cast<unsigned>(calendar.tm_mday)}};
  if (!day.ok() || calendar.tm_hour > 23 || calendar.tm_min > 59 || calendar.tm_sec > 59) {
    SetLastError(ERROR_INVALID_PARAMETER);
    return FALSE;
  }
  *result = platform::FileTimeOfTimespec(SecondsOfCalendar(calendar), 0);
  return TRUE;
}

BOOL LocalFileTimeToFileTime(const FILETIME* local, FILETIME* universal) {
  const std::time_t seconds = platform::SecondsOfFileTime(*local);
  std::tm calendar{};
  if (gmtime_r(&seconds, &calendar) == nullptr) return platform::FailWithErrno(EINVAL);
  calendar.tm_isdst = -1;
  *universal = platform::FileTimeOfTimespec(std::mktime(&calendar), 0);
  return TRUE;
}

BOOL FileTimeToLocalFileTime(const FILETIME* universal, FILETIME* local) {
  const std::time_t seconds = platform::SecondsOfFileTime(*universal);
  std::tm calendar{};
  if (localtime_r(&seconds, &calendar) == nullptr) return platform::FailWithErrno(EINVAL);
  *local = platform::FileTimeOfTimespec(seconds + calendar.tm_gmtoff, 0);
  return TRUE;
}

BOOL CoFileTimeToDosDateTime(const FILETIME* time, WORD* date, WORD* dosTime) {
  const std::time_t seconds = platform::SecondsOfFileTime(*time);
  std::tm calendar{};
  if (gmtime_r(&seconds, &calendar) == nullptr || calendar.tm_year < 80 ||
      calendar.tm_year > 80 + 127) {
    return platform::FailWithErrno(EINVAL);
  }
  *date = static_cast<WORD>((calendar.tm_year - 80) << 9 | (calendar.tm_mon + 1) << 5 |
                            calendar.tm_mday);
  *dosTime = static_cast<WORD>(calendar.tm_hour << 11 | calendar.tm_min << 5 | calendar.tm_sec / 2);
  return TRUE;
}

__time64_t platform::TimeOfDosDateTime(WORD date, WORD time) {
  std::tm calendar = CalendarOfDosDateTime(date, time);
  return _mktime64(&calendar);
}

FILETIME platform::FileTimeOfTimespec(std::int64_t seconds, std::uint32_t nanoseconds) {
  std::int64_t units = 0;
  if (__builtin_add_overflow(seconds, kSecondsFrom1601To1970, &units) ||
      __builtin_mul_overflow(units, kUnitsPerSecond, &units) || units < 0) {
    return {};
  }
  units += nanoseconds / 100;
  return {static_cast<DWORD>(units), static_cast<DWORD>(units >> 32)};
}

std::int64_t platform::SecondsOfFileTime(FILETIME time) {
  const auto units = ULONGLONG{time.dwHighDateTime} << 32 | time.dwLowDateTime;
  return static_cast<std::int64_t>(units / kUnitsPerSecond) - kSecondsFrom1601To1970;
}
