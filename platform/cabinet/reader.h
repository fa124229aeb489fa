// Buffered reading of a cabinet through the caller's callbacks.
#pragma once

#include <cstdint>
#include <span>

#include "platform/cabinet/host.h"

namespace cabinet {

class Reader {
 public:
  /// The most bytes that are handed out in one piece.
  static constexpr std::size_t kMostBytes = 128 * 1024;

  /// Opens the cabinet at `folder` + `name` and owns the file.
  Reader(const Host& host, const char* folder, const char* name);
  /// Reads a file of the caller's from where it stands.
  Reader(const Host& host, INT_PTR file);
  ~Reader();
  Reader(const Reader&) = delete;
  Reader& operator=(const Reader&) = delete;

  /// The next bytes without taking them, fewer at the end of the file. Valid
  /// until the next call.
  std::span<const BYTE> Peek(std::size_t length);
  /// Takes the next bytes, which must be there.
  const BYTE* Take(std::size_t length);
  /// Passes over bytes that Peek has shown.
  void Drop(std::size_t length) { m_nStart += length; }

  void Seek(std::uint64_t offset);
  std::uint64_t Position() const { return m_nFileOffset - (m_nEnd - m_nStart); }

 private:
  void Fill();
  void SeekFile(std::uint64_t offset);

  const Host& m_host;
  Memory m_buffer;
  bool m_bOwned;
  INT_PTR m_nFile;
  /// The bytes held.
  std::size_t m_nStart = 0;
  std::size_t m_nEnd = 0;
  /// Where in the file they end.
  std::uint64_t m_nFileOffset = 0;
};

}  // namespace cabinet
