// Opening, walking, records and summary texts. Unpacking is in extraction.cpp.
#include "morvunp/rarunpacker.h"

#include "frame/ansitext.h"
#include "frame/filesystem.h"
#include "frame/foldermap.h"
#include "frame/iteminfo.h"
#include "frame/itempath.h"
#include "frame/keptexception.h"
#include "frame/message.h"
#include "frame/progress.h"
#include "frame/summary.h"
#include "morvunp/dostime.h"
#include "morvunp/unpacker.h"
#include "rar/callbacks.h"
#include "rar/completeness.h"
#include "rar/engine.h"
#include "rar/password.h"
#include "rar/volumes.h"

namespace frame = morvunp::frame;
namespace platform = morvunp::platform;
namespace rar = morvunp::rar;

using morvunp::ItemReason;

static_assert(morvunp::Unpacker<CRarUnpacker>);

namespace morvunp::rar {

OwnEngine::OwnEngine() : m_pEngine(std::make_unique<Engine>()) {}

OwnEngine::~OwnEngine() = default;

OwnEngine::OwnEngine(const OwnEngine&) : OwnEngine() {}

OwnEngine& OwnEngine::operator=(const OwnEngine& other) {
  if (this != &other) m_pEngine->Close();
  return *this;
}

void ShowProblem(int code) {
  if (code == kBadPassword) {
    frame::ShowMessage(L"The specified password is incorrect.", MB_ICONHAND);
  } else if (code == kBadData) {
    frame::ShowMessage(L"Corrupt file or wrong password.", MB_ICONHAND);
  }
}

}  // namespace morvunp::rar

CRarUnpacker::CRarUnpacker() { m_state.m_iniUnpack.bConfirmReplace = 1; }

// Settings, answers and windows.

void CRarUnpacker::SetIni(const INIUNPACK& settings) { m_state.m_iniUnpack = settings; }

void CRarUnpacker::SetIniYesToAll(const INIYESTOALL& answers) { m_state.m_iniYesToAll = answers; }

void CRarUnpacker::GetIniYesToAll(INIYESTOALL& answers) const { answers = m_state.m_iniYesToAll; }

void CRarUnpacker::SetWndFileTree(CWnd* window) { m_state.m_pWndFileTree = window; }

void CRarUnpacker::SetHandleDialogProgress(HWND dialog) { m_state.m_hDialogProgress = dialog; }

void CRarUnpacker::SetItemReport(morvunp::ItemReportFunction item, morvunp::RunReportFunction run) {
  m_state.m_reportItem = std::move(item);
  m_state.m_reportRun = std::move(run);
}

bool CRarUnpacker::SetOptions(const morvunp::UnpackOptions& options) {
  return frame::SetOptions(m_state, options);
}

// Opening and closing.

bool CRarUnpacker::OpenArchive(const std::wstring& path) {
  m_strArchive = path;
  if (m_state.m_bKeepYesToAll == 0) m_state.m_iniYesToAll = {};
  m_bPasswordSet = 0;
  m_nLeastSize = 0;
  m_nWalkProblem = ItemReason::kNone;
  m_volumeAnswers.clear();
  const bool isOpen = m_hArchive->Open(path);
  m_nHeader = isOpen ? 0 : -1;
  const auto volumes = rar::PathsOfSet(path, isOpen && m_hArchive->IsVolume());
  m_state.m_archiveFiles.clear();
  for (const std::wstring& volume : volumes) {
    m_state.m_archiveFiles.push_back(platform::IdentityOfPath(volume));
  }
  m_gap = isOpen ? rar::FindGap(volumes) : rar::Gap();
  if (m_hArchive->HasEncryptedHeaders() && !AskForHeaders()) {
    m_nWalkProblem = ItemReason::kNoPassword;
    return false;
  }
  return isOpen;
}

bool CRarUnpacker::AskForHeaders() {
  if (m_bReusePassword != 0) {
    m_strCurrentPassword = m_strSavedPassword;
  } else {
    const auto answer = rar::AskPassword();
    m_strCurrentPassword = answer.value_or(std::wstring());
    if (!answer) return false;
    m_strSavedPassword = m_strCurrentPassword;
    m_bPasswordSaved = 1;
  }
  m_bPasswordSet = 1;
  UsePassword();
  return true;
}

/// The one of the headers, if they have one.
void CRarUnpacker::UsePassword() {
  if (!m_hArchive->HasEncryptedHeaders() || m_bPasswordSet == 0) return;
  m_hArchive->SetPassword(rar::NarrowPassword(m_strCurrentPassword));
}

bool CRarUnpacker::CloseArchive() { return m_hArchive->Close(); }

// The walk and the records.

bool CRarUnpacker::FindFile() {
  m_nWalkProblem = ItemReason::kNone;
  m_nItems = 0;
  m_nLeastSize = 0;
  m_strMissingVolume.clear();
  m_strVolumeAsked.clear();
  // What was just opened stands where a walk begins; opening it again would cost
  // the derivation of another key.
  const bool isFresh = m_hArchive->IsOpen() && m_hArchive->IsAtStart() && m_nHeader == 0 &&
                       m_hArchive->HasEncryptedHeaders();
  const bool isOpen = isFresh || m_hArchive->Open(m_strArchive);
  UsePassword();
  m_nHeader = isOpen ? 0 : -1;
  if (!isOpen) NoteUnopened();
  return isOpen;
}

/// What could be opened before may be gone.
void CRarUnpacker::NoteUnopened() {
  m_nWalkProblem = ProblemOf(m_hArchive->OpenResult(), m_hArchive->HasEncryptedHeaders());
  if (m_nWalkProblem == ItemReason::kMissingVolume) m_strMissingVolume = m_strArchive;
}

bool CRarUnpacker::FindNextFile() {
  if (!m_hArchive->IsOpen()) return false;
  const bool isFirst = m_nHeader++ == 0;
  return isFirst || PassOver() == rar::kSuccess;
}

/// A step from header to header, which may come to the next volume.
template <class Step>
int CRarUnpacker::Walk(Step step) {
  if (!m_state.m_options.onMissingVolume) return step();
  m_bWalking = true;
  int code = rar::kSuccess;
  {
    const rar::Callbacks callbacks(*m_hArchive, CallbackProc, this);
    code = step();
  }
  m_bWalking = false;
  frame::ThrowKept(m_pThrown);
  return code;
}

int CRarUnpacker::PassOver() {
  const int code = Walk([this] { return m_hArchive->Skip(); });
  if (code != rar::kSuccess) {
    m_nWalkProblem = ProblemOf(code, m_hArchive->Current().HidesWrongPassword());
  }
  return code;
}

int CRarUnpacker::ReadHeader() {
  const bool isAtStart = m_hArchive->IsAtStart();
  int code = m_hArchive->HasItem() ? PassOver() : rar::kSuccess;
  // The engine makes an item even of a part of a header.
  if (code == rar::kSuccess) {
    code = m_gap.items == m_nItems ? rar::kEndOfArchive
                                   : Walk([this] { return m_hArchive->ReadHeader(); });
  }
  if (code != rar::kSuccess) {
    const bool isKeyTried = isAtStart && m_hArchive->HasEncryptedHeaders();
    if (m_nWalkProblem == ItemReason::kNone) m_nWalkProblem = ProblemOf(code, isKeyTried);
    // Nobody packs nothing.
    const bool isEmpty = code == rar::kEndOfArchive && m_nItems == 0;
    if (isEmpty && m_gap.hiddenSize != 0) m_nWalkProblem = ItemReason::kCutShort;
    return code;
  }
  const rar::Header& header = m_hArchive->Current();
  m_strCurrentName = header.IsFolder() ? std::wstring_view() : frame::NameOf(header.path);
  m_nTotal = header.unpackedSize;
  m_nFileTime = header.time;
  m_nLeastSize += rar::kLeastHiddenHeader + header.packedSize;
  // Of an archive that is opened in the midst, the rest of a file is an item.
  if (!header.IsContinuation() || m_nItems == 0) ++m_nItems;
  return code;
}

ItemReason CRarUnpacker::ProblemOf(int code, bool isEncrypted) const {
  switch (code) {
    case rar::kSuccess:
    case rar::kEndOfArchive:
      return ItemReason::kNone;
    case rar::kBadPassword:
      return ItemReason::kWrongPassword;
    case rar::kMissingPassword:
      return ItemReason::kNoPassword;
    case rar::kCannotOpen:
      return ItemReason::kMissingVolume;
    case rar::kCannotCreate:
    case rar::kCannotWrite:
      return ItemReason::kSystem;
    case rar::kNoMemory:
      return ItemReason::kNoMemory;
    default:
      return isEncrypted ? ItemReason::kWrongPasswordOrDamaged : ItemReason::kDamaged;
  }
}

ItemReason CRarUnpacker::GetWalkProblem() const {
  const ItemReason gap = IsBeyondEnd() ? ItemReason::kCutShort : m_gap.problem;
  const bool isOfGap = m_nWalkProblem == ItemReason::kNone ||
                       (m_nWalkProblem == ItemReason::kDamaged && gap == ItemReason::kCutShort);
  return isOfGap ? gap : m_nWalkProblem;
}

/// The item in hand, or one before it, cannot lie in the file whole.
bool CRarUnpacker::IsBeyondEnd() const {
  return m_gap.hiddenSize != 0 && m_nLeastSize > m_gap.hiddenSize;
}

bool CRarUnpacker::IsListComplete() const { return GetWalkProblem() == ItemReason::kNone; }

std::wstring CRarUnpacker::GetComment() const { return m_hArchive->Comment(); }

ULONGLONG CRarUnpacker::GetPosition() const { return m_nItems != 0 ? m_nItems - 1 : 0; }

void CRarUnpacker::CountSplitFilesOnce(bool isOnce) { m_bCountsOnce = isOnce ? 1 : 0; }

namespace {

template <class Info>
void EmptyNames(Info& info) {
  frame::EmptyCommon(info);
  info.bSplitAfter = 0;
}

/// The fields that both records share.
template <class Info>
void FillCommon(Info& info, const rar::Header& header) {
  info.strPath = header.path;
  info.bSplitAfter = header.IsSplitAfter() ? 1 : 0;
  frame::FillNames(info, header.IsFolder());
}

DWORD Low(ULONGLONG number) { return static_cast<DWORD>(number); }
DWORD High(ULONGLONG number) { return static_cast<DWORD>(number >> 32); }
ULONGLONG Join(DWORD high, DWORD low) { return ULONGLONG{high} << 32 | low; }

void FillNumbers(RARFILEFULLINFO& info, const rar::Header& header) {
  info.nUnpVer = info.nUnpVer2 = header.unpackVersion;
  info.nFlags = header.flags;
  info.nMethod = header.method;
  info.nFileTime = header.time;
  info.nFileCRC = header.crc;
  info.nPackSize = Low(header.packedSize);
  info.nPackSizeHigh = High(header.packedSize);
  info.nUnpSize = Low(header.unpackedSize);
  info.nUnpSizeHigh = High(header.unpackedSize);
  info.nFileAttr = info.nFileAttr2 = header.attributes;
}

ULONGLONG SizeOf(const RARFILEFULLINFO& info) { return Join(info.nUnpSizeHigh, info.nUnpSize); }

ULONGLONG PackedSizeOf(const RARFILEFULLINFO& info) {
  return Join(info.nPackSizeHigh, info.nPackSize);
}

}  // namespace

void CRarUnpacker::EmptyShortInfo(RARFILESHORTINFO& info) const { EmptyNames(info); }

void CRarUnpacker::EmptyFullInfo(RARFILEFULLINFO& info) const {
  EmptyNames(info);
  info.strReserved.clear();
  FillNumbers(info, {});
}

bool CRarUnpacker::GetFileShortInfo(RARFILESHORTINFO& info) {
  if (!m_hArchive->IsOpen()) return false;
  EmptyShortInfo(info);
  if (const int code = ReadHeader(); code != rar::kSuccess) {
    rar::ShowProblem(code);
    return false;
  }
  FillCommon(info, m_hArchive->Current());
  return true;
}

bool CRarUnpacker::GetFileFullInfo(RARFILEFULLINFO& info) {
  if (!m_hArchive->IsOpen()) return false;
  EmptyFullInfo(info);
  if (ReadHeader() != rar::kSuccess) return false;
  const rar::Header& header = m_hArchive->Current();
  FillCommon(info, header);
  if (!header.IsFolder()) FillNumbers(info, header);
  return true;
}

bool CRarUnpacker::LocateFile(const std::wstring& path, RARFILEFULLINFO& info) {
  if (!FindFile()) return false;
  while (FindNextFile() && GetFileFullInfo(info)) {
    if (_wcsicmp(info.strPath.c_str(), path.c_str()) == 0) return true;
  }
  return false;
}

bool CRarUnpacker::IsFolder(const std::wstring& path) {
  bool found = false;
  morvunp::WalkItems<RARFILESHORTINFO>(*this, [&](const RARFILESHORTINFO& info) {
    found = frame::IsFolderItem(info) && info.strPath.find(path) != std::wstring::npos;
    return !found;
  });
  return found;
}

// Summary texts.

std::wstring CRarUnpacker::GetFileOutputInfo(const std::wstring& path) {
  RARFILEFULLINFO info;
  if (!LocateFile(path, info)) return {};
  ULONGLONG packed = PackedSizeOf(info);
  RARFILEFULLINFO part = info;
  while (m_bCountsOnce != 0 && part.bSplitAfter != 0 && FindNextFile() && GetFileFullInfo(part)) {
    packed += PackedSizeOf(part);
    // Those before the last are of the parts.
    info.nFileCRC = part.nFileCRC;
  }
  return frame::FileTextWithCrc(morvunp::TimeOfDosDateTime(info.nFileTime).value_or(0),
                                SizeOf(info), packed, info.nFileCRC);
}

std::wstring CRarUnpacker::TextOf(frame::Totals totals) {
  morvunp::WalkItems<RARFILEFULLINFO>(*this, [&](const RARFILEFULLINFO& info) {
    const bool isPart = m_hArchive->Current().IsContinuation() && m_nHeader > 1;
    if (frame::IsFolderItem(info)) {
      totals.AddFolder(info.strPath);
    } else if (isPart && m_bCountsOnce != 0) {
      totals.AddPart(info.strPath, PackedSizeOf(info));
    } else {
      totals.AddFile(info.strPath, SizeOf(info), PackedSizeOf(info));
    }
    return true;
  });
  return totals.Text();
}

std::wstring CRarUnpacker::GetFolderOutputInfo(const std::wstring& path) {
  return TextOf(frame::Totals(path));
}

std::wstring CRarUnpacker::GetArchiveOutputInfo() { return TextOf(frame::Totals()); }

// What all unpackers share.

void CRarUnpacker::DoEvents() { frame::DoEvents(m_state); }

void CRarUnpacker::UpdateProgress(ULONGLONG done, ULONGLONG total, const std::wstring& text) {
  frame::UpdateProgress(m_state, done, total, text);
}

void CRarUnpacker::UpdateFileTree(const std::wstring& path) {
  thread_local std::wstring lastReport;
  frame::UpdateFileTree(m_state, lastReport, path);
}

std::wstring CRarUnpacker::FormatOfNumber64(ULONGLONG number) const {
  return frame::FormatOfNumber64(number);
}

double CRarUnpacker::ConvUInt64ToDouble(ULONGLONG number) const {
  return frame::ConvUInt64ToDouble(number);
}

DWORD CRarUnpacker::HashKey(LPCWSTR text) const { return frame::HashKey(text); }

DWORD CRarUnpacker::CheckFolderMap(FolderMap& map, const std::wstring& path) const {
  return frame::CheckFolderMap(map, path);
}

bool CRarUnpacker::CheckFolder(std::vector<std::wstring>& list, const std::wstring& path) const {
  return frame::CheckFolder(list, path);
}

bool CRarUnpacker::CreateFolder(const std::wstring& path) {
  return frame::CreateFolder(m_state, path,
                             [this](const std::wstring& folder) { UpdateFileTree(folder); });
}

bool CRarUnpacker::FileExists(const std::wstring& path) const { return frame::FileExists(path); }
