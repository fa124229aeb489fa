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

std::optional<WrittenFile::Content> ContentOf(int descriptor) {
  thread_local std::vector<char> block(kBlock);
  WrittenFile::Content content;
  for (;;) {
    const ssize_t result = read(descriptor, block.data(), block.size());
    if (result < 0) return std::nullopt;
    const auto length = static_cast<std::size_t>(result);
    content.crc = libdeflate_crc32(content.crc, block.data(), length);
    content.size += length;
    // Only the end of a regular file gives less than was asked for.
    if (length < block.size()) return content;
  }
}

}  // namespace

std::uint64_t WrittenFile::Size() const {
  struct stat status {};
  if (lstat(platform::ToNativePath(path_).c_str(), &status) != 0) return 0;
  return static_cast<std::uint64_t>(status.st_size);
}

std::optional<WrittenFile::Content> WrittenFile::Read() const {
  const int descriptor =
      open(platform::ToNativePath(path_).c_str(), O_RDONLY | O_NOFOLLOW | O_CLOEXEC);
  if (descriptor < 0) return std::nullopt;
  const auto content = ContentOf(descriptor);
  close(descriptor);
  return content;
}

}  // namespace host
