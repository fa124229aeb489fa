#include "hosts/desktop/archivetree.h"

#include <algorithm>
#include <cwctype>
#include <functional>

namespace desktop {
namespace {

bool IsDigit(wchar_t c) { return c >= L'0' && c <= L'9'; }

wchar_t Folded(wchar_t c) {
  if (c < 0x80) return c >= L'A' && c <= L'Z' ? static_cast<wchar_t>(c + 32) : c;
  return static_cast<wchar_t>(std::towlower(static_cast<std::wint_t>(c)));
}

/// Takes the number that `text` begins with off it, without leading zeros.
std::wstring_view TakeNumber(std::wstring_view& text) {
  while (text.size() > 1 && text[0] == L'0' && IsDigit(text[1])) text.remove_prefix(1);
  std::size_t length = 0;
  while (length < text.size() && IsDigit(text[length])) ++length;
  const std::wstring_view number = text.substr(0, length);
  text.remove_prefix(length);
  return number;
}

/// Below, equal or above 0.
int CompareNumbers(std::wstring_view left, std::wstring_view right) {
  if (left.size() != right.size()) return left.size() < right.size() ? -1 : 1;
  return left.compare(right);
}

/// As CompareNumbers; takes what it has compared off both.
int CompareNext(std::wstring_view& left, std::wstring_view& right) {
  if (IsDigit(left[0]) && IsDigit(right[0])) {
    return CompareNumbers(TakeNumber(left), TakeNumber(right));
  }
  const wchar_t a = Folded(left[0]);
  const wchar_t b = Folded(right[0]);
  left.remove_prefix(1);
  right.remove_prefix(1);
  return a == b ? 0 : a < b ? -1 : 1;
}

}  // namespace

bool IsNameLess(std::wstring_view left, std::wstring_view right) {
  std::wstring_view a = left;
  std::wstring_view b = right;
  while (!a.empty() && !b.empty()) {
    if (const int order = CompareNext(a, b)) return order < 0;
  }
  if (a.empty() != b.empty()) return a.empty();
  return left < right;
}

std::size_t ArchiveTree::FolderHash::operator()(const Key& key) const {
  return std::hash<std::wstring_view>{}(key.name) ^ (key.parent * std::size_t{0x9E3779B97F4A7C15});
}

std::size_t ArchiveTree::FolderHash::operator()(Index item) const {
  return (*this)(tree->KeyOf(item));
}

ArchiveTree::ArchiveTree() : folders_(64, FolderHash{this}, FolderEqual{this}) {
  Append(kRoot, {}, true);
}

std::wstring_view ArchiveTree::NameOf(Index item) const {
  return std::wstring_view(names_).substr(entries_[item].nameStart, entries_[item].nameLength);
}

std::wstring ArchiveTree::PathOf(Index item) const {
  std::vector<Index> way;
  for (; item != kRoot; item = entries_[item].parent) way.push_back(item);
  std::wstring path;
  for (auto step = way.rbegin(); step != way.rend(); ++step) {
    if (step != way.rbegin()) path += L'\\';
    path += NameOf(*step);
  }
  return path;
}

std::span<const ArchiveTree::Index> ArchiveTree::Children(Index folder) const {
  const Range& range = ranges_[folder];
  return std::span(children_).subspan(range.start, range.folders + range.files);
}

std::span<const ArchiveTree::Index> ArchiveTree::Folders(Index folder) const {
  return Children(folder).first(ranges_[folder].folders);
}

ArchiveTree::Index ArchiveTree::Append(Index parent, std::wstring_view name, bool isFolder) {
  const auto index = static_cast<Index>(entries_.size());
  entries_.push_back({.parent = parent,
                      .nameLength = static_cast<std::uint32_t>(name.size()),
                      .nameStart = names_.size(),
                      .size = 0,
                      .modified = kNoTime,
                      .row = 0,
                      .isFolder = isFolder,
                      .isHidden = false,
                      .isEncrypted = false});
  names_ += name;
  return index;
}

ArchiveTree::Index ArchiveTree::FolderIn(Index parent, std::wstring_view name) {
  const auto found = folders_.find(Key{parent, name});
  if (found != folders_.end()) return *found;
  const Index folder = Append(parent, name, true);
  folders_.insert(folder);
  return folder;
}

ArchiveTree::Index ArchiveTree::FolderAt(std::wstring_view path) {
  if (path == lastPath_) return lastFolder_;
  Index folder = kRoot;
  for (std::size_t start = 0; start <= path.size();) {
    const std::size_t end = std::min(path.find(L'\\', start), path.size());
    folder = FolderIn(folder, path.substr(start, end - start));
    start = end + 1;
  }
  lastPath_ = path;
  lastFolder_ = folder;
  return folder;
}

void ArchiveTree::Add(const host::Item& item) {
  const std::wstring_view path = item.path;
  const std::size_t separator = path.rfind(L'\\');
  const bool isInFolder = separator != std::wstring_view::npos;
  const Index parent = isInFolder ? FolderAt(path.substr(0, separator)) : kRoot;
  const std::wstring_view name = isInFolder ? path.substr(separator + 1) : path;
  Entry& entry = entries_[item.isFolder ? FolderIn(parent, name) : Append(parent, name, false)];
  entry.size = item.isFolder ? 0 : item.size;
  entry.modified = item.modified.value_or(kNoTime);
  entry.isHidden = item.isHidden;
  entry.isEncrypted = item.isEncrypted;
}

void ArchiveTree::Finish() {
  const auto count = static_cast<Index>(entries_.size());
  ranges_.assign(count, {});
  children_.resize(count - 1);
  for (Index item = 1; item < count; ++item) {
    Range& range = ranges_[entries_[item].parent];
    ++(entries_[item].isFolder ? range.folders : range.files);
  }
  std::size_t start = 0;
  for (Range& range : ranges_) {
    range.start = start;
    start += range.folders + range.files;
    range.folders = range.files = 0;
  }
  // Every folder's own folders are counted before its first file is put down.
  for (const bool isFolder : {true, false}) {
    for (Index item = 1; item < count; ++item) {
      if (entries_[item].isFolder != isFolder) continue;
      Range& range = ranges_[entries_[item].parent];
      children_[range.start + range.folders + range.files] = item;
      ++(isFolder ? range.folders : range.files);
    }
  }
  for (Index item = 0; item < count; ++item) SortFolders(item);
}

void ArchiveTree::SortFolders(Index folder) {
  const std::span folders =
      std::span(children_).subspan(ranges_[folder].start, ranges_[folder].folders);
  const auto isLess = [&](Index left, Index right) {
    return IsNameLess(NameOf(left), NameOf(right));
  };
  if (!std::ranges::is_sorted(folders, isLess)) std::ranges::sort(folders, isLess);
  for (std::uint32_t row = 0; row < folders.size(); ++row) entries_[folders[row]].row = row;
}

}  // namespace desktop
