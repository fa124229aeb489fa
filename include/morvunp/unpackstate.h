// What every unpacker object holds beside the state of its format.
#pragma once

#include <chrono>
#include <string>
#include <vector>

#include "morvunp/itemreport.h"
#include "morvunp/records.h"
#include "morvunp/unpackoptions.h"

namespace morvunp {

/// Settings, standing answers, host hooks and the state of the running unpack.
/// A plain value: the operations on it are in frame/ and output/.
struct CUnpackState {
  INIUNPACK m_iniUnpack;
  INIYESTOALL m_iniYesToAll;
  /// When set, OpenArchive keeps m_iniYesToAll. The library never sets it.
  BYTE m_bKeepYesToAll = 0;
  /// Receives WM_UNPACK_PROGRESS and is pumped while unpacking; may be null.
  HWND m_hDialogProgress = nullptr;
  /// Receives WM_UNPACK_FILETREE; may be null. Not owned.
  CWnd* m_pWndFileTree = nullptr;
  /// The running unpack was cancelled, in the replace dialog or by Yes to
  /// "Interrupt the unpack?".
  BYTE m_bCancel = 0;
  /// The progress dialog asked to stop and the question is not answered yet.
  BYTE m_bStopRequest = 0;
  /// Full path of the file being written or of the folder last created.
  std::wstring m_strLastTarget;
  /// Told of each item, and of the end of each run; may be empty.
  morvunp::ItemReportFunction m_reportItem;
  morvunp::RunReportFunction m_reportRun;
  /// The archive that is being read and its volumes: never written to.
  std::vector<platform::FileIdentity> m_archiveFiles;
  /// With the name of a code page and not its converters, so that an object may
  /// be copied and may go to another thread.
  UnpackOptions m_options;
  /// When messages were pumped last where nothing is written.
  std::chrono::steady_clock::time_point m_lastPump;
};

}  // namespace morvunp
