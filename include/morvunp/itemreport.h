// What became of each item of a run.
//
// A run answers with one boolean, that of its last item or of its engine. What
// became of every single item is told where it is decided, as an event: an
// item that came out and is then replaced by a later one with the same output
// path is told again, and the last word about a position counts.
//
// The functions are called on the thread of the operation. They may throw (see
// morvunp/unpacker.h) and must not use the object that calls them.
#pragma once

#include <functional>
#include <string_view>

#include "morvunp/platform/platform.h"

namespace morvunp {

/// What came of an item.
enum class ItemResult : BYTE {
  /// It came out whole.
  kWritten,
  /// A folder that is there now.
  kFolderMade,
  /// It was decoded and found whole; nothing was to be written.
  kIntact,
  /// The existing file was kept.
  kKept,
  /// It is not written because of what it is: its name, or where a link leads.
  kRefused,
  kFailed,
  /// It had come out; a later item with the same output path took its place.
  kReplaced,
  /// The run ended before it.
  kNotReached,
};

/// Why. One list for all formats.
enum class ItemReason : BYTE {
  kNone,
  kUnsafeName,
  /// A link that would lead out of the target folder.
  kUnsafeLink,
  /// A symbolic link or a folder in its place, or something that is no folder
  /// above it.
  kInTheWay,
  /// Longer than the system, or the engine, can hold.
  kNameTooLong,
  /// The system refused; `systemError` says why.
  kSystem,
  /// Its data is damaged in the archive.
  kDamaged,
  /// The archive ends before the item does.
  kCutShort,
  /// It has fewer bytes than the archive records of it.
  kShorterThanRecorded,
  kUnsupportedMethod,
  kWrongPassword,
  /// Older archives do not tell the two apart.
  kWrongPasswordOrDamaged,
  /// None was given: the prompt was cancelled or could not be shown.
  kNoPassword,
  /// `detail` names the volume.
  kMissingVolume,
  /// It begins in a volume or cabinet before the one that was opened.
  kBeginsEarlier,
  /// A further name, or a copy, of an item that did not come out.
  kNoSource,
  kLimit,
  /// The user ended the run.
  kInterrupted,
  kNoMemory,
};

/// The views are valid during the call.
struct ItemReport {
  /// Place in the walk, from 0; the same in a listing and in every run. The
  /// parts of a split file share the position of the file.
  ULONGLONG position = 0;
  /// Path in the archive. Empty in the report of a replaced item, whose
  /// position names it.
  std::wstring_view path{};
  /// Full path on disk, in the library's form; empty where there is none.
  std::wstring_view outputPath{};
  /// Bytes, as the archive records them.
  ULONGLONG recordedSize = 0;
  /// Bytes that reached the file.
  ULONGLONG bytesWritten = 0;
  ItemResult result = ItemResult::kWritten;
  ItemReason reason = ItemReason::kNone;
  /// An errno value: the system's, where the reason is kSystem. Where it is
  /// kInTheWay: ELOOP for a link or a special file in its place, EISDIR for a
  /// folder, ETXTBSY for the archive itself, ENOTDIR where something stands in
  /// the place of its folder. Otherwise 0.
  int systemError = 0;
  /// Such as the name of the missing volume; mostly empty.
  std::wstring_view detail{};
  /// UnpackOptions::safeReplace was asked for, but the folder takes no new file:
  /// the existing one was written into.
  bool wasInPlace = false;
};

/// How a run ended.
struct RunReport {
  /// kNone: the end of the archive was reached.
  ItemReason reason = ItemReason::kNone;
  int systemError = 0;
  std::wstring_view detail{};
};

using ItemReportFunction = std::function<void(const ItemReport&)>;
using RunReportFunction = std::function<void(const RunReport&)>;

}  // namespace morvunp
