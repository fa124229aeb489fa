// What folders are given when nothing more is written into them.
#pragma once

#include <functional>
#include <map>
#include <string>

#include "output/facts.h"
#include "output/folders.h"

namespace morvunp::output {

/// Modes and times of folders, kept until a run has ended: a file that comes out
/// changes its folder's time, and needs it writable.
class FolderFacts {
 public:
  /// The folder at this path exists; the last word about it counts.
  void Note(const std::wstring& folder, const FileFacts& facts) { m_facts[folder] = facts; }
  /// Gives each noted folder its facts, as far as the system allows, and forgets
  /// them. What is no folder any more stays as it is.
  void Settle(const Folders& folders);

 private:
  /// What lies deeper comes first: behind its folder's mode it may be out of
  /// reach.
  std::map<std::wstring, FileFacts, std::greater<>> m_facts;
};

}  // namespace morvunp::output
