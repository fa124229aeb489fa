// The folders that a run writes into.
#pragma once

#include <string>

#include "frame/filesystem.h"
#include "morvunp/outputplace.h"
#include "output/report.h"

namespace morvunp::output {

/// The target folder of a run and what lies below it, all reached from one
/// descriptor: no symbolic link between the two is followed, not even one that
/// another process puts there meanwhile. The target itself is the user's own
/// choice and may be reached by links. Failures are told.
class Folders {
 public:
  Folders(CUnpackState& state, Reporter& reporter, std::wstring target, frame::FolderReport report)
      : m_state(state),
        m_reporter(reporter),
        m_target(std::move(target)),
        m_report(std::move(report)) {}

  const std::wstring& Target() const { return m_target; }
  /// Goes to the target or a folder below it, making what is missing. `longest`
  /// is a path that is to stand below it: where the system cannot hold that,
  /// thousands of folders would stand there for nothing.
  bool Enter(const std::wstring& folder, const std::wstring& longest);
  /// Where Enter went; files are made, found and renamed there.
  HANDLE Current() const { return m_current.Get(); }
  /// Number of folders between the target and the current one.
  std::size_t Depth() const { return DepthOfRelative(m_relative); }
  /// The same of any folder below the target.
  std::size_t DepthOf(const std::wstring& folder) const {
    return DepthOfRelative(RelativeOf(folder));
  }
  /// Opens a folder that exists; INVALID_HANDLE_VALUE otherwise.
  frame::OpenFile Open(const std::wstring& folder) const;
  /// The target, for what is private to the run; opened if need be.
  HANDLE Root(bool mayMake);

 private:
  bool TellRefusal();
  bool EnterBelow(const std::wstring& relative, const std::wstring& longest);
  bool MakeBelow(const std::wstring& relative);
  bool Step(const std::wstring& name, const std::wstring& path);
  static std::size_t DepthOfRelative(const std::wstring& relative);
  std::wstring RelativeOf(const std::wstring& folder) const;

  CUnpackState& m_state;
  Reporter& m_reporter;
  std::wstring m_target;
  frame::FolderReport m_report;
  frame::OpenFile m_root;
  /// Files of one folder follow each other, so the last one stays open.
  frame::OpenFile m_current;
  std::wstring m_relative;
};

}  // namespace morvunp::output
