// A host that answers as the input says and stops runs that go on for long.
#pragma once

#include <string>

#include "fuzz/input.h"
#include "morvunp/platform/userinterface.h"
#include "morvunp/records.h"

namespace fuzz {

/// How an archive is opened and unpacked.
struct Manner {
  /// Takes two bytes.
  explicit Manner(Input& input);
  /// What seeds begin with: unpack as is, and ask before anything is replaced.
  static std::string OfSeeds() { return {"\x08\x00", 2}; }

  INIUNPACK settings;
  /// Which button of the replace dialog is pressed first; the others follow.
  unsigned firstAnswer;
  /// What goes beyond the contract is asked for.
  bool asksForMore;
  /// After so many messages the user asks for a stop, and insists.
  unsigned patience;
};

/// The registered user interface from construction to destruction.
class QuietHost : public morvunp::platform::UserInterface {
 public:
  /// Whatever is reported must lie in `target`.
  QuietHost(const Manner& manner, std::wstring target);
  ~QuietHost() override;
  QuietHost(const QuietHost&) = delete;
  QuietHost& operator=(const QuietHost&) = delete;

  template <class U>
  void Attach(U& unpacker) {
    unpacker.SetHandleDialogProgress(m_hProgress);
    unpacker.SetWndFileTree(&m_wndFileTree);
  }
  /// A new operation begins.
  void BeginRun() { m_nMessages = 0; }

  bool RunDialog(CDialog& dialog) override;
  int ShowMessageBox(const std::wstring&, const std::wstring&, UINT) override { return IDYES; }
  void RunPendingEvents() override {}
  HICON FindIcon(const std::wstring&, bool) override { return nullptr; }

 private:
  void CountMessage();

  unsigned m_nAnswer;
  unsigned m_nPatience;
  std::wstring m_strTarget;
  unsigned m_nMessages = 0;
  HWND m_hProgress;
  CWnd m_wndFileTree;
};

}  // namespace fuzz
