#include "frame/dostime.h"

#include "morvunp/dostime.h"

namespace frame = morvunp::frame;

std::optional<__time64_t> morvunp::TimeOfDosDateTime(DWORD dateTime) {
  FILETIME local;
  FILETIME universal;
  if (DosDateTimeToFileTime(static_cast<WORD>(dateTime >> 16), static_cast<WORD>(dateTime),
                            &local) == FALSE ||
      LocalFileTimeToFileTime(&local, &universal) == FALSE) {
    return std::nullopt;
  }
  return platform::SecondsOfFileTime(universal);
}

DWORD frame::DosDateTimeOf(const FILETIME& universal) {
  FILETIME local;
  WORD date = 0;
  WORD clock = 0;
  if (FileTimeToLocalFileTime(&universal, &local) == FALSE ||
      CoFileTimeToDosDateTime(&local, &date, &clock) == FALSE) {
    return 0;
  }
  return DWORD{date} << 16 | clock;
}
