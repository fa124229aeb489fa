// Makes an LZX cabinet of a folder, since no Debian package does: with the
// writer of the tests. Usage: makecab CABINET FOLDER
#include <filesystem>
#include <fstream>
#include <iterator>
#include <set>

#include "support/cabbuilder.h"

namespace fs = std::filesystem;

int main(int, char** arguments) {
  const fs::path folder = arguments[2];
  std::set<fs::path> paths;
  for (const auto& entry : fs::recursive_directory_iterator(folder)) {
    if (entry.is_regular_file()) paths.insert(entry.path());
  }
  testsupport::CabFolder content{testsupport::CabMethod::kLzx, {}, {}};
  content.lzx.windowBits = 21;
  content.lzx.blockSize = 1 << 17;
  for (const fs::path& path : paths) {
    std::ifstream file(path, std::ios::binary);
    std::string name = fs::relative(path, folder).string();
    for (char& c : name) c = c == '/' ? '\\' : c;
    content.files.push_back({name, {std::istreambuf_iterator<char>(file), {}}});
  }
  testsupport::CabBuilder builder;
  builder.folders.push_back(std::move(content));
  std::ofstream(arguments[1], std::ios::binary) << builder.Build();
}
