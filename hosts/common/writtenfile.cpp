#include "hosts/common/writtenfile.h"

#include <fcntl.h>
#include <libdeflate.h>
#include <sys/stat.h>
#include <unistd.h>

#include <vector>

#include "platform/text.h"

namespace host {
namespace {

constexpr std::size_t kBlock = std::size_t{256} * 1024;

std::optional<std::uint32_t> CrcOf(int descriptor) {
  static std::vector<char> block(kBlock);
  std::uint32_t crc = 0;
  for (;;) {
    const ssize_t read = ::read(descriptor, block.data(), block.size());
    if (read < 0) return std::nullopt;
    if (read == 0) return crc;
    crc = libdeflate_crc32(crc, block.data(), static_cast<std::size_t>(read));
  }
}

}  // namespace

std::uint64_t WrittenFile::Size() const {
  struct stat status {};
  if (lstat(platform::ToNativePath(path_).c_str(), &status) != 0) return 0;
  return static_cast<std::uint64_t>(status.st_size);
}

std::optional<std::uint32_t> WrittenFile::Crc() const {
  const int descriptor =
      open(platform::ToNativePath(path_).c_str(), O_RDONLY | O_NOFOLLOW | O_CLOEXEC);
  if (descriptor < 0) return std::nullopt;
  const auto crc = CrcOf(descriptor);
  close(descriptor);
  return crc;
}

}  // namespace host
