// Carries a request out.
#pragma once

#include "hosts/common/archive.h"
#include "hosts/common/plan.h"
#include "hosts/common/stoprequest.h"

namespace host {

/// Works through the runs of the request until they are done or the user has
/// stopped. A run that the library had to end early is noted in `problems`.
void UnpackRequest(Archive& archive, const Request& request, const StopRequest& stop,
                   ItemProblems& problems);

}  // namespace host
