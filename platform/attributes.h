// How file attributes lie in this system's files; for the services that set and
// look at them.
#pragma once

#include <sys/types.h>
#include <time.h>

#include <array>
#include <cstdlib>

#include "morvunp/platform/files.h"

namespace morvunp::platform {

/// The extended attribute that holds hidden and system, as "0x" and a
/// hexadecimal number.
inline constexpr const char* kDosAttributes = "user.DOSATTRIB";
inline constexpr DWORD kStoredAttributes = FILE_ATTRIBUTE_HIDDEN | FILE_ATTRIBUTE_SYSTEM;

/// `read(text, size)` is one of the calls that get an extended attribute.
template <class Read>
DWORD StoredAttributes(Read read) {
  // Some writers append binary data after the text's terminating zero; only
  // the text is looked at.
  std::array<char, 256> text{};
  if (read(text.data(), text.size() - 1) <= 0) return 0;
  return static_cast<DWORD>(std::strtoul(text.data(), nullptr, 16)) & kStoredAttributes;
}

/// What SetAttributesOf does.
BOOL SetDescriptorAttributes(int descriptor, DWORD attributes);

/// A null time is left as it is.
timespec TimespecOf(const FILETIME* time);

}  // namespace morvunp::platform
