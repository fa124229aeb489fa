#include "iso/recorddate.h"

namespace morvunp::iso {
namespace {

bool Between(int value, int first, int last) { return value >= first && value <= last; }

bool IsPossible(const RecordedDate& date) {
  return date.year >= 1970 && Between(date.month, 1, 12) && Between(date.day, 1, 31) &&
         Between(date.hour, 0, 23) && Between(date.minute, 0, 59) && Between(date.second, 0, 59);
}

ULONGLONG KeyOf(const RecordedDate& date) {
  ULONGLONG key = static_cast<ULONGLONG>(date.year);
  for (const int field : {date.month, date.day, date.hour, date.minute, date.second}) {
    key = key << 8 | static_cast<ULONGLONG>(field);
  }
  return key;
}

__time64_t Convert(const RecordedDate& date) {
  std::tm local{};
  local.tm_year = date.year - 1900;
  local.tm_mon = date.month - 1;
  local.tm_mday = date.day;
  local.tm_hour = date.hour;
  local.tm_min = date.minute;
  local.tm_sec = date.second;
  const std::optional<__time64_t> time = platform::TimeOfLocalCalendar(local);
  if (!time) AtlThrow(E_INVALIDARG);
  return *time;
}

}  // namespace

__time64_t DateConverter::TimeOf(const RecordedDate& date) {
  if (date == RecordedDate{}) return _time64(nullptr);
  if (date == m_last) return m_lastTime;
  if (!IsPossible(date)) AtlThrow(E_FAIL);
  const auto [entry, added] = m_known.try_emplace(KeyOf(date), 0);
  if (added) entry->second = Convert(date);
  m_last = date;
  m_lastTime = entry->second;
  return m_lastTime;
}

}  // namespace morvunp::iso
