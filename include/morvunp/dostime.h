// The time of archive records that keep it as MS-DOS did.
#pragma once

#include "platform/platform.h"

/// A local MS-DOS time, the date in the high half, as a time value. Such a time
/// has two-second steps and the years 1980 to 2107. 0 for one that no calendar
/// has, as where none was recorded.
MORVUNP_API __time64_t TimeOfDosDateTime(DWORD dateTime);
