// The UnRAR library, behind one object. Its header is included in engine.cpp
// and nowhere else.
//
// The engine reads an archive from first to last, one header at a time; each
// item is then extracted or passed over, once. After some failures it has lost
// its place, and only opening the archive again helps. This object keeps
// account of both, so that callers cannot get out of step.
//
// In a solid archive each item builds on those before it, and passing over one
// costs as much as extracting it. There the headers are walked on a handle of
// their own, opened for listing, which decodes nothing and needs no password;
// the one that extracts follows when an item is wanted.
#pragma once

#include <functional>
#include <memory>
#include <string>

#include "morvunp/platform/platform.h"

namespace morvunp::rar {

/// The engine's answers that mean something to the library.
enum Code : int {
  kSuccess = 0,
  kEndOfArchive = 10,
  kNoMemory = 11,
  kBadData = 12,
  kCannotOpen = 15,
  kCannotCreate = 16,
  kCannotWrite = 19,
  kMissingPassword = 22,
  kBadPassword = 24,
};

/// What the engine calls back for.
enum Message : UINT { kChangeVolume = 0, kProcessData = 1, kNeedPassword = 2 };
/// Second parameter of kChangeVolume: the next volume was not found.
inline constexpr LPARAM kVolumeMissing = 0;
/// Answers to the engine.
inline constexpr int kGoOn = 0;
inline constexpr int kStop = -1;

using Callback = int (*)(UINT message, LPARAM userData, LPARAM p1, LPARAM p2);

/// What an item is beside data of its own.
enum class Redirection { kNone, kSymbolicLink, kHardLink, kFileCopy };

/// Header of an item, its names in the library's form.
struct Header {
  std::wstring path;
  /// The path was longer than the engine can tell.
  bool isPathCut = false;
  DWORD flags = 0;
  ULONGLONG packedSize = 0;
  ULONGLONG unpackedSize = 0;
  DWORD crc = 0;
  /// MS-DOS date and time, the date in the high half.
  DWORD time = 0;
  /// The same in UTC and exact.
  FILETIME modified;
  DWORD unpackVersion = 0;
  DWORD method = 0;
  DWORD attributes = 0;
  /// `attributes` is a Unix mode.
  bool isUnix = false;
  Redirection redirection = Redirection::kNone;
  /// Path of the item that a hard link or a copy repeats, or what a symbolic
  /// link says.
  std::wstring source;

  bool IsFolder() const;
  /// A folder of its own, not a link to one.
  bool IsPlainFolder() const { return IsFolder() && redirection == Redirection::kNone; }
  bool IsEncrypted() const;
  /// A symbolic link of the old format, whose data is what it says.
  bool IsOldLink() const;
  /// Encrypted, and a wrong password shows no otherwise than damage.
  bool HidesWrongPassword() const;
  /// The file goes on in the next volume.
  bool IsSplitAfter() const;
  /// The file began in an earlier volume: this is no item of its own.
  bool IsContinuation() const;
};

class Engine {
 public:
  Engine();
  ~Engine();
  Engine(const Engine&) = delete;
  Engine& operator=(const Engine&) = delete;

  /// Closes what is open and opens the archive at `path`.
  bool Open(const std::wstring& path);
  /// False when the engine could not close the archive, or none was open.
  bool Close();
  bool IsOpen() const;
  /// What the last Open came to.
  int OpenResult() const;
  /// The headers of the archive opened last are encrypted.
  bool HasEncryptedHeaders() const;
  void SetPassword(std::string password);

  /// Reads the next header. The item read before must have been extracted or
  /// passed over.
  int ReadHeader();
  const Header& Current() const { return m_header; }
  /// A header was read and its item is neither extracted nor passed over.
  bool HasItem() const { return m_bHasItem; }
  /// No header has been read since the archive was opened.
  bool IsAtStart() const { return m_nWalked == 0; }
  /// Passes over the item; kSuccess at once when there is none. A walk ends
  /// where this fails.
  int Skip();
  /// Decodes and checks the item and hands its data to the callback. In a solid
  /// archive what lies before it is decoded, too, and handed over while
  /// IsFollowing.
  int Test();
  bool IsFollowing() const { return m_bFollowing; }
  /// Items that are passed over on the way to a later one of a solid archive are
  /// handed to the callback as well, so that it can stop the engine.
  void HandOverPassed(bool isWanted) { m_bHandOverPassed = isWanted; }
  /// The walk has ended early, and only opening the archive again helps.
  bool HasLostPlace() const { return m_nLost != kSuccess && m_nLost != kEndOfArchive; }
  /// Opens the archive again and goes to the header that was read last. False
  /// where that cannot be reached.
  bool Resume(const std::wstring& path, const std::function<void()>& usePassword);
  /// Writes the item to exactly this path, absolute and free of symbolic links:
  /// the engine replaces links on the way to it by folders.
  int Extract(const std::wstring& path);
  /// The archive's comment as it was opened; empty without one.
  std::wstring Comment() const;
  /// The archive is one volume of a set.
  bool IsVolume() const;
  /// Number of headers walked to, the item's own included.
  ULONGLONG Walked() const { return m_nWalked; }

  /// Calls go to `callback` until ClearCallback. Exceptions must not leave it.
  void SetCallback(Callback callback, LPARAM userData);
  void ClearCallback();

 private:
  class Stream;
  struct Buffers;

  int Follow();
  template <class Process>
  int ProcessItem(Process process);

  std::unique_ptr<Buffers> m_pBuffers;
  /// Walks the headers, and extracts unless the archive is solid.
  std::unique_ptr<Stream> m_pWalk;
  /// Extracts from a solid archive; null for another.
  std::unique_ptr<Stream> m_pData;
  Header m_header;
  /// Headers that were walked, and those that m_pData has followed.
  ULONGLONG m_nWalked = 0;
  ULONGLONG m_nFollowed = 0;
  bool m_bHasItem = false;
  bool m_bFollowing = false;
  bool m_bHandOverPassed = false;
  /// The failure after which the engine has lost its place, or kSuccess.
  int m_nLost = kSuccess;
};

}  // namespace morvunp::rar
