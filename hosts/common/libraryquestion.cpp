#include "hosts/common/libraryquestion.h"

#include <algorithm>

namespace host {
namespace {

constexpr UINT kReplaceName = 1006;

/// The dialog shows the name as a part of its sentence: in single quotes, with
/// a full stop.
std::wstring NameInDialog(const CDialog& dialog) {
  std::wstring text = dialog.ControlText(kReplaceName);
  if (text.size() < 3 || !text.starts_with(L"'") || !text.ends_with(L"'.")) return text;
  return text.substr(1, text.size() - 3);
}

}  // namespace

void NoteReplaceAnswer(const CDialog& dialog, UINT pressed, UnpackWatch& watch, StopRequest& stop) {
  if (pressed == kReplaceNo || pressed == kReplaceCancel) watch.Kept(NameInDialog(dialog));
  if (pressed == kReplaceCancel) stop.Cancel();
}

std::optional<UINT> PasswordEditOf(const CDialog& dialog) {
  const auto& controls = dialog.Template().controls;
  const auto edit = std::find_if(controls.begin(), controls.end(), [](const auto& control) {
    return control.kind == platform::ControlKind::kPasswordEdit;
  });
  return edit != controls.end() ? std::optional(edit->id) : std::nullopt;
}

}  // namespace host
