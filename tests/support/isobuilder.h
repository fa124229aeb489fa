// ISO 9660 images written byte by byte, for what no tool makes.
//
//   IsoBuilder builder;
//   IsoNode& docs = builder.Root().AddFolder("DOCS");
//   IsoNode& file = docs.AddFile("A.TXT;1", "content");
//   file.hidden = true;
//   std::string image = builder.Build();
//   image[builder.RecordOffsetOf(file) + 32] = 0;  // damage its identifier length
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "support/treenode.h"

namespace testsupport {

inline constexpr std::uint8_t kIsoFlagFolder = 0x02;
inline constexpr std::uint8_t kIsoFlagMultiExtent = 0x80;

/// Years since 1900, month, day, hour, minute, second, quarter hours from GMT.
using IsoDate = std::array<std::uint8_t, 7>;
inline constexpr IsoDate kIsoDefaultDate = {101, 2, 3, 4, 5, 6, 0};

/// One directory record and what it leads to. The name is any bytes, at most
/// 255; a file's own version suffix is part of it. An override changes what is
/// written into the record, never where things are laid out.
struct IsoNode : TreeNode<IsoNode> {
  IsoDate date = kIsoDefaultDate;
  /// Blocks before the content that hold an extended attribute record.
  std::uint8_t extendedAttributeBlocks = 0;
  /// Bytes after the identifier and its padding.
  std::string systemUse;

  /// The whole flags byte, in place of the hidden and folder bits.
  std::optional<std::uint8_t> flags;
  std::optional<std::uint32_t> location;
  std::optional<std::uint32_t> dataLength;
  /// The first byte of the record. The record after it stands where this
  /// length says when it is longer than the truth, else right behind.
  std::optional<std::uint8_t> recordLength;
};

struct IsoOptions {
  std::uint32_t blockSize = 2048;
  /// Where the descriptors start.
  std::size_t descriptorOffset = 32768;
  /// Whole descriptors around the primary one; see MakeIsoDescriptor.
  std::vector<std::string> descriptorsBefore;
  std::vector<std::string> descriptorsAfter;
  bool hasPrimary = true;
};

/// 2048 bytes that are zero behind type, standard identifier and version.
std::string MakeIsoDescriptor(std::uint8_t type, std::string_view standardIdentifier = "CD001",
                              std::uint8_t version = 1);

class IsoBuilder {
 public:
  IsoBuilder();

  IsoNode& Root() { return m_root; }
  IsoOptions& Options() { return m_options; }

  /// Can be repeated after changes, for instance to set a location that the
  /// first run told.
  std::string Build();

  // Where the last Build put things.
  /// Logical block of a node's extent.
  std::uint32_t LocationOf(const IsoNode& node) const { return m_places.at(&node).location; }
  /// Byte offset of a node's content, behind its extended attribute record.
  std::size_t ContentOffsetOf(const IsoNode& node) const;
  /// Byte offset of the record that names the node; for the root, of the one
  /// in the primary descriptor.
  std::size_t RecordOffsetOf(const IsoNode& node) const { return m_places.at(&node).record; }
  std::size_t PrimaryOffset() const { return m_nPrimary; }

 private:
  struct Place {
    std::uint32_t location = 0;
    /// Bytes of content or, for a folder, of its whole extent.
    std::uint32_t length = 0;
    std::size_t record = 0;
  };
  struct Folder {
    const IsoNode* node;
    const IsoNode* parent;
  };

  void ListFolders();
  std::uint32_t BlocksOf(std::size_t bytes) const;
  std::uint32_t Allocate(const IsoNode& node, std::uint32_t length);
  std::string Record(const IsoNode& node, std::string_view identifier) const;
  std::string FolderExtent(const Folder& folder, std::size_t offset);
  std::string Primary() const;

  IsoNode m_root;
  IsoOptions m_options;
  /// Breadth first, the root first.
  std::vector<Folder> m_folders;
  std::unordered_map<const IsoNode*, Place> m_places;
  std::uint32_t m_nNextBlock = 0;
  std::size_t m_nPrimary = 0;
};

}  // namespace testsupport
