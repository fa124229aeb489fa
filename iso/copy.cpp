#include "iso/copy.h"

#include <algorithm>

#include "frame/progress.h"

namespace morvunp::iso {
namespace {

// Reads below this size take what follows along: little at first, and much
// where one read has followed the other.
constexpr std::uint64_t kSmallRead = 65536;
constexpr std::uint32_t kFirstAhead = 16384;
constexpr std::uint32_t kNextAhead = 65536;

}  // namespace

bool CopyBuffer::Fill(ByteSource& source, std::uint64_t offset, std::uint32_t length) {
  m_bytes.resize(kCapacity);
  m_nLength = 0;
  const std::int64_t read = source.ReadAt(offset, m_bytes.data(), length);
  if (read < 0) return false;
  m_nOffset = offset;
  m_nLength = static_cast<std::uint32_t>(read);
  return true;
}

std::optional<std::span<const BYTE>> CopyBuffer::Read(ByteSource& source, std::uint64_t offset,
                                                      std::uint64_t length) {
  const auto wanted = static_cast<std::uint32_t>(std::min<std::uint64_t>(length, kCapacity));
  const bool held =
      !m_bytes.empty() && offset >= m_nOffset && offset - m_nOffset + wanted <= m_nLength;
  if (!held) {
    const bool follows =
        m_nLength > 0 && offset >= m_nOffset && offset - m_nOffset <= m_nLength + kSmallRead;
    const std::uint32_t aheadLength = std::max(wanted, follows ? kNextAhead : kFirstAhead);
    const bool ahead = wanted < kSmallRead && Fill(source, offset, aheadLength);
    // What lies ahead may be unreadable where the file itself is not.
    if (!ahead && !Fill(source, offset, wanted)) return std::nullopt;
  }
  const auto start = static_cast<std::size_t>(offset - m_nOffset);
  return std::span<const BYTE>(m_bytes).subspan(start,
                                                std::min<std::size_t>(wanted, m_nLength - start));
}

bool OutputFile::WriteBytes(std::span<const BYTE> bytes) {
  if (!m_root.Out().Write(bytes.data(), static_cast<DWORD>(bytes.size()))) return false;
  m_nDone += bytes.size();
  m_bEndsInHole = false;
  return true;
}

CopyResult OutputFile::FailToRead() {
  if (frame::WasInterrupted(m_state)) return CopyResult::kCancelled;
  m_root.Report().TellRefusal();
  return CopyResult::kFailed;
}

morvunp::ItemReason OutputFile::Defect() const {
  if (m_nDone == m_nTotal) return morvunp::ItemReason::kNone;
  return m_bCutShort ? morvunp::ItemReason::kCutShort : morvunp::ItemReason::kShorterThanRecorded;
}

CopyResult OutputFile::Write(std::span<const BYTE> block) {
  if (!WriteBytes(block)) return CopyResult::kFailed;
  return frame::ReportBlock(m_state, m_nDone, m_nTotal) ? CopyResult::kDone
                                                        : CopyResult::kCancelled;
}

CopyResult OutputFile::WriteAtOnce(std::span<const BYTE> data) {
  if (!WriteBytes(data)) return CopyResult::kFailed;
  frame::UpdateProgress(m_state, m_nDone, m_nTotal, {});
  return CopyResult::kDone;
}

CopyResult OutputFile::Skip(std::uint64_t length) {
  if (!m_root.Out().Skip(length)) return CopyResult::kFailed;
  m_nDone += length;
  m_bEndsInHole = true;
  return frame::ReportBlock(m_state, m_nDone, m_nTotal) ? CopyResult::kDone
                                                        : CopyResult::kCancelled;
}

CopyResult OutputFile::Finish() {
  return !m_bEndsInHole || m_root.Out().EndHere() ? CopyResult::kDone : CopyResult::kFailed;
}

CopyResult CopyExtent(ByteSource& source, CopyBuffer& buffer, std::uint64_t offset,
                      std::uint64_t length, OutputFile& output) {
  while (length > 0) {
    const auto block = buffer.Read(source, offset, length);
    if (!block) return output.FailToRead();
    if (block->empty()) {
      output.EndEarly();
      break;
    }
    const CopyResult result = output.Write(*block);
    if (result != CopyResult::kDone) return result;
    offset += block->size();
    length -= block->size();
  }
  return CopyResult::kDone;
}

}  // namespace morvunp::iso
