// CCabUnpacker: unpacking. Every operation is one pass of the interface over
// the cabinet, which reports each file in turn.
#include "cab/extraction.h"

#include "cab/cabinet.h"
#include "cab/narrowpath.h"
#include "frame/ansitext.h"
#include "frame/itempath.h"
#include "frame/keptexception.h"
#include "frame/pathgate.h"
#include "frame/pathindex.h"
#include "frame/progress.h"
#include "frame/replace.h"
#include "morvunp/cabunpacker.h"

namespace {

constexpr INT_PTR kSkip = 0;
constexpr INT_PTR kGoOn = 0;
constexpr INT_PTR kAbort = -1;

/// The attributes that a cabinet records of a file. Its other bits mean
/// something else here, up to a mode.
constexpr DWORD kRecorded = FILE_ATTRIBUTE_READONLY | FILE_ATTRIBUTE_HIDDEN |
                            FILE_ATTRIBUTE_SYSTEM | FILE_ATTRIBUTE_ARCHIVE;

frame::NewFile NewFileOf(const cab::Extraction& run) {
  return {static_cast<ULONGLONG>(LONGLONG{run.m_nTotal}),
          platform::CarriedTimeOfDosDateTime(static_cast<WORD>(run.m_nItemDateTime >> 16),
                                             static_cast<WORD>(run.m_nItemDateTime))};
}

/// The path without the backslash at the end of a folder's.
std::wstring PathOf(const cab::CCabItemInfo& item) {
  std::wstring path = item.m_strPath;
  if (item.IsFolder()) path.pop_back();
  return path;
}

bool IsSafe(const std::wstring& path) {
  return IsSafeItem(path, std::wstring(frame::NameOf(path)));
}

}  // namespace

// The three operations.

bool CCabUnpacker::UnpackFile(const std::wstring& path, const std::wstring& target) {
  cab::Extraction& run = *m_pExtraction;
  run.m_nMode = cab::kFile;
  if (!LocateFile(path)) return false;
  const cab::CCabItemInfo& item = *m_pCabinet->Items().Current();
  run.m_strWanted = path;
  run.m_nTotal = item.m_nSize;
  run.m_nItemDateTime = item.DosDateTime();
  if (item.IsFolder() || !IsSafe(path)) return false;
  const OutputPlace place = PlaceOfFile(m_state.m_iniUnpack, path, target);
  frame::OutputFolders folders(m_state, target,
                               [this](const std::wstring& folder) { UpdateFileTree(folder); });
  if (!folders.MakeFor(place)) return false;
  return UnpackCurrentFile(place.name, place.folder);
}

bool CCabUnpacker::UnpackCurrentFile(const std::wstring& name, const std::wstring& folder) {
  cab::Extraction& run = *m_pExtraction;
  if (!IsSafe(name)) return false;
  run.m_strOutputPath = frame::Join(folder, name);
  m_state.m_strLastTarget = run.m_strOutputPath;
  if (!frame::MayWrite(m_state, run.m_strOutputPath, NewFileOf(run), frame::Protection::kClear)) {
    return false;
  }
  m_state.m_bStopRequest = 0;
  m_state.m_bCancel = 0;
  BeginFile(name);
  const bool isCopied = RunPass();
  if (m_state.m_bCancel != 0) return false;
  if (isCopied) UpdateFileTree(m_state.m_strLastTarget);
  return isCopied;
}

bool CCabUnpacker::UnpackFolder(const std::wstring& path, const std::wstring& target) {
  m_pExtraction->m_strFolder = path;
  return RunOverItems(cab::kFolder, target);
}

bool CCabUnpacker::UnpackArchive(const std::wstring& target) {
  return RunOverItems(cab::kArchive, target);
}

bool CCabUnpacker::RunOverItems(DWORD mode, const std::wstring& target) {
  cab::Extraction& run = *m_pExtraction;
  run.m_nMode = mode;
  run.m_strTarget = target;
  m_state.m_bCancel = 0;
  m_state.m_bStopRequest = 0;
  return RunPass();
}

/// An interrupted file was deleted while the interface still held it open;
/// where that could not be, it goes now. Not after Cancel in the replace
/// dialog: the path then names the file that the user kept.
bool CCabUnpacker::RunPass() {
  cab::Extraction& run = *m_pExtraction;
  run.BeginPass();
  run.m_folders.emplace(m_state, run.m_strTarget,
                        [this](const std::wstring& folder) { UpdateFileTree(folder); });
  const frame::CodePageScope codePage(m_state);
  const bool isCopied = m_pCabinet->Copy(FDICallback_Extract, this);
  if (run.m_bInterrupted) DeleteFileW(run.m_strOutputPath.c_str());
  return isCopied;
}

/// The start of each file that is written.
void CCabUnpacker::BeginFile(const std::wstring& name) {
  SetThis(this);
  m_pExtraction->m_nDone = 0;
  frame::SendProgress(m_state, 0, std::wstring(frame::NameOf(name)));
}

// Notifications.

namespace {

/// The interface opens whatever stands under the name of the next cabinet; one
/// that is not there ends the pass.
INT_PTR OnNextCabinet(const FDINOTIFICATION& notification) {
  const std::wstring name = frame::DecodeAnsi(notification.psz1);
  if (!frame::IsSafeName(name, true)) return kAbort;
  std::wstring path = cab::WidePath(notification.psz3);
  if (!path.empty() && !path.ends_with(frame::kSeparator)) path += frame::kSeparator;
  path = cab::ExistingCabinet(path + name);
  return GetFileAttributesW(path.c_str()) != INVALID_FILE_ATTRIBUTES ? kGoOn : kAbort;
}

}  // namespace

INT_PTR CCabUnpacker::FDICallback_Extract(FDINOTIFICATIONTYPE type, FDINOTIFICATION* notification) {
  auto& unpacker = *static_cast<CCabUnpacker*>(notification->pv);
  return frame::KeepException(cab::Cabinet::Thrown(), kAbort, [&] {
    switch (type) {
      case fdintCOPY_FILE:
        return unpacker.OnCopyFile(*notification);
      case fdintCLOSE_FILE_INFO:
        return unpacker.OnCloseFile(*notification);
      case fdintNEXT_CABINET:
        return OnNextCabinet(*notification);
      case fdintENUMERATE:
        return unpacker.OnEnumerate();
      default:
        return kGoOn;
    }
  });
}

INT_PTR CCabUnpacker::OnCopyFile(const FDINOTIFICATION& notification) {
  cab::Extraction& run = *m_pExtraction;
  bool isWanted = false;
  switch (run.m_nMode) {
    case cab::kFile:
      isWanted = frame::SamePath(frame::DecodeAnsi(notification.psz1), run.m_strWanted);
      if (isWanted) run.m_hOutput = frame::ReplaceOutputFile(run.m_strOutputPath);
      break;
    case cab::kFolder:
      isWanted = ProcessUnpackFolder(run.m_strFolder, run.m_strTarget, notification.psz1);
      break;
    case cab::kArchive:
      isWanted = ProcessUnpackArchive(run.m_strTarget, notification.psz1);
      break;
    default:
      break;
  }
  if (!isWanted) return m_state.m_bCancel != 0 ? kAbort : kSkip;
  run.m_bFileOpened = true;
  const HANDLE output = std::exchange(run.m_hOutput, INVALID_HANDLE_VALUE);
  if (output == INVALID_HANDLE_VALUE) return kAbort;
  return _open_osfhandle(reinterpret_cast<std::intptr_t>(output), _O_BINARY);
}

INT_PTR CCabUnpacker::OnCloseFile(const FDINOTIFICATION& notification) {
  const std::wstring& path = m_pExtraction->m_strOutputPath;
  const auto file = static_cast<int>(notification.hf);
  // The open file takes its time without being looked up again.
  const auto handle = reinterpret_cast<HANDLE>(_get_osfhandle(file));
  frame::SetDosTimeModified(handle, DWORD{notification.date} << 16 | notification.time);
  if (_close(file) != 0) return kAbort;
  // A file that was just written has this attribute and no other.
  const DWORD attributes = notification.attribs & kRecorded;
  if (attributes != FILE_ATTRIBUTE_ARCHIVE) SetFileAttributesW(path.c_str(), attributes);
  UpdateFileTree(m_state.m_strLastTarget);
  return TRUE;
}

/// The first enumeration begins the pass. A later one fails it when no file was
/// written.
INT_PTR CCabUnpacker::OnEnumerate() {
  cab::Extraction& run = *m_pExtraction;
  if (!std::exchange(run.m_bEnumStarted, true)) return kGoOn;
  return run.m_bFileOpened ? kGoOn : kAbort;
}

// Reported files of folder and archive runs.

/// Makes the item of a reported file current and the one in hand.
bool CCabUnpacker::SelectItem(const std::wstring& path) {
  cab::ItemList& items = m_pCabinet->Items();
  if (!items.LocateFile(path)) return false;
  const cab::CCabItemInfo& item = *items.Current();
  cab::Extraction& run = *m_pExtraction;
  run.m_strWanted = item.m_strPath;
  run.m_nTotal = item.m_nSize;
  run.m_nItemDateTime = item.DosDateTime();
  return IsSafe(PathOf(item));
}

bool CCabUnpacker::ProcessUnpackFolder(const std::wstring& folder, const std::wstring& target,
                                       const char* fileName) {
  if (!SelectItem(frame::DecodeAnsi(fileName))) return false;
  const cab::CCabItemInfo& item = *m_pCabinet->Items().Current();
  return ProcessPlace(
      PlaceInFolderRun(m_state.m_iniUnpack, folder, PathOf(item), item.IsFolder(), target));
}

bool CCabUnpacker::ProcessUnpackArchive(const std::wstring& target, const char* fileName) {
  if (!SelectItem(frame::DecodeAnsi(fileName))) return false;
  const cab::CCabItemInfo& item = *m_pCabinet->Items().Current();
  return ProcessPlace(
      PlaceInArchiveRun(m_state.m_iniUnpack, PathOf(item), item.IsFolder(), target));
}

bool CCabUnpacker::ProcessPlace(const std::optional<OutputPlace>& place) {
  if (!place) return false;
  cab::Extraction& run = *m_pExtraction;
  if (!run.m_folders->MakeFor(*place)) return false;
  // A folder that is recorded as such has nothing to write.
  if (place->name.empty()) return false;
  const bool isWanted = ProcessUnpackCurrentFile(place->name, place->folder);
  if (run.m_hOutput == INVALID_HANDLE_VALUE) run.m_folders->Forget();
  return isWanted;
}

bool CCabUnpacker::ProcessUnpackCurrentFile(const std::wstring& name, const std::wstring& folder) {
  cab::Extraction& run = *m_pExtraction;
  run.m_strOutputPath = frame::Join(folder, name);
  m_state.m_strLastTarget = run.m_strOutputPath;
  bool isDeclined = false;
  frame::OpenFile output(
      frame::CreateOutputFile(m_state, run.m_strOutputPath, NewFileOf(run), isDeclined));
  if (isDeclined) return false;
  BeginFile(name);
  run.m_hOutput = output.Release();
  return true;
}
