// Files as the engine's streams.
#pragma once

#include <string>

#include "sevenzip/component.h"
#include "sevenzip/interfaces.h"

namespace sevenzip {

/// An open file; closes it when destroyed.
class StreamFile {
 public:
  StreamFile() = default;
  ~StreamFile() { Close(); }
  StreamFile(const StreamFile&) = delete;
  StreamFile& operator=(const StreamFile&) = delete;

  HANDLE Get() const { return m_hFile; }
  bool IsOpen() const { return m_hFile != INVALID_HANDLE_VALUE; }
  /// Closes what was open first; a failure of that fails the open.
  bool OpenForReading(const std::wstring& path);
  /// Creates or truncates; never follows a link.
  bool Create(const std::wstring& path);
  /// False when the system could not finish the file; it is closed all the same.
  bool Close();
  /// The position comes back on failure, too, when it is asked for.
  HRESULT Seek(LONGLONG offset, DWORD origin, ULONGLONG* position) const;

 private:
  bool Open(const std::wstring& path, DWORD access, DWORD disposition, DWORD flags);

  HANDLE m_hFile = INVALID_HANDLE_VALUE;
};

class CInFileStream final
    : public Component<Answers<IInStream, IStreamGetSize>, IInStream, IStreamGetSize> {
 public:
  bool Open(const std::wstring& path) { return m_hFile.OpenForReading(path); }

  HRESULT Read(void* data, DWORD size, DWORD* processed) override;
  HRESULT Seek(LONGLONG offset, DWORD origin, ULONGLONG* position) override {
    return m_hFile.Seek(offset, origin, position);
  }
  HRESULT GetSize(ULONGLONG* size) override;

 private:
  StreamFile m_hFile;
};

class COutFileStream final : public Component<Answers<IOutStream>, IOutStream> {
 public:
  bool Open(const std::wstring& path) {
    m_nProcessedSize = 0;
    return m_hFile.Create(path);
  }
  StreamFile& File() { return m_hFile; }
  /// Bytes written so far.
  ULONGLONG ProcessedSize() const { return m_nProcessedSize; }

  HRESULT Write(const void* data, DWORD size, DWORD* processed) override;
  HRESULT Seek(LONGLONG offset, DWORD origin, ULONGLONG* position) override {
    return m_hFile.Seek(offset, origin, position);
  }
  HRESULT SetSize(ULONGLONG size) override;

 private:
  StreamFile m_hFile;
  ULONGLONG m_nProcessedSize = 0;
};

}  // namespace sevenzip
