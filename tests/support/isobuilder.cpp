#include "support/isobuilder.h"

#include "support/bytes.h"

namespace testsupport {
namespace {

/// Little-endian, then big-endian.
std::string Both(std::uint64_t value, std::size_t count) {
  const std::string little = Little(value, count);
  return little + std::string(little.rbegin(), little.rend());
}

/// ECMA-119 9.1. The date is 2001-02-03, 04:05:06, five hours east of Greenwich.
std::string Record(const IsoNode& node, std::string_view identifier) {
  std::string record(2, '\0');
  record += Both(node.location, 4);
  record += Both(node.dataLength.value_or(node.length), 4);
  record += "\x65\2\3\4\5\6\x14";
  record += static_cast<char>((node.hidden ? 1 : 0) | (node.isFolder ? 2 : 0));
  record += std::string(2, '\0') + Both(1, 2) + Little(identifier.size(), 1);
  record += identifier;
  if (record.size() % 2 != 0) record += '\0';
  record[0] = static_cast<char>(record.size());
  return record;
}

}  // namespace

std::uint32_t IsoBuilder::BlocksOf(std::size_t bytes) const {
  return static_cast<std::uint32_t>((bytes + m_nBlockSize - 1) / m_nBlockSize);
}

std::string IsoBuilder::FolderExtent(const IsoNode& folder, const IsoNode& parent) const {
  std::string extent;
  const auto append = [&](const IsoNode& node, std::string_view identifier) {
    const std::string record = Record(node, identifier);
    if (extent.size() % m_nBlockSize + record.size() > m_nBlockSize) {
      extent.resize(std::size_t{BlocksOf(extent.size())} * m_nBlockSize);
    }
    extent += record;
    return ContentOffsetOf(folder) + extent.size() - record.size();
  };
  append(folder, {"\0", 1});
  append(parent, "\1");
  for (const auto& child : folder.children) child->record = append(*child, child->name);
  extent.resize(std::size_t{BlocksOf(extent.size())} * m_nBlockSize);
  return extent;
}

void IsoBuilder::Write(std::string& image, IsoNode& node, const IsoNode& parent) const {
  const auto data = [&] { return node.isFolder ? FolderExtent(node, parent) : node.content; };
  // The length of a folder does not depend on the places of what is in it.
  node.length = static_cast<std::uint32_t>(data().size());
  node.location = BlocksOf(image.size());
  image.resize(ContentOffsetOf(node) + std::size_t{BlocksOf(node.length)} * m_nBlockSize);
  for (const auto& child : node.children) Write(image, *child, node);
  Put(image, ContentOffsetOf(node), data());
}

// Without path tables, which are for systems that have no memory for folders.
std::string IsoBuilder::Build() {
  std::string image(kPrimaryOffset + std::size_t{8} * 2048, '\0');
  Write(image, m_root, m_root);
  Put(image, kPrimaryOffset, "\1CD001\1");
  Put(image, kPrimaryOffset + 80, Both(BlocksOf(image.size()), 4));
  Put(image, kPrimaryOffset + 120, Both(1, 2) + Both(1, 2) + Both(m_nBlockSize, 2));
  Put(image, kPrimaryOffset + 156, Record(m_root, {"\0", 1}));
  Put(image, kPrimaryOffset + 2048,
      "\xFF"
      "CD001\1");
  return image;
}

}  // namespace testsupport
