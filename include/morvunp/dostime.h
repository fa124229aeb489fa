// The time of archive records that keep it as MS-DOS did.
#pragma once

#include <optional>

#include "morvunp/platform/platform.h"

namespace morvunp {

/// A local MS-DOS time, the date in the high half, as a time value. Such a time
/// has two-second steps and the years 1980 to 2107. None for one that no
/// calendar has, as where none was recorded (0): such a time is set on no file.
MORVUNP_API std::optional<__time64_t> TimeOfDosDateTime(DWORD dateTime);

}  // namespace morvunp
