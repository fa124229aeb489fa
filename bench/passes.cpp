// One pass over an archive, by the library: what several items cost beside one,
// and what a test costs beside the writing.
//
//   passes last|six|test|write ARCHIVE FOLDER
//
// "six" takes six files spread over the archive, the last one among them.
#include <cstring>
#include <iostream>
#include <set>
#include <string>

#include "morvunp/morvunp.h"

namespace {

class Drop : public morvunp::ItemSink {
 public:
  void Begin(const morvunp::RoutedItem&) override {}
  bool Write(const void*, std::size_t) override { return true; }
  bool End(const morvunp::ItemReport& report) override {
    return report.result == morvunp::ItemResult::kIntact;
  }
};

template <class U>
int Pass(const std::string& kind, const std::string& path, const std::string& folder) {
  U unpacker;
  if (!unpacker.OpenArchive(morvunp::platform::ToLibraryPath(path))) return 2;
  std::set<ULONGLONG> wanted;
  if (kind == "last" || kind == "six") {
    std::vector<ULONGLONG> files;
    if (!unpacker.FindFile()) return 2;
    morvunp::WalkItems<typename U::FullInfo>(unpacker, [&](const auto& record) {
      const bool isFolder = record.strName.empty();
      if (!isFolder) files.push_back(unpacker.GetPosition());
      return true;
    });
    const std::size_t count = kind == "six" ? 6 : 1;
    for (std::size_t i = 0; i < count; ++i) {
      wanted.insert(files.at(files.size() - 1 - i * (files.size() - 1) / 6));
    }
  } else if (!unpacker.FindFile()) {
    return 2;
  }
  const std::wstring target = morvunp::platform::ToLibraryPath(folder);
  Drop drop;
  const bool isDone = unpacker.UnpackItems(target, [&](const morvunp::RoutedItem& item) {
    if (kind == "test") return morvunp::Route::Into(drop);
    if (!wanted.empty() && item.position > *wanted.rbegin()) return morvunp::Route::End();
    if (!wanted.empty() && !wanted.contains(item.position)) return morvunp::Route::PassOver();
    const std::wstring whole = target + L'\\' + std::wstring(item.path);
    const std::size_t name = whole.rfind(L'\\');
    if (item.isFolder) return morvunp::Route::To({whole, {}});
    return morvunp::Route::To({whole.substr(0, name), whole.substr(name + 1)});
  });
  return isDone ? 0 : 1;
}

}  // namespace

int main(int count, char** arguments) {
  if (count != 4) return 2;
  const std::string archive = arguments[2];
  if (archive.ends_with(".7z")) return Pass<C7zUnpacker>(arguments[1], archive, arguments[3]);
  if (archive.ends_with(".cab")) return Pass<CCabUnpacker>(arguments[1], archive, arguments[3]);
  if (archive.ends_with(".rar")) return Pass<CRarUnpacker>(arguments[1], archive, arguments[3]);
  return Pass<CIsoUnpacker>(arguments[1], archive, arguments[3]);
}
