#include "hosts/common/itemproblems.h"

#include <cerrno>
#include <cstring>

namespace host {
namespace {

Reason ReasonOfMissingVolume(std::wstring_view name) {
  if (name.empty()) return Reason::Of("a volume of the set is missing");
  Reason reason = Reason::Of("the volume %1 is missing");
  reason.path = name;
  return reason;
}

/// In the system's own words.
Reason ReasonOfSystem(int error) {
  if (error == 0) return Reason::Of("failed: could not be written");
  if (error == EWOULDBLOCK) return Reason::Of("failed: another program has it open");
  Reason reason{std::strerror(error)};
  reason.effect = Reason::Of("failed").text;
  return reason;
}

Reason ReasonInTheWay(int what) {
  switch (what) {
    case EISDIR:
      return Reason::Of("failed: a folder stands in its place");
    case ENOTDIR:
      return Reason::Of("failed: something else stands in the place of its folder");
    case ETXTBSY:
      return Reason::Of("failed: it would replace the archive itself");
    default:
      return Reason::Of("failed: a symbolic link stands in its place");
  }
}

}  // namespace

Reason NoPassword() { return Reason::Of("it is encrypted and no password was given"); }

Reason WrongPasswordOrDamaged() {
  return Reason::Of("wrong password or damaged; the archive does not tell which");
}

Reason ReasonOf(morvunp::ItemReason reason, std::wstring_view detail, int systemError) {
  using morvunp::ItemReason;
  switch (reason) {
    case ItemReason::kUnsafeName:
      return Reason::Of("refused: unsafe name");
    case ItemReason::kUnsafeLink:
      return Reason::Of("refused: a link that leads out of the folder");
    case ItemReason::kInTheWay:
      return ReasonInTheWay(systemError);
    case ItemReason::kNameTooLong:
      return Reason::Of("failed: its name is too long");
    case ItemReason::kSystem:
      return ReasonOfSystem(systemError);
    case ItemReason::kCutShort:
      return Reason::Of("cut short: the archive ends before the file does");
    case ItemReason::kShorterThanRecorded:
      return Reason::Of("cut short: it has fewer bytes than the archive records");
    case ItemReason::kUnsupportedMethod:
      return Reason::Of("failed: its method of compression is not supported");
    case ItemReason::kWrongPassword:
      return Reason::Of("wrong password");
    case ItemReason::kWrongPasswordOrDamaged:
      return WrongPasswordOrDamaged();
    case ItemReason::kNoPassword:
      return NoPassword();
    case ItemReason::kMissingVolume:
      return ReasonOfMissingVolume(detail);
    case ItemReason::kBeginsEarlier:
      return Reason::Of("it begins in an earlier volume; open the first one");
    case ItemReason::kNoSource:
      return Reason::Of("refused: a link to or copy of an item that was not unpacked");
    case ItemReason::kLimit:
      return Reason::Of("failed: it passes a limit");
    case ItemReason::kInterrupted:
      return Reason::Of("interrupted");
    case ItemReason::kNoMemory:
      return Reason::Of("failed: it takes more memory than there is");
    default:
      return Reason::Of("failed: damaged in the archive");
  }
}

}  // namespace host
