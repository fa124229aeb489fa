// The library's two dialogs, as far as hosts must know them.
#pragma once

#include <optional>
#include <string>

#include "hosts/common/stoprequest.h"
#include "hosts/common/unpackwatch.h"
#include "platform/framework.h"

namespace host {

/// "Confirm File Replace" and the buttons that matter to a host.
inline constexpr UINT kReplaceTemplate = 1001;
inline constexpr UINT kReplaceNo = 1002;
inline constexpr UINT kReplaceCancel = 1001;

/// Tells those who follow a run what became of a question whether to replace a
/// file.
void NoteReplaceAnswer(const CDialog& dialog, UINT pressed, UnpackWatch& watch, StopRequest& stop);

/// The control of a dialog that a password is typed into; none in others.
std::optional<UINT> PasswordEditOf(const CDialog& dialog);

}  // namespace host
