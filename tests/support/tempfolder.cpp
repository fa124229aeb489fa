#include "support/tempfolder.h"
#include "support/rooms.h"

#include <sys/xattr.h>

#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <system_error>

#include "morvunp/platform/text.h"

namespace testsupport {

namespace {

namespace fs = std::filesystem;

// Entries of a folder without the owner's write and search bits cannot be
// removed.
void OpenFolders(const fs::path& folder) {
  std::error_code ignored;
  fs::permissions(folder, fs::perms::owner_all, fs::perm_options::add, ignored);
  for (const auto& entry : fs::directory_iterator(folder, ignored)) {
    if (entry.symlink_status(ignored).type() == fs::file_type::directory) {
      OpenFolders(entry.path());
    }
  }
}

std::string MakeFolder(const fs::path& parent) {
  std::string path = parent / "morvunp-XXXXXX";
  if (mkdtemp(path.data()) == nullptr) {
    throw std::system_error(errno, std::generic_category(), "mkdtemp " + path);
  }
  return path;
}

}  // namespace

TempFolder::TempFolder() : m_strPath(MakeFolder(fs::temp_directory_path())) {
  if (setxattr(m_strPath.c_str(), "user.morvunp", "", 0, 0) == 0) return;
  fs::remove(m_strPath);
  m_strPath = MakeFolder("/var/tmp");
}

TempFolder::~TempFolder() {
  OpenFolders(m_strPath);
  std::error_code ignored;
  fs::remove_all(m_strPath, ignored);
}

std::string TempFolder::Path(std::string_view sub) const {
  if (sub.empty()) return m_strPath;
  return m_strPath + "/" + std::string(sub);
}

std::wstring TempFolder::LibraryPath(std::string_view sub) const {
  return platform::ToLibraryPath(Path(sub));
}

void WriteFile(const std::string& path, std::string_view bytes) {
  const fs::path folder = fs::path(path).parent_path();
  if (!folder.empty()) fs::create_directories(folder);
  std::ofstream file;
  file.exceptions(std::ios::failbit | std::ios::badbit);
  file.open(path, std::ios::binary | std::ios::trunc);
  file.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
  file.close();
}

std::string ReadFile(const std::string& path) {
  std::ifstream file;
  file.exceptions(std::ios::failbit | std::ios::badbit);
  file.open(path, std::ios::binary);
  std::string bytes(fs::file_size(path), '\0');
  file.read(bytes.data(), static_cast<std::streamsize>(bytes.size()));
  return bytes;
}

bool Exists(const std::string& path) {
  return fs::symlink_status(path).type() != fs::file_type::not_found;
}

std::map<std::string, std::string> TreeOf(const std::string& folder) {
  std::map<std::string, std::string> tree;
  for (const auto& entry : fs::recursive_directory_iterator(folder)) {
    const std::string name = entry.path().lexically_relative(folder).string();
    switch (entry.symlink_status().type()) {
      case fs::file_type::directory:
        tree[name + "/"];
        break;
      case fs::file_type::symlink:
        tree[name + "@"] = fs::read_symlink(entry.path()).string();
        break;
      default:
        tree[name] = ReadFile(entry.path().string());
    }
  }
  return tree;
}

}  // namespace testsupport
