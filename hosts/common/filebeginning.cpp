#include "hosts/common/filebeginning.h"

#include <fstream>

namespace host {

std::string BeginningOf(const std::string& path) {
  std::string bytes(8, '\0');
  std::ifstream file(path, std::ios::binary);
  file.read(bytes.data(), static_cast<std::streamsize>(bytes.size()));
  bytes.resize(static_cast<std::size_t>(file.gcount()));
  return bytes;
}

}  // namespace host
