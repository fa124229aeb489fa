#include "morvunp/platform/dialogtemplate.h"

#include <map>

namespace platform = morvunp::platform;

namespace {

/// The process's: filled while the library is loaded, and only read from then.
std::map<UINT, platform::DialogTemplate>& Templates() {
  static std::map<UINT, platform::DialogTemplate> templates;
  return templates;
}

}  // namespace

void platform::RegisterDialogTemplate(DialogTemplate dialog) {
  const UINT id = dialog.id;
  Templates().insert_or_assign(id, std::move(dialog));
}

const platform::DialogTemplate* platform::FindDialogTemplate(UINT id) {
  const auto found = Templates().find(id);
  return found != Templates().end() ? &found->second : nullptr;
}
