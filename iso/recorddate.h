// Recorded dates of both file systems, taken as local time.
#pragma once

#include <unordered_map>

#include "frame/keyedhash.h"
#include "morvunp/platform/platform.h"

namespace morvunp::iso {

/// Calendar fields as recorded; `year` is the full year. All fields zero: no
/// date is recorded.
struct RecordedDate {
  int year = 0;
  int month = 0;
  int day = 0;
  int hour = 0;
  int minute = 0;
  int second = 0;

  bool operator==(const RecordedDate&) const = default;
};

/// Converts recorded dates to time values. Remembers what it converted: the
/// calendar conversion costs more than the rest of reading a record.
class DateConverter {
 public:
  /// The time of the call when no date is recorded. Throws CAtlException with E_FAIL for a field
  /// out of range and E_INVALIDARG when the date has no time value.
  __time64_t TimeOf(const RecordedDate& date);

 private:
  std::unordered_map<ULONGLONG, __time64_t, frame::KeyedHash> m_known;
  /// Neighbours often share their date.
  RecordedDate m_last;
  __time64_t m_lastTime = 0;
};

}  // namespace morvunp::iso
