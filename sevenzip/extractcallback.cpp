#include "sevenzip/extractcallback.h"

#include "frame/itempath.h"
#include "frame/progress.h"
#include "sevenzip/guarded.h"

namespace morvunp::sevenzip {
namespace {

bool IsSize(VARTYPE type) {
  return type == VT_EMPTY || type == VT_UI1 || type == VT_UI2 || type == VT_UI4 || type == VT_UI8;
}

}  // namespace

void C7zExtractCallback::Init(IInArchive* archive, output::Root& root, C7zUnpacker& unpacker) {
  m_pArchive = ComPtr<IInArchive>(archive);
  m_pRoot = &root;
  m_pUnpacker = &unpacker;
  m_nCompletedBase = 0;
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
    if (m_pRoot->Out().IsOpen()) {
      m_pRoot->Out().Remove();
      m_pRoot->Report().Tell(morvunp::ItemResult::kFailed, morvunp::ItemReason::kInterrupted);
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
  return true;
}

HRESULT C7zExtractCallback::CryptoGetTextPassword(BSTR* password) {
  const HRESULT result = m_password.Get(password);
  m_bPasswordRefused = result == E_ABORT;
  return result;
}

HRESULT C7zExtractCallback::GetStream(DWORD index, ISequentialOutStream** stream, LONG askMode) {
  *stream = nullptr;
  return Guarded([&]() -> HRESULT {
    m_pOutStream.Reset();
    m_bReportProgress = true;
    if (!frame::MayGoOnMeanwhile(m_pUnpacker->m_state)) return E_ABORT;
    m_bInHand = m_pUnpacker->m_nMode == C7zUnpacker::kSingleItem || Process(index);
    if (!m_bInHand) return Declined();
    return askMode == kAskExtract ? CreateFileOf(index, stream) : S_OK;
  });
}

/// The answer about an item that is not to be written.
HRESULT C7zExtractCallback::Declined() const {
  const bool isOver = m_pUnpacker->m_bReplaceCancelled != 0 || m_pRoot->Report().End();
  return isOver ? E_ABORT : S_OK;
}

HRESULT C7zExtractCallback::CreateFileOf(DWORD index, ISequentialOutStream** stream) {
  const HRESULT result = ReadProperties(index);
  if (result != S_OK) return result;
  if (m_bIsDir) m_pRoot->NoteFolder(Facts());
  if (m_bIsDir) return S_OK;
  const bool hasMode = m_bAttribDefined && (m_nAttrib & FILE_ATTRIBUTE_UNIX_EXTENSION) != 0;
  std::optional<DWORD> mode;
  if (hasMode) mode = m_nAttrib >> 16 & 0777;
  if (!OpenFile(mode)) return m_pRoot->Report().GoesOn() ? S_OK : E_ABORT;
  auto file = Create<COutFileStream>();
  file->Open(m_pRoot->Out());
  m_pOutStream = file;
  *stream = file.Detach();
  return S_OK;
}

/// Makes the run ready for the data of the item in hand.
bool C7zExtractCallback::OpenFile(std::optional<DWORD> mode) {
  constexpr DWORD kTypeMask = 0170000;
  constexpr DWORD kSymbolicLink = 0120000;
  if (m_pRoot->Out().HasSink()) return true;
  const bool isLink = mode && (m_nAttrib >> 16 & kTypeMask) == kSymbolicLink;
  if (!isLink || !m_pUnpacker->m_state.m_options.links) {
    return m_pRoot->Open(output::Placing::kInPlace, mode);
  }
  m_pRoot->Out().Collect();
  return true;
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
  const bool isInRun = m_pUnpacker->m_nMode != C7zUnpacker::kSingleItem;
  m_bIsDir = value.IsTrue() || (isInRun && m_pUnpacker->m_bFolderInHand);

  result = ReadAs(VT_FILETIME, index, kpidMTime, value);
  if (result != S_OK) return result;
  m_bModifiedDefined = !value.IsEmpty();
  if (m_bModifiedDefined) m_ftModified = value.Time();

  result = m_pArchive->GetProperty(index, kpidSize, value.Receive());
  if (result != S_OK) return result;
  return IsSize(value.Type()) ? S_OK : E_FAIL;
}

HRESULT C7zExtractCallback::PrepareOperation(LONG askMode) {
  static_cast<void>(askMode);
  return S_OK;
}

HRESULT C7zExtractCallback::SetOperationResult(LONG result) {
  return Guarded([&]() -> HRESULT {
    // Where the user interrupted a read, the engine may take it for damage.
    if (m_pUnpacker->m_state.m_bCancel != 0) return E_ABORT;
    m_nCompletedBase += m_nItemTotal;
    if (m_pOutStream) {
      m_pOutStream.Reset();
      return FinishFile(result);
    }
    // Behind damage the engine decodes a block's items without their files.
    if (m_bInHand) m_pRoot->Report().Tell(morvunp::ItemResult::kFailed, ReasonOf(result));
    return S_OK;
  });
}

morvunp::ItemReason C7zExtractCallback::ReasonOf(LONG result) const {
  using morvunp::ItemReason;
  switch (result) {
    case kResultUnsupportedMethod:
      return ItemReason::kUnsupportedMethod;
    case kResultUnexpectedEnd:
      return ItemReason::kCutShort;
    case kResultWrongPassword:
      return ItemReason::kWrongPassword;
    default:
      return m_pUnpacker->m_bEncrypted ? ItemReason::kWrongPasswordOrDamaged : ItemReason::kDamaged;
  }
}

/// What was read last.
output::FileFacts C7zExtractCallback::Facts() const {
  output::FileFacts facts;
  if (m_bModifiedDefined) facts.lastWrite = m_ftModified;
  if (m_bAttribDefined) facts.attributes = m_nAttrib;
  return facts;
}

HRESULT C7zExtractCallback::FinishFile(LONG result) {
  if (!m_pRoot->Out().IsOpen()) return S_OK;
  const output::FileFacts facts = Facts();
  const auto defect = result == kResultOk ? morvunp::ItemReason::kNone : ReasonOf(result);
  if (m_pRoot->Out().IsCollecting()) return FinishLink(defect);
  const bool isRefused = m_pRoot->Out().RefuseDefect(defect);
  const bool isOnDisk = !isRefused && !m_pRoot->Out().HasSink();
  if (!isRefused && !m_pRoot->Out().Finish(facts, defect)) {
    const HRESULT failure = platform::ResultOfError(GetLastError());
    m_pRoot->Out().KeepBroken();
    return m_pRoot->Report().GoesOn() ? S_OK : failure;
  }
  if (isOnDisk) m_pUnpacker->UpdateFileTree(m_pUnpacker->m_state.m_strLastTarget);
  return m_pRoot->Report().End() ? E_ABORT : S_OK;
}

HRESULT C7zExtractCallback::FinishLink(morvunp::ItemReason defect) {
  if (m_pRoot->FinishLink(Facts(), defect)) {
    m_pUnpacker->UpdateFileTree(m_pUnpacker->m_state.m_strLastTarget);
  }
  return m_pRoot->Report().End() ? E_ABORT : S_OK;
}

}  // namespace morvunp::sevenzip
