// What the engine asks and tells while it unpacks.
#pragma once

#include <string>

#include "morvunp/sevenzipunpacker.h"
#include "output/root.h"
#include "sevenzip/component.h"
#include "sevenzip/filestreams.h"
#include "sevenzip/interfaces.h"
#include "sevenzip/password.h"
#include "sevenzip/property.h"

namespace morvunp::sevenzip {

/// Lives for one unpack operation. For each item the engine calls GetStream,
/// PrepareOperation and, at its end, SetOperationResult; in between it writes
/// to the stream.
class C7zExtractCallback final : public Component<Answers<ICryptoGetTextPassword>,
                                                  ICryptoGetTextPassword, IArchiveExtractCallback> {
 public:
  /// Items go to where the run finds a place for each, or, one alone, to the
  /// one that `root` has in hand.
  void Init(IInArchive* archive, output::Root& root, C7zUnpacker& unpacker);

  /// The prompt for a password was cancelled or could not be shown.
  bool WasPasswordRefused() const { return m_bPasswordRefused; }
  void ForgetRefusal() { m_bPasswordRefused = false; }
  /// The engine has come to an item that is to be written.
  bool HasInHand() const { return m_bInHand; }

  HRESULT SetTotal(ULONGLONG total) override;
  HRESULT SetCompleted(const ULONGLONG* completed) override;
  HRESULT GetStream(DWORD index, ISequentialOutStream** stream, LONG askMode) override;
  HRESULT PrepareOperation(LONG askMode) override;
  HRESULT SetOperationResult(LONG result) override;
  HRESULT CryptoGetTextPassword(BSTR* password) override;

 private:
  bool Process(DWORD index);
  HRESULT ReadAs(VARTYPE type, DWORD index, PROPID id, Property& value) const;
  HRESULT ReadProperties(DWORD index);
  HRESULT Declined() const;
  HRESULT CreateFileOf(DWORD index, ISequentialOutStream** stream);
  output::FileFacts Facts() const;
  bool OpenFile(std::optional<DWORD> mode);
  HRESULT FinishFile(LONG result);
  HRESULT FinishLink(morvunp::ItemReason defect);
  morvunp::ItemReason ReasonOf(LONG result) const;

  bool m_bReportProgress = false;
  C7zUnpacker* m_pUnpacker = nullptr;
  ULONGLONG m_nCompletedBase = 0;
  ULONGLONG m_nItemTotal = 0;
  ComPtr<IInArchive> m_pArchive;
  output::Root* m_pRoot = nullptr;
  /// The engine's item is one that the run wants.
  bool m_bInHand = false;
  FILETIME m_ftModified;
  DWORD m_nAttrib = 0;
  bool m_bIsDir = false;
  bool m_bAttribDefined = false;
  bool m_bModifiedDefined = false;
  ComPtr<COutFileStream> m_pOutStream;
  Password m_password;
  bool m_bPasswordRefused = false;
};

}  // namespace morvunp::sevenzip
