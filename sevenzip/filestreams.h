// Files as the engine's streams.
#pragma once

#include <string>

#include "frame/filesystem.h"
#include "sevenzip/component.h"
#include "sevenzip/interfaces.h"

namespace sevenzip {

/// A file that can be opened as often as a stream is.
class StreamFile : public frame::OpenFile {
 public:
  /// Closes what was open first; a failure of that fails the open.
  bool OpenForReading(const std::wstring& path);
  /// Creates or truncates; never follows a link.
  bool Create(const std::wstring& path);
  /// The position comes back on failure, too, when it is asked for.
  HRESULT Seek(LONGLONG offset, DWORD origin, ULONGLONG* position) const;

 private:
  bool Open(const std::wstring& path, DWORD access, DWORD disposition, DWORD flags);
};

class CInFileStream final
    : public Component<Answers<IInStream, IStreamGetSize>, IInStream, IStreamGetSize> {
 public:
  bool Open(const std::wstring& path) { return m_file.OpenForReading(path); }

  HRESULT Read(void* data, DWORD size, DWORD* processed) override;
  HRESULT Seek(LONGLONG offset, DWORD origin, ULONGLONG* position) override {
    return m_file.Seek(offset, origin, position);
  }
  HRESULT GetSize(ULONGLONG* size) override;

 private:
  StreamFile m_file;
};

class COutFileStream final : public Component<Answers<IOutStream>, IOutStream> {
 public:
  bool Open(const std::wstring& path) {
    m_nProcessedSize = 0;
    return m_file.Create(path);
  }
  StreamFile& File() { return m_file; }
  /// Bytes written so far.
  ULONGLONG ProcessedSize() const { return m_nProcessedSize; }

  HRESULT Write(const void* data, DWORD size, DWORD* processed) override;
  HRESULT Seek(LONGLONG offset, DWORD origin, ULONGLONG* position) override {
    return m_file.Seek(offset, origin, position);
  }
  HRESULT SetSize(ULONGLONG size) override;

 private:
  StreamFile m_file;
  ULONGLONG m_nProcessedSize = 0;
};

}  // namespace sevenzip
