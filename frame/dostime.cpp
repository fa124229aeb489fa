#include "morvunp/dostime.h"

#include <algorithm>

__time64_t TimeOfDosDateTime(DWORD dateTime) {
  FILETIME local;
  FILETIME universal;
  if (DosDateTimeToFileTime(static_cast<WORD>(dateTime >> 16), static_cast<WORD>(dateTime),
                            &local) == FALSE ||
      LocalFileTimeToFileTime(&local, &universal) == FALSE) {
    return 0;
  }
  return std::max<__time64_t>(platform::SecondsOfFileTime(universal), 0);
}
