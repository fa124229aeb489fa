// The items of an archive as a tree, small enough for a million of them.
#pragma once

#include <cstdint>
#include <limits>
#include <span>
#include <string>
#include <string_view>
#include <unordered_set>
#include <vector>

#include "hosts/common/itemrecord.h"

namespace desktop {

/// Items are numbers; 0 is the archive itself. Names lie in one long text and
/// children in one list, so that an item is no object of its own. Folders that
/// the archive has no item for are made up.
class ArchiveTree {
 public:
  using Index = std::uint32_t;
  static constexpr Index kRoot = 0;
  /// Less than any time, so that such items come first.
  static constexpr std::int64_t kNoTime = std::numeric_limits<std::int64_t>::min();

  struct Entry {
    Index parent;
    std::uint32_t nameLength;
    std::size_t nameStart;
    /// Bytes.
    std::uint64_t size;
    /// Seconds since 1970-01-01 00:00 UTC; kNoTime when not recorded.
    std::int64_t modified;
    /// Place among the folders of its parent; of a folder, when finished.
    std::uint32_t row;
    bool isFolder;
    bool isHidden;
    bool isEncrypted;
  };

  ArchiveTree();
  ArchiveTree(ArchiveTree&&) = delete;

  void Add(const host::Item& item);
  /// Before the first look at children, after the last item.
  void Finish();

  std::size_t Size() const { return entries_.size(); }
  const Entry& At(Index item) const { return entries_[item]; }
  std::wstring_view NameOf(Index item) const;
  /// Path in the archive, in the library's form; empty for the root.
  std::wstring PathOf(Index item) const;
  /// Folders in the order of their names, then files in that of the archive.
  std::span<const Index> Children(Index folder) const;
  std::span<const Index> Folders(Index folder) const;

 private:
  struct Key {
    Index parent;
    std::wstring_view name;
  };
  struct FolderHash {
    using is_transparent = void;
    std::size_t operator()(const Key& key) const;
    std::size_t operator()(Index item) const;
    const ArchiveTree* tree;
  };
  struct FolderEqual {
    using is_transparent = void;
    template <class Left, class Right>
    bool operator()(const Left& left, const Right& right) const {
      const Key a = tree->KeyOf(left);
      const Key b = tree->KeyOf(right);
      return a.parent == b.parent && a.name == b.name;
    }
    const ArchiveTree* tree;
  };
  /// Where the children of a folder lie in the list of all.
  struct Range {
    std::size_t start = 0;
    std::uint32_t folders = 0;
    std::uint32_t files = 0;
  };

  static Key KeyOf(const Key& key) { return key; }
  Key KeyOf(Index item) const { return {entries_[item].parent, NameOf(item)}; }
  Index Append(Index parent, std::wstring_view name, bool isFolder);
  Index FolderIn(Index parent, std::wstring_view name);
  Index FolderAt(std::wstring_view path);
  void SortFolders(Index folder);

  std::vector<Entry> entries_;
  std::wstring names_;
  std::unordered_set<Index, FolderHash, FolderEqual> folders_;
  /// Neighbours in an archive mostly share their folder.
  std::wstring lastPath_;
  Index lastFolder_ = kRoot;
  std::vector<Range> ranges_;
  std::vector<Index> children_;
};

/// Orders names as people read them: ignoring case, numbers by their value.
bool IsNameLess(std::wstring_view left, std::wstring_view right);

}  // namespace desktop
