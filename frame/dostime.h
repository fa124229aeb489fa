// Local MS-DOS times of exact ones.
#pragma once

#include "morvunp/platform/platform.h"

namespace morvunp::frame {

/// The date in the high half; 0 for a time that an MS-DOS time cannot tell.
DWORD DosDateTimeOf(const FILETIME& universal);

}  // namespace morvunp::frame
