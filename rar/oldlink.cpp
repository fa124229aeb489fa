#include "rar/oldlink.h"

#include <climits>

#include "frame/checksum.h"
#include "rar/oldblock.h"

namespace morvunp::rar {

/// To the block of a file.
bool OldLinks::GoTo(ULONGLONG number) {
  if (m_nOffset == 0 || number < m_nFiles) {
    if (m_file.Read(0, kOldSignature.size()) != kOldSignature) return false;
    m_nOffset = kOldSignature.size();
    m_nFiles = 0;
  }
  for (;;) {
    const OldBlock block(m_file.Read(m_nOffset, OldBlock::kLength));
    if (block.HeaderSize() == 0 || block.Type() == OldBlock::kEnd) return false;
    const bool isFile = block.IsFile();
    if (isFile && m_nFiles == number) return true;
    const ULONGLONG next = m_nOffset + block.HeaderSize() + block.DataSize();
    if (next <= m_nOffset) return false;
    m_nOffset = next;
    if (isFile) ++m_nFiles;
  }
}

std::optional<std::wstring> OldLinks::TargetOf(ULONGLONG number, const Header& header) {
  if (header.unpackedSize == 0 || header.unpackedSize >= PATH_MAX) return std::nullopt;
  if (!GoTo(number)) return std::nullopt;
  const OldBlock block(m_file.Read(m_nOffset, OldBlock::kLength));
  if (!block.IsPlain() || block.DataSize() != header.unpackedSize) return std::nullopt;
  const std::string text =
      m_file.Read(m_nOffset + block.HeaderSize(), static_cast<DWORD>(block.DataSize()));
  if (frame::Crc32(text) != header.crc) return std::nullopt;
  return platform::ToLibraryPath(text);
}

}  // namespace morvunp::rar
