// One tree of files as an archive of each format.
#pragma once

#include <string>
#include <vector>

namespace testsupport {

struct Item {
  /// "/" between components and at the end of a folder.
  std::string path;
  std::string data{};
};
using Items = std::vector<Item>;

/// What all items are dated, in UTC.
inline constexpr long kItemTime = 981173106;  // 2001-02-03 04:05:06

void WriteIso(const std::string& archive, const Items& items);
/// Small files lie in their entries, others in pieces.
void WriteUdf(const std::string& archive, const Items& items);
void WriteCabinet(const std::string& archive, const Items& items);
void WriteRar(const std::string& archive, const Items& items);
/// With the engine's own command; `switches` are for it.
void Write7z(const std::string& archive, const Items& items, const std::string& switches);
inline void Write7z(const std::string& archive, const Items& items) {
  Write7z(archive, items, "-mx1 -ms=off");
}

}  // namespace testsupport
