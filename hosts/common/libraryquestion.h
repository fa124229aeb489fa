// The library's two dialogs, as far as hosts must know them.
#pragma once

#include "hosts/common/stoprequest.h"
#include "hosts/common/unpackwatch.h"
#include "morvunp/messages.h"
#include "platform/framework.h"

namespace host {

/// Tells those who follow a run what became of a question whether to replace a
/// file.
void NoteReplaceAnswer(const CDialog& dialog, UINT pressed, UnpackWatch& watch, StopRequest& stop);

}  // namespace host
