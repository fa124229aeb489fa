// The library's two dialogs, as far as hosts must know them.
#pragma once

#include "hosts/common/stoprequest.h"
#include "morvunp/messages.h"

namespace host {

/// An answer to the question whether to replace a file may end the run.
void NoteReplaceAnswer(UINT pressed, StopRequest& stop);

}  // namespace host
