// From what the user typed to items of an archive.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "hosts/common/archive.h"

namespace terminal {

struct Selection {
  /// In the archive's own spelling.
  std::wstring path;
  bool isFolder;

  bool operator==(const Selection&) const = default;
};

/// Finds what each of `paths` names, in their order; none for a path that
/// names nothing. "/" and "\" separate components, and one may end a path. An
/// item that is spelled exactly so wins over one that differs in case. A
/// folder may have no item of its own, only items beneath it.
std::vector<std::optional<Selection>> FindSelections(host::Archive& archive,
                                                     const std::vector<std::string>& paths);

}  // namespace terminal
