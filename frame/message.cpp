#include "frame/message.h"

namespace morvunp::frame {
namespace {

constexpr LPCWSTR kCaption = L"Morvane Archiver";

}  // namespace

int ShowMessage(LPCWSTR text, UINT type) {
  const CWnd* const owner = AfxGetMainWnd();
  return MessageBoxW(owner != nullptr ? owner->GetSafeHwnd() : nullptr, text, kCaption, type);
}

}  // namespace morvunp::frame
