// The state of an extraction pass.
#pragma once

#include <optional>
#include <string>

#include "frame/outputfolders.h"

namespace cab {

/// What a pass is to unpack.
enum Mode : DWORD { kNothing = 0, kFile = 1, kFolder = 2, kArchive = 3 };

class Extraction {
 public:
  DWORD m_nMode = kNothing;
  /// Path in the cabinet of the file being unpacked.
  std::wstring m_strWanted;
  /// Arguments of the run.
  std::wstring m_strTarget;
  std::wstring m_strFolder;
  /// Full path of the output file.
  std::wstring m_strOutputPath;
  /// An output file was opened in this pass.
  bool m_bFileOpened = false;
  /// The first enumeration of this pass was seen.
  bool m_bEnumStarted = false;
  /// The user interrupted the file being written.
  bool m_bInterrupted = false;
  /// Bytes written of the file being unpacked, and its size.
  DWORD m_nDone = 0;
  LONG m_nTotal = 0;
  /// Its MS-DOS date and time.
  DWORD m_nItemDateTime = 0;
  /// The folders that the pass writes into.
  std::optional<frame::OutputFolders> m_folders;
  /// Output file that was created by the decision to write it.
  HANDLE m_hOutput = INVALID_HANDLE_VALUE;

  void BeginPass() {
    m_bFileOpened = false;
    m_bEnumStarted = false;
    m_bInterrupted = false;
  }
};

}  // namespace cab
