#include "platform/times.h"

#include <cerrno>

namespace {

constexpr std::int64_t kUnitsPerSecond = 10'000'000;
constexpr std::int64_t kSecondsFrom1601To1970 = 11'644'473'600;
// 3000-12-31 23:59:59 UTC, the last time that the host's C runtime accepts.
constexpr __time64_t kLastTime = 32'535'215'999;

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
