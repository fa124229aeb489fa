#include "hosts/common/itemproblems.h"

namespace host {
namespace {

Reason ReasonOfMissingVolume(const std::wstring& name) {
  if (name.empty()) return Reason::Of("a volume of the set is missing");
  Reason reason = Reason::Of("the volume %1 is missing");
  reason.path = name;
  return reason;
}

}  // namespace

Reason NoPassword() { return Reason::Of("it is encrypted and no password was given"); }

Reason WrongPasswordOrDamaged() {
  return Reason::Of("wrong password or damaged; the archive does not tell which");
}

Reason ReasonOf(RarProblem problem, const std::wstring& detail) {
  switch (problem) {
    case RarProblem::kWrongPassword:
      return Reason::Of("wrong password");
    case RarProblem::kWrongPasswordOrDamaged:
      return WrongPasswordOrDamaged();
    case RarProblem::kNoPassword:
      return NoPassword();
    case RarProblem::kMissingVolume:
      return ReasonOfMissingVolume(detail);
    case RarProblem::kBeginsEarlier:
      return Reason::Of("it begins in an earlier volume; open the first one");
    case RarProblem::kUnsafeName:
      return Reason::Of("refused: unsafe name");
    case RarProblem::kUnsafeLink:
      return Reason::Of("refused: a link that leads out of the folder");
    case RarProblem::kNoSource:
      return Reason::Of("refused: a link to or copy of an item that was not unpacked");
    case RarProblem::kCannotWrite:
      return Reason::Of("failed: could not be written");
    case RarProblem::kNoMemory:
      return Reason::Of("failed: it takes more memory than there is");
    default:
      return Reason::Of("damaged");
  }
}

void ItemProblems::Add(const std::wstring& path, RarProblem problem, const std::wstring& detail) {
  reasons_.insert_or_assign(path, ReasonOf(problem, detail));
}

const Reason* ItemProblems::Find(const std::wstring& path) const {
  const auto found = reasons_.find(path);
  return found != reasons_.end() ? &found->second : nullptr;
}

}  // namespace host
