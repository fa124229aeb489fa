#include "hosts/common/libraryquestion.h"

namespace host {
namespace {

/// The dialog shows the name as a part of its sentence: in single quotes, with
/// a full stop.
std::wstring NameInDialog(const CDialog& dialog) {
  std::wstring text = dialog.ControlText(morvunp::kReplaceName);
  if (text.size() < 3 || !text.starts_with(L"'") || !text.ends_with(L"'.")) return text;
  return text.substr(1, text.size() - 3);
}

}  // namespace

void NoteReplaceAnswer(const CDialog& dialog, UINT pressed, UnpackWatch& watch, StopRequest& stop) {
  if (pressed == morvunp::kReplaceNo || pressed == morvunp::kReplaceCancel)
    watch.Kept(NameInDialog(dialog));
  if (pressed == morvunp::kReplaceCancel) stop.Cancel();
}

}  // namespace host
