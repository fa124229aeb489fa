// The interfaces of the 7-Zip engine, as it publishes them.
//
// An engine calls functions by their position, so that the order is part of
// the interface. Positions, sizes and times are in bytes and FILETIME; results
// are HRESULT values.
#pragma once

#include "morvunp/platform/platform.h"

namespace morvunp::sevenzip {

/// All ids of the engine share one form.
constexpr GUID EngineId(BYTE group, BYTE number) {
  return {0x23170F69, 0x40C1, 0x278A, {0, 0, 0, group, 0, number, 0, 0}};
}

/// The 7z format, as CreateObject knows it.
inline constexpr GUID kClassId7z{0x23170F69, 0x40C1, 0x278A, {0x10, 0, 0, 1, 0x10, 7, 0, 0}};

// What the engine is asked to do with an item.
inline constexpr LONG kAskExtract = 0;
inline constexpr LONG kAskTest = 1;
inline constexpr LONG kAskSkip = 2;

/// What it says of an item's content; every other number is a complaint.
inline constexpr LONG kResultOk = 0;
inline constexpr LONG kResultUnsupportedMethod = 1;
inline constexpr LONG kResultUnexpectedEnd = 5;
inline constexpr LONG kResultWrongPassword = 9;

inline constexpr DWORD kSeekStart = 0;
inline constexpr DWORD kSeekCurrent = 1;
inline constexpr DWORD kSeekEnd = 2;

inline constexpr DWORD kAllItems = 0xFFFFFFFF;

inline constexpr PROPID kpidMainSubfile = 1;
inline constexpr PROPID kpidPath = 3;
inline constexpr PROPID kpidName = 4;
inline constexpr PROPID kpidIsDir = 6;
inline constexpr PROPID kpidSize = 7;
inline constexpr PROPID kpidPackSize = 8;
inline constexpr PROPID kpidAttrib = 9;
inline constexpr PROPID kpidCTime = 10;
inline constexpr PROPID kpidATime = 11;
inline constexpr PROPID kpidMTime = 12;
inline constexpr PROPID kpidEncrypted = 15;
inline constexpr PROPID kpidCRC = 19;
inline constexpr PROPID kpidMethod = 22;
inline constexpr PROPID kpidNumVolumes = 39;
inline constexpr PROPID kpidErrorFlags = 71;
/// In kpidErrorFlags.
inline constexpr DWORD kErrorUnexpectedEnd = 0x20;

// The tables hold no destructor: objects destroy themselves in Release.
struct ISequentialInStream : IUnknown {
  /// One read; `*processed` may be less than `size`, and is 0 at the end.
  virtual HRESULT Read(void* data, DWORD size, DWORD* processed) = 0;

 protected:
  ~ISequentialInStream() = default;
};

struct IInStream : ISequentialInStream {
  static constexpr GUID kId = EngineId(3, 3);
  virtual HRESULT Seek(LONGLONG offset, DWORD origin, ULONGLONG* position) = 0;

 protected:
  ~IInStream() = default;
};

struct IStreamGetSize : IUnknown {
  static constexpr GUID kId = EngineId(3, 6);
  virtual HRESULT GetSize(ULONGLONG* size) = 0;

 protected:
  ~IStreamGetSize() = default;
};

struct ISequentialOutStream : IUnknown {
  virtual HRESULT Write(const void* data, DWORD size, DWORD* processed) = 0;

 protected:
  ~ISequentialOutStream() = default;
};

struct IOutStream : ISequentialOutStream {
  static constexpr GUID kId = EngineId(3, 4);
  virtual HRESULT Seek(LONGLONG offset, DWORD origin, ULONGLONG* position) = 0;
  virtual HRESULT SetSize(ULONGLONG size) = 0;

 protected:
  ~IOutStream() = default;
};

struct IProgress : IUnknown {
  virtual HRESULT SetTotal(ULONGLONG total) = 0;
  virtual HRESULT SetCompleted(const ULONGLONG* completed) = 0;

 protected:
  ~IProgress() = default;
};

struct ICompressProgressInfo : IUnknown {
  static constexpr GUID kId = EngineId(4, 4);
  /// Either pointer may be null.
  virtual HRESULT SetRatioInfo(const ULONGLONG* inSize, const ULONGLONG* outSize) = 0;

 protected:
  ~ICompressProgressInfo() = default;
};

struct ICompressCoder : IUnknown {
  virtual HRESULT Code(ISequentialInStream* in, ISequentialOutStream* out, const ULONGLONG* inSize,
                       const ULONGLONG* outSize, ICompressProgressInfo* progress) = 0;

 protected:
  ~ICompressCoder() = default;
};

struct ICompressGetInStreamProcessedSize : IUnknown {
  static constexpr GUID kId = EngineId(4, 0x24);
  virtual HRESULT GetInStreamProcessedSize(ULONGLONG* size) = 0;

 protected:
  ~ICompressGetInStreamProcessedSize() = default;
};

struct ICryptoGetTextPassword : IUnknown {
  static constexpr GUID kId = EngineId(5, 0x10);
  /// The caller frees the string.
  virtual HRESULT CryptoGetTextPassword(BSTR* password) = 0;

 protected:
  ~ICryptoGetTextPassword() = default;
};

struct IArchiveOpenCallback : IUnknown {
  virtual HRESULT SetTotal(const ULONGLONG* files, const ULONGLONG* bytes) = 0;
  virtual HRESULT SetCompleted(const ULONGLONG* files, const ULONGLONG* bytes) = 0;

 protected:
  ~IArchiveOpenCallback() = default;
};

struct IArchiveOpenVolumeCallback : IUnknown {
  static constexpr GUID kId = EngineId(6, 0x30);
  virtual HRESULT GetProperty(PROPID id, PROPVARIANT* value) = 0;
  virtual HRESULT GetStream(const wchar_t* name, IInStream** stream) = 0;

 protected:
  ~IArchiveOpenVolumeCallback() = default;
};

struct IArchiveExtractCallback : IProgress {
  virtual HRESULT GetStream(DWORD index, ISequentialOutStream** stream, LONG askMode) = 0;
  virtual HRESULT PrepareOperation(LONG askMode) = 0;
  virtual HRESULT SetOperationResult(LONG result) = 0;

 protected:
  ~IArchiveExtractCallback() = default;
};

struct IInArchiveGetStream : IUnknown {
  static constexpr GUID kId = EngineId(6, 0x40);
  virtual HRESULT GetStream(DWORD index, ISequentialInStream** stream) = 0;

 protected:
  ~IInArchiveGetStream() = default;
};

struct IInArchive : IUnknown {
  static constexpr GUID kId = EngineId(6, 0x60);
  virtual HRESULT Open(IInStream* stream, const ULONGLONG* maxCheckStartPosition,
                       IArchiveOpenCallback* callback) = 0;
  virtual HRESULT Close() = 0;
  virtual HRESULT GetNumberOfItems(DWORD* count) = 0;
  virtual HRESULT GetProperty(DWORD index, PROPID id, PROPVARIANT* value) = 0;
  /// `indices` in rising order, or null with a count of kAllItems.
  virtual HRESULT Extract(const DWORD* indices, DWORD count, LONG testMode,
                          IArchiveExtractCallback* callback) = 0;
  virtual HRESULT GetArchiveProperty(PROPID id, PROPVARIANT* value) = 0;
  virtual HRESULT GetNumberOfProperties(DWORD* count) = 0;
  virtual HRESULT GetPropertyInfo(DWORD index, BSTR* name, PROPID* id, VARTYPE* type) = 0;
  virtual HRESULT GetNumberOfArchiveProperties(DWORD* count) = 0;
  virtual HRESULT GetArchivePropertyInfo(DWORD index, BSTR* name, PROPID* id, VARTYPE* type) = 0;

 protected:
  ~IInArchive() = default;
};

struct ISetProperties : IUnknown {
  static constexpr GUID kId = EngineId(6, 3);
  virtual HRESULT SetProperties(const wchar_t* const* names, const PROPVARIANT* values,
                                DWORD count) = 0;

 protected:
  ~ISetProperties() = default;
};

/// What the engine exports.
using CreateObjectFunction = HRESULT (*)(const GUID* classId, const GUID* interfaceId,
                                         void** object);

}  // namespace morvunp::sevenzip
