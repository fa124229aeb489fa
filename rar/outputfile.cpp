#include "rar/outputfile.h"

#include <new>
#include <utility>

#include "frame/itempath.h"
#include "platform/platform.h"

namespace rar {
namespace {

constexpr int kAttempts = 100;

}  // namespace

ExistingFile::ExistingFile(std::wstring path) : m_strPath(std::move(path)), m_bAway(MoveAside()) {}

ExistingFile::~ExistingFile() {
  if (m_strAside.empty()) return;
  try {
    MoveFileExW(m_strAside.c_str(), m_strPath.c_str(), MOVEFILE_REPLACE_EXISTING);
  } catch (const std::bad_alloc&) {
    // Not even memory for two paths is left: the file keeps its other name.
  }
}

void ExistingFile::Discard() {
  if (m_strAside.empty()) return;
  DeleteFileW(m_strAside.c_str());
  // Only now: a deletion that throws is one that leaves the file.
  m_strAside.clear();
}

bool ExistingFile::MoveAside() {
  for (int i = 0; i < kAttempts; ++i) {
    // Not longer than any name, so that the system takes it.
    std::wstring aside = frame::Join(frame::ParentOf(m_strPath), L".morvunp-" + std::to_wstring(i));
    if (MoveFileExW(m_strPath.c_str(), aside.c_str(), 0) != FALSE) {
      m_strAside = std::move(aside);
      return true;
    }
    if (GetLastError() != ERROR_FILE_EXISTS) return false;
  }
  return false;
}

}  // namespace rar
