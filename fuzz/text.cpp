// Names and times on their way from an archive to the system: decoding, the
// path gate, the place of an item, and the two forms of a path.
#include "morvunp/platform/text.h"
#include "cab/narrowpath.h"
#include "frame/ansitext.h"
#include "frame/itempath.h"
#include "fuzz/input.h"
#include "fuzz/target.h"
#include "morvunp/dostime.h"
#include "morvunp/outputplace.h"
#include "morvunp/platform/platform.h"
#include "output/pathgate.h"

namespace fuzz {
namespace {

const char* const kCodePages[] = {"UTF-8",  "CP932",  "CP1252", "CP1251",    "CP936",
                                  "EUC-JP", "CP1255", "CP866",  "ISO8859-7", "GB18030"};

/// A path of this system that leaves `folder` when it is joined to it.
bool Leaves(std::string_view native) {
  for (std::size_t start = 0; start <= native.size();) {
    const std::size_t end = std::min(native.find('/', start), native.size());
    const std::string_view component = native.substr(start, end - start);
    if (component.empty() || component == "." || component == "..") return true;
    start = end + 1;
  }
  return native.find('\0') != native.npos;
}

void CheckPlace(const std::wstring& path, bool isFolder) {
  constexpr const char* kStay = "what passes the gate stays in the target folder";
  const std::wstring target = L"\\t\\out";
  for (BYTE bits = 0; bits < 4; ++bits) {
    INIUNPACK settings;
    settings.bUnpackFileNoPath = settings.bUnpackArchiveNoPaths = bits & 1;
    settings.bUnpackFolderRelative = bits >> 1;
    const std::wstring top = path.substr(0, path.find(morvunp::frame::kSeparator));
    for (const auto& place : {std::optional(morvunp::PlaceOfFile(settings, path, target)),
                              morvunp::PlaceInFolderRun(settings, top, path, isFolder, target),
                              morvunp::PlaceInArchiveRun(settings, path, isFolder, target)}) {
      if (!place) continue;
      const std::string native = morvunp::platform::ToNativePath(place->Path());
      Require(native.starts_with("/t/out"), kStay);
      Require(native == "/t/out" || !Leaves(native.substr(7)), kStay);
    }
  }
}

void CheckItem(const std::wstring& path) {
  const std::wstring name(morvunp::frame::NameOf(path));
  morvunp::frame::ExtensionOf(path);
  morvunp::frame::TitleOf(name);
  if (!morvunp::IsSafeItem(path, name)) return;
  Require(!Leaves(morvunp::platform::ToNativePath(path)), "the gate refuses what leaves a folder");
  CheckPlace(path, false);
  CheckPlace(path, true);
}

void CheckTimes(Input input) {
  const auto dateTime = static_cast<DWORD>(input.Number(4));
  Require(morvunp::TimeOfDosDateTime(dateTime).value_or(0) >= 0,
          "no archive's time is before 1970");
  const FILETIME time{static_cast<DWORD>(input.Number(4)), static_cast<DWORD>(input.Number(4))};
  FILETIME local;
  WORD date = 0;
  WORD dosTime = 0;
  if (FileTimeToLocalFileTime(&time, &local) == FALSE) return;
  if (CoFileTimeToDosDateTime(&local, &date, &dosTime) == FALSE) return;
  FILETIME back;
  Require(DosDateTimeToFileTime(date, dosTime, &back) != FALSE, "a made MS-DOS time is a time");
}

}  // namespace

void RunText(std::string_view bytes) {
  Input input(bytes);
  const char* const codePage = kCodePages[input.Number(1) % std::size(kCodePages)];
  Require(morvunp::platform::SetAnsiCodePage(codePage), "the system knows the code page");
  CheckTimes(input);
  const std::string_view raw = input.Rest();
  const std::wstring decoded = morvunp::frame::DecodeAnsi(raw);
  Require(decoded.empty() == raw.empty(), "no name is lost");
  CheckItem(decoded);
  morvunp::cab::WidePath(raw);

  const std::wstring path = morvunp::platform::ToLibraryPath(raw);
  Require(morvunp::platform::ToNativePath(path) == raw, "a path of the system comes back");
  Require(morvunp::cab::WidePath(morvunp::cab::NarrowPath(path)) == path,
          "a narrowed path comes back");
  morvunp::platform::ToNativeText(decoded);
  morvunp::platform::SetAnsiCodePage("");
}

std::vector<std::string> TextSeeds() {
  std::vector<std::string> seeds;
  for (std::size_t i = 0; i < std::size(kCodePages); ++i) {
    const std::string codePage = NumberBytes(i, 1);
    seeds.push_back(codePage + "A\\..\\C:\\d/e.txt");
    seeds.push_back(codePage +
                    "\x95\x5C\\\xC3\xBC\xE8\xA1\xA8\x01"
                    "0000000a\xFF\x80");
  }
  return seeds;
}

}  // namespace fuzz
