#include "fuzz/sandbox.h"

#include <filesystem>

#include "fuzz/input.h"
#include "morvunp/platform/text.h"
#include "tests/support/tempfolder.h"

namespace fuzz {
namespace {

namespace fs = std::filesystem;

constexpr const char* kPlanted = "PLANTED.TXT";
constexpr const char* kPlantedText = "untouched";
constexpr const char* kLink = "LINK";
constexpr const char* kLinkTarget = "..";

void EmptyFolder(const std::string& path) {
  for (const auto& entry : fs::directory_iterator(path)) fs::remove_all(entry.path());
}

}  // namespace

Sandbox::Sandbox() {
  // Lives as long as the process.
  static const testsupport::TempFolder folder;
  m_strRoot = folder.Path();
  testsupport::WriteFile(Path(kPlanted), kPlantedText);
  fs::create_directory(Path("in"));
  fs::create_directory(Path("out"));
}

Sandbox& Sandbox::Instance() {
  static Sandbox sandbox;
  return sandbox;
}

void Sandbox::Clear() {
  m_put.clear();
  EmptyFolder(Path("in"));
  EmptyFolder(Path("out"));
  fs::create_symlink(kLinkTarget, Path("out") + "/" + kLink);
}

std::wstring Sandbox::Put(const std::string& name, std::string_view bytes) {
  const std::string path = Path("in") + "/" + name;
  testsupport::WriteFile(path, bytes);
  m_put[name] = bytes.size();
  return morvunp::platform::ToLibraryPath(path);
}

std::wstring Sandbox::Target() const { return morvunp::platform::ToLibraryPath(Path("out")); }

void Sandbox::CheckOutside() const {
  const auto entries = [](const std::string& path) {
    return std::distance(fs::directory_iterator(path), fs::directory_iterator());
  };
  Require(entries(m_strRoot) == 3, "nothing new beside the target folder");
  Require(testsupport::ReadFile(Path(kPlanted)) == kPlantedText, "the planted file is untouched");
  Require(fs::read_symlink(Path("out") + "/" + kLink) == kLinkTarget, "the link is untouched");
  Require(entries(Path("in")) == static_cast<std::ptrdiff_t>(m_put.size()),
          "nothing new beside the archive");
  for (const auto& [name, size] : m_put) {
    Require(fs::file_size(Path("in") + "/" + name) == size, "the archive keeps its size");
  }
}

std::size_t OpenDescriptors() {
  const fs::directory_iterator all("/proc/self/fd");
  return static_cast<std::size_t>(std::distance(begin(all), end(all)));
}

}  // namespace fuzz
