// Lists an archive and unpacks all of it: what a host of the library needs,
// and no more.
//
//   unpack ARCHIVE FOLDER
#include <exception>
#include <filesystem>
#include <iostream>
#include <string>
#include <vector>

#include "morvunp/morvunp.h"
#include "morvunp/platform/text.h"
#include "morvunp/platform/userinterface.h"

namespace {

using morvunp::platform::ControlKind;
using morvunp::platform::ToNativeText;

/// Shows the library's dialogs and questions on the terminal. Names come from
/// strangers: a real host makes control characters in them visible.
class Console : public morvunp::platform::UserInterface {
 public:
  Console() { morvunp::platform::RegisterUserInterface(this); }
  ~Console() override { morvunp::platform::RegisterUserInterface(nullptr); }
  Console(const Console&) = delete;
  Console& operator=(const Console&) = delete;

  /// The question whether to replace a file, or for a password.
  bool RunDialog(CDialog& dialog) override {
    std::vector<UINT> buttons;
    for (const auto& control : dialog.Template().controls) {
      const std::string text = ToNativeText(dialog.ControlText(control.id));
      if (control.kind == ControlKind::kPushButton ||
          control.kind == ControlKind::kDefaultPushButton) {
        buttons.push_back(control.id);
        std::wstring label = control.text;
        std::erase(label, L'&');  // marks the letter that a window underlines
        std::cout << '[' << buttons.size() << "] " << ToNativeText(label) << '\n';
      } else if (control.kind == ControlKind::kPasswordEdit) {
        dialog.SetControlText(control.id,
                              morvunp::platform::ToLibraryPath(Ask("Password (seen): ")));
      } else if (!text.empty()) {
        std::cout << text << '\n';
      }
    }
    const std::string answer = Ask("Which? ");
    const bool isButton = answer.size() == 1 && answer[0] > '0' &&
                          static_cast<std::size_t>(answer[0] - '0') <= buttons.size();
    if (isButton) {
      dialog.Press(buttons[static_cast<std::size_t>(answer[0] - '1')]);
    } else {
      dialog.PressEscape();
    }
    return true;
  }

  /// A problem, or a question such as "Interrupt the unpack?".
  int ShowMessageBox(const std::wstring& text, const std::wstring&, UINT type) override {
    std::cout << ToNativeText(text) << '\n';
    if ((type & MB_YESNO) == 0) return IDOK;
    return Ask("Yes or no? ").starts_with('y') ? IDYES : IDNO;
  }

  /// A host with windows runs its events here, so that it stays alive.
  void RunPendingEvents() override {}
  HICON FindIcon(const std::wstring&, bool) override { return nullptr; }

 private:
  static std::string Ask(const char* question) {
    std::cout << question << std::flush;
    std::string answer;
    std::getline(std::cin, answer);
    return answer;
  }
};

/// Told of the file in hand and how far it has come. To stop the run, a host
/// posts WM_UNPACK_STOP to this window.
LRESULT OnProgress(UINT message, WPARAM percentage, LPARAM name) {
  if (message != WM_UNPACK_PROGRESS) return 0;
  if (name != 0) std::cout << ToNativeText(reinterpret_cast<LPCWSTR>(name)) << '\n';
  std::cout << "  " << percentage << " %\n";
  return 0;
}

template <morvunp::Unpacker U>
void List(U& unpacker) {
  morvunp::WalkItems<typename U::ShortInfo>(unpacker, [](const typename U::ShortInfo& item) {
    std::cout << ToNativeText(item.strPath) << '\n';
    return true;
  });
}

/// False when the archive is of another format.
template <morvunp::Unpacker U>
bool Run(const std::string& archive, const std::string& folder, HWND progress, bool& isUnpacked) {
  U unpacker;
  if (!unpacker.OpenArchive(morvunp::platform::ToLibraryPath(archive))) return false;
  List(unpacker);
  INIUNPACK settings;
  settings.bConfirmReplace = 1;
  unpacker.SetIni(settings);
  unpacker.SetHandleDialogProgress(progress);
  isUnpacked = unpacker.UnpackArchive(morvunp::platform::ToLibraryPath(folder));
  return true;
}

int Unpack(const std::string& archive, const std::filesystem::path& folder) {
  std::filesystem::create_directories(folder);
  const std::string target = std::filesystem::canonical(folder).string();
  const Console console;
  const HWND progress = morvunp::platform::MakeWindow(nullptr, OnProgress);
  // The result of the last item; docs/embedding.md tells how to follow each.
  bool isUnpacked = false;
  const bool isArchive = Run<CCabUnpacker>(archive, target, progress, isUnpacked) ||
                         Run<CIsoUnpacker>(archive, target, progress, isUnpacked) ||
#if MORVUNP_HAS_RAR
                         Run<CRarUnpacker>(archive, target, progress, isUnpacked) ||
#endif
                         Run<C7zUnpacker>(archive, target, progress, isUnpacked);
  DestroyWindow(progress);
  if (!isArchive) std::cerr << archive << ": not an archive, or its engine is missing\n";
  return isArchive && isUnpacked ? 0 : 1;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 3) {
    std::cerr << "usage: unpack ARCHIVE FOLDER\n";
    return 2;
  }
  try {
    return Unpack(std::filesystem::absolute(argv[1]).string(), argv[2]);
  } catch (const std::exception& error) {
    // An image with an impossible date, or a folder that cannot be made.
    std::cerr << argv[1] << ": " << error.what() << '\n';
    return 1;
  }
}
