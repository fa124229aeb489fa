// ISO 9660 images (ECMA-119) written byte by byte, for what no tool makes.
//
//   IsoBuilder builder;
//   IsoNode& file = builder.Root().AddFolder("DOCS").AddFile("A.TXT;1", "content");
//   std::string image = builder.Build();
//   image[builder.RecordOffsetOf(file) + 32] = 0;  // damage its identifier length
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "support/treenode.h"

namespace testsupport {

/// One directory record and what it leads to. The name is any bytes, at most
/// 221; a file's own version suffix is part of it.
struct IsoNode : TreeNode<IsoNode> {
  /// Recorded in place of the true length.
  std::optional<std::uint32_t> dataLength;

  // Where the last Build put what.
  /// Logical block and bytes of the extent.
  std::uint32_t location = 0;
  std::uint32_t length = 0;
  /// Byte offset of the record.
  std::size_t record = 0;
};

class IsoBuilder {
 public:
  explicit IsoBuilder(std::uint32_t blockSize = 2048) : m_nBlockSize(blockSize) {
    m_root.isFolder = true;
  }

  IsoNode& Root() { return m_root; }
  std::string Build();

  /// Of the primary descriptor. The terminator follows, and six sectors are free
  /// for more.
  static constexpr std::size_t kPrimaryOffset = 32768;

  // Where the last Build put things.
  std::uint32_t LocationOf(const IsoNode& node) const { return node.location; }
  std::size_t RecordOffsetOf(const IsoNode& node) const { return node.record; }
  /// Of the location in the record, and of the year.
  std::size_t LinkOffsetOf(const IsoNode& node) const { return node.record + 2; }
  std::size_t DateOffsetOf(const IsoNode& node) const { return node.record + 18; }
  std::size_t ContentOffsetOf(const IsoNode& node) const {
    return std::size_t{node.location} * m_nBlockSize;
  }

 private:
  std::uint32_t BlocksOf(std::size_t bytes) const;
  std::string FolderExtent(const IsoNode& folder, const IsoNode& parent) const;
  void Write(std::string& image, IsoNode& node, const IsoNode& parent) const;

  std::uint32_t m_nBlockSize;
  IsoNode m_root;
};

}  // namespace testsupport
