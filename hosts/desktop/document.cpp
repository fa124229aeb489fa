#include "hosts/desktop/document.h"

#include <utility>

namespace desktop {
namespace {

host::Archive OpenWith(host::PasswordAnswer& password, DesktopInterface& interface,
                       const std::string& path,
                       std::function<void(const host::Reason&)> onWrongPassword) {
  interface.SetPasswordAnswer(&password);
  return host::OpenArchiveFile(
      path, {.password = &password, .onWrongPassword = std::move(onWrongPassword)});
}

}  // namespace

Document::Document(std::string path, DesktopInterface& interface,
                   std::function<void(const host::Reason&)> onWrongPassword)
    : path_(std::move(path)),
      password_(interface.MakePasswordAnswer()),
      archive_(OpenWith(password_, interface, path_, std::move(onWrongPassword))) {
  host::ForEachItem(archive_, [this](const host::Item& item) {
    tree_.Add(item);
    return true;
  });
  tree_.Finish();
  gap_ = host::ReasonOfGap(archive_);
}

std::wstring Document::SummaryOf(ArchiveTree::Index item) {
  if (item == ArchiveTree::kRoot) return host::SummaryOf(archive_);
  return host::SummaryOf(archive_, tree_.PathOf(item), tree_.At(item).isFolder);
}

}  // namespace desktop
