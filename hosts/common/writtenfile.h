// A file that the library has written.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace host {

/// Looks at the disk only when asked.
class WrittenFile {
 public:
  /// `path` in the library's form.
  explicit WrittenFile(std::wstring path) : path_(std::move(path)) {}

  std::wstring_view Path() const { return path_; }
  /// Bytes; 0 when it cannot be found out.
  std::uint64_t Size() const;
  /// CRC-32 of the content; none when it cannot be read.
  std::optional<std::uint32_t> Crc() const;

 private:
  std::wstring path_;
};

}  // namespace host
