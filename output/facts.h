// What an archive records of a file or folder beside its data.
#pragma once

#include <optional>

#include "platform/below.h"

namespace morvunp::output {

/// What a finished file, or a folder at the end of the run, is given.
struct FileFacts {
  /// UTC; none: it keeps the time of writing.
  std::optional<FILETIME> lastWrite{};
  /// FILE_ATTRIBUTE bits; none: it keeps what it has.
  std::optional<DWORD> attributes{};
};

}  // namespace morvunp::output
