// The state of an extraction pass.
#pragma once

#include <string>

#include "output/root.h"

namespace morvunp::cab {

/// What a pass is to unpack.
enum Mode : DWORD { kNothing = 0, kFile = 1, kFolder = 2, kArchive = 3, kRouted = 4 };

/// Stands for the file that is written, which only the run itself closes. No
/// descriptor has this value.
inline constexpr INT_PTR kOutputFile = INTPTR_MAX;

class Extraction {
 public:
  DWORD m_nMode = kNothing;
  /// Path in the cabinet of the file being unpacked.
  std::wstring m_strWanted;
  /// Arguments of the run.
  std::wstring m_strTarget;
  std::wstring m_strFolder;
  const morvunp::ItemRouter* m_pRouter = nullptr;
  /// An output file was opened in this pass.
  bool m_bFileOpened = false;
  /// The first enumeration of this pass was seen.
  bool m_bEnumStarted = false;
  /// Place in the walk of the file that was reported last, and the first that
  /// no notification has come for.
  ULONGLONG m_nPosition = 0;
  ULONGLONG m_nNext = 0;
  /// The attributes of the file that was reported last.
  WORD m_nAttribs = 0;
  /// Bytes written of the file being unpacked, and its size.
  DWORD m_nDone = 0;
  LONG m_nTotal = 0;
  /// Its MS-DOS date and time.
  DWORD m_nItemDateTime = 0;
  /// What the operation writes into; null in none.
  output::Root* m_pRoot = nullptr;

  void BeginPass() {
    m_bFileOpened = false;
    m_bEnumStarted = false;
    m_nNext = 0;
  }
};

}  // namespace morvunp::cab
