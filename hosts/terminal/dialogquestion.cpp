#include "dialogquestion.h"

#include <algorithm>
#include <cwctype>
#include <vector>

#include "question.h"
#include "text.h"

namespace terminal {
namespace {

using morvunp::platform::ControlKind;
using morvunp::platform::ControlTemplate;

/// Controls further to the right than this, in dialog units, are shown as
/// belonging to the text above them.
constexpr int kFirstIndentedUnit = 14;

bool IsText(ControlKind kind) {
  return kind == ControlKind::kText || kind == ControlKind::kTextRight;
}

bool IsButton(ControlKind kind) {
  return kind == ControlKind::kPushButton || kind == ControlKind::kDefaultPushButton;
}

std::wstring TextOf(const CDialog& dialog, const ControlTemplate& control) {
  std::wstring text = control.id != 0 ? dialog.ControlText(control.id) : std::wstring();
  return text.empty() ? control.text : text;
}

std::string Texts(const CDialog& dialog) {
  std::string lines;
  for (const ControlTemplate& control : dialog.Template().controls) {
    if (!IsText(control.kind)) continue;
    const std::wstring text = TextOf(dialog, control);
    if (text.empty()) continue;
    if (!lines.empty()) lines += '\n';
    if (control.rect.x >= kFirstIndentedUnit) lines += "  ";
    AppendText(lines, text);
  }
  return lines;
}

/// A button without a mnemonic is chosen by its first letter.
char KeyOf(const std::wstring& label) {
  const std::size_t mark = label.find(L'&');
  const std::size_t place = mark != std::wstring::npos ? mark + 1 : 0;
  const wchar_t letter = place < label.size() ? label[place] : L'?';
  return letter < 0x80 ? static_cast<char>(std::towlower(static_cast<std::wint_t>(letter))) : '?';
}

Choice ChoiceOf(const ControlTemplate& button) {
  std::wstring label = button.text;
  const char key = KeyOf(label);
  std::erase(label, L'&');
  return {key, ShownText(label)};
}

}  // namespace

std::optional<UINT> AskDialog(const CDialog& dialog) {
  std::vector<Choice> choices;
  std::vector<UINT> ids;
  std::size_t defaultChoice = 0;
  for (const ControlTemplate& control : dialog.Template().controls) {
    if (!IsButton(control.kind)) continue;
    if (control.kind == ControlKind::kDefaultPushButton) defaultChoice = ids.size();
    choices.push_back(ChoiceOf(control));
    ids.push_back(control.id);
  }
  if (ids.empty()) return std::nullopt;
  const auto chosen = Ask(Texts(dialog), choices, defaultChoice);
  return chosen ? std::optional<UINT>(ids[*chosen]) : std::nullopt;
}

}  // namespace terminal
