// What the engine asks and tells while it unpacks.
#pragma once

#include <string>

#include "morvunp/sevenzipunpacker.h"
#include "sevenzip/component.h"
#include "sevenzip/filestreams.h"
#include "sevenzip/interfaces.h"
#include "sevenzip/password.h"
#include "sevenzip/property.h"

namespace sevenzip {

/// Lives for one unpack operation. For each item the engine calls GetStream,
/// PrepareOperation and, at its end, SetOperationResult; in between it writes
/// to the stream.
class C7zExtractCallback final : public Component<Answers<ICryptoGetTextPassword>,
                                                  ICryptoGetTextPassword, IArchiveExtractCallback> {
 public:
  /// Items go to `directoryPath` under the name `filePath` unless the run finds
  /// a place for each.
  void Init(IInArchive* archive, const std::wstring& directoryPath, const std::wstring& filePath,
            C7zUnpacker& unpacker);

  /// The user interrupted while a file was written; it is closed and incomplete.
  bool WasInterruptedInFile() const { return m_bInterruptedInFile; }
  const std::wstring& DiskFilePath() const { return m_strDiskFilePath; }

  HRESULT SetTotal(ULONGLONG total) override;
  HRESULT SetCompleted(const ULONGLONG* completed) override;
  HRESULT GetStream(DWORD index, ISequentialOutStream** stream, LONG askMode) override;
  HRESULT PrepareOperation(LONG askMode) override;
  HRESULT SetOperationResult(LONG result) override;
  HRESULT CryptoGetTextPassword(BSTR* password) override { return m_password.Get(password); }

 private:
  bool Process(DWORD index);
  HRESULT ReadAs(VARTYPE type, DWORD index, PROPID id, Property& value) const;
  HRESULT ReadProperties(DWORD index);
  HRESULT CreateFileOf(DWORD index, ISequentialOutStream** stream);
  HRESULT FinishFile();

  bool m_bReportProgress = false;
  C7zUnpacker* m_pUnpacker = nullptr;
  ULONGLONG m_nCompletedBase = 0;
  ULONGLONG m_nItemTotal = 0;
  ComPtr<IInArchive> m_pArchive;
  std::wstring m_strDirectoryPath;
  std::wstring m_strFilePath;
  std::wstring m_strDiskFilePath;
  bool m_bExtractMode = false;
  FILETIME m_ftModified;
  DWORD m_nAttrib = 0;
  bool m_bIsDir = false;
  bool m_bAttribDefined = false;
  bool m_bModifiedDefined = false;
  ComPtr<COutFileStream> m_pOutStream;
  Password m_password;
  bool m_bInterruptedInFile = false;
};

}  // namespace sevenzip
