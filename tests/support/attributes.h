// Attributes of files, for programs that hold the library's objects.
#pragma once

#include <string>

#include "platform/below.h"
#include "support/rooms.h"

namespace testsupport {

/// Gives an existing file attributes of the host's system.
inline bool SetAttributes(const std::wstring& folder, const std::wstring& name,
                          unsigned attributes) {
  const HANDLE parent = platform::OpenFolder(folder.c_str());
  const HANDLE file = platform::OpenFileBelow(parent, name.c_str());
  const bool isOpen = file != INVALID_HANDLE_VALUE;
  const bool isSet = isOpen && platform::SetAttributesOf(file, attributes) != FALSE;
  if (isOpen) CloseHandle(file);
  CloseHandle(parent);
  return isSet;
}

}  // namespace testsupport
