#include "morvunp/dostime.h"

std::optional<__time64_t> TimeOfDosDateTime(DWORD dateTime) {
  FILETIME local;
  FILETIME universal;
  if (DosDateTimeToFileTime(static_cast<WORD>(dateTime >> 16), static_cast<WORD>(dateTime),
                            &local) == FALSE ||
      LocalFileTimeToFileTime(&local, &universal) == FALSE) {
    return std::nullopt;
  }
  return platform::SecondsOfFileTime(universal);
}
