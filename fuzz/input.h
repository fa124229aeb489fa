// What a target makes of its input, and how it says that a promise is broken.
#pragma once

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <string_view>

namespace fuzz {

/// Ends the process, which a fuzzer takes for a finding, unless `holds`.
inline void Require(bool holds, const char* promise) {
  if (holds) return;
  std::fprintf(stderr, "broken: %s\n", promise);
  std::abort();
}

/// Takes the input from its front. What is missing reads as zeros.
class Input {
 public:
  explicit Input(std::string_view bytes) : m_bytes(bytes) {}

  bool IsEmpty() const { return m_bytes.empty(); }
  std::string_view Rest() const { return m_bytes; }

  std::string_view Bytes(std::size_t count) {
    const std::string_view taken = m_bytes.substr(0, count);
    m_bytes.remove_prefix(taken.size());
    return taken;
  }
  std::uint64_t Number(std::size_t bytes) {
    std::uint64_t number = 0;
    unsigned shift = 0;
    for (const char c : Bytes(bytes)) {
      number |= std::uint64_t{static_cast<std::uint8_t>(c)} << shift;
      shift += 8;
    }
    return number;
  }
  /// Bytes behind a count of two bytes.
  std::string_view Counted() { return Bytes(static_cast<std::size_t>(Number(2))); }

 private:
  std::string_view m_bytes;
};

/// What Number and Counted read.
inline std::string NumberBytes(std::uint64_t number, std::size_t bytes) {
  std::string text;
  for (std::size_t i = 0; i < bytes; ++i) text += static_cast<char>(number >> 8 * i);
  return text;
}
inline std::string CountedBytes(std::string_view bytes) {
  return NumberBytes(bytes.size(), 2) + std::string(bytes);
}

}  // namespace fuzz
