// Carries a request out.
#pragma once

#include "hosts/common/archive.h"
#include "hosts/common/plan.h"
#include "hosts/common/stoprequest.h"
#include "hosts/common/unpackwatch.h"

namespace host {

/// Works through the runs of the request until they are done or the user has
/// stopped. The archive was set up to tell `watch` of its items.
void UnpackRequest(Archive& archive, const Request& request, const StopRequest& stop,
                   UnpackWatch& watch);

}  // namespace host
