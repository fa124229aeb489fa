#include "morvunp/platform/times.h"

#include <cerrno>
#include <chrono>

namespace platform = morvunp::platform;

namespace {

namespace chrono = std::chrono;

constexpr std::int64_t kUnitsPerSecond = 10'000'000;
constexpr std::int64_t kSecondsFrom1601To1970 = 11'644'473'600;
// 3000-12-31 23:59:59 UTC, the last time that the host's C runtime accepts.
constexpr __time64_t kLastTime = 32'535'215'999;

constexpr std::int64_t kSecondsPerMinute = 60;
constexpr std::int64_t kSecondsPerDay = 86'400;
// 1980-01-01 00:00 UTC, where MS-DOS dates begin.
constexpr std::int64_t kFirstDosTime = 315'532'800;

/// The day since 1970-01-01, by a calendar that carries a month or a day which
/// no year has over to the next.
std::int64_t DaysOfDosDate(WORD date) {
  const int months = (date >> 5 & 0x0F) - 1;
  const chrono::year_month month =
      chrono::year{(date >> 9) + 1980} / chrono::January + chrono::months{months};
  return chrono::sys_days{month / 1}.time_since_epoch().count() + (date & 0x1F) - 1;
}

std::int64_t SecondsOfDosTime(WORD time) {
  return (time >> 11) * 3600 + (time >> 5 & 0x3F) * 60 + (time & 0x1F) * 2;
}

bool IsDosDate(WORD date) {
  const chrono::year_month_day calendar{chrono::year{(date >> 9) + 1980},
                                        chrono::month{unsigned{date} >> 5 & 0x0F},
                                        chrono::day{unsigned{date} & 0x1F}};
  return calendar.ok();
}

bool IsDosTime(WORD time) {
  return time >> 11 < 24 && (time >> 5 & 0x3F) < 60 && (time & 0x1F) < 30;
}

/// Seconds that the local zone is east of UTC at a time. The items of an
/// archive often share their minute, and since 1980 no zone has changed its
/// offset within one, so the last answer is kept.
std::int64_t OffsetAt(std::time_t time) {
  thread_local struct {
    std::int64_t minute = -1;
    long zone = 0;
    std::int64_t offset = 0;
  } last;
  const std::int64_t minute = time < kFirstDosTime ? -1 : time / kSecondsPerMinute;
  if (minute >= 0 && minute == last.minute && timezone == last.zone) return last.offset;
  std::tm local{};
  const std::int64_t offset = localtime_r(&time, &local) != nullptr ? local.tm_gmtoff : 0;
  last = {minute, timezone, offset};
  return offset;
}

/// The time at which clocks of the local zone show what those of UTC show at
/// `shown`. mktime, made for this, looks at the zone's file in every call.
std::int64_t UniversalOf(std::int64_t shown) {
  // The second look is for times near a change of the offset.
  return shown - OffsetAt(shown - OffsetAt(shown));
}

}  // namespace

std::optional<__time64_t> platform::TimeOfLocalCalendar(std::tm local) {
  // The result -1 is a time as well as a failure, which leaves the day of the
  // week alone.
  local.tm_isdst = -1;
  local.tm_wday = -1;
  const std::time_t time = std::mktime(&local);
  if (local.tm_wday < 0 || time > kLastTime) return std::nullopt;
  return time;
}

int _localtime64_s(std::tm* local, const __time64_t* time) {
  *local = {};
  if (*time > kLastTime) return EINVAL;
  const auto seconds = static_cast<std::time_t>(*time);
  return localtime_r(&seconds, local) != nullptr ? 0 : EINVAL;
}

__time64_t _time64(__time64_t* time) {
  const __time64_t now = std::time(nullptr);
  if (time != nullptr) *time = now;
  return now;
}

BOOL DosDateTimeToFileTime(WORD date, WORD time, FILETIME* result) {
  if (!IsDosDate(date) || !IsDosTime(time)) {
    SetLastError(ERROR_INVALID_PARAMETER);
    return FALSE;
  }
  const std::int64_t seconds = DaysOfDosDate(date) * kSecondsPerDay + SecondsOfDosTime(time);
  *result = platform::FileTimeOfTimespec(seconds, 0);
  return TRUE;
}

BOOL LocalFileTimeToFileTime(const FILETIME* local, FILETIME* universal) {
  *universal = platform::FileTimeOfTimespec(UniversalOf(platform::SecondsOfFileTime(*local)), 0);
  return TRUE;
}

BOOL FileTimeToLocalFileTime(const FILETIME* universal, FILETIME* local) {
  const std::time_t seconds = platform::SecondsOfFileTime(*universal);
  *local = platform::FileTimeOfTimespec(seconds + OffsetAt(seconds), 0);
  return TRUE;
}

BOOL CoFileTimeToDosDateTime(const FILETIME* time, WORD* date, WORD* dosTime) {
  const chrono::sys_seconds seconds{chrono::seconds{platform::SecondsOfFileTime(*time)}};
  const chrono::sys_days days = chrono::floor<chrono::days>(seconds);
  const chrono::year_month_day calendar{days};
  const int years = static_cast<int>(calendar.year()) - 1980;
  if (years < 0 || years > 127) return platform::FailWithErrno(EINVAL);
  const chrono::hh_mm_ss clock{seconds - days};
  *date = static_cast<WORD>(static_cast<unsigned>(years) << 9 |
                            static_cast<unsigned>(calendar.month()) << 5 |
                            static_cast<unsigned>(calendar.day()));
  *dosTime = static_cast<WORD>(clock.hours().count() << 11 | clock.minutes().count() << 5 |
                               clock.seconds().count() / 2);
  return TRUE;
}

__time64_t platform::CarriedTimeOfDosDateTime(WORD date, WORD time) {
  return UniversalOf(DaysOfDosDate(date) * kSecondsPerDay + SecondsOfDosTime(time));
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
