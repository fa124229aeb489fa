// Why items did not come out, in words.
#pragma once

#include <string_view>

#include "hosts/common/reason.h"
#include "morvunp/itemreport.h"

namespace host {

/// Of an archive, or of an item that failed or was refused. `detail` as in
/// morvunp::ItemReport.
Reason ReasonOf(morvunp::ItemReason reason, std::wstring_view detail, int systemError = 0);

/// What is told of a password in every format.
Reason NoPassword();
Reason WrongPasswordOrDamaged();

}  // namespace host
