// The library's dialogs as questions on the terminal.
#pragma once

#include <optional>
#include <string>

#include "morvunp/platform/framework.h"

namespace terminal {

/// Asks what the dialog asks: its texts in tab order, then its buttons by
/// their mnemonics. The id of the chosen button; none when the question was
/// left by Ctrl-C, Esc or the end of the input.
std::optional<UINT> AskDialog(const CDialog& dialog);

}  // namespace terminal
