// The one gate that an item's path passes before anything is made for it.
// morvunp/outputplace.h has the check of a whole path.
#pragma once

#include <string_view>

namespace morvunp::output {

/// True when an item of this name may be written into a folder that passed the
/// gate itself, or into the target folder when `inRoot`.
bool IsSafeName(std::wstring_view name, bool inRoot);

/// The same for every component of a path; `inRoot` is said of the first.
bool IsSafePath(std::wstring_view path, bool inRoot);

}  // namespace morvunp::output
