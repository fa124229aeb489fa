#include "cab/cabinet.h"

#include <algorithm>
#include <cstdio>
#include <utility>

#include "cab/narrowpath.h"
#include "frame/ansitext.h"
#include "frame/keptexception.h"
#include "frame/modulefunction.h"
#include "frame/progress.h"
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
  m_answers.clear();
  return true;
}

bool Cabinet::IsCabinet(const std::wstring& path) {
  int file = -1;
  if (_wsopen_s(&file, path.c_str(), _O_BINARY | _O_RDONLY, _SH_DENYWR, 0) != 0) return false;
  m_cabInfo = {};
  const BOOL isCabinet = m_pfnFDIIsCabinet(m_hfdi, file, &m_cabInfo);
  m_identity = platform::IdentityOf(reinterpret_cast<HANDLE>(_get_osfhandle(file)));
  m_bCut = _lseeki64(file, 0, SEEK_END) < LONGLONG{static_cast<DWORD>(m_cabInfo.cbCabinet)};
  m_scanProblem = morvunp::ItemReason::kNone;
  _close(file);
  return isCabinet != FALSE;
}

namespace {

/// The callbacks for files carry no context of the caller's.
thread_local Cabinet* m_pCurrent = nullptr;
thread_local void* m_pCurrentUser = nullptr;

/// A pass may be begun from the messages of another.
class CurrentScope {
 public:
  CurrentScope(Cabinet& cabinet, void* user)
      : m_pOuter(std::exchange(m_pCurrent, &cabinet)),
        m_pOuterUser(std::exchange(m_pCurrentUser, user)) {}
  ~CurrentScope() {
    m_pCurrent = m_pOuter;
    m_pCurrentUser = m_pOuterUser;
  }
  CurrentScope(const CurrentScope&) = delete;
  CurrentScope& operator=(const CurrentScope&) = delete;

 private:
  Cabinet* m_pOuter;
  void* m_pOuterUser;
};

}  // namespace

Cabinet* Cabinet::Current() { return m_pCurrent; }

void* Cabinet::CurrentUser() { return m_pCurrentUser; }

bool Cabinet::MayRead() { return frame::MayGoOnMeanwhile(m_state); }

std::wstring Cabinet::FileOf(const std::wstring& path) const {
  const auto answer = m_answers.find(path);
  return answer != m_answers.end() ? answer->second : ExistingCabinet(path);
}

bool Cabinet::FindNext(const FDINOTIFICATION& notification) {
  const std::wstring name = frame::DecodeAnsi(notification.psz1);
  if (!output::IsSafeName(name, true)) return false;
  const std::wstring path = CabinetPath(notification.psz3, notification.psz1);
  const bool isThere = platform::IdentityOfPath(FileOf(path)) != platform::FileIdentity{};
  if (isThere || AskFor(path, name)) return true;
  m_strMissing = name;
  return false;
}

/// What the host answered once holds, a refusal too.
bool Cabinet::AskFor(const std::wstring& path, const std::wstring& name) {
  if (!m_state.m_options.onMissingVolume || m_answers.contains(path)) return false;
  const auto answer = m_state.m_options.onMissingVolume(name);
  m_answers[path] = answer.value_or(path);
  return answer && platform::IdentityOfPath(*answer) != platform::FileIdentity{};
}

bool Cabinet::Copy(PFNFDINOTIFY notify, void* user, int flags) {
  m_strMissing.clear();
  if (m_state.m_options.wholeSet) flags |= FDI_WHOLE_SET;
  return CopyFrom(m_strArchive, flags, notify, user);
}

bool Cabinet::CopyFrom(const std::wstring& path, int flags, PFNFDINOTIFY notify, void* user) {
  if (m_hfdi == nullptr) return false;
  // The folder keeps its last backslash: the interface joins without one.
  const std::size_t nameStart = path.rfind(L'\\') + 1;
  std::string name = NarrowPath(std::wstring_view(path).substr(nameStart));
  std::string folder = NarrowPath(std::wstring_view(path).substr(0, nameStart));
  const CurrentScope current(*this, user);
  const BOOL isCopied =
      m_pfnFDICopy(m_hfdi, name.data(), folder.data(), flags, notify, nullptr, user);
  frame::ThrowKept(Thrown());
  return isCopied != FALSE;
}

/// The path of the cabinet that one names as its next; empty for the last.
std::wstring Cabinet::NextOf(const std::wstring& path) {
  std::wstring next;
  CopyFrom(path, 0, NoteNext, &next);
  return next;
}

std::vector<platform::FileIdentity> Cabinet::FilesOfSet() {
  std::vector<platform::FileIdentity> files{m_identity};
  std::wstring path = m_strArchive;
  while (m_cabInfo.hasnext != FALSE && !(path = NextOf(path)).empty()) {
    const platform::FileIdentity file = platform::IdentityOfPath(FileOf(path));
    const bool isKnown = std::find(files.begin(), files.end(), file) != files.end();
    if (isKnown || file == platform::FileIdentity{}) break;
    files.push_back(file);
  }
  return files;
}

morvunp::ItemReason Cabinet::ReasonOfFailure() const {
  return m_strMissing.empty() ? ReasonOf(static_cast<FDIERROR>(m_erf.erfOper))
                              : morvunp::ItemReason::kMissingVolume;
}

morvunp::ItemReason Cabinet::ReasonOf(FDIERROR error) {
  switch (error) {
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
  frame::ForgetStop(m_state);
  m_items.SetUtf8Names(m_state.m_options.utf8Names);
  const bool isScanned = Copy(CCabUnpacker::FDICallback_Scan, user);
  m_scanProblem = isScanned ? morvunp::ItemReason::kNone : ReasonOfFailure();
  return isScanned && m_items.size() != 0;
}

}  // namespace morvunp::cab
