// Who files belong to.
#pragma once

#include <optional>
#include <string>

#include "morvunp/platform/types.h"

namespace morvunp::platform {

/// Numbers of a user and a group; none: stays as it is.
struct FileOwner {
  std::optional<DWORD> user{};
  std::optional<DWORD> group{};
};

/// This thread may give files to others.
bool MayGiveFilesAway();

/// The number that this system knows the name by.
std::optional<DWORD> UserOfName(const std::string& name);
std::optional<DWORD> GroupOfName(const std::string& name);

/// Of an open file. FALSE, with the system's reason, when it refuses.
BOOL SetOwnerOf(HANDLE file, const FileOwner& owner);

}  // namespace morvunp::platform
