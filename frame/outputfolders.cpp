#include "frame/outputfolders.h"

#include "frame/itempath.h"

namespace frame {
namespace {

bool IsBelow(const std::wstring& path, const std::wstring& folder) {
  return path.size() > folder.size() && path.starts_with(folder) &&
         path[folder.size()] == kSeparator;
}

}  // namespace

bool OutputFolders::MakeFor(const OutputPlace& place) {
  if (place.folder == m_target || IsMade(place.folder)) return true;
  // Thousands of folders would stand there for a file that cannot.
  return !IsTooLong(place.Path()) && MakeNew(place.folder);
}

bool OutputFolders::Make(const std::wstring& folder) {
  return IsMade(folder) || (!IsTooLong(folder) && MakeNew(folder));
}

/// Of a folder that the system can hold.
bool OutputFolders::MakeNew(const std::wstring& folder) {
  if (LinkOnTheWay(folder) || !CreateFolder(m_state, folder, m_report)) return false;
  m_made = folder;
  return true;
}

bool OutputFolders::LinkOnTheWay(const std::wstring& folder) const {
  // What was looked at for the folder made last needs no second look.
  const bool deeper = !m_made.empty() && IsBelow(folder, m_made);
  std::size_t end = deeper ? m_made.size() : m_target.size();
  while (end < folder.size()) {
    end = std::min(folder.find(kSeparator, end + 1), folder.size());
    const DWORD attributes = GetFileAttributesW(folder.substr(0, end).c_str());
    if (attributes == INVALID_FILE_ATTRIBUTES) return false;
    if ((attributes & FILE_ATTRIBUTE_REPARSE_POINT) != 0) return true;
  }
  return false;
}

}  // namespace frame

bool MakeOutputFolder(const std::wstring& folder, const std::wstring& target) {
  CUnpackState state;
  return frame::OutputFolders(state, target, [](const std::wstring&) {}).Make(folder);
}
