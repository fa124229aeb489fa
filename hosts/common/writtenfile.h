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
  struct Content {
    /// Bytes.
    std::uint64_t size = 0;
    /// CRC-32.
    std::uint32_t crc = 0;
  };
  /// Reads the file; none when it cannot be read.
  std::optional<Content> Read() const;

 private:
  std::wstring path_;
};

}  // namespace host
