#include "fuzz/quiethost.h"

#include "morvunp/messages.h"

namespace fuzz {
namespace {

constexpr unsigned kMostPatience = 200;
/// Cancel, No, Yes and Yes To All of the replace dialog.
constexpr UINT kFirstButton = 1001;
constexpr unsigned kButtons = 4;

BYTE Bit(std::uint64_t bits, unsigned index) { return static_cast<BYTE>(bits >> index & 1); }

}  // namespace

Manner::Manner(Input& input) {
  const std::uint64_t bits = input.Number(2);
  settings = {Bit(bits, 0), Bit(bits, 1), Bit(bits, 2), Bit(bits, 3)};
  firstAnswer = static_cast<unsigned>(bits >> 4 & 3);
  asksForMore = Bit(bits, 6);
  const auto asked = static_cast<unsigned>(bits >> 8);
  patience = asked == 0 ? kMostPatience : asked;
}

QuietHost::QuietHost(const Manner& manner, std::wstring target)
    : m_nAnswer(manner.firstAnswer),
      m_nPatience(manner.patience),
      m_strTarget(std::move(target)),
      m_hProgress(morvunp::platform::MakeWindow(nullptr, [this](UINT, WPARAM, LPARAM) {
        CountMessage();
        return LRESULT{0};
      })) {
  m_wndFileTree.m_hWnd =
      morvunp::platform::MakeWindow(nullptr, [this](UINT, WPARAM, LPARAM lParam) {
        const std::wstring path = reinterpret_cast<const wchar_t*>(lParam);
        Require(path.starts_with(m_strTarget), "what was written lies in the target folder");
        return LRESULT{0};
      });
  morvunp::platform::RegisterUserInterface(this);
}

QuietHost::~QuietHost() {
  morvunp::platform::RegisterUserInterface(nullptr);
  DestroyWindow(m_hProgress);
  DestroyWindow(m_wndFileTree.m_hWnd);
  MSG message;
  while (PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE)) {
  }
}

void QuietHost::CountMessage() {
  if (++m_nMessages >= m_nPatience) PostMessageW(m_hProgress, WM_UNPACK_STOP, 0, 0);
}

bool QuietHost::RunDialog(CDialog& dialog) {
  if (!dialog.Ended()) dialog.Press(kFirstButton + m_nAnswer++ % kButtons);
  return true;
}

}  // namespace fuzz
