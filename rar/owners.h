// Owners of files in archives of the new format (RAR 5).
#pragma once

#include <optional>
#include <string>

#include "platform/owners.h"
#include "rar/archivebytes.h"
#include "rar/engine.h"

namespace morvunp::rar {

/// Reads out of an archive who its files belong to, which the engine does not
/// tell.
class Owners {
 public:
  explicit Owners(const std::wstring& archive) : m_archive(archive) {}

  /// Of the archive's item number `number`, from 0; asked for in their order, all
  /// cost one walk. None where nothing is recorded, the header is encrypted or
  /// not that of this item, or the archive begins with something else.
  std::optional<platform::FileOwner> OwnerOf(ULONGLONG number, const Header& header);

 private:
  bool GoTo(ULONGLONG number);

  ArchiveBytes m_archive;
  /// The block that comes next, and the number of items before it.
  ULONGLONG m_nOffset = 0;
  ULONGLONG m_nItems = 0;
  /// Of that block.
  std::string m_header;
};

}  // namespace morvunp::rar
