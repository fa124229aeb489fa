// The binding to the cabinet interface, and the cabinet that is open in it.
#pragma once

#include <exception>
#include <string>
#include <vector>

#include "cab/itemlist.h"

namespace morvunp::cab {

class Cabinet {
 public:
  Cabinet() = default;
  ~Cabinet();
  Cabinet(const Cabinet&) = delete;
  Cabinet& operator=(const Cabinet&) = delete;

  /// Loads the interface and makes a context in it.
  bool CreateFDIContext();
  /// False when the interface was never bound, or keeps the context.
  bool DestroyFDIContext();
  bool HasContext() const { return m_hfdi != nullptr; }

  /// Opens a file in a fresh context. On failure no context is left.
  bool Open(const std::wstring& path);
  /// What a callback of a pass threw, which the interface cannot carry. The
  /// callbacks have no context of the caller's, so each thread has one for all.
  static std::exception_ptr& Thrown();
  /// One pass over the open cabinet. Throws what a callback threw.
  bool Copy(PFNFDINOTIFY notify, void* user);
  /// Reads the table into the list. True when that worked and found items.
  bool Scan(void* user);
  /// Why the file or the list is not whole: kCutShort, kDamaged or kNone.
  morvunp::ItemReason Problem() const {
    return m_bCut ? morvunp::ItemReason::kCutShort : m_scanProblem;
  }
  /// Why the last pass ended early, as the interface tells it.
  morvunp::ItemReason ReasonOfFailure() const;
  /// A callback ended the last pass.
  bool WasAborted() const { return m_strMissing.empty() && m_erf.erfOper == FDIERROR_USER_ABORT; }
  /// The cabinet that the last pass asked for in vain.
  void NoteMissing(const std::wstring& name) { m_strMissing = name; }
  const std::wstring& MissingCabinet() const { return m_strMissing; }
  /// The open cabinet and those behind it in its set, as far as they are there.
  std::vector<platform::FileIdentity> FilesOfSet();

  ItemList& Items() { return m_items; }
  const ItemList& Items() const { return m_items; }

 private:
  bool Bind();
  void Release();
  bool IsCabinet(const std::wstring& path);
  bool CopyFrom(const std::wstring& path, PFNFDINOTIFY notify, void* user);
  std::wstring NextOf(const std::wstring& path);

  HMODULE m_hModule = nullptr;
  HFDI m_hfdi = nullptr;
  PFNFDICREATE m_pfnFDICreate = nullptr;
  PFNFDICOPY m_pfnFDICopy = nullptr;
  PFNFDIISCABINET m_pfnFDIIsCabinet = nullptr;
  PFNFDIDESTROY m_pfnFDIDestroy = nullptr;
  ERF m_erf;
  FDICABINETINFO m_cabInfo;
  std::wstring m_strArchive;
  platform::FileIdentity m_identity;
  std::wstring m_strMissing;
  ItemList m_items;
  /// The file is shorter than the cabinet says.
  bool m_bCut = false;
  morvunp::ItemReason m_scanProblem = morvunp::ItemReason::kNone;
};

}  // namespace morvunp::cab
