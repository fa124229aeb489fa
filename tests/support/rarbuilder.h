// RAR archives written byte by byte, for what no tool would pack: hostile
// names, links that lead out. Data is stored.
#pragma once

#include <cstdint>
#include <string>

namespace testsupport {

/// One header of an archive and its data.
struct RarItem {
  /// UTF-8, "/" between components.
  std::string path{};
  std::string data{};
  std::uint32_t mode = 0100644;
  bool isFolder = false;
  bool fromWindows = false;
  /// RAR5: 1 to 3 symbolic link, 4 hard link, 5 copy.
  unsigned redirection = 0;
  std::string redirectsTo{};
  /// What belongs to the archive; its comment is called "CMT".
  bool isService = false;
  /// RAR5: one more record of the header, without its size.
  std::string record{};
};

class RarBuilder {
 public:
  RarBuilder& Add(const RarItem& item) {
    items_ += Rar5Header(item) + item.data;
    return *this;
  }
  /// `archiveFlags` as the format has them.
  static constexpr unsigned kSolid = 4;
  std::string Build(unsigned archiveFlags = 0) const;

 private:
  static std::string Rar5Header(const RarItem& item);

  std::string items_;
};

/// An archive of the older format with one item. A symbolic link has its
/// target for data and the file type of one in its mode.
std::string BuildRar4(const RarItem& item);

}  // namespace testsupport
