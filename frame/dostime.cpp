#include "morvunp/dostime.h"

#include <algorithm>

__time64_t TimeOfDosDateTime(DWORD dateTime) {
  const auto date = static_cast<WORD>(dateTime >> 16);
  const auto time = static_cast<WORD>(dateTime);
  FILETIME checked;
  if (DosDateTimeToFileTime(date, time, &checked) == FALSE) return 0;
  return std::max<__time64_t>(platform::TimeOfDosDateTime(date, time), 0);
}
