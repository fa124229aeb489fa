// Symbolic links of the old format (RAR 1.5 to 4).
#pragma once

#include <optional>
#include <string>

#include "rar/archivebytes.h"
#include "rar/engine.h"

namespace morvunp::rar {

/// Reads what links say out of an archive. The engine, asked to test such an
/// item, tells nothing of it; but its data is the text, and mostly stored as it
/// is.
class OldLinks {
 public:
  explicit OldLinks(const std::wstring& archive) : m_archive(archive) {}

  /// Of the archive's file number `number`, from 0; asked for in their order,
  /// all cost one walk. None where the text is packed, encrypted or not where
  /// the header says, or where the archive begins with something else.
  std::optional<std::wstring> TargetOf(ULONGLONG number, const Header& header);

 private:
  bool GoTo(ULONGLONG number);

  ArchiveBytes m_archive;
  /// The block that comes next, and the number of files before it.
  ULONGLONG m_nOffset = 0;
  ULONGLONG m_nFiles = 0;
};

}  // namespace morvunp::rar
