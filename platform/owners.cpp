#include "platform/owners.h"

#include <grp.h>
#include <pwd.h>
#include <unistd.h>

#include <array>
#include <cerrno>

#include "platform/descriptors.h"

namespace morvunp::platform {
namespace {

/// More than an entry takes but that of a group with very many members, whose
/// name counts as unknown.
using EntryText = std::array<char, 16384>;

constexpr auto kUnchanged = static_cast<uid_t>(-1);

}  // namespace

bool MayGiveFilesAway() { return geteuid() == 0; }

std::optional<DWORD> UserOfName(const std::string& name) {
  EntryText text;
  passwd entry{};
  passwd* found = nullptr;
  getpwnam_r(name.c_str(), &entry, text.data(), text.size(), &found);
  return found != nullptr ? std::optional<DWORD>(found->pw_uid) : std::nullopt;
}

std::optional<DWORD> GroupOfName(const std::string& name) {
  EntryText text;
  group entry{};
  group* found = nullptr;
  getgrnam_r(name.c_str(), &entry, text.data(), text.size(), &found);
  return found != nullptr ? std::optional<DWORD>(found->gr_gid) : std::nullopt;
}

BOOL SetOwnerOf(HANDLE file, const FileOwner& owner) {
  const uid_t user = owner.user.value_or(kUnchanged);
  const gid_t group = owner.group.value_or(kUnchanged);
  return fchown(DescriptorOf(file), user, group) == 0 ? TRUE : FailWithErrno(errno);
}

}  // namespace morvunp::platform
