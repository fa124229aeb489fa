// What goes beyond the contract, on request.
//
// An object that is told nothing more does what the contract says, to the
// letter: every option is off by default. They are the one setting that does
// not come through SetIni. Our own programs switch all of them on.
#pragma once

#include <functional>
#include <optional>
#include <string>
#include <string_view>

#include "morvunp/platform/platform.h"

namespace morvunp {

/// What is left of a file whose data cannot be had whole. One that would have
/// replaced another is never kept in its place where safeReplace is on.
enum class BrokenFiles : BYTE {
  /// RAR: nothing; the others: what came out.
  kAsFormat,
  kRemove,
  kKeep,
};

/// A file stands where an item is to be written. The views are valid during the
/// call.
struct ExistingFile {
  /// Full path on disk, in the library's form.
  std::wstring_view outputPath{};
  /// Bytes, UTC, and FILE_ATTRIBUTE bits of what stands there.
  ULONGLONG size = 0;
  FILETIME lastWrite{};
  DWORD attributes = 0;
  /// The item: its place in the walk, its path in the archive, its size in
  /// bytes as recorded and its time in seconds since 1970 UTC, 0 for none.
  ULONGLONG position = 0;
  std::wstring_view itemPath{};
  ULONGLONG itemSize = 0;
  __time64_t itemModified = 0;
};

struct ExistingFileAnswer {
  enum class What : BYTE { kWrite, kKeep, kOtherName, kCancel };
  What what = What::kKeep;
  /// Of kOtherName: a plain name for the file in the same folder. Where that is
  /// taken too, the question comes again.
  std::wstring name{};
};

using ExistingFileFunction = std::function<ExistingFileAnswer(const ExistingFile&)>;

/// Where is the volume or cabinet of this name (without folders)? A path in the
/// library's form, or none. Asked once for each that is missing.
using MissingVolumeFunction = std::function<std::optional<std::wstring>(const std::wstring& name)>;

/// What a run may do at most. The item that passes a limit is told with the
/// reason kLimit, and the run ends.
struct UnpackLimits {
  /// Written or handed to sinks, in bytes.
  std::optional<ULONGLONG> bytes{};
  /// Items that are begun.
  std::optional<ULONGLONG> items{};
  /// Folders between the target and a file or folder.
  std::optional<ULONGLONG> depth{};
};

struct UnpackOptions {
  /// After an item that fails the run goes on where the contract would end it,
  /// or lose what lies behind: a 7z or cabinet file that cannot be created, a
  /// damaged folder of a cabinet, encrypted items without a password. A full
  /// disk ends it.
  bool goOn = false;
  /// A cabinet of a set is walked together with those behind it.
  bool wholeSet = false;
  BrokenFiles brokenFiles = BrokenFiles::kAsFormat;
  /// An existing file stays until the new one is whole and then gives way at
  /// once. Where its folder takes no new file it is written into, and
  /// ItemReport::wasInPlace says so. (RAR does it always.)
  bool safeReplace = false;
  /// Asked before bConfirmReplace and the standing answers are looked at, which
  /// then mean nothing; the question's dialog is not shown.
  ExistingFileFunction onExistingFile{};
  MissingVolumeFunction onMissingVolume{};
  /// Items of 7z archives that are symbolic links become links, unless they
  /// lead out of the target.
  bool links = false;
  /// Folders get their recorded mode and time when the run has ended.
  bool folderFacts = false;
  /// RAR 5: files get their recorded owners, where the process is root's. Not in
  /// volume sets, nor where the headers are encrypted.
  bool owners = false;
  UnpackLimits limits{};
  /// Messages are pumped while data is passed over and archives are opened and
  /// listed, too. A stop there ends the operation as in a file.
  bool pumpAlways = false;
  /// In which names of the archive opened next are read: an iconv name such as
  /// "CP932"; empty for the thread's. A superset of ASCII.
  std::string codePage{};
  /// Names in cabinets that are marked as UTF-8 are read so.
  bool utf8Names = false;
};

}  // namespace morvunp
