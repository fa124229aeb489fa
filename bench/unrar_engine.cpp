// Extracts an archive with the UnRAR library alone and a callback that does
// nothing: what the engine itself costs. Arguments: archive, output folder.
#define _UNIX
#include <clocale>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <unrar/dll.hpp>

namespace {

int DoNothing(UINT, LPARAM, LPARAM, LPARAM) { return 0; }

std::wstring WideOf(const char* text) {
  std::wstring wide(std::mbstowcs(nullptr, text, 0), L'\0');
  std::mbstowcs(wide.data(), text, wide.size());
  return wide;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 3) return 2;
  std::setlocale(LC_ALL, "C.UTF-8");
  std::wstring archive = WideOf(argv[1]);
  std::wstring folder = WideOf(argv[2]);
  RAROpenArchiveDataEx request{};
  request.ArcNameW = archive.data();
  request.OpenMode = RAR_OM_EXTRACT;
  void* const handle = RAROpenArchiveEx(&request);
  if (handle == nullptr) return 1;
  RARSetCallback(handle, DoNothing, 0);
  RARHeaderDataEx header{};
  int code = 0;
  while ((code = RARReadHeaderEx(handle, &header)) == 0) {
    code = RARProcessFileW(handle, RAR_EXTRACT, folder.data(), nullptr);
    if (code != 0) return code;
  }
  RARCloseArchive(handle);
  return code == ERAR_END_ARCHIVE ? 0 : code;
}
