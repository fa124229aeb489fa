// File times and calendar times.
#pragma once

#include <ctime>
#include <optional>

#include "morvunp/platform/types.h"

/// 100 ns units since 1601-01-01 00:00, as two halves.
struct FILETIME {
  DWORD dwLowDateTime = 0;
  DWORD dwHighDateTime = 0;
};

/// Seconds since 1970-01-01 00:00 UTC.
using __time64_t = std::int64_t;

/// Time value to local calendar time; 0 on success, an errno value otherwise
/// (values after the year 3000 are refused, as by the C runtime of the host
/// system; values before 1970, which are local times of 1970 in the east, are
/// not).
MORVUNP_API int _localtime64_s(std::tm* local, const __time64_t* time);
MORVUNP_API __time64_t _time64(__time64_t* time);

/// An MS-DOS date (day, month, years since 1980 in 5, 4 and 7 bits, from the
/// lowest) and time (seconds / 2, minutes, hours in 5, 6 and 5 bits) to a file
/// time, in the same zone. FALSE for one that no calendar or clock shows.
MORVUNP_API BOOL DosDateTimeToFileTime(WORD date, WORD time, FILETIME* result);
/// Local to universal time. The offset is the one of that date, by which this
/// system shows file times; the host's own system takes that of today in both
/// places.
MORVUNP_API BOOL LocalFileTimeToFileTime(const FILETIME* local, FILETIME* universal);

/// Universal to local time, by the offset of that date (see above).
MORVUNP_API BOOL FileTimeToLocalFileTime(const FILETIME* universal, FILETIME* local);
/// A file time to an MS-DOS date and time of the same zone; odd seconds are
/// rounded down. FALSE before 1980 and after 2107.
MORVUNP_API BOOL CoFileTimeToDosDateTime(const FILETIME* time, WORD* date, WORD* dosTime);

namespace morvunp::platform {
/// Local calendar time to a time value, whether daylight saving applies being
/// found out; none after the year 3000 or where the calendar has no such time.
/// What stands for failure in the C runtime, -1, is a time here.
MORVUNP_API std::optional<__time64_t> TimeOfLocalCalendar(std::tm local);

/// An MS-DOS date and time of the local zone as a time value. Days and months
/// that no year has are carried over, as the C runtime does: for texts only.
MORVUNP_API __time64_t CarriedTimeOfDosDateTime(WORD date, WORD time);

/// Exact conversions between the two scales of UTC time. Times before 1601
/// become the zero file time.
MORVUNP_API FILETIME FileTimeOfTimespec(std::int64_t seconds, std::uint32_t nanoseconds);
MORVUNP_API std::int64_t SecondsOfFileTime(FILETIME time);
}  // namespace morvunp::platform
