#include "morvunp/isounpacker.h"

#include "frame/ansitext.h"
#include "frame/filesystem.h"
#include "frame/foldermap.h"
#include "frame/iteminfo.h"
#include "frame/itempath.h"
#include "frame/progress.h"
#include "frame/summary.h"
#include "iso/image.h"
#include "morvunp/outputplace.h"
#include "morvunp/unpacker.h"
#include "output/pathgate.h"
#include "output/root.h"
#include "output/walk.h"

namespace frame = morvunp::frame;
namespace iso = morvunp::iso;
namespace output = morvunp::output;
namespace platform = morvunp::platform;

static_assert(morvunp::Unpacker<CIsoUnpacker>);

CIsoUnpacker::CIsoUnpacker() : m_pImage(std::make_unique<iso::Image>(m_state)) {}

CIsoUnpacker::~CIsoUnpacker() = default;

// Settings, answers and windows.

void CIsoUnpacker::SetIni(const INIUNPACK& settings) { m_state.m_iniUnpack = settings; }

void CIsoUnpacker::SetIniYesToAll(const INIYESTOALL& answers) { m_state.m_iniYesToAll = answers; }

void CIsoUnpacker::GetIniYesToAll(INIYESTOALL& answers) const { answers = m_state.m_iniYesToAll; }

void CIsoUnpacker::SetWndFileTree(CWnd* window) { m_state.m_pWndFileTree = window; }

void CIsoUnpacker::SetHandleDialogProgress(HWND dialog) { m_state.m_hDialogProgress = dialog; }

void CIsoUnpacker::SetItemReport(morvunp::ItemReportFunction item, morvunp::RunReportFunction run) {
  m_state.m_reportItem = std::move(item);
  m_state.m_reportRun = std::move(run);
}

bool CIsoUnpacker::SetOptions(const morvunp::UnpackOptions& options) {
  return frame::SetOptions(m_state, options);
}

// Opening and closing.

bool CIsoUnpacker::OpenArchive(const std::wstring& path) {
  const frame::CodePageScope codePage(m_state);
  if (!m_pImage->Open(path)) return false;
  m_state.m_archiveFiles = {m_pImage->Identity()};
  if (m_state.m_bKeepYesToAll == 0) m_state.m_iniYesToAll = {};
  return true;
}

bool CIsoUnpacker::CloseArchive() { return m_pImage->Close(); }

void CIsoUnpacker::CheckIsoImage(const std::wstring& path) { m_pImage->CheckIsoImage(path); }

bool CIsoUnpacker::IsListComplete() const { return GetWalkProblem() == morvunp::ItemReason::kNone; }

morvunp::ItemReason CIsoUnpacker::GetWalkProblem() const { return m_pImage->Problem(); }

void CIsoUnpacker::RemoveUDFAllItems() { m_pImage->RemoveUDFAllItems(); }

void CIsoUnpacker::RemoveAllItems() { m_pImage->Items().RemoveAllItems(); }

// The walk and the records.

bool CIsoUnpacker::FindFile() { return m_pImage->Items().FindFile(); }

bool CIsoUnpacker::FindNextFile() { return m_pImage->Items().FindNextFile(); }

ULONGLONG CIsoUnpacker::GetPosition() const { return m_pImage->Items().Position(); }

namespace {

/// The fields that both records share.
template <class Info>
void FillCommon(Info& info, const iso::ItemList& items, const iso::CIsoItemInfo& item) {
  items.GetPath(item, info.strPath);
  info.strName = item.m_strName;
  info.strExt = frame::ExtensionOf(item.m_strName);
  info.strTitle = frame::TitleOf(item.m_strName);
  info.bInFolder = frame::HasParent(info.strPath) ? 1 : 0;
  info.bFolder = item.m_bFolder;
}

}  // namespace

void CIsoUnpacker::EmptyShortInfo(ISOFILESHORTINFO& info) const { frame::EmptyCommon(info); }

void CIsoUnpacker::EmptyFullInfo(ISOFILEFULLINFO& info) const {
  frame::EmptyCommon(info);
  info.nLocation = 0;
  info.nSize = 0;
  info.nSize64 = 0;
  info.nPackedSize = 0;
  info.timeModified = 0;
  info.timeAccessed = 0;
  info.bHidden = 0;
}

bool CIsoUnpacker::GetFileShortInfo(ISOFILESHORTINFO& info) const {
  EmptyShortInfo(info);
  const iso::ItemList& items = m_pImage->Items();
  const iso::CIsoItemInfo* const item = items.Current();
  if (item == nullptr) return false;
  FillCommon(info, items, *item);
  return true;
}

bool CIsoUnpacker::GetFileFullInfo(ISOFILEFULLINFO& info) const {
  EmptyFullInfo(info);
  const iso::ItemList& items = m_pImage->Items();
  const iso::CIsoItemInfo* const item = items.Current();
  if (item == nullptr) return false;
  FillCommon(info, items, *item);
  info.timeModified = item->m_timeModified;
  info.bHidden = item->m_bHidden;
  if (const iso::UdfDetails* const details = items.DetailsOf(*item)) {
    info.nSize64 = item->m_nSize;
    info.nPackedSize = m_pImage->PackedSizeOf(*item);
    info.timeAccessed = details->m_timeAccessed;
  } else {
    info.nSize = static_cast<DWORD>(item->m_nSize);
    info.nLocation = item->m_nLocation;
  }
  return true;
}

bool CIsoUnpacker::LocateFile(const std::wstring& path) {
  return m_pImage->Items().LocateFile(path);
}

bool CIsoUnpacker::IsFolder(const std::wstring& path) {
  bool found = false;
  morvunp::WalkItems<ISOFILESHORTINFO>(*this, [&](const ISOFILESHORTINFO& info) {
    found = info.bFolder != 0 && info.strPath.find(path) != std::wstring::npos;
    return !found;
  });
  return found;
}

// Summary texts.

std::wstring CIsoUnpacker::GetFileOutputInfo(const std::wstring& path) {
  if (!LocateFile(path)) return {};
  const iso::CIsoItemInfo& item = *m_pImage->Items().Current();
  std::wstring text = L"Modified - " + frame::DateTimeText(item.m_timeModified) + L", ";
  if (const iso::UdfDetails* const details = m_pImage->Items().DetailsOf(item)) {
    text += L"Accessed - " + frame::DateTimeText(details->m_timeAccessed) + L", ";
  }
  return text + frame::SizesText(item.m_nSize, m_pImage->PackedSizeOf(item));
}

std::wstring CIsoUnpacker::GetFolderOutputInfo(const std::wstring& path) {
  return m_pImage->TextOf(frame::Totals(path));
}

std::wstring CIsoUnpacker::GetArchiveOutputInfo() { return m_pImage->TextOf(frame::Totals()); }

// Unpacking.

output::Item CIsoUnpacker::CurrentItem(const std::wstring& path) const {
  const iso::CIsoItemInfo& item = *m_pImage->Items().Current();
  return {GetPosition(), path, item.m_bFolder != 0 ? 0 : item.m_nSize, item.m_timeModified};
}

/// Writes the current item, which is the one in hand.
bool CIsoUnpacker::WriteItem(output::Root& root, const morvunp::OutputPlace& place) {
  const iso::CIsoItemInfo& item = *m_pImage->Items().Current();
  if (item.m_bSafe == 0) {
    return root.Report().Tell(morvunp::ItemResult::kRefused, morvunp::ItemReason::kUnsafeName);
  }
  if (place.name.empty()) {
    if (!root.MakeFolder(place.folder)) return false;
    root.NoteFolder({platform::FileTimeOfTimespec(item.m_timeModified, 0), std::nullopt});
    return true;
  }
  if (!root.Enter(place) || item.m_bFolder != 0 || !m_pImage->IsOpen()) return false;
  if (root.Create() != output::Root::Answer::kWrite || !WriteData(root)) return false;
  UpdateFileTree(m_state.m_strLastTarget);
  return true;
}

bool CIsoUnpacker::WriteData(output::Root& root) {
  if (!m_pImage->IsOpen()) return false;
  const iso::CIsoItemInfo& item = *m_pImage->Items().Current();
  m_state.m_bStopRequest = 0;
  m_state.m_bCancel = 0;
  frame::SendProgress(m_state, 0, std::wstring(item.m_strName));
  return m_pImage->WriteItem(item, root, m_state);
}

output::Root CIsoUnpacker::RootAt(const std::wstring& target) {
  return {m_state, target, [this](const std::wstring& folder) { UpdateFileTree(folder); }};
}

bool CIsoUnpacker::UnpackCurrentFile(const std::wstring& name, const std::wstring& folder) {
  const std::wstring fileName(frame::NameOf(name));
  const iso::CIsoItemInfo* const item = m_pImage->Items().Current();
  if (item == nullptr || item->m_bFolder != 0) return false;
  output::Root root = RootAt(folder);
  std::wstring path;
  m_pImage->Items().GetPath(*item, path);
  root.Begin(CurrentItem(path));
  // Behind the folder's path a drive would mean nothing.
  if (!output::IsSafeName(fileName, false)) {
    return root.Report().Tell(morvunp::ItemResult::kRefused, morvunp::ItemReason::kUnsafeName);
  }
  return WriteItem(root, {folder, fileName});
}

bool CIsoUnpacker::UnpackFile(const std::wstring& path, const std::wstring& target) {
  if (!LocateFile(path) || m_pImage->Items().Current()->m_bFolder != 0) return false;
  output::Root root = RootAt(target);
  root.Begin(CurrentItem(path));
  return WriteItem(root, morvunp::PlaceOfFile(m_state.m_iniUnpack, path, target));
}

template <class PlaceOf>
bool CIsoUnpacker::RunOverItems(const std::wstring& target, PlaceOf placeOf) {
  const iso::CopyBuffer::Lease lease(m_pImage->Buffer());
  output::Root root = RootAt(target);
  const bool result = output::UnpackByWalking(
      *this, m_state, root,
      [&](const ISOFILESHORTINFO& info) { return output::RouteTo(placeOf(info)); },
      [this](const ISOFILESHORTINFO& info) { return CurrentItem(info.strPath); },
      [this](output::Root& to, const morvunp::Route& route) {
        return WriteItem(to, route.Place());
      });
  TellEnd(root);
  return result;
}

/// True when the run came to the end that was wanted.
bool CIsoUnpacker::TellEnd(output::Root& root) const {
  morvunp::RunReport end{GetWalkProblem()};
  if (m_state.m_bCancel != 0) end = {morvunp::ItemReason::kInterrupted};
  return root.TellEnd(end);
}

bool CIsoUnpacker::UnpackItems(const std::wstring& target, const morvunp::ItemRouter& router) {
  const iso::CopyBuffer::Lease lease(m_pImage->Buffer());
  output::Root root = RootAt(target);
  const auto routedOf = [this](const ISOFILESHORTINFO& info) -> morvunp::RoutedItem {
    const bool isFolder = info.bFolder != 0;
    return {GetPosition(), info.strPath, isFolder ? 0 : m_pImage->Items().Current()->m_nSize,
            isFolder};
  };
  output::UnpackByRouter(
      *this, m_state, root, router, routedOf,
      [this](const ISOFILESHORTINFO& info) { return CurrentItem(info.strPath); },
      [this](output::Root& to, const morvunp::OutputPlace& place) { return WriteItem(to, place); },
      [this](output::Root& to) { return WriteData(to); });
  return TellEnd(root);
}

bool CIsoUnpacker::UnpackFolder(const std::wstring& path, const std::wstring& target) {
  return RunOverItems(target, [&](const ISOFILESHORTINFO& info) {
    return morvunp::PlaceInFolderRun(m_state.m_iniUnpack, path, info.strPath, info.bFolder != 0,
                                     target);
  });
}

bool CIsoUnpacker::UnpackArchive(const std::wstring& target) {
  return RunOverItems(target, [&](const ISOFILESHORTINFO& info) {
    return morvunp::PlaceInArchiveRun(m_state.m_iniUnpack, info.strPath, info.bFolder != 0, target);
  });
}

// What all unpackers share.

void CIsoUnpacker::DoEvents() { frame::DoEvents(m_state); }

void CIsoUnpacker::UpdateProgress(ULONGLONG done, ULONGLONG total, const std::wstring& text) {
  frame::UpdateProgress(m_state, done, total, text);
}

void CIsoUnpacker::UpdateFileTree(const std::wstring& path) {
  thread_local std::wstring lastReport;
  frame::UpdateFileTree(m_state, lastReport, path);
}

std::wstring CIsoUnpacker::FormatOfNumber64(ULONGLONG number) const {
  return frame::FormatOfNumber64(number);
}

double CIsoUnpacker::ConvUInt64ToDouble(ULONGLONG number) const {
  return frame::ConvUInt64ToDouble(number);
}

DWORD CIsoUnpacker::HashKey(LPCWSTR text) const { return frame::HashKey(text); }

DWORD CIsoUnpacker::CheckFolderMap(FolderMap& map, const std::wstring& path) const {
  return frame::CheckFolderMap(map, path);
}

bool CIsoUnpacker::CheckFolder(std::vector<std::wstring>& list, const std::wstring& path) const {
  return frame::CheckFolder(list, path);
}

bool CIsoUnpacker::CreateFolder(const std::wstring& path) {
  return frame::CreateFolder(m_state, path,
                             [this](const std::wstring& folder) { UpdateFileTree(folder); });
}

bool CIsoUnpacker::FileExists(const std::wstring& path) const { return frame::FileExists(path); }

bool CIsoUnpacker::SetFileTimeModified(const std::wstring& path, __time64_t time) const {
  return frame::SetFileTimeModified(path, time);
}
