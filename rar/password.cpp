#include "rar/password.h"

#include "frame/password.h"

namespace morvunp::rar {
namespace {

/// The engine looks at no more characters.
constexpr std::size_t kLongestPassword = 127;

}  // namespace

std::optional<std::wstring> AskPassword() {
  frame::CPassword dialog;
  if (dialog.DoModal() != frame::CPassword::kOk) return std::nullopt;
  return std::move(dialog.m_strPassword);
}

std::string NarrowPassword(const std::wstring& password) {
  // The engine reads it by the locale. A code page that was chosen for the
  // names of an archive must not change it.
  const auto length = static_cast<int>(std::min(password.size(), kLongestPassword));
  std::string narrow(static_cast<std::size_t>(WideCharToMultiByte(
                         CP_THREAD_ACP, 0, password.data(), length, nullptr, 0, nullptr, nullptr)),
                     '\0');
  WideCharToMultiByte(CP_THREAD_ACP, 0, password.data(), length, narrow.data(),
                      static_cast<int>(narrow.size()), nullptr, nullptr);
  return narrow;
}

}  // namespace morvunp::rar
