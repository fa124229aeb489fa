// Messages to the user.
#pragma once

#include "morvunp/platform/platform.h"

namespace morvunp::frame {

/// Shows a message box on the host application's main window. `type` holds MB_
/// values; the id of the chosen button.
int ShowMessage(LPCWSTR text, UINT type);

}  // namespace morvunp::frame
