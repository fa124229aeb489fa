#include "hosts/common/sevenzipfile.h"

#include <sys/resource.h>

#include <string_view>

#include "hosts/common/filebeginning.h"
#include "morvunp/platform/modules.h"
#include "morvunp/platform/text.h"

namespace host {
namespace {

constexpr std::string_view kProgram("MZ");
constexpr std::string_view kUnixProgram(
    "\x7F"
    "ELF");

/// Whether the library knows the name is its own affair; any other name would
/// only be refused.
bool IsNamedAsFirst(const std::wstring& path) {
  return path.ends_with(L"01") || path.ends_with(L"aa") || path.ends_with(L"AA");
}

}  // namespace

SevenZipTraits SevenZipTraitsOf(const std::wstring& path) {
  const std::string bytes = BeginningOf(morvunp::platform::ToNativePath(path));
  SevenZipTraits traits;
  traits.hasSignature = bytes.starts_with(kSevenZipSignature);
  traits.isFirstVolume = traits.hasSignature && IsNamedAsFirst(path);
  traits.mayBeOne =
      traits.hasSignature || bytes.starts_with(kProgram) || bytes.starts_with(kUnixProgram);
  return traits;
}

void AllowManyVolumes() {
  rlimit files{};
  if (getrlimit(RLIMIT_NOFILE, &files) != 0) return;
  files.rlim_cur = files.rlim_max;
  setrlimit(RLIMIT_NOFILE, &files);
}

bool HasSevenZipEngine() {
  const HMODULE module = LoadLibraryW(L"7zxa.dll");
  if (module != nullptr) FreeLibrary(module);
  return module != nullptr;
}

}  // namespace host
