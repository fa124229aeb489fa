// CCabUnpacker: unpacking. Every operation is one pass of the interface over
// the cabinet, which reports each file in turn.
#include "cab/extraction.h"

#include "cab/cabinet.h"
#include "cab/narrowpath.h"
#include "frame/ansitext.h"
#include "frame/itempath.h"
#include "frame/keptexception.h"
#include "frame/lent.h"
#include "frame/pathindex.h"
#include "frame/progress.h"
#include "morvunp/cabunpacker.h"
#include "morvunp/dostime.h"
#include "morvunp/outputplace.h"
#include "output/pathgate.h"
#include "output/walk.h"

namespace cab = morvunp::cab;
namespace frame = morvunp::frame;
namespace output = morvunp::output;
namespace platform = morvunp::platform;

namespace {

constexpr INT_PTR kSkip = 0;
constexpr INT_PTR kGoOn = 0;
constexpr INT_PTR kAbort = -1;

/// The attributes that a cabinet records of a file. Its other bits mean
/// something else here, up to a mode.
constexpr DWORD kRecorded = FILE_ATTRIBUTE_READONLY | FILE_ATTRIBUTE_HIDDEN |
                            FILE_ATTRIBUTE_SYSTEM | FILE_ATTRIBUTE_ARCHIVE;

__time64_t TimeOf(DWORD dosDateTime) {
  return platform::CarriedTimeOfDosDateTime(static_cast<WORD>(dosDateTime >> 16),
                                            static_cast<WORD>(dosDateTime));
}

bool IsWanted(const morvunp::Route& route) { return !route.IsPassOver() && !route.IsEnd(); }

/// The path without the backslash at the end of a folder's.
std::wstring PathOf(const cab::CCabItemInfo& item) {
  std::wstring path = item.m_strPath;
  if (item.IsFolder()) path.pop_back();
  return path;
}

bool IsSafe(const std::wstring& path) {
  return morvunp::IsSafeItem(path, std::wstring(frame::NameOf(path)));
}

}  // namespace

// The three operations.

output::Root CCabUnpacker::RootAt(const std::wstring& target) {
  return {m_state, target, [this](const std::wstring& folder) { UpdateFileTree(folder); }};
}

/// The item that a run has come to, at m_nPosition.
void CCabUnpacker::BeginItem(const cab::CCabItemInfo& item) {
  cab::Extraction& run = *m_pExtraction;
  run.m_nTotal = item.m_nSize;
  run.m_nItemDateTime = item.DosDateTime();
  BeginItem(item.m_strPath);
}

void CCabUnpacker::BeginItem(const std::wstring& path) {
  const cab::Extraction& run = *m_pExtraction;
  m_pExtraction->m_pRoot->Begin({run.m_nPosition, path,
                                 static_cast<ULONGLONG>(LONGLONG{run.m_nTotal}),
                                 TimeOf(run.m_nItemDateTime)});
}

bool CCabUnpacker::UnpackFile(const std::wstring& path, const std::wstring& target) {
  cab::Extraction& run = *m_pExtraction;
  run.m_nMode = cab::kFile;
  if (!LocateFile(path) || frame::WasInterrupted(m_state)) return false;
  const cab::CCabItemInfo& item = *m_pCabinet->Items().Current();
  run.m_strWanted = path;
  run.m_nTotal = item.m_nSize;
  run.m_nItemDateTime = item.DosDateTime();
  run.m_nPosition = GetPosition();
  if (item.IsFolder()) return false;
  output::Root root = RootAt(target);
  const frame::Lent lent(m_pExtraction->m_pRoot, root);
  BeginItem(path);
  if (!IsSafe(path)) return RefuseName();
  return UnpackAt(morvunp::PlaceOfFile(m_state.m_iniUnpack, path, target));
}

bool CCabUnpacker::RefuseName() {
  return m_pExtraction->m_pRoot->Report().Tell(morvunp::ItemResult::kRefused,
                                               morvunp::ItemReason::kUnsafeName);
}

bool CCabUnpacker::UnpackCurrentFile(const std::wstring& name, const std::wstring& folder) {
  output::Root root = RootAt(folder);
  const frame::Lent lent(m_pExtraction->m_pRoot, root);
  BeginItem(m_pExtraction->m_strWanted);
  if (!IsSafe(name)) return RefuseName();
  const morvunp::OutputPlace place{folder, name};
  if (!frame::HasParent(name)) return UnpackAt(place);
  const morvunp::OutputPlace below{frame::Join(folder, frame::ParentOf(name)),
                                   std::wstring(frame::NameOf(name))};
  return UnpackAt(below);
}

/// The item that is wanted, by a pass of its own.
bool CCabUnpacker::UnpackAt(const morvunp::OutputPlace& place) {
  cab::Extraction& run = *m_pExtraction;
  NoteSet();
  if (frame::WasInterrupted(m_state)) {
    return run.m_pRoot->Report().Tell(morvunp::ItemResult::kFailed,
                                      morvunp::ItemReason::kInterrupted);
  }
  if (!run.m_pRoot->Enter(place)) return false;
  if (run.m_pRoot->Decide() != output::Root::Answer::kWrite) return false;
  m_state.m_bStopRequest = 0;
  m_state.m_bCancel = 0;
  BeginFile(place.name);
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

bool CCabUnpacker::UnpackItems(const std::wstring& target, const morvunp::ItemRouter& router) {
  // Items are told by their places in the list.
  FindFile();
  if (frame::WasInterrupted(m_state)) return false;
  const frame::Lent lent(m_pExtraction->m_pRouter, router);
  const bool isAtEnd = RunOverItems(cab::kRouted, target);
  m_pExtraction->m_nMode = cab::kFile;
  return isAtEnd;
}

bool CCabUnpacker::RunOverItems(DWORD mode, const std::wstring& target) {
  cab::Extraction& run = *m_pExtraction;
  run.m_nMode = mode;
  run.m_strTarget = target;
  m_state.m_bCancel = 0;
  m_state.m_bStopRequest = 0;
  output::Root root = RootAt(target);
  const frame::Lent lent(m_pExtraction->m_pRoot, root);
  NoteSet();
  const bool isCopied = RunPass();
  const bool isAtEnd = TellRest(isCopied);
  return mode == cab::kRouted ? isAtEnd : isCopied;
}

/// No cabinet that a pass may come to is to be replaced by what comes out of
/// one before it.
void CCabUnpacker::NoteSet() {
  const frame::CodePageScope codePage(m_state);
  m_state.m_archiveFiles = m_pCabinet->FilesOfSet();
}

/// One pass. A file that is open behind it is not whole.
bool CCabUnpacker::RunPass() {
  cab::Extraction& run = *m_pExtraction;
  run.BeginPass();
  const frame::CodePageScope codePage(m_state);
  const bool isAlone = run.m_nMode == cab::kFile;
  const int flags = m_state.m_options.goOn && !isAlone ? FDI_GO_ON : 0;
  const bool isCopied = m_pCabinet->Copy(FDICallback_Extract, this, flags);
  if (m_state.m_bCancel != 0) {
    run.m_pRoot->Out().Remove();
    run.m_pRoot->Report().Tell(morvunp::ItemResult::kFailed, morvunp::ItemReason::kInterrupted);
  }
  if (run.m_pRoot->Out().IsOpen() || (isAlone && !isCopied)) {
    run.m_pRoot->Report().Tell(morvunp::ItemResult::kFailed, m_pCabinet->ReasonOfFailure());
    run.m_pRoot->Out().KeepBroken();
  }
  return isCopied;
}

/// Why the items behind were not reached; kNone where there are none.
morvunp::RunReport CCabUnpacker::EndOfPass(bool isCopied) const {
  const cab::Extraction& run = *m_pExtraction;
  if (m_state.m_bCancel != 0) return {morvunp::ItemReason::kInterrupted};
  if (run.m_pRoot->Report().End()) return *run.m_pRoot->Report().End();
  // The class itself ends a pass that has written nothing, at its end, and one
  // whose file could not be created.
  const bool isAtEnd = run.m_nNext >= m_pCabinet->Items().size();
  if (isCopied || (m_pCabinet->WasAborted() && isAtEnd)) return {m_pCabinet->Problem()};
  if (m_pCabinet->WasAborted()) return run.m_pRoot->Report().LastFailure();
  return {m_pCabinet->ReasonOfFailure(), 0, m_pCabinet->MissingCabinet()};
}

/// The items that a pass which ended early has not come to.
bool CCabUnpacker::TellRest(bool isCopied) {
  const frame::CodePageScope codePage(m_state);
  cab::Extraction& run = *m_pExtraction;
  const morvunp::RunReport end = EndOfPass(isCopied);
  const cab::ItemList& items = m_pCabinet->Items();
  const bool isWatched = m_state.m_reportItem && !run.m_pRoot->Report().HasEnough();
  for (std::size_t i = run.m_nNext; isWatched && i < items.size(); ++i) {
    const cab::CCabItemInfo item = items[i];
    const morvunp::Route route = RouteOf(i, item);
    if (route.IsEnd()) break;
    if (route.IsPassOver()) continue;
    run.m_pRoot->Report().TellNotReached(
        {i, item.m_strPath, item.Size(), TimeOf(item.DosDateTime())}, end.reason);
  }
  return run.m_pRoot->TellEnd(end);
}

/// The start of each file that is written.
void CCabUnpacker::BeginFile(const std::wstring& name) {
  SetThis(this);
  m_pExtraction->m_nDone = 0;
  frame::SendProgress(m_state, 0, std::wstring(frame::NameOf(name)));
}

// Notifications.

INT_PTR CCabUnpacker::FDICallback_Extract(FDINOTIFICATIONTYPE type, FDINOTIFICATION* notification) {
  auto& unpacker = *static_cast<CCabUnpacker*>(notification->pv);
  return frame::KeepException(cab::Cabinet::Thrown(), kAbort, [&] {
    switch (type) {
      case fdintPARTIAL_FILE:
        return unpacker.OnPartialFile(*notification);
      case fdintCOPY_FILE:
        return unpacker.OnCopyFile(*notification);
      case fdintCLOSE_FILE_INFO:
        return unpacker.OnCloseFile(*notification);
      case fdintNEXT_CABINET:
        return unpacker.m_pCabinet->FindNext(*notification) ? kGoOn : kAbort;
      case fdintFILE_FAILED:
        return unpacker.OnFileFailed(*notification);
      case fdintENUMERATE:
        return unpacker.OnEnumerate();
      default:
        return kGoOn;
    }
  });
}

/// A file that began in an earlier cabinet; only from there it can be unpacked.
INT_PTR CCabUnpacker::OnPartialFile(const FDINOTIFICATION& notification) {
  // Of a set it was dealt with where it began.
  if (!m_pCabinet->IsOfFirst(notification)) return kGoOn;
  cab::Extraction& run = *m_pExtraction;
  run.m_nPosition = run.m_nNext++;
  const cab::ItemList& items = m_pCabinet->Items();
  if (run.m_nPosition >= items.size()) return kGoOn;
  const cab::CCabItemInfo item = items[static_cast<std::size_t>(run.m_nPosition)];
  const bool isWanted = run.m_nMode == cab::kFile ? frame::SamePath(item.m_strPath, run.m_strWanted)
                                                  : IsWanted(RouteOf(run.m_nPosition, item));
  if (!isWanted) return Declined();
  BeginItem(item);
  const bool isNamed = notification.psz2 != nullptr;
  run.m_pRoot->Report().Tell(morvunp::ItemResult::kFailed, morvunp::ItemReason::kBeginsEarlier,
                             isNamed ? frame::DecodeAnsi(notification.psz2) : std::wstring());
  return kGoOn;
}

INT_PTR CCabUnpacker::OnCopyFile(const FDINOTIFICATION& notification) {
  cab::Extraction& run = *m_pExtraction;
  const ULONGLONG position = run.m_nNext++;
  run.m_nAttribs = notification.attribs;
  bool isWanted = false;
  switch (run.m_nMode) {
    case cab::kFile:
      isWanted = !run.m_bFileOpened && frame::SamePath(NameOf(notification.psz1), run.m_strWanted);
      if (isWanted && !run.m_pRoot->Open(output::Placing::kInPlace)) return kAbort;
      break;
    case cab::kFolder:
      run.m_nPosition = position;
      isWanted = ProcessUnpackFolder(run.m_strFolder, run.m_strTarget, notification.psz1);
      break;
    case cab::kArchive:
      run.m_nPosition = position;
      isWanted = ProcessUnpackArchive(run.m_strTarget, notification.psz1);
      break;
    case cab::kRouted:
      run.m_nPosition = position;
      isWanted = ProcessRouted(cab::ItemOf(notification, m_state.m_options.utf8Names));
      break;
    default:
      break;
  }
  if (!isWanted) return Declined();
  run.m_bFileOpened = true;
  if (run.m_pRoot->Out().IsOpen()) return cab::kOutputFile;
  return run.m_pRoot->Report().GoesOn() ? kSkip : kAbort;
}

/// The answer about a file that is not to be written.
INT_PTR CCabUnpacker::Declined() const {
  const bool isOver = m_state.m_bCancel != 0 || m_pExtraction->m_pRoot->Report().End();
  return isOver ? kAbort : kSkip;
}

INT_PTR CCabUnpacker::OnCloseFile(const FDINOTIFICATION& notification) {
  output::FileFacts facts;
  const auto written =
      morvunp::TimeOfDosDateTime(DWORD{notification.date} << 16 | notification.time);
  if (written) facts.lastWrite = platform::FileTimeOfTimespec(*written, 0);
  // A file that was just written has this attribute and no other.
  const DWORD attributes = notification.attribs & kRecorded;
  if (attributes != FILE_ATTRIBUTE_ARCHIVE) facts.attributes = attributes;
  output::Root& root = *m_pExtraction->m_pRoot;
  const bool isOnDisk = !root.Out().HasSink();
  if (!root.Out().Finish(facts)) {
    root.Out().KeepBroken();
    return root.Report().GoesOn() ? TRUE : kAbort;
  }
  if (isOnDisk) UpdateFileTree(m_state.m_strLastTarget);
  return root.Report().End() ? kAbort : TRUE;
}

/// The data of the file in hand cannot be had.
INT_PTR CCabUnpacker::OnFileFailed(const FDINOTIFICATION& notification) {
  if (m_state.m_bCancel != 0 || cab::Cabinet::Thrown()) return kAbort;
  output::Root& root = *m_pExtraction->m_pRoot;
  const bool isMissing =
      notification.fdie == FDIERROR_CABINET_NOT_FOUND && !m_pCabinet->MissingCabinet().empty();
  root.Report().Tell(morvunp::ItemResult::kFailed, cab::Cabinet::ReasonOf(notification.fdie),
                     isMissing ? m_pCabinet->MissingCabinet() : std::wstring());
  root.Out().KeepBroken();
  return Declined();
}

std::wstring CCabUnpacker::NameOf(const char* name) const {
  return cab::DecodeName(name, m_pExtraction->m_nAttribs, m_state.m_options.utf8Names);
}

/// The first enumeration begins the pass. A later one fails it when no file was
/// written.
INT_PTR CCabUnpacker::OnEnumerate() {
  cab::Extraction& run = *m_pExtraction;
  const bool mayBeEmpty = run.m_nMode == cab::kRouted || m_state.m_options.wholeSet;
  if (!std::exchange(run.m_bEnumStarted, true) || mayBeEmpty) return kGoOn;
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
  return true;
}

/// Where an item goes in the run in hand.
morvunp::Route CCabUnpacker::RouteOf(ULONGLONG position, const cab::CCabItemInfo& item) const {
  const cab::Extraction& run = *m_pExtraction;
  const std::wstring path = PathOf(item);
  if (run.m_nMode == cab::kRouted) {
    // A pass that was left by an exception.
    if (run.m_pRouter == nullptr) return morvunp::Route::PassOver();
    morvunp::Route route = (*run.m_pRouter)({position, path, item.Size(), item.IsFolder()});
    if (route.IsEnd()) run.m_pRoot->Report().SetEnd({});
    return route;
  }
  return output::RouteTo(run.m_nMode == cab::kFolder
                             ? morvunp::PlaceInFolderRun(m_state.m_iniUnpack, run.m_strFolder, path,
                                                         item.IsFolder(), run.m_strTarget)
                             : morvunp::PlaceInArchiveRun(m_state.m_iniUnpack, path,
                                                          item.IsFolder(), run.m_strTarget));
}

bool CCabUnpacker::ProcessRouted(const cab::CCabItemInfo& item) {
  cab::Extraction& run = *m_pExtraction;
  const morvunp::Route route = RouteOf(run.m_nPosition, item);
  if (!IsWanted(route)) return false;
  BeginItem(item);
  output::Root& root = *run.m_pRoot;
  const std::wstring path = PathOf(item);
  if (route.Sink() != nullptr) {
    const morvunp::RoutedItem routed{run.m_nPosition, path, item.Size(), item.IsFolder()};
    if (!root.BeginSink(*route.Sink(), routed)) return false;
    if (!item.IsFolder()) BeginFile(path);
    return !item.IsFolder();
  }
  if (!IsSafe(path)) return RefuseName();
  const auto place = root.Admit(route.Place(), item.IsFolder());
  return place && ProcessPlace(*place);
}

bool CCabUnpacker::ProcessUnpackFolder(const std::wstring&, const std::wstring&,
                                       const char* fileName) {
  return ProcessItem(fileName);
}

bool CCabUnpacker::ProcessUnpackArchive(const std::wstring&, const char* fileName) {
  return ProcessItem(fileName);
}

bool CCabUnpacker::ProcessItem(const char* fileName) {
  if (!SelectItem(NameOf(fileName))) return false;
  const cab::CCabItemInfo& item = *m_pCabinet->Items().Current();
  const morvunp::Route route = RouteOf(m_pExtraction->m_nPosition, item);
  if (route.IsPassOver()) return false;
  BeginItem(item);
  return IsSafe(PathOf(item)) ? ProcessPlace(route.Place()) : RefuseName();
}

bool CCabUnpacker::ProcessPlace(const morvunp::OutputPlace& place) {
  if (!place.name.empty()) return ProcessUnpackCurrentFile(place.name, place.folder);
  // A folder that is recorded as such has nothing to write.
  m_pExtraction->m_pRoot->MakeFolder(place.folder);
  return false;
}

bool CCabUnpacker::ProcessUnpackCurrentFile(const std::wstring& name, const std::wstring& folder) {
  output::Root& root = *m_pExtraction->m_pRoot;
  if (!root.Enter({folder, name})) return false;
  if (root.Create() == output::Root::Answer::kDeclined) return false;
  BeginFile(name);
  return true;
}
