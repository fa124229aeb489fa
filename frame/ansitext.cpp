#include "frame/ansitext.h"

#include "morvunp/platform/platform.h"

namespace morvunp::frame {

void DecodeAnsi(std::string_view bytes, std::wstring& text) {
  const int length = static_cast<int>(bytes.size());
  const auto decode = [&] {
    return MultiByteToWideChar(CP_ACP, 0, bytes.data(), length, text.data(),
                               static_cast<int>(text.size()));
  };
  // No code page in use has more characters than bytes but in rare combinations.
  text.resize(bytes.size());
  int decoded = decode();
  if (decoded == 0 && length > 0) {
    text.resize(
        static_cast<std::size_t>(MultiByteToWideChar(CP_ACP, 0, bytes.data(), length, nullptr, 0)));
    decoded = decode();
  }
  text.resize(static_cast<std::size_t>(decoded));
}

std::wstring DecodeAnsi(std::string_view bytes) {
  std::wstring text;
  DecodeAnsi(bytes, text);
  return text;
}

bool SetOptions(CUnpackState& state, const UnpackOptions& options) {
  const std::string& codePage = options.codePage;
  if (!codePage.empty() && !platform::IsUsableCodePage(codePage)) return false;
  state.m_options = options;
  return true;
}

}  // namespace morvunp::frame
