#include "platform/times.h"

#include <cerrno>

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
  return calendar;
}

/// The time at which clocks of the local zone show what those of UTC show at
/// `shown`. mktime, made for this, looks at the zone's file in every call.
std::int64_t UniversalOf(std::int64_t shown) {
  const auto offsetAt = [](std::time_t time) {
    std::tm local{};
    return localtime_r(&time, &local) != nullptr ? local.tm_gmtoff : 0;
  };
  // The second look is for times near a change of the offset.
  return shown - offsetAt(shown - offsetAt(shown));
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
  std::tm calendar = CalendarOfDosDateTime(date, time);
  const std::tm recorded = calendar;
  const std::time_t seconds = timegm(&calendar);
  // What no calendar or clock shows was carried over to the next field.
  if (calendar.tm_mon != recorded.tm_mon || calendar.tm_mday != recorded.tm_mday ||
      calendar.tm_hour != recorded.tm_hour || calendar.tm_min != recorded.tm_min ||
      calendar.tm_sec != recorded.tm_sec) {
    SetLastError(ERROR_INVALID_PARAMETER);
    return FALSE;
  }
  *result = platform::FileTimeOfTimespec(seconds, 0);
  return TRUE;
}

BOOL LocalFileTimeToFileTime(const FILETIME* local, FILETIME* universal) {
  *universal = platform::FileTimeOfTimespec(UniversalOf(platform::SecondsOfFileTime(*local)), 0);
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
  const std::int64_t seconds = UniversalOf(timegm(&calendar));
  return seconds >= 0 ? seconds : -1;
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
