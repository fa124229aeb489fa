// C7zUnpacker: opening, the walk and the queries. extraction.cpp unpacks.
#include "morvunp/sevenzipunpacker.h"

#include "frame/ansitext.h"
#include "frame/dostime.h"
#include "frame/filesystem.h"
#include "frame/foldermap.h"
#include "frame/iteminfo.h"
#include "frame/itempath.h"
#include "frame/keptexception.h"
#include "frame/progress.h"
#include "frame/summary.h"
#include "morvunp/dostime.h"
#include "morvunp/unpacker.h"
#include "sevenzip/engine.h"
#include "sevenzip/filestreams.h"
#include "sevenzip/guarded.h"
#include "sevenzip/opencallback.h"
#include "sevenzip/property.h"
#include "sevenzip/splithandler.h"
#include "sevenzip/startheader.h"

namespace frame = morvunp::frame;
namespace sevenzip = morvunp::sevenzip;

using morvunp::ItemReason;

static_assert(morvunp::Unpacker<C7zUnpacker>);

C7zUnpacker::C7zUnpacker() : m_pEngine(std::make_unique<sevenzip::Engine>()) {
  m_state.m_iniUnpack.bConfirmReplace = 1;
}

C7zUnpacker::~C7zUnpacker() = default;

C7zUnpacker::C7zUnpacker(const C7zUnpacker& other) : C7zUnpacker() { *this = other; }

C7zUnpacker& C7zUnpacker::operator=(const C7zUnpacker& other) {
  if (this == &other) return *this;
  *m_pEngine = *other.m_pEngine;
  m_state = other.m_state;
  m_strArchivePassword = other.m_strArchivePassword;
  m_bPasswordKnown = other.m_bPasswordKnown;
  m_bReusePassword = other.m_bReusePassword;
  m_nItemCount = m_nPosition = m_nCurrent = 0;
  m_bHasCurrent = false;
  return *this;
}

// Settings, answers and windows.

void C7zUnpacker::SetIni(const INIUNPACK& settings) { m_state.m_iniUnpack = settings; }

void C7zUnpacker::SetIniYesToAll(const INIYESTOALL& answers) { m_state.m_iniYesToAll = answers; }

void C7zUnpacker::GetIniYesToAll(INIYESTOALL& answers) const { answers = m_state.m_iniYesToAll; }

void C7zUnpacker::SetWndFileTree(CWnd* window) { m_state.m_pWndFileTree = window; }

void C7zUnpacker::SetHandleDialogProgress(HWND dialog) { m_state.m_hDialogProgress = dialog; }

void C7zUnpacker::SetItemReport(morvunp::ItemReportFunction item, morvunp::RunReportFunction run) {
  m_state.m_reportItem = std::move(item);
  m_state.m_reportRun = std::move(run);
}

bool C7zUnpacker::SetOptions(const morvunp::UnpackOptions& options) {
  return frame::SetOptions(m_state, options);
}

// Opening and closing.

bool C7zUnpacker::OpenArchive(const std::wstring& path) {
  m_bHasCurrent = false;
  m_nOpenProblem = ItemReason::kNone;
  frame::ForgetStop(m_state);
  if (!m_pEngine->CreateArchive(path)) return false;
  const auto stream = sevenzip::Create<sevenzip::CInFileStream>(m_state);
  if (!stream->Open(path)) return false;
  m_state.m_archiveFiles = {stream->Identity()};
  const auto callback = sevenzip::Create<sevenzip::C7zOpenCallback>();
  return OpenStream(*callback.Get(), stream.Get());
}

bool C7zUnpacker::OpenMultiVolumeArchive(const std::wstring& firstVolume) {
  m_bHasCurrent = false;
  m_nOpenProblem = ItemReason::kNone;
  frame::ForgetStop(m_state);
  if (!m_pEngine->CreateArchive(firstVolume)) return false;
  const auto split = sevenzip::Create<NArchive::NSplit::CHandler>();
  const auto callback = sevenzip::Create<sevenzip::C7zmvOpenCallback>(m_state);
  if (!callback->Init(firstVolume)) return false;
  const auto first = sevenzip::Create<sevenzip::CInFileStream>(m_state);
  if (!first->Open(firstVolume)) return false;
  callback->Begin(*first.Get());
  const HRESULT found = split->Open(first.Get(), nullptr, callback.Get());
  frame::ThrowKept(sevenzip::Thrown());
  m_state.m_archiveFiles = callback->Volumes();
  m_state.m_archiveFiles.push_back(first->Identity());
  if (found != S_OK) return false;
  sevenzip::ComPtr<sevenzip::ISequentialInStream> joined;
  if (split->GetStream(0, joined.Receive()) != S_OK) return false;
  const auto stream = joined.Query<sevenzip::IInStream>();
  if (!stream) return false;
  const bool isOpen = OpenStream(*callback.Get(), stream.Get());
  // A last volume that is as long as the others has one behind it.
  const bool isShort = m_nOpenProblem == ItemReason::kCutShort && split->IsLastFull();
  if (isShort) m_nOpenProblem = ItemReason::kMissingVolume;
  return isOpen;
}

/// Hands a stream to the engine, which keeps it while the archive is open.
template <class Callback, class Stream>
bool C7zUnpacker::OpenStream(Callback& callback, Stream* stream) {
  sevenzip::Password& password = callback.GivenPassword();
  if (m_bReusePassword != 0) password.Set(m_strArchivePassword);
  const bool isOpen = m_pEngine->Archive()->Open(stream, nullptr, &callback) == S_OK;
  if (!isOpen) {
    m_pEngine->CloseArchive();
    if (sevenzip::EndsBeforeArchive(*stream)) m_nOpenProblem = ItemReason::kCutShort;
  }
  frame::ThrowKept(sevenzip::Thrown());
  if (isOpen && password.IsDefined()) {
    m_bPasswordKnown = 1;
    m_strArchivePassword = password.Text();
  }
  if (m_state.m_bKeepYesToAll == 0) m_state.m_iniYesToAll = {};
  return isOpen;
}

bool C7zUnpacker::CloseArchive() {
  m_bHasCurrent = false;
  return m_pEngine->CloseArchive();
}

bool C7zUnpacker::IsListComplete() const {
  return m_pEngine->Archive() != nullptr && GetWalkProblem() == ItemReason::kNone;
}

ItemReason C7zUnpacker::GetWalkProblem() const {
  if (m_pEngine->Archive() == nullptr) return m_nOpenProblem;
  sevenzip::Property flags;
  m_pEngine->Archive()->GetArchiveProperty(sevenzip::kpidErrorFlags, flags.Receive());
  if ((flags.Number32() & sevenzip::kErrorUnexpectedEnd) != 0) return ItemReason::kCutShort;
  return flags.Number32() == 0 ? ItemReason::kNone : ItemReason::kDamaged;
}

// The walk and the records.

bool C7zUnpacker::FindFile() {
  m_nPosition = 0;
  m_nItemCount = 0;
  sevenzip::IInArchive* const archive = m_pEngine->Archive();
  if (archive != nullptr) archive->GetNumberOfItems(&m_nItemCount);
  return m_nItemCount != 0;
}

bool C7zUnpacker::FindNextFile() {
  m_nCurrent = m_nPosition++;
  m_bHasCurrent = true;
  return m_nPosition != m_nItemCount;
}

ULONGLONG C7zUnpacker::GetPosition() const { return m_nCurrent; }

namespace {

/// Reads the properties of one item; one that fails counts as empty.
class ItemReader {
 public:
  ItemReader(sevenzip::IInArchive& archive, DWORD index) : m_archive(archive), m_nIndex(index) {}

  const sevenzip::Property& Read(PROPID id) {
    m_bRead = m_archive.GetProperty(m_nIndex, id, m_value.Receive()) == S_OK;
    if (!m_bRead) m_value.Receive();
    return m_value;
  }
  bool WasRead() const { return m_bRead; }

 private:
  sevenzip::IInArchive& m_archive;
  DWORD m_nIndex;
  sevenzip::Property m_value;
  bool m_bRead = false;
};

/// 0 where there is none, or none that an MS-DOS time can tell.
DWORD DosDateTimeOf(const sevenzip::Property& time) {
  if (time.Type() != VT_FILETIME) return 0;
  return frame::DosDateTimeOf(time.Time());
}

/// False when there is no path.
template <class Info>
bool FillCommon(Info& info, ItemReader& reader) {
  reader.Read(sevenzip::kpidPath).GetText(info.strPath);
  if (!reader.WasRead()) return false;
  // Some writers mark a folder by a separator behind its name.
  bool isFolder = reader.Read(sevenzip::kpidIsDir).IsTrue();
  for (; info.strPath.size() > 1 && info.strPath.ends_with(frame::kSeparator); isFolder = true) {
    info.strPath.pop_back();
  }
  frame::FillNames(info, isFolder);
  return true;
}

}  // namespace

void C7zUnpacker::EmptyShortInfo(SEVENZIPFILESHORTINFO& info) const { frame::EmptyCommon(info); }

void C7zUnpacker::EmptyFullInfo(SEVENZIPFILEFULLINFO& info) const {
  frame::EmptyCommon(info);
  info.nSize = 0;
  info.nPackedSize = 0;
  info.nAttributes = 0;
  info.nDateTime = 0;
  info.nCRC = 0;
  info.strMethod.clear();
}

bool C7zUnpacker::HasCurrent() const {
  return m_pEngine->Archive() != nullptr && m_bHasCurrent && m_nCurrent < m_nItemCount;
}

bool C7zUnpacker::GetFileShortInfo(SEVENZIPFILESHORTINFO& info) const {
  if (!HasCurrent()) return false;
  EmptyShortInfo(info);
  ItemReader reader(*m_pEngine->Archive(), m_nCurrent);
  return FillCommon(info, reader);
}

bool C7zUnpacker::GetFileFullInfo(SEVENZIPFILEFULLINFO& info) const {
  if (!HasCurrent()) return false;
  EmptyFullInfo(info);
  ItemReader reader(*m_pEngine->Archive(), m_nCurrent);
  if (!FillCommon(info, reader)) return false;
  if (frame::IsFolderItem(info)) return true;
  info.nSize = reader.Read(sevenzip::kpidSize).Number64();
  info.nPackedSize = reader.Read(sevenzip::kpidPackSize).Number64();
  info.nAttributes = reader.Read(sevenzip::kpidAttrib).Number32();
  info.nDateTime = DosDateTimeOf(reader.Read(sevenzip::kpidMTime));
  info.nCRC = reader.Read(sevenzip::kpidCRC).Number32();
  reader.Read(sevenzip::kpidMethod).GetText(info.strMethod);
  return true;
}

bool C7zUnpacker::FindItem(const std::function<bool(const SEVENZIPFILESHORTINFO&)>& isIt) {
  SEVENZIPFILESHORTINFO info;
  for (bool more = FindFile(); more;) {
    more = FindNextFile();
    if (GetFileShortInfo(info) && isIt(info)) return true;
  }
  return false;
}

bool C7zUnpacker::LocateFile(const std::wstring& path) {
  return FindItem([&](const SEVENZIPFILESHORTINFO& info) {
    return _wcsicmp(info.strPath.c_str(), path.c_str()) == 0;
  });
}

bool C7zUnpacker::IsFolder(const std::wstring& path) {
  return FindItem([&](const SEVENZIPFILESHORTINFO& info) {
    return frame::IsFolderItem(info) && info.strPath.find(path) != std::wstring::npos;
  });
}

// Summary texts.

std::wstring C7zUnpacker::GetFileOutputInfo(const std::wstring& path) {
  SEVENZIPFILEFULLINFO info;
  if (!LocateFile(path) || !GetFileFullInfo(info)) return {};
  return frame::FileTextWithCrc(morvunp::TimeOfDosDateTime(info.nDateTime).value_or(0), info.nSize,
                                info.nPackedSize, info.nCRC);
}

std::wstring C7zUnpacker::TextOf(frame::Totals totals) {
  if (m_pEngine->Archive() == nullptr) return {};
  std::wstring path;
  for (bool more = FindFile(); more;) {
    more = FindNextFile();
    ItemReader reader(*m_pEngine->Archive(), m_nCurrent);
    const bool isFolder = reader.Read(sevenzip::kpidIsDir).IsTrue();
    // Most items are files, and only a folder's text asks where they are.
    if (isFolder || !totals.CountsAll()) reader.Read(sevenzip::kpidPath).GetText(path);
    if (isFolder) {
      totals.AddFolder(path);
    } else {
      const ULONGLONG size = reader.Read(sevenzip::kpidSize).Number64();
      totals.AddFile(path, size, reader.Read(sevenzip::kpidPackSize).Number64());
    }
  }
  return totals.Text();
}

std::wstring C7zUnpacker::GetFolderOutputInfo(const std::wstring& path) {
  return TextOf(frame::Totals(path));
}

std::wstring C7zUnpacker::GetArchiveOutputInfo() { return TextOf(frame::Totals()); }

// What all unpackers share.

void C7zUnpacker::DoEvents() { frame::DoEvents(m_state); }

void C7zUnpacker::UpdateProgress(ULONGLONG done, ULONGLONG total, const std::wstring& text) {
  frame::UpdateProgress(m_state, done, total, text);
}

void C7zUnpacker::UpdateFileTree(const std::wstring& path) {
  thread_local std::wstring lastReport;
  frame::UpdateFileTree(m_state, lastReport, path);
}

std::wstring C7zUnpacker::FormatOfNumber64(ULONGLONG number) const {
  return frame::FormatOfNumber64(number);
}

double C7zUnpacker::ConvUInt64ToDouble(ULONGLONG number) const {
  return frame::ConvUInt64ToDouble(number);
}

DWORD C7zUnpacker::HashKey(LPCWSTR text) const { return frame::HashKey(text); }

DWORD C7zUnpacker::CheckFolderMap(FolderMap& map, const std::wstring& path) const {
  return frame::CheckFolderMap(map, path);
}

bool C7zUnpacker::CheckFolder(std::vector<std::wstring>& list, const std::wstring& path) const {
  return frame::CheckFolder(list, path);
}

bool C7zUnpacker::CreateFolder(const std::wstring& path) {
  return frame::CreateFolder(m_state, path,
                             [this](const std::wstring& folder) { UpdateFileTree(folder); });
}

bool C7zUnpacker::FileExists(const std::wstring& path) const { return frame::FileExists(path); }
