// Files as the engine's streams.
#pragma once

#include <string>

#include "frame/filesystem.h"
#include "output/file.h"
#include "sevenzip/component.h"
#include "sevenzip/interfaces.h"

namespace morvunp::sevenzip {

/// A file that can be opened as often as a stream is.
class StreamFile : public frame::OpenFile {
 public:
  /// Closes what was open first; a failure of that fails the open.
  bool OpenForReading(const std::wstring& path);
  /// The position comes back on failure, too, when it is asked for.
  HRESULT Seek(LONGLONG offset, DWORD origin, ULONGLONG* position) const;
};

/// The same of any open file.
HRESULT SeekFile(HANDLE file, LONGLONG offset, DWORD origin, ULONGLONG* position);

class CInFileStream final
    : public Component<Answers<IInStream, IStreamGetSize>, IInStream, IStreamGetSize> {
 public:
  /// `state` is the unpacker's, whose user may interrupt while this is read.
  explicit CInFileStream(CUnpackState& state) : m_state(state) {}

  bool Open(const std::wstring& path) { return m_file.OpenForReading(path); }
  platform::FileIdentity Identity() const { return platform::IdentityOf(m_file.Get()); }

  HRESULT Read(void* data, DWORD size, DWORD* processed) override;
  HRESULT Seek(LONGLONG offset, DWORD origin, ULONGLONG* position) override {
    return m_file.Seek(offset, origin, position);
  }
  HRESULT GetSize(ULONGLONG* size) override;

 private:
  CUnpackState& m_state;
  StreamFile m_file;
};

/// The file that a run writes at the time, which is the run's to finish.
class COutFileStream final : public Component<Answers<IOutStream>, IOutStream> {
 public:
  void Open(output::File& file) {
    m_pFile = &file;
    m_nProcessedSize = 0;
  }
  /// Bytes written so far.
  ULONGLONG ProcessedSize() const { return m_nProcessedSize; }

  HRESULT Write(const void* data, DWORD size, DWORD* processed) override;
  HRESULT Seek(LONGLONG offset, DWORD origin, ULONGLONG* position) override {
    return SeekFile(m_pFile->Get(), offset, origin, position);
  }
  HRESULT SetSize(ULONGLONG size) override;

 private:
  output::File* m_pFile = nullptr;
  ULONGLONG m_nProcessedSize = 0;
};

}  // namespace morvunp::sevenzip
