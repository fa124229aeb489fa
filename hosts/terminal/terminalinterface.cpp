#include "terminalinterface.h"

#include "dialogquestion.h"
#include "hosts/common/libraryquestion.h"
#include "interrupt.h"
#include "output.h"
#include "question.h"
#include "text.h"

namespace terminal {

TerminalInterface::TerminalInterface(host::UnpackWatch& watch, ProgressLine& line,
                                     host::PasswordAnswer& password, bool keepExisting)
    : watch_(watch),
      line_(line),
      password_(password),
      keepExisting_(keepExisting),
      canAsk_(CanAsk()) {
  morvunp::platform::RegisterUserInterface(this);
}

TerminalInterface::~TerminalInterface() { morvunp::platform::RegisterUserInterface(nullptr); }

bool TerminalInterface::RunDialog(CDialog& dialog) {
  line_.Clear();
  if (dialog.Template().id == morvunp::kReplaceDialog) {
    RunReplaceDialog(dialog);
    return true;
  }
  if (dialog.Template().id == morvunp::kPasswordDialog) {
    RunPasswordDialog(dialog);
    return true;
  }
  const auto pressed = canAsk_ ? AskDialog(dialog) : std::nullopt;
  if (pressed) {
    dialog.Press(*pressed);
  } else {
    dialog.PressEscape();
  }
  return true;
}

void TerminalInterface::RunReplaceDialog(CDialog& dialog) {
  const bool keepUnasked = keepExisting_ || !canAsk_;
  const UINT pressed =
      keepUnasked ? morvunp::kReplaceNo : AskDialog(dialog).value_or(morvunp::kReplaceCancel);
  host::NoteReplaceAnswer(pressed, stop_);
  dialog.Press(pressed);
}

void TerminalInterface::RunPasswordDialog(CDialog& dialog) {
  const auto answer = password_.Get();
  if (!answer) {
    if (password_.WasCancelled()) stop_.Cancel();
    dialog.PressEscape();
    return;
  }
  dialog.SetControlText(morvunp::kPasswordEdit, *answer);
  dialog.Press(IDOK);
}

/// Of the file in hand, the report at the end tells the same; only who has just
/// typed a password wants to know at once.
void TerminalInterface::ShowProblem(const std::wstring& text) {
  const bool isTyped = password_.IsTyped();
  password_.Reject();
  if (!watch_.InFile()) {
    PrintError(ShownText(text));
  } else if (isTyped) {
    PrintError(ShownPath(watch_.CurrentName()) + ": " + ShownText(text));
  }
}

int TerminalInterface::ShowMessageBox(const std::wstring& text, const std::wstring&, UINT type) {
  line_.Clear();
  if ((type & MB_YESNO) == 0) {
    ShowProblem(text);
    return IDOK;
  }
  if (stop_.IsMade()) {
    AnswerStopRequest(text);
    return stop_.Stopped() ? IDYES : IDNO;
  }
  if (!canAsk_) return IDNO;
  return AskYesNo(ShownText(text)).value_or(false) ? IDYES : IDNO;
}

void TerminalInterface::AnswerStopRequest(const std::wstring& text) {
  // From here on Ctrl-C is an answer, not another request.
  ForgetInterrupt();
  if (canAsk_ && !EndRequested()) {
    stop_.Answer(AskYesNo(ShownText(text)).value_or(true));
  } else {
    PrintError("interrupted");
    stop_.Answer(true);
  }
}

void TerminalInterface::RunPendingEvents() {
  if (progressWindow_ == nullptr || !InterruptPending()) return;
  stop_.Make();
  stop_.PostTo(progressWindow_);
}

}  // namespace terminal
