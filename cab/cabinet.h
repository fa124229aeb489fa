// The binding to the cabinet interface, and the cabinet that is open in it.
#pragma once

#include <exception>
#include <map>
#include <string>
#include <vector>

#include "cab/itemlist.h"

namespace morvunp::cab {

class Cabinet {
 public:
  /// `state` is the unpacker's.
  explicit Cabinet(CUnpackState& state) : m_state(state) {}
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
  /// One pass over the open cabinet, and over its set where the options say so.
  /// `flags` are more for the interface. Throws what a callback threw.
  bool Copy(PFNFDINOTIFY notify, void* user, int flags = 0);
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
  static morvunp::ItemReason ReasonOf(FDIERROR error);
  /// A pass wants the next cabinet of the set. False where it is not there, not
  /// even by the host's word.
  bool FindNext(const FDINOTIFICATION& notification);
  /// The cabinet that the last pass asked for in vain.
  const std::wstring& MissingCabinet() const { return m_strMissing; }
  /// The notification is about the cabinet that was opened.
  bool IsOfFirst(const FDINOTIFICATION& notification) const {
    return notification.iCabinet == m_cabInfo.iCabinet;
  }
  /// The cabinet that is read on this thread; null when none is.
  static Cabinet* Current();
  /// The one that its pass belongs to.
  static void* CurrentUser();
  /// The file that is to be opened for this path of a cabinet.
  std::wstring FileOf(const std::wstring& path) const;
  /// False when the user interrupts while it is read.
  bool MayRead();
  /// The open cabinet and those behind it in its set, as far as they are there.
  std::vector<platform::FileIdentity> FilesOfSet();

  ItemList& Items() { return m_items; }
  const ItemList& Items() const { return m_items; }

 private:
  bool Bind();
  void Release();
  bool IsCabinet(const std::wstring& path);
  bool CopyFrom(const std::wstring& path, int flags, PFNFDINOTIFY notify, void* user);
  bool AskFor(const std::wstring& path, const std::wstring& name);
  std::wstring NextOf(const std::wstring& path);

  CUnpackState& m_state;
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
  /// Where the host said that cabinets are.
  std::map<std::wstring, std::wstring> m_answers;
  ItemList m_items;
  /// The file is shorter than the cabinet says.
  bool m_bCut = false;
  morvunp::ItemReason m_scanProblem = morvunp::ItemReason::kNone;
};

}  // namespace morvunp::cab
