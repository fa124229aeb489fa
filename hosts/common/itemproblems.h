// What unpackers tell of items that did not come out.
#pragma once

#include <cstddef>
#include <string>
#include <unordered_map>
#include <unordered_set>

#include "hosts/common/reason.h"
#include "morvunp/rarunpacker.h"

namespace host {

/// Why an item, or a whole archive, did not come out. `detail` as in
/// RarProblemReport.
Reason ReasonOf(RarProblem problem, const std::wstring& detail);

/// What is told of a password in every format.
Reason NoPassword();
Reason WrongPasswordOrDamaged();

/// Remembers the reasons of a run until they are reported.
class ItemProblems {
 public:
  void Add(const std::wstring& path, RarProblem problem, const std::wstring& detail);

  /// Null when nothing was told of this item.
  const Reason* Find(const std::wstring& path) const;
  /// A run of the request has ended early: the items behind were not reached.
  void EndRun(std::size_t run) { endedRuns_.insert(run); }
  bool HasEnded(std::size_t run) const { return endedRuns_.contains(run); }

 private:
  std::unordered_map<std::wstring, Reason> reasons_;
  std::unordered_set<std::size_t> endedRuns_;
};

}  // namespace host
