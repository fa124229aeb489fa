#include "cab/cabinet.h"

#include <algorithm>
#include <cstdio>
#include <utility>

#include "cab/narrowpath.h"
#include "frame/ansitext.h"
#include "frame/keptexception.h"
#include "frame/modulefunction.h"
#include "output/pathgate.h"

namespace morvunp::cab {
namespace {

template <class Function>
bool BindTo(HMODULE module, LPCSTR name, Function& function) {
  function = frame::FunctionOf<Function>(module, name);
  return function != nullptr;
}

/// What a cabinet says of itself is all that is wanted of it.
INT_PTR NoteNext(FDINOTIFICATIONTYPE type, FDINOTIFICATION* notification) {
  constexpr INT_PTR kEnough = -1;
  return frame::KeepException(Cabinet::Thrown(), kEnough, [&] {
    const char* const name = notification->psz1;
    const bool isNamed = type == fdintCABINET_INFO && name != nullptr && *name != '\0';
    if (isNamed && output::IsSafeName(frame::DecodeAnsi(name), true)) {
      *static_cast<std::wstring*>(notification->pv) = CabinetPath(notification->psz3, name);
    }
    return kEnough;
  });
}

}  // namespace

Cabinet::~Cabinet() {
  if (m_hfdi != nullptr) DestroyFDIContext();
  if (m_hModule != nullptr) Release();
}

bool Cabinet::CreateFDIContext() {
  m_hModule = LoadLibraryW(L"Cabinet.dll");
  if (m_hModule == nullptr) return false;
  if (Bind()) {
    m_hfdi = m_pfnFDICreate(CCabUnpacker::FDIAlloc, CCabUnpacker::FDIFree, CCabUnpacker::FDIOpen,
                            CCabUnpacker::FDIRead, CCabUnpacker::FDIWrite, CCabUnpacker::FDIClose,
                            CCabUnpacker::FDISeek, cpuUNKNOWN, &m_erf);
  }
  if (m_hfdi == nullptr) Release();
  return m_hfdi != nullptr;
}

bool Cabinet::Bind() {
  const bool isCreateBound = BindTo(m_hModule, "FDICreate", m_pfnFDICreate);
  const bool isCopyBound = BindTo(m_hModule, "FDICopy", m_pfnFDICopy);
  const bool isTestBound = BindTo(m_hModule, "FDIIsCabinet", m_pfnFDIIsCabinet);
  const bool isDestroyBound = BindTo(m_hModule, "FDIDestroy", m_pfnFDIDestroy);
  return isCreateBound && isCopyBound && isTestBound && isDestroyBound;
}

void Cabinet::Release() {
  FreeLibrary(m_hModule);
  m_hModule = nullptr;
}

bool Cabinet::DestroyFDIContext() {
  if (m_pfnFDIDestroy == nullptr) return false;
  if (m_hfdi == nullptr) return true;
  if (m_pfnFDIDestroy(m_hfdi) != TRUE) return false;
  m_hfdi = nullptr;
  Release();
  return true;
}

bool Cabinet::Open(const std::wstring& path) {
  if (m_hfdi != nullptr) DestroyFDIContext();
  if (!CreateFDIContext()) return false;
  if (!IsCabinet(path)) {
    DestroyFDIContext();
    return false;
  }
  m_strArchive = path;
  return true;
}

bool Cabinet::IsCabinet(const std::wstring& path) {
  int file = -1;
  if (_wsopen_s(&file, path.c_str(), _O_BINARY | _O_RDONLY, _SH_DENYWR, 0) != 0) return false;
  const BOOL isCabinet = m_pfnFDIIsCabinet(m_hfdi, file, &m_cabInfo);
  m_identity = platform::IdentityOf(reinterpret_cast<HANDLE>(_get_osfhandle(file)));
  m_bCut = _lseeki64(file, 0, SEEK_END) < LONGLONG{static_cast<DWORD>(m_cabInfo.cbCabinet)};
  m_scanProblem = morvunp::ItemReason::kNone;
  _close(file);
  return isCabinet != FALSE;
}

bool Cabinet::Copy(PFNFDINOTIFY notify, void* user) {
  m_strMissing.clear();
  return CopyFrom(m_strArchive, notify, user);
}

bool Cabinet::CopyFrom(const std::wstring& path, PFNFDINOTIFY notify, void* user) {
  if (m_hfdi == nullptr) return false;
  // The folder keeps its last backslash: the interface joins without one.
  const std::size_t nameStart = path.rfind(L'\\') + 1;
  std::string name = NarrowPath(std::wstring_view(path).substr(nameStart));
  std::string folder = NarrowPath(std::wstring_view(path).substr(0, nameStart));
  const BOOL isCopied = m_pfnFDICopy(m_hfdi, name.data(), folder.data(), 0, notify, nullptr, user);
  frame::ThrowKept(Thrown());
  return isCopied != FALSE;
}

/// The path of the cabinet that one names as its next; empty for the last.
std::wstring Cabinet::NextOf(const std::wstring& path) {
  std::wstring next;
  CopyFrom(path, NoteNext, &next);
  return next;
}

std::vector<platform::FileIdentity> Cabinet::FilesOfSet() {
  std::vector<platform::FileIdentity> files{m_identity};
  std::wstring path = m_strArchive;
  while (m_cabInfo.hasnext != FALSE && !(path = NextOf(path)).empty()) {
    const platform::FileIdentity file = platform::IdentityOfPath(path);
    const bool isKnown = std::find(files.begin(), files.end(), file) != files.end();
    if (isKnown || file == platform::FileIdentity{}) break;
    files.push_back(file);
  }
  return files;
}

morvunp::ItemReason Cabinet::ReasonOfFailure() const {
  if (!m_strMissing.empty()) return morvunp::ItemReason::kMissingVolume;
  switch (m_erf.erfOper) {
    case FDIERROR_CABINET_NOT_FOUND:
      return morvunp::ItemReason::kMissingVolume;
    case FDIERROR_ALLOC_FAIL:
      return morvunp::ItemReason::kNoMemory;
    case FDIERROR_BAD_COMPR_TYPE:
      return morvunp::ItemReason::kUnsupportedMethod;
    case FDIERROR_EOF:
      return morvunp::ItemReason::kCutShort;
    default:
      return morvunp::ItemReason::kDamaged;
  }
}

bool Cabinet::Scan(void* user) {
  m_items.RemoveAllItems();
  if (m_hfdi == nullptr) return false;
  m_items.Rewind();
  const bool isScanned = Copy(CCabUnpacker::FDICallback_Scan, user);
  m_scanProblem = isScanned ? morvunp::ItemReason::kNone : ReasonOfFailure();
  return isScanned && m_items.size() != 0;
}

}  // namespace morvunp::cab
