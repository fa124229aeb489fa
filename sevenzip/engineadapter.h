// What the engine of this system needs that the library does not know of.
//
// The library is written for an engine that calls back on the calling thread
// and names items as the host's system does. On this system
//
// - the engine works with threads of its own unless it is told not to before
//   every open, and would call us from them, several at a time;
// - paths come with "/" between their components, and a backslash may be part
//   of a name;
// - an item without a name gets one from the host program: that of the archive;
// - asking for an item that does not exist reads outside its memory.
//
// Two more differences are met elsewhere: strings hold UTF-16 code units (see
// platform/components.h), and the engine exports its own symbols, so that ours
// must be hidden (see cmake/options.cmake).
#pragma once

#include <string>

#include "sevenzip/component.h"
#include "sevenzip/interfaces.h"

namespace morvunp::sevenzip {

/// The engine's archive object in the form that the library is written for.
/// `nameless` is what an item without a name is called.
class AdaptedArchive final : public Component<Answers<IInArchive>, IInArchive> {
 public:
  AdaptedArchive(ComPtr<IInArchive> engine, std::wstring nameless)
      : m_pEngine(std::move(engine)), m_strNameless(std::move(nameless)) {}

  /// E_NOINTERFACE for an engine whose threads cannot be turned off.
  HRESULT Open(IInStream* stream, const ULONGLONG* maxCheckStartPosition,
               IArchiveOpenCallback* callback) override;
  HRESULT Close() override;
  HRESULT GetNumberOfItems(DWORD* count) override;
  /// E_INVALIDARG for an item that does not exist.
  HRESULT GetProperty(DWORD index, PROPID id, PROPVARIANT* value) override;
  HRESULT Extract(const DWORD* indices, DWORD count, LONG testMode,
                  IArchiveExtractCallback* callback) override;
  HRESULT GetArchiveProperty(PROPID id, PROPVARIANT* value) override;
  HRESULT GetNumberOfProperties(DWORD* count) override;
  HRESULT GetPropertyInfo(DWORD index, BSTR* name, PROPID* id, VARTYPE* type) override;
  HRESULT GetNumberOfArchiveProperties(DWORD* count) override;
  HRESULT GetArchivePropertyInfo(DWORD index, BSTR* name, PROPID* id, VARTYPE* type) override;

 private:
  HRESULT TurnThreadsOff();

  ComPtr<IInArchive> m_pEngine;
  std::wstring m_strNameless;
  DWORD m_nItems = 0;
};

/// What an item without a name is called in the archive at `path`: the file's
/// name without what makes it an archive or a volume.
std::wstring NamelessIn(const std::wstring& path);

}  // namespace morvunp::sevenzip
