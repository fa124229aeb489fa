#include "frame/templates.h"

#include "frame/confirmreplace.h"
#include "frame/dialogids.h"
#include "frame/password.h"

namespace frame {
namespace {

using platform::ControlKind;
using platform::DialogTemplate;

constexpr const wchar_t* kFontFace = L"MS Shell Dlg";
constexpr int kFontPoints = 8;

DialogTemplate ConfirmReplaceTemplate() {
  return {CConfirmReplace::kTemplate,
          L"Confirm File Replace",
          260,
          145,
          kFontFace,
          kFontPoints,
          {
              {kIdReplaceYes, ControlKind::kPushButton, L"&Yes", {12, 126, 50, 14}},
              {kIdReplaceYesToAll, ControlKind::kPushButton, L"Yes To &All", {74, 126, 50, 14}},
              {kIdReplaceNo, ControlKind::kDefaultPushButton, L"&No", {136, 126, 50, 14}},
              {kIdReplaceCancel, ControlKind::kPushButton, L"&Cancel", {198, 126, 50, 14}},
              {kIdReplaceMessage, ControlKind::kText, L"", {10, 10, 240, 8}},
              {kIdReplaceName, ControlKind::kText, L"", {18, 20, 230, 8}},
              {0, ControlKind::kText, L"Replace the existing file", {10, 36, 80, 8}},
              {kIdReplaceOldSize, ControlKind::kText, L"", {40, 48, 210, 8}},
              {kIdReplaceOldModified, ControlKind::kText, L"", {40, 56, 210, 8}},
              {0, ControlKind::kText, L"with file", {10, 74, 80, 8}},
              {kIdReplaceNewSize, ControlKind::kText, L"", {40, 86, 210, 8}},
              {kIdReplaceNewModified, ControlKind::kText, L"", {40, 94, 210, 8}},
              {0, ControlKind::kSeparator, L"", {5, 120, 250, 1}},
              {kIdReplaceOldIcon, ControlKind::kIcon, L"", {10, 46, 21, 20}},
              {kIdReplaceNewIcon, ControlKind::kIcon, L"", {10, 84, 21, 20}},
          }};
}

DialogTemplate PasswordTemplate() {
  return {CPassword::kTemplate,
          L"Enter Password",
          260,
          58,
          kFontFace,
          kFontPoints,
          {
              {kIdPasswordEdit, ControlKind::kPasswordEdit, L"", {80, 10, 160, 12}},
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

}  // namespace frame
