// What an archive records of a file or folder beside its data.
#pragma once

#include <optional>

#include "platform/below.h"
#include "platform/owners.h"

namespace morvunp::output {

/// What a finished file, or a folder at the end of the run, is given.
struct FileFacts {
  /// UTC; none: it keeps the time of writing.
  std::optional<FILETIME> lastWrite{};
  /// FILE_ATTRIBUTE bits; none: it keeps what it has.
  std::optional<DWORD> attributes{};
  /// Of files; none: it belongs to who writes it.
  std::optional<platform::FileOwner> owner{};
};

}  // namespace morvunp::output
