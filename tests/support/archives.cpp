#include "support/archives.h"

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <stdexcept>

#include "support/cabbuilder.h"
#include "support/isobuilder.h"
#include "support/rarbuilder.h"
#include "support/tempfolder.h"
#include "support/udfbuilder.h"

namespace testsupport {
namespace {

constexpr std::size_t kSmall = 100;

template <class Node>
Node& FolderIn(Node& parent, const std::string& name) {
  for (const auto& child : parent.children) {
    if (child->isFolder && child->name == name) return *child;
  }
  return parent.AddFolder(name);
}

/// Adds an item, and the folders above it that are not there yet.
template <class Node>
Node& AddTo(Node& root, const Item& item) {
  Node* folder = &root;
  std::size_t start = 0;
  for (std::size_t end = item.path.find('/'); end != item.path.npos;
       end = item.path.find('/', start)) {
    folder = &FolderIn(*folder, item.path.substr(start, end - start));
    start = end + 1;
  }
  return start == item.path.size() ? *folder : folder->AddFile(item.path.substr(start), item.data);
}

void Run(const std::string& command) {
  if (std::system(command.c_str()) != 0) throw std::runtime_error(command);
}

}  // namespace

void WriteIso(const std::string& archive, const Items& items) {
  IsoBuilder builder;
  for (const Item& item : items) AddTo(builder.Root(), item);
  WriteFile(archive, builder.Build());
}

void WriteUdf(const std::string& archive, const Items& items) {
  UdfBuilder builder;
  for (const Item& item : items) {
    UdfNode& node = AddTo(builder.Root(), item);
    if (node.isFolder) continue;
    node.allocation = item.data.size() <= kSmall ? kUdfEmbedded : kUdfShort;
    node.fragments = 3;
  }
  WriteFile(archive, builder.Build());
}

void WriteCabinet(const std::string& archive, const Items& items) {
  std::vector<CabFile> files;
  for (const Item& item : items) {
    files.push_back({item.path, item.data});
    std::replace(files.back().name.begin(), files.back().name.end(), '/', '\\');
  }
  WriteFile(archive, CabBuilder().Add(CabMethod::kMszip, files).Build());
}

void WriteRar(const std::string& archive, const Items& items) {
  RarBuilder builder;
  for (const auto& [path, data] : items) {
    const bool isFolder = path.ends_with('/');
    builder.Add({.path = isFolder ? path.substr(0, path.size() - 1) : path,
                 .data = data,
                 .mode = isFolder ? 040755U : 0100644U,
                 .isFolder = isFolder});
  }
  WriteFile(archive, builder.Build());
}

// Names come in afterwards: no folder could hold a file of some of them.
void Write7z(const std::string& archive, const Items& items, const std::string& switches) {
  const TempFolder files;
  std::string renames;
  for (const auto& [path, data] : items) {
    if (path.ends_with('/')) {
      std::filesystem::create_directories(files.Path(path));
    } else {
      const std::string number = "~" + std::to_string(1000 + renames.size());
      WriteFile(files.Path(number), data);
      renames.append(" '").append(number).append("' '").append(path).append("'");
    }
  }
  // The engine's command would put its own extension behind a name without one.
  const std::string made = files.Path(".7z");
  Run("cd '" + files.Path() + "' && find . -exec touch -d 2001-02-03T04:05:06Z {} + && " +
      "7z a -bso0 -bsp0 " + switches + " '" + made + "' * && 7z rn -bso0 -bsp0 '" + made + "'" +
      renames + " && mv '" + made + "' '" + archive + "'");
}

}  // namespace testsupport
