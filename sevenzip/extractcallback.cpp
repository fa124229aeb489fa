#include "sevenzip/extractcallback.h"

#include "frame/itempath.h"
#include "frame/progress.h"
#include "sevenzip/guarded.h"

namespace sevenzip {
namespace {

bool IsSize(VARTYPE type) {
  return type == VT_EMPTY || type == VT_UI1 || type == VT_UI2 || type == VT_UI4 || type == VT_UI8;
}

}  // namespace

void C7zExtractCallback::Init(IInArchive* archive, const std::wstring& directoryPath,
                              const std::wstring& filePath, C7zUnpacker& unpacker) {
  m_pArchive = ComPtr<IInArchive>(archive);
  m_pUnpacker = &unpacker;
  m_nCompletedBase = 0;
  m_strFilePath = filePath;
  m_strDirectoryPath = directoryPath;
  const bool isOpenEnded = !directoryPath.empty() && !directoryPath.ends_with(frame::kSeparator);
  if (isOpenEnded) m_strDirectoryPath += frame::kSeparator;
}

HRESULT C7zExtractCallback::SetTotal(ULONGLONG total) {
  m_nItemTotal = total;
  return S_OK;
}

HRESULT C7zExtractCallback::SetCompleted(const ULONGLONG* completed) {
  return Guarded([&]() -> HRESULT {
    if (m_bReportProgress && completed != nullptr) {
      m_pUnpacker->UpdateProgress(*completed - m_nCompletedBase, m_nItemTotal, {});
    }
    if (frame::MayGoOn(m_pUnpacker->m_state)) return S_OK;
    // Closed now, so that it can be deleted behind the engine.
    if (m_pOutStream && m_pOutStream->File().IsOpen()) {
      m_bInterruptedInFile = true;
      m_pOutStream->File().Close();
    }
    return E_ABORT;
  });
}

/// Folder and archive runs: finds the item's place. False: not to be written.
bool C7zExtractCallback::Process(DWORD index) {
  C7zUnpacker& unpacker = *m_pUnpacker;
  const bool isFolderRun = unpacker.m_nMode == C7zUnpacker::kFolderRun;
  const bool isWanted =
      isFolderRun ? unpacker.ProcessUnpackFolder(unpacker.m_strFolder, unpacker.m_strTarget, index)
                  : unpacker.ProcessUnpackArchive(unpacker.m_strTarget, index);
  SetTotal(unpacker.m_nTotal);
  if (!isWanted) {
    m_bReportProgress = false;
    return false;
  }
  m_strFilePath = unpacker.m_strCurrentName;
  m_strDirectoryPath = unpacker.m_strCurrentFolder + frame::kSeparator;
  return true;
}

HRESULT C7zExtractCallback::GetStream(DWORD index, ISequentialOutStream** stream, LONG askMode) {
  *stream = nullptr;
  return Guarded([&]() -> HRESULT {
    m_pOutStream.Reset();
    m_pUnpacker->m_verdict = SevenZipVerdict::kNone;
    m_bReportProgress = true;
    if (m_pUnpacker->m_nMode != C7zUnpacker::kSingleItem && !Process(index)) {
      return m_pUnpacker->m_bReplaceCancelled != 0 ? E_ABORT : S_OK;
    }
    return askMode == kAskExtract ? CreateFileOf(index, stream) : S_OK;
  });
}

HRESULT C7zExtractCallback::CreateFileOf(DWORD index, ISequentialOutStream** stream) {
  const HRESULT result = ReadProperties(index);
  if (result != S_OK) return result;
  m_strDiskFilePath = m_strDirectoryPath + m_strFilePath;
  if (m_bIsDir) return S_OK;
  auto file = Create<COutFileStream>();
  if (!file->Open(m_strDiskFilePath)) return E_ABORT;
  m_pOutStream = file;
  *stream = file.Detach();
  return S_OK;
}

/// E_FAIL for a property that has another type than this; it may have none.
HRESULT C7zExtractCallback::ReadAs(VARTYPE type, DWORD index, PROPID id, Property& value) const {
  const HRESULT result = m_pArchive->GetProperty(index, id, value.Receive());
  if (result != S_OK) return result;
  return value.IsEmpty() || value.Type() == type ? S_OK : E_FAIL;
}

HRESULT C7zExtractCallback::ReadProperties(DWORD index) {
  m_bAttribDefined = m_bModifiedDefined = m_bIsDir = false;
  Property value;
  HRESULT result = ReadAs(VT_UI4, index, kpidAttrib, value);
  if (result != S_OK) return result;
  m_bAttribDefined = !value.IsEmpty();
  m_nAttrib = value.Number32();

  result = ReadAs(VT_BOOL, index, kpidIsDir, value);
  if (result != S_OK) return result;
  m_bIsDir = value.IsTrue();

  result = ReadAs(VT_FILETIME, index, kpidMTime, value);
  if (result != S_OK) return result;
  m_bModifiedDefined = !value.IsEmpty();
  if (m_bModifiedDefined) m_ftModified = value.Time();

  result = m_pArchive->GetProperty(index, kpidSize, value.Receive());
  if (result != S_OK) return result;
  return IsSize(value.Type()) ? S_OK : E_FAIL;
}

HRESULT C7zExtractCallback::PrepareOperation(LONG askMode) {
  m_bExtractMode = askMode == kAskExtract;
  return S_OK;
}

HRESULT C7zExtractCallback::SetOperationResult(LONG result) {
  return Guarded([&] {
    m_pUnpacker->m_verdict = result == kResultOk ? SevenZipVerdict::kGood : SevenZipVerdict::kBad;
    m_nCompletedBase += m_nItemTotal;
    const HRESULT finished = m_pOutStream ? FinishFile() : S_OK;
    m_pOutStream.Reset();
    return finished;
  });
}

HRESULT C7zExtractCallback::FinishFile() {
  StreamFile& file = m_pOutStream->File();
  if (file.IsOpen()) {
    if (m_bModifiedDefined) SetFileTime(file.Get(), nullptr, nullptr, &m_ftModified);
    if (!file.Close()) return platform::ResultOfError(GetLastError());
  }
  if (m_bExtractMode && m_bAttribDefined) {
    SetFileAttributesW(m_strDiskFilePath.c_str(), m_nAttrib);
  }
  m_pUnpacker->UpdateFileTree(m_pUnpacker->m_state.m_strLastTarget);
  return S_OK;
}

}  // namespace sevenzip
