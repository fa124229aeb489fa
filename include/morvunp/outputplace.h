// Where items come out, and which items never do.
//
// The unpackers use these functions themselves. A host uses them to know from
// its walk what a run should write, and to tell why an item was refused.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "morvunp/records.h"

namespace morvunp {

/// The place of one item on disk.
struct OutputPlace {
  /// Full path of the folder that a file goes into, or of the folder itself.
  std::wstring folder;
  /// Name of the file in it; empty for a folder item.
  std::wstring name;

  MORVUNP_API std::wstring Path() const;
};

/// Place of the file at `path` in UnpackFile.
MORVUNP_API OutputPlace PlaceOfFile(const INIUNPACK& settings, const std::wstring& path,
                                    const std::wstring& target);

/// Place of an item in UnpackFolder of `folder`; none for an item that does
/// not belong to that folder.
MORVUNP_API std::optional<OutputPlace> PlaceInFolderRun(const INIUNPACK& settings,
                                                        const std::wstring& folder,
                                                        const std::wstring& path, bool isFolder,
                                                        const std::wstring& target);

/// Place of an item in UnpackArchive; none for an item that creates nothing.
MORVUNP_API std::optional<OutputPlace> PlaceInArchiveRun(const INIUNPACK& settings,
                                                         const std::wstring& path, bool isFolder,
                                                         const std::wstring& target);

/// Makes a folder below `target`, as the runs do: never through a symbolic
/// link that stands between the two. True when it exists afterwards.
MORVUNP_API bool MakeOutputFolder(const std::wstring& folder, const std::wstring& target);

/// True when an item of this path may be written: no empty, "." or ".."
/// component, no leading separator, no drive, no NUL and no "/" in it.
/// `name` is the item's own name, which must be the last component whole.
MORVUNP_API bool IsSafeItem(std::wstring_view path, std::wstring_view name);

}  // namespace morvunp
