// C7zUnpacker: unpacking. Every operation is one call of the engine, which asks
// for each item's stream through C7zExtractCallback.
#include "frame/iteminfo.h"
#include "frame/itempath.h"
#include "frame/keptexception.h"
#include "frame/lent.h"
#include "frame/outputfolders.h"
#include "frame/progress.h"
#include "frame/replace.h"
#include "morvunp/dostime.h"
#include "morvunp/outputplace.h"
#include "morvunp/sevenzipunpacker.h"
#include "sevenzip/engine.h"
#include "sevenzip/extractcallback.h"
#include "sevenzip/guarded.h"

namespace {

bool IsSafe(const std::wstring& path) { return IsSafeItem(path, frame::NameOf(path)); }

}  // namespace

// One item.

bool C7zUnpacker::UnpackFile(const std::wstring& path, const std::wstring& target) {
  m_nMode = kSingleItem;
  if (!LocateFile(path) || !IsSafe(path)) return false;
  frame::OutputFolders folders(m_state, target,
                               [this](const std::wstring& folder) { UpdateFileTree(folder); });
  return frame::WriteItem(*this, folders, PlaceOfFile(m_state.m_iniUnpack, path, target));
}

bool C7zUnpacker::UnpackCurrentFile(const std::wstring& name, const std::wstring& folder) {
  m_nMode = kSingleItem;
  SEVENZIPFILEFULLINFO info;
  if (!GetFileFullInfo(info) || frame::IsFolderItem(info)) return false;
  m_nTotal = info.nSize;
  m_nItemDateTime = info.nDateTime;
  if (!IsSafe(name) || !IsSafe(info.strPath)) return false;
  m_state.m_strLastTarget = frame::Join(folder, name);
  if (!MayWriteItem(m_state.m_strLastTarget)) return false;
  BeginFile(name);
  const auto callback = sevenzip::Create<sevenzip::C7zExtractCallback>();
  callback->Init(m_pEngine->Archive(), folder + frame::kSeparator, name, *this);
  callback->SetTotal(m_nTotal);
  const DWORD index = m_nCurrent;
  return RunExtract(&index, 1, *callback.Get());
}

bool C7zUnpacker::MayWriteItem(const std::wstring& path) {
  return frame::MayWrite(m_state, path, {m_nTotal, TimeOfDosDateTime(m_nItemDateTime).value_or(0)},
                         frame::Protection::kClear);
}

void C7zUnpacker::BeginFile(const std::wstring& name) {
  m_state.m_bCancel = 0;
  m_state.m_bStopRequest = 0;
  frame::SendProgress(m_state, 0, name);
}

/// An interrupted file goes; nothing else does, whatever the last path was.
bool C7zUnpacker::RunExtract(const DWORD* indices, DWORD count,
                             sevenzip::C7zExtractCallback& callback) {
  const HRESULT result = m_pEngine->Archive()->Extract(indices, count, 0, &callback);
  if (callback.WasInterruptedInFile()) DeleteFileW(callback.DiskFilePath().c_str());
  frame::ThrowKept(sevenzip::Thrown());
  return m_state.m_bCancel == 0 && result == S_OK;
}

// Many items.

bool C7zUnpacker::UnpackFolder(const std::wstring& folder, const std::wstring& target) {
  std::vector<DWORD> indices;
  FindItem([&](const SEVENZIPFILESHORTINFO& info) {
    if (PlaceInFolderRun(m_state.m_iniUnpack, folder, info.strPath, frame::IsFolderItem(info),
                         target)) {
      indices.push_back(m_nCurrent);
    }
    return false;
  });
  m_nMode = kFolderRun;
  m_strFolder = folder;
  return RunOverItems(indices.data(), static_cast<DWORD>(indices.size()), target);
}

bool C7zUnpacker::UnpackArchive(const std::wstring& target) {
  m_nMode = kArchiveRun;
  return RunOverItems(nullptr, sevenzip::kAllItems, target);
}

bool C7zUnpacker::RunOverItems(const DWORD* indices, DWORD count, const std::wstring& target) {
  m_state.m_bCancel = 0;
  m_state.m_bStopRequest = 0;
  m_bReplaceCancelled = 0;
  m_strTarget = target;
  if (m_pEngine->Archive() == nullptr) return false;
  FindFile();
  frame::OutputFolders folders(m_state, m_strTarget,
                               [this](const std::wstring& folder) { UpdateFileTree(folder); });
  const frame::Lent lent(m_pFolders, folders);
  const auto callback = sevenzip::Create<sevenzip::C7zExtractCallback>();
  callback->Init(m_pEngine->Archive(), target, {}, *this);
  return RunExtract(indices, count, *callback.Get());
}

/// Makes an item current and prepares it for writing at its place.
template <class PlaceOf>
bool C7zUnpacker::ProcessItem(DWORD index, PlaceOf placeOf) {
  m_nCurrent = index;
  m_bHasCurrent = true;
  SEVENZIPFILEFULLINFO info;
  if (!GetFileFullInfo(info)) return false;
  m_nTotal = info.nSize;
  m_nItemDateTime = info.nDateTime;
  const std::optional<OutputPlace> place = placeOf(info.strPath, frame::IsFolderItem(info));
  if (!place || !IsSafe(info.strPath)) return false;
  if (!m_pFolders->MakeFor(*place)) return false;
  if (place->name.empty()) return true;
  m_strCurrentName = place->name;
  m_strCurrentFolder = place->folder;
  return ProcessUnpackCurrentFile(place->name, place->folder);
}

bool C7zUnpacker::ProcessUnpackFolder(const std::wstring& folder, const std::wstring& target,
                                      DWORD index) {
  return ProcessItem(index, [&](const std::wstring& path, bool isFolder) {
    return PlaceInFolderRun(m_state.m_iniUnpack, folder, path, isFolder, target);
  });
}

bool C7zUnpacker::ProcessUnpackArchive(const std::wstring& target, DWORD index) {
  return ProcessItem(index, [&](const std::wstring& path, bool isFolder) {
    return PlaceInArchiveRun(m_state.m_iniUnpack, path, isFolder, target);
  });
}

bool C7zUnpacker::ProcessUnpackCurrentFile(const std::wstring& name, const std::wstring& folder) {
  m_strOutputPath = frame::Join(folder, name);
  m_state.m_strLastTarget = m_strOutputPath;
  m_bReplaceCancelled = 0;
  m_state.m_bCancel = 0;
  if (!MayWriteItem(m_strOutputPath)) {
    m_bReplaceCancelled = m_state.m_bCancel;
    return false;
  }
  BeginFile(name);
  return true;
}
