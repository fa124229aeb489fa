#include "frame/templates.h"

#include "frame/confirmreplace.h"
#include "frame/password.h"
#include "morvunp/messages.h"

namespace morvunp::frame {
namespace {

using platform::ControlKind;
using platform::DialogTemplate;

constexpr const wchar_t* kFontFace = L"MS Shell Dlg";
constexpr int kFontPoints = 8;

DialogTemplate ConfirmReplaceTemplate() {
  return {
      morvunp::kReplaceDialog,
      L"Confirm File Replace",
      260,
      145,
      kFontFace,
      kFontPoints,
      {
          {morvunp::kReplaceYes, ControlKind::kPushButton, L"&Yes", {12, 126, 50, 14}},
          {morvunp::kReplaceYesToAll, ControlKind::kPushButton, L"Yes To &All", {74, 126, 50, 14}},
          {morvunp::kReplaceNo, ControlKind::kDefaultPushButton, L"&No", {136, 126, 50, 14}},
          {morvunp::kReplaceCancel, ControlKind::kPushButton, L"&Cancel", {198, 126, 50, 14}},
          {morvunp::kReplaceMessage, ControlKind::kText, L"", {10, 10, 240, 8}},
          {morvunp::kReplaceName, ControlKind::kText, L"", {18, 20, 230, 8}},
          {0, ControlKind::kText, L"Replace the existing file", {10, 36, 80, 8}},
          {morvunp::kReplaceOldSize, ControlKind::kText, L"", {40, 48, 210, 8}},
          {morvunp::kReplaceOldModified, ControlKind::kText, L"", {40, 56, 210, 8}},
          {0, ControlKind::kText, L"with file", {10, 74, 80, 8}},
          {morvunp::kReplaceNewSize, ControlKind::kText, L"", {40, 86, 210, 8}},
          {morvunp::kReplaceNewModified, ControlKind::kText, L"", {40, 94, 210, 8}},
          {0, ControlKind::kSeparator, L"", {5, 120, 250, 1}},
          {morvunp::kReplaceOldIcon, ControlKind::kIcon, L"", {10, 46, 21, 20}},
          {morvunp::kReplaceNewIcon, ControlKind::kIcon, L"", {10, 84, 21, 20}},
      }};
}

DialogTemplate PasswordTemplate() {
  return {morvunp::kPasswordDialog,
          L"Enter Password",
          260,
          58,
          kFontFace,
          kFontPoints,
          {
              {morvunp::kPasswordEdit, ControlKind::kPasswordEdit, L"", {80, 10, 160, 12}},
              {IDOK, ControlKind::kDefaultPushButton, L"OK", {135, 39, 50, 14}},
              {IDCANCEL, ControlKind::kPushButton, L"Cancel", {205, 39, 50, 14}},
              {0, ControlKind::kTextRight, L"Password", {10, 10, 60, 8}},
              {0, ControlKind::kSeparator, L"", {5, 32, 250, 1}},
          }};
}

}  // namespace

void RegisterTemplates() {
  platform::RegisterDialogTemplate(ConfirmReplaceTemplate());
  platform::RegisterDialogTemplate(PasswordTemplate());
}

}  // namespace morvunp::frame
