#include "output/folders.h"

#include <algorithm>
#include <cerrno>
#include <climits>

#include "frame/itempath.h"
#include "platform/below.h"

namespace morvunp::output {
namespace {

bool IsBelow(const std::wstring& path, const std::wstring& folder) {
  return path.size() > folder.size() && path.starts_with(folder) &&
         path[folder.size()] == frame::kSeparator;
}

bool IsTooLong(const std::wstring& path) { return platform::ToNativePath(path).size() >= PATH_MAX; }

}  // namespace

std::wstring Folders::RelativeOf(const std::wstring& folder) const {
  return folder.size() > m_target.size() ? folder.substr(m_target.size() + 1) : std::wstring();
}

std::size_t Folders::DepthOfRelative(const std::wstring& relative) {
  if (relative.empty()) return 0;
  return 1 +
         static_cast<std::size_t>(std::count(relative.begin(), relative.end(), frame::kSeparator));
}

HANDLE Folders::Root(bool mayMake) {
  if (m_root.IsOpen()) return m_root.Get();
  m_root.Take(platform::OpenFolder(m_target.c_str()));
  const bool isMissing = !m_root.IsOpen() && GetLastError() == ERROR_FILE_NOT_FOUND;
  if (isMissing && mayMake && frame::CreateFolder(m_state, m_target, m_report)) {
    m_root.Take(platform::OpenFolder(m_target.c_str()));
  }
  return m_root.Get();
}

frame::OpenFile Folders::Open(const std::wstring& folder) const {
  const std::wstring relative = RelativeOf(folder);
  if (!m_root.IsOpen()) return frame::OpenFile();
  return frame::OpenFile(
      platform::OpenFolderBelow(m_root.Get(), relative.empty() ? L"." : relative.c_str()));
}

bool Folders::Enter(const std::wstring& folder, const std::wstring& longest) {
  const std::wstring relative = RelativeOf(folder);
  if (m_current.IsOpen() && relative == m_relative) return true;
  // A file in the target itself does not make the target.
  if (Root(!relative.empty()) == INVALID_HANDLE_VALUE) return TellRefusal();
  return EnterBelow(relative, longest) || TellRefusal();
}

/// A link, a file, or what another process puts there.
bool Folders::TellRefusal() {
  const int error = platform::LastSystemError();
  const bool isInTheWay = ReasonOfError(error) == morvunp::ItemReason::kInTheWay;
  return isInTheWay ? m_reporter.TellInTheWay(ENOTDIR) : m_reporter.TellError(error);
}

bool Folders::EnterBelow(const std::wstring& relative, const std::wstring& longest) {
  const bool isDeeper = m_current.IsOpen() && !m_relative.empty() && IsBelow(relative, m_relative);
  const HANDLE start = isDeeper ? m_current.Get() : m_root.Get();
  const std::wstring rest = isDeeper ? relative.substr(m_relative.size() + 1) : relative;
  const HANDLE found = platform::OpenFolderBelow(start, rest.empty() ? L"." : rest.c_str());
  if (found == INVALID_HANDLE_VALUE) {
    if (GetLastError() != ERROR_FILE_NOT_FOUND) return false;
    if (IsTooLong(longest)) return platform::FailWithErrno(ENAMETOOLONG) != FALSE;
    return MakeBelow(relative);
  }
  m_current.Close();
  m_current.Take(found);
  m_relative = relative;
  return true;
}

/// From the target down, one folder after the other.
bool Folders::MakeBelow(const std::wstring& relative) {
  m_current.Close();
  m_relative.clear();
  m_current.Take(platform::OpenFolderBelow(m_root.Get(), L"."));
  for (std::size_t start = 0; m_current.IsOpen() && start < relative.size();) {
    const std::size_t end = std::min(relative.find(frame::kSeparator, start), relative.size());
    if (!Step(relative.substr(start, end - start), relative.substr(0, end))) {
      m_current.Close();
      return false;
    }
    start = end + 1;
  }
  return m_current.IsOpen();
}

bool Folders::Step(const std::wstring& name, const std::wstring& path) {
  bool isMade = false;
  frame::OpenFile next(platform::OpenFolderBelow(m_current.Get(), name.c_str()));
  if (!next.IsOpen() && GetLastError() == ERROR_FILE_NOT_FOUND) {
    isMade = platform::CreateFolderBelow(m_current.Get(), name.c_str()) != FALSE;
    if (!isMade && GetLastError() != ERROR_ALREADY_EXISTS) return false;
    next.Take(platform::OpenFolderBelow(m_current.Get(), name.c_str()));
  }
  if (!next.IsOpen()) return false;
  m_current.Close();
  m_current.Take(next.Release());
  m_relative = path;
  if (isMade) {
    m_state.m_strLastTarget = frame::Join(m_target, path);
    m_report(m_state.m_strLastTarget);
  }
  return true;
}

}  // namespace morvunp::output
