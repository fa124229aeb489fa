// Dialog templates as data, and the table in which a library registers its own.
#pragma once

#include <string>
#include <vector>

#include "morvunp/platform/types.h"

namespace morvunp::platform {

/// Position and size in dialog units.
struct DialogRect {
  int x;
  int y;
  int width;
  int height;
};

enum class ControlKind {
  kPushButton,
  kDefaultPushButton,
  kText,
  kTextRight,
  kIcon,
  /// A sunken black rectangle that separates groups.
  kSeparator,
  /// A one-line edit control whose characters are masked.
  kPasswordEdit,
};

struct ControlTemplate {
  /// 0 for controls that have none.
  UINT id;
  ControlKind kind;
  /// A mnemonic is marked with '&'.
  std::wstring text;
  DialogRect rect;
};

/// Controls stand in tab order.
struct DialogTemplate {
  UINT id;
  std::wstring caption;
  int width;
  int height;
  std::wstring fontFace;
  int fontPoints;
  std::vector<ControlTemplate> controls;
};

MORVUNP_API void RegisterDialogTemplate(DialogTemplate dialog);
/// Null when no template has this id. The pointer stays valid.
MORVUNP_API const DialogTemplate* FindDialogTemplate(UINT id);

}  // namespace morvunp::platform
