#include "morvunp/platform/modules.h"

#include <dlfcn.h>
#include <unistd.h>

#include <array>
#include <climits>
#include <cstdlib>
#include <cwchar>
#include <string>
#include <vector>

#include "morvunp/platform/components.h"
#include "morvunp/platform/text.h"

namespace platform = morvunp::platform;

namespace {

/// Where this system keeps a module when it does not stand beside the library.
struct ModulePlace {
  LPCWSTR name;
  /// Absolute, or relative to the library's folder.
  const char* path;
};

constexpr std::array<ModulePlace, 7> kPlaces{{
    {L"Cabinet.dll", MORVUNP_MODULE_FOLDER "/Cabinet.dll"},
    {L"7zxa.dll", "/usr/lib/7zip/7z.so"},
    {L"7zxa.dll", "/usr/lib/p7zip/7z.so"},
    {L"7zxa.dll", "/usr/libexec/7zip/7z.so"},
    {L"7zxa.dll", "/usr/lib64/7zip/7z.so"},
    {L"7zxa.dll", "/usr/local/lib/7zip/7z.so"},
    {L"7zxa.dll", "/usr/libexec/p7zip/7za.so"},
}};

using GetModuleProp = HRESULT (*)(PROPID, PROPVARIANT*);

/// The 7-Zip engine is spoken to through plain tables of functions. One that
/// has destructors in them (property 0 tells), or is too old to say, would
/// crash.
bool HasPlainInterfaces(void* module) {
  const auto ask = reinterpret_cast<GetModuleProp>(dlsym(module, "GetModuleProp"));
  PROPVARIANT type;
  return ask != nullptr && ask(0, &type) == S_OK && type.vt == VT_UI4 && type.ulVal == 0;
}

bool IsUsable(LPCWSTR name, void* module) {
  return _wcsicmp(name, L"7zxa.dll") != 0 || HasPlainInterfaces(module);
}

/// Lets a loaded module stay for as long as the process runs. The 7-Zip engine
/// sets the umask to 0 for a moment whenever it is loaded, and the files of all
/// threads are created under it: once is enough.
void Keep(const char* path) {
  void* const module = dlopen(path, RTLD_NOW | RTLD_NOLOAD | RTLD_NODELETE);
  if (module != nullptr) dlclose(module);
}

std::string RealPath(const char* path) {
  std::array<char, PATH_MAX> real{};
  return realpath(path, real.data()) != nullptr ? real.data() : std::string();
}

/// The folder of the file that this code was loaded from, with a separator.
std::string FolderOfLibrary() {
  Dl_info info{};
  dladdr(reinterpret_cast<void*>(&LoadLibraryW), &info);
  const std::string name = info.dli_fname != nullptr ? info.dli_fname : "";
  // A program is named as it was called, which may leave its folder out.
  const bool hasFolder = name.find('/') != std::string::npos;
  const std::string path = RealPath(hasFolder ? name.c_str() : "/proc/self/exe");
  return path.substr(0, path.rfind('/') + 1);
}

/// Found out while loading, before anybody can change the current folder.
const std::string libraryFolder = FolderOfLibrary();

std::vector<std::string> PlacesOf(LPCWSTR name) {
  if (std::wcschr(name, L'\\') != nullptr) return {platform::ToNativePath(name)};
  std::vector<std::string> paths{libraryFolder + platform::ToNativePath(name)};
  for (const ModulePlace& place : kPlaces) {
    if (_wcsicmp(place.name, name) != 0) continue;
    paths.push_back(place.path[0] == '/' ? place.path : libraryFolder + place.path);
  }
  return paths;
}

}  // namespace

HMODULE LoadLibraryW(LPCWSTR name) {
  for (const std::string& path : PlacesOf(name)) {
    void* const module = dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL);
    if (module == nullptr) continue;
    if (IsUsable(name, module)) {
      Keep(path.c_str());
      return static_cast<HMODULE>(module);
    }
    dlclose(module);
  }
  SetLastError(ERROR_MOD_NOT_FOUND);
  return nullptr;
}

FARPROC GetProcAddress(HMODULE module, LPCSTR name) {
  void* const function = dlsym(module, name);
  if (function == nullptr) SetLastError(ERROR_PROC_NOT_FOUND);
  return reinterpret_cast<FARPROC>(function);
}

BOOL FreeLibrary(HMODULE module) { return dlclose(module) == 0 ? TRUE : FALSE; }
