// What all formats are written with.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace testsupport {

/// The lowest byte first.
inline std::string Little(std::uint64_t value, std::size_t count) {
  std::string bytes;
  for (; count > 0; --count, value >>= 8) bytes += static_cast<char>(value);
  return bytes;
}

inline void Put(std::string& target, std::size_t offset, std::string_view bytes) {
  if (target.size() < offset + bytes.size()) target.resize(offset + bytes.size());
  target.replace(offset, bytes.size(), bytes);
}

/// Bytes of which no two places look alike.
inline std::string Pattern(std::size_t size) {
  std::string content(size, '\0');
  for (std::size_t i = 0; i < size; ++i) content[i] = static_cast<char>(i * 2654435761U >> 13);
  return content;
}

}  // namespace testsupport
