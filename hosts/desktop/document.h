// An archive that is open in the window.
#pragma once

#include <memory>
#include <optional>
#include <string>

#include "hosts/common/archive.h"
#include "hosts/desktop/archivetree.h"
#include "hosts/desktop/desktopinterface.h"

namespace desktop {

class Document {
 public:
  /// Opens the file at `path`, a path of this system, and lists it. Throws
  /// host::OpenError. Leaves the interface with its own password answer, which
  /// is its while it lives. `onWrongPassword` is told before another one is
  /// asked for.
  Document(std::string path, DesktopInterface& interface,
           std::function<void(const host::Reason&)> onWrongPassword);
  Document(const Document&) = delete;
  Document& operator=(const Document&) = delete;

  const std::string& Path() const { return path_; }
  const ArchiveTree& Tree() const { return tree_; }
  host::Archive& Archive() { return archive_; }
  host::PasswordAnswer& Password() { return password_; }
  /// Why the list is not all that the archive holds.
  const std::optional<host::Reason>& Gap() const { return gap_; }

  /// The library's own text about an item.
  std::wstring SummaryOf(ArchiveTree::Index item);

 private:
  std::string path_;
  host::PasswordAnswer password_;
  host::Archive archive_;
  ArchiveTree tree_;
  std::optional<host::Reason> gap_;
};

}  // namespace desktop
