#include "platform/cabinet/reader.h"

#include <algorithm>
#include <cstdio>
#include <cstring>

namespace cabinet {
namespace {

// Flags of the C runtime that the callbacks are written for: binary, read-only;
// permission to read and write.
constexpr int kOpenFlags = 0x8000;
constexpr int kOpenMode = 0x0180;
// Distances are 32-bit.
constexpr std::uint64_t kFarthestSeek = 0x7FFFFFFF;

INT_PTR OpenJoined(const Host& host, const char* folder, const char* name) {
  const std::size_t folderLength = std::strlen(folder);
  const std::size_t nameSize = std::strlen(name) + 1;
  const Memory path(host, folderLength + nameSize);
  std::memcpy(path.Get(), folder, folderLength);
  std::memcpy(path.Get() + folderLength, name, nameSize);
  return host.open(reinterpret_cast<char*>(path.Get()), kOpenFlags, kOpenMode);
}

}  // namespace

Reader::Reader(const Host& host, const char* folder, const char* name)
    : m_host(host),
      m_buffer(host, kMostBytes),
      m_bOwned(true),
      m_nFile(OpenJoined(host, folder, name)) {
  if (m_nFile == -1) Fail(FDIERROR_CABINET_NOT_FOUND);
}

Reader::Reader(const Host& host, INT_PTR file)
    : m_host(host), m_buffer(host, kMostBytes), m_bOwned(false), m_nFile(file) {}

Reader::~Reader() {
  if (m_bOwned) m_host.close(m_nFile);
}

std::span<const BYTE> Reader::Peek(std::size_t length) {
  if (m_nEnd - m_nStart < length) Fill();
  return {m_buffer.Get() + m_nStart, std::min(length, m_nEnd - m_nStart)};
}

const BYTE* Reader::Take(std::size_t length) {
  const auto bytes = Peek(length);
  if (bytes.size() < length) Fail(FDIERROR_EOF);
  Drop(length);
  return bytes.data();
}

void Reader::Fill() {
  BYTE* const buffer = m_buffer.Get();
  std::memmove(buffer, buffer + m_nStart, m_nEnd - m_nStart);
  m_nEnd -= m_nStart;
  m_nStart = 0;
  while (m_nEnd < kMostBytes) {
    const auto room = static_cast<UINT>(kMostBytes - m_nEnd);
    const UINT read = m_host.read(m_nFile, buffer + m_nEnd, room);
    // A failing read answers -1: more than was asked for.
    if (read > room) Fail(FDIERROR_CORRUPT_CABINET);
    if (read == 0) return;
    m_nEnd += read;
    m_nFileOffset += read;
  }
}

void Reader::Seek(std::uint64_t offset) {
  const std::uint64_t held = m_nFileOffset - m_nEnd;
  if (offset >= held && offset <= m_nFileOffset) {
    m_nStart = static_cast<std::size_t>(offset - held);
    return;
  }
  if (offset < held || offset <= kFarthestSeek) SeekFile(std::min(offset, kFarthestSeek));
  // What is farther away than a seek can reach is read up to.
  while (Position() < offset) {
    const auto passed = Peek(std::min<std::uint64_t>(offset - Position(), kMostBytes));
    if (passed.empty()) Fail(FDIERROR_EOF);
    Drop(passed.size());
  }
}

void Reader::SeekFile(std::uint64_t offset) {
  if (m_host.seek(m_nFile, static_cast<LONG>(offset), SEEK_SET) == -1) {
    Fail(FDIERROR_CORRUPT_CABINET);
  }
  m_nStart = m_nEnd = 0;
  m_nFileOffset = offset;
}

}  // namespace cabinet
