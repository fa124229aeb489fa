#include "morvunp/dostime.h"

namespace {

int Bits(DWORD value, int first, int count) {
  return static_cast<int>(value >> first & ((1U << count) - 1));
}

bool IsOnCalendar(const std::tm& local) {
  return local.tm_mon >= 0 && local.tm_mon < 12 && local.tm_mday > 0 && local.tm_hour < 24 &&
         local.tm_min < 60 && local.tm_sec < 60;
}

}  // namespace

__time64_t TimeOfDosDateTime(DWORD dateTime) {
  std::tm local{};
  local.tm_sec = Bits(dateTime, 0, 5) * 2;
  local.tm_min = Bits(dateTime, 5, 6);
  local.tm_hour = Bits(dateTime, 11, 5);
  local.tm_mday = Bits(dateTime, 16, 5);
  local.tm_mon = Bits(dateTime, 21, 4) - 1;
  local.tm_year = Bits(dateTime, 25, 7) + 80;
  local.tm_isdst = -1;
  if (!IsOnCalendar(local)) return 0;
  const __time64_t time = _mktime64(&local);
  return time >= 0 ? time : 0;
}
