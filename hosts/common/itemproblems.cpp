#include "hosts/common/itemproblems.h"

namespace host {

Reason NoPassword() { return {"it is encrypted and no password was given"}; }

Reason WrongPasswordOrDamaged() {
  return {"wrong password or damaged; the archive does not tell which"};
}

Reason ReasonOf(RarProblem problem, const std::wstring& detail) {
  switch (problem) {
    case RarProblem::kWrongPassword:
      return {"wrong password"};
    case RarProblem::kWrongPasswordOrDamaged:
      return WrongPasswordOrDamaged();
    case RarProblem::kNoPassword:
      return NoPassword();
    case RarProblem::kMissingVolume:
      if (detail.empty()) return {"a volume of the set is missing"};
      return {.text = "the volume %1 is missing", .path = detail};
    case RarProblem::kBeginsEarlier:
      return {"it begins in an earlier volume; open the first one"};
    case RarProblem::kUnsafeName:
      return {"refused: unsafe name"};
    case RarProblem::kUnsafeLink:
      return {"refused: a link that leads out of the folder"};
    case RarProblem::kNoSource:
      return {"refused: a link to or copy of an item that was not unpacked"};
    case RarProblem::kCannotWrite:
      return {"failed: could not be written"};
    case RarProblem::kNoMemory:
      return {"failed: it takes more memory than there is"};
    default:
      return {"damaged"};
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
