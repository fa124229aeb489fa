// CCabUnpacker: opening, the list and the queries. extraction.cpp unpacks.
#include "morvunp/cabunpacker.h"

#include "cab/cabinet.h"
#include "cab/extraction.h"
#include "frame/ansitext.h"
#include "frame/filesystem.h"
#include "frame/foldermap.h"
#include "frame/iteminfo.h"
#include "frame/itempath.h"
#include "frame/keptexception.h"
#include "frame/progress.h"
#include "frame/summary.h"
#include "morvunp/unpacker.h"

namespace cab = morvunp::cab;
namespace frame = morvunp::frame;
namespace platform = morvunp::platform;

static_assert(morvunp::Unpacker<CCabUnpacker>);

CCabUnpacker::CCabUnpacker()
    : m_pCabinet(std::make_unique<cab::Cabinet>(m_state)),
      m_pExtraction(std::make_unique<cab::Extraction>()) {
  m_state.m_iniUnpack.bConfirmReplace = 1;
}

CCabUnpacker::~CCabUnpacker() = default;

// Settings, answers and windows.

void CCabUnpacker::SetIni(const INIUNPACK& settings) { m_state.m_iniUnpack = settings; }

void CCabUnpacker::SetIniYesToAll(const INIYESTOALL& answers) { m_state.m_iniYesToAll = answers; }

void CCabUnpacker::GetIniYesToAll(INIYESTOALL& answers) const { answers = m_state.m_iniYesToAll; }

void CCabUnpacker::SetWndFileTree(CWnd* window) { m_state.m_pWndFileTree = window; }

void CCabUnpacker::SetHandleDialogProgress(HWND dialog) { m_state.m_hDialogProgress = dialog; }

void CCabUnpacker::SetItemReport(morvunp::ItemReportFunction item, morvunp::RunReportFunction run) {
  m_state.m_reportItem = std::move(item);
  m_state.m_reportRun = std::move(run);
}

bool CCabUnpacker::SetOptions(const morvunp::UnpackOptions& options) {
  return frame::SetOptions(m_state, options);
}

// Opening and closing.

bool CCabUnpacker::OpenArchive(const std::wstring& path) {
  frame::ForgetStop(m_state);
  if (!m_pCabinet->Open(path)) return false;
  if (m_state.m_bKeepYesToAll == 0) m_state.m_iniYesToAll = {};
  return true;
}

bool CCabUnpacker::CloseArchive() { return DestroyFDIContext(); }

bool CCabUnpacker::CreateFDIContext() { return m_pCabinet->CreateFDIContext(); }

bool CCabUnpacker::DestroyFDIContext() { return m_pCabinet->DestroyFDIContext(); }

// The scan, the walk and the records.

bool CCabUnpacker::FindFile() {
  const frame::CodePageScope codePage(m_state);
  return m_pCabinet->Scan(this);
}

bool CCabUnpacker::InitScan() { return FindFile(); }

INT_PTR CCabUnpacker::FDICallback_Scan(FDINOTIFICATIONTYPE type, FDINOTIFICATION* notification) {
  return frame::KeepException(cab::Cabinet::Thrown(), INT_PTR{-1}, [&] {
    cab::Cabinet& cabinet = *static_cast<CCabUnpacker*>(notification->pv)->m_pCabinet;
    // What continues from a cabinet of the list is in the list.
    const bool isItem =
        type == fdintCOPY_FILE || (type == fdintPARTIAL_FILE && cabinet.IsOfFirst(*notification));
    if (isItem) cabinet.Items().Append(*notification);
    const bool isLost = type == fdintNEXT_CABINET && !cabinet.FindNext(*notification);
    return INT_PTR{isLost ? -1 : 0};
  });
}

bool CCabUnpacker::FindNextFile() {
  const frame::CodePageScope codePage(m_state);
  return m_pCabinet->Items().FindNextFile();
}

ULONGLONG CCabUnpacker::GetPosition() const { return m_pCabinet->Items().Position(); }

bool CCabUnpacker::IsListComplete() const { return GetWalkProblem() == morvunp::ItemReason::kNone; }

morvunp::ItemReason CCabUnpacker::GetWalkProblem() const { return m_pCabinet->Problem(); }

std::wstring CCabUnpacker::GetMissingCabinet() const { return m_pCabinet->MissingCabinet(); }

void CCabUnpacker::RemoveAllItems() { m_pCabinet->Items().RemoveAllItems(); }

bool CCabUnpacker::LocateFile(const std::wstring& path) {
  FindFile();
  const frame::CodePageScope codePage(m_state);
  return m_pCabinet->Items().LocateFile(path);
}

namespace {

/// The fields that both records share. False for a folder, which has no others.
template <class Info>
bool FillCommon(Info& info, const cab::CCabItemInfo& item) {
  info.strPath = item.m_strPath;
  info.bFolder = item.IsFolder() ? 1 : 0;
  if (item.IsFolder()) return false;
  const std::wstring_view name = frame::NameOf(item.m_strPath);
  info.bInFolder = name.size() != item.m_strPath.size() ? 1 : 0;
  info.strExt = frame::ExtensionOf(item.m_strPath);
  info.strName = name;
  info.strTitle = frame::TitleOf(name);
  return true;
}

}  // namespace

void CCabUnpacker::EmptyShortInfo(CABFILESHORTINFO& info) const { frame::EmptyCommon(info); }

void CCabUnpacker::EmptyFullInfo(CABFILEFULLINFO& info) const {
  frame::EmptyCommon(info);
  info.nSize = 0;
  info.nDate = 0;
  info.nTime = 0;
  info.nAttribs = 0;
}

bool CCabUnpacker::GetFileShortInfo(CABFILESHORTINFO& info) const {
  if (!m_pCabinet->HasContext()) return false;
  EmptyShortInfo(info);
  const cab::CCabItemInfo* const item = m_pCabinet->Items().Current();
  if (item == nullptr) return false;
  FillCommon(info, *item);
  return true;
}

bool CCabUnpacker::GetFileFullInfo(CABFILEFULLINFO& info) const {
  if (!m_pCabinet->HasContext()) return false;
  EmptyFullInfo(info);
  const cab::CCabItemInfo* const item = m_pCabinet->Items().Current();
  if (item == nullptr) return false;
  if (!FillCommon(info, *item)) return true;
  info.nSize = item->m_nSize;
  info.nDate = item->m_nDate;
  info.nTime = item->m_nTime;
  info.nAttribs = item->m_nAttribs;
  return true;
}

bool CCabUnpacker::IsFolder(const std::wstring& path) {
  const std::wstring key = path + frame::kSeparator;
  bool found = false;
  morvunp::WalkItems<CABFILESHORTINFO>(*this, [&](const CABFILESHORTINFO& info) {
    const bool isOfFolder = info.bInFolder != 0 || info.bFolder != 0;
    found = isOfFolder && info.strPath.find(key) != std::wstring::npos;
    return !found;
  });
  return found;
}

// Summary texts.

std::wstring CCabUnpacker::GetFileOutputInfo(const std::wstring& path) {
  if (!LocateFile(path)) return {};
  CABFILEFULLINFO info;
  if (!GetFileFullInfo(info)) return {};
  const __time64_t modified = platform::CarriedTimeOfDosDateTime(info.nDate, info.nTime);
  return L"Modified - " + frame::DateTimeText(modified) + L", " +
         frame::SizeText(static_cast<ULONGLONG>(LONGLONG{info.nSize}));
}

namespace {

std::wstring TextOf(cab::ItemList& items, frame::Totals totals) {
  for (std::size_t i = 0; i < items.size(); ++i) {
    const cab::CCabItemInfo item = items[i];
    const auto size = static_cast<DWORD>(item.m_nSize);
    if (!item.IsFolder()) totals.AddFile(item.m_strPath, size, size);
    if (frame::HasParent(item.m_strPath)) {
      totals.AddFolder(std::wstring(frame::ParentOf(item.m_strPath)));
    }
  }
  items.GoToEnd();
  return totals.TextOfSizes32();
}

}  // namespace

std::wstring CCabUnpacker::GetFolderOutputInfo(const std::wstring& path) {
  FindFile();
  const frame::CodePageScope codePage(m_state);
  return TextOf(m_pCabinet->Items(), frame::Totals(path));
}

std::wstring CCabUnpacker::GetArchiveOutputInfo() {
  FindFile();
  const frame::CodePageScope codePage(m_state);
  return TextOf(m_pCabinet->Items(), frame::Totals());
}

// What all unpackers share.

void CCabUnpacker::DoEvents() { frame::DoEvents(m_state); }

void CCabUnpacker::UpdateProgress(DWORD done, DWORD total, const std::wstring& text) {
  frame::UpdateProgress(m_state, done, total, text);
}

void CCabUnpacker::UpdateFileTree(const std::wstring& path) {
  thread_local std::wstring lastReport;
  frame::UpdateFileTree(m_state, lastReport, path);
}

std::wstring CCabUnpacker::FormatOfNumber64(ULONGLONG number) const {
  return frame::FormatOfNumber64(number);
}

double CCabUnpacker::ConvUInt64ToDouble(ULONGLONG number) const {
  return frame::ConvUInt64ToDouble(number);
}

DWORD CCabUnpacker::HashKey(LPCWSTR text) const { return frame::HashKey(text); }

DWORD CCabUnpacker::CheckFolderMap(FolderMap& map, const std::wstring& path) const {
  return frame::CheckFolderMap(map, path);
}

bool CCabUnpacker::CheckFolder(std::vector<std::wstring>& list, const std::wstring& path) const {
  return frame::CheckFolder(list, path);
}

bool CCabUnpacker::CreateFolder(const std::wstring& path) {
  return frame::CreateFolder(m_state, path,
                             [this](const std::wstring& folder) { UpdateFileTree(folder); });
}

bool CCabUnpacker::FileExists(const std::wstring& path) const { return frame::FileExists(path); }

bool CCabUnpacker::SetFileTimeModified(const std::wstring& path, DWORD dosDateTime) const {
  return frame::SetFileDosTimeModified(path, dosDateTime);
}
