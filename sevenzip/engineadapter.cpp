#include "sevenzip/engineadapter.h"

#include <algorithm>
#include <array>

#include "frame/itempath.h"
#include "sevenzip/property.h"
#include "sevenzip/volumesequence.h"

namespace morvunp::sevenzip {
namespace {

void TurnSeparators(BSTR path) {
  for (wchar_t* c = path; *c != 0; ++c) {
    if (*c == frame::kSeparator) {
      *c = platform::kEscapedBackslash;
    } else if (*c == L'/') {
      *c = frame::kSeparator;
    }
  }
}

}  // namespace

HRESULT AdaptedArchive::TurnThreadsOff() {
  const auto properties = m_pEngine.Query<ISetProperties>();
  if (!properties) return E_NOINTERFACE;
  // "mt" alone leaves the filters' threads.
  constexpr std::array<const wchar_t*, 2> kNames{L"mt", L"mtf"};
  std::array<PROPVARIANT, 2> values;
  for (PROPVARIANT& value : values) PutBool(&value, false);
  return properties->SetProperties(kNames.data(), values.data(), values.size());
}

HRESULT AdaptedArchive::Open(IInStream* stream, const ULONGLONG* maxCheckStartPosition,
                             IArchiveOpenCallback* callback) {
  m_nItems = 0;
  HRESULT result = TurnThreadsOff();
  if (result == S_OK) result = m_pEngine->Open(stream, maxCheckStartPosition, callback);
  if (result == S_OK) result = m_pEngine->GetNumberOfItems(&m_nItems);
  return result;
}

HRESULT AdaptedArchive::Close() {
  m_nItems = 0;
  return m_pEngine->Close();
}

HRESULT AdaptedArchive::GetNumberOfItems(DWORD* count) {
  *count = m_nItems;
  return S_OK;
}

HRESULT AdaptedArchive::GetProperty(DWORD index, PROPID id, PROPVARIANT* value) {
  *value = {};
  if (index >= m_nItems) return E_INVALIDARG;
  const HRESULT result = m_pEngine->GetProperty(index, id, value);
  if (result != S_OK || id != kpidPath) return result;
  if (value->vt == VT_BSTR) {
    TurnSeparators(value->bstrVal);
  } else if (value->vt == VT_EMPTY) {
    Put(value, m_strNameless);
  }
  return result;
}

HRESULT AdaptedArchive::Extract(const DWORD* indices, DWORD count, LONG testMode,
                                IArchiveExtractCallback* callback) {
  const bool areListed = indices != nullptr;
  if (areListed && std::any_of(indices, indices + count, [&](DWORD i) { return i >= m_nItems; })) {
    return E_INVALIDARG;
  }
  return m_pEngine->Extract(indices, count, testMode, callback);
}

HRESULT AdaptedArchive::GetArchiveProperty(PROPID id, PROPVARIANT* value) {
  return m_pEngine->GetArchiveProperty(id, value);
}

HRESULT AdaptedArchive::GetNumberOfProperties(DWORD* count) {
  return m_pEngine->GetNumberOfProperties(count);
}

HRESULT AdaptedArchive::GetPropertyInfo(DWORD index, BSTR* name, PROPID* id, VARTYPE* type) {
  return m_pEngine->GetPropertyInfo(index, name, id, type);
}

HRESULT AdaptedArchive::GetNumberOfArchiveProperties(DWORD* count) {
  return m_pEngine->GetNumberOfArchiveProperties(count);
}

HRESULT AdaptedArchive::GetArchivePropertyInfo(DWORD index, BSTR* name, PROPID* id, VARTYPE* type) {
  return m_pEngine->GetArchivePropertyInfo(index, name, id, type);
}

std::wstring NamelessIn(const std::wstring& path) {
  std::wstring name(frame::NameOf(path));
  if (const auto set = CVolumeSequence::OfFirstVolume(name)) name = set->SetName();
  std::wstring title(frame::TitleOf(name));
  return title.empty() ? name : title;
}

}  // namespace morvunp::sevenzip
