#include "frame/ansitext.h"

#include "platform/platform.h"

namespace frame {

std::wstring DecodeAnsi(std::string_view bytes) {
  // No code page in use has more characters than bytes but in rare combinations.
  const int length = static_cast<int>(bytes.size());
  std::wstring text(bytes.size(), L'\0');
  int decoded = MultiByteToWideChar(CP_ACP, 0, bytes.data(), length, text.data(), length);
  if (decoded == 0 && length > 0) {
    text.resize(
        static_cast<std::size_t>(MultiByteToWideChar(CP_ACP, 0, bytes.data(), length, nullptr, 0)));
    decoded = MultiByteToWideChar(CP_ACP, 0, bytes.data(), length, text.data(),
                                  static_cast<int>(text.size()));
  }
  text.resize(static_cast<std::size_t>(decoded));
  return text;
}

}  // namespace frame
