#include "support/isobuilder.h"

#include <algorithm>
#include <utility>

namespace testsupport {
namespace {

constexpr std::size_t kDescriptorSize = 2048;

std::string Bytes(std::uint64_t value, std::size_t count, bool bigEndian) {
  std::string bytes;
  for (std::size_t i = 0; i < count; ++i) {
    bytes.push_back(static_cast<char>(value >> (8 * i) & 0xFF));
  }
  if (bigEndian) std::reverse(bytes.begin(), bytes.end());
  return bytes;
}

std::string Both(std::uint64_t value, std::size_t count) {
  return Bytes(value, count, false) + Bytes(value, count, true);
}

void Put(std::string& target, std::size_t offset, std::string_view bytes) {
  if (target.size() < offset + bytes.size()) target.resize(offset + bytes.size());
  target.replace(offset, bytes.size(), bytes);
}

std::string Padded(std::string text, std::size_t length) {
  text.resize(length, ' ');
  return text;
}

}  // namespace

IsoNode& IsoNode::AddFile(std::string name, std::string bytes) {
  auto& node = *children.emplace_back(std::make_unique<IsoNode>());
  node.identifier = std::move(name);
  node.content = std::move(bytes);
  return node;
}

IsoNode& IsoNode::AddFolder(std::string name) {
  auto& node = *children.emplace_back(std::make_unique<IsoNode>());
  node.identifier = std::move(name);
  node.isFolder = true;
  return node;
}

std::string MakeIsoDescriptor(std::uint8_t type, std::string_view standardIdentifier,
                              std::uint8_t version) {
  std::string descriptor(kDescriptorSize, '\0');
  Put(descriptor, 0, Bytes(type, 1, false));
  Put(descriptor, 1, standardIdentifier);
  Put(descriptor, 6, Bytes(version, 1, false));
  return descriptor;
}

IsoBuilder::IsoBuilder() { m_root.isFolder = true; }

std::size_t IsoBuilder::ContentOffsetOf(const IsoNode& node) const {
  return (std::size_t{LocationOf(node)} + node.extendedAttributeBlocks) * m_options.blockSize;
}

std::uint32_t IsoBuilder::BlocksOf(std::size_t bytes) const {
  return static_cast<std::uint32_t>((bytes + m_options.blockSize - 1) / m_options.blockSize);
}

std::uint32_t IsoBuilder::Allocate(const IsoNode& node, std::uint32_t length) {
  const std::uint32_t location = m_nNextBlock;
  m_nNextBlock += node.extendedAttributeBlocks + BlocksOf(length);
  return location;
}

void IsoBuilder::ListFolders() {
  m_folders = {{&m_root, &m_root}};
  for (std::size_t i = 0; i < m_folders.size(); ++i) {
    const IsoNode* const node = m_folders[i].node;
    m_places[node].number = static_cast<std::uint16_t>(i + 1);
    for (const auto& child : node->children) {
      if (child->isFolder) m_folders.push_back({child.get(), node});
    }
  }
}

std::string IsoBuilder::PathTable(bool bigEndian) const {
  std::string table;
  for (const auto& [node, parent] : m_folders) {
    const std::string identifier = node == &m_root ? std::string(1, '\0') : node->identifier;
    table += Bytes(identifier.size(), 1, false);
    table += Bytes(node->extendedAttributeBlocks, 1, false);
    table += Bytes(m_places.at(node).location, 4, bigEndian);
    table += Bytes(m_places.at(parent).number, 2, bigEndian);
    table += identifier;
    if (identifier.size() % 2 != 0) table.push_back('\0');
  }
  return table;
}

std::string IsoBuilder::Record(const IsoNode& node, std::string_view identifier) const {
  const Place& place = m_places.at(&node);
  const unsigned plainFlags =
      (node.hidden ? kIsoFlagHidden : 0U) | (node.isFolder ? kIsoFlagFolder : 0U);
  std::string record(1, '\0');
  record += Bytes(node.extendedAttributeBlocks, 1, false);
  record += Both(node.location.value_or(place.location), 4);
  record += Both(node.dataLength.value_or(place.length), 4);
  for (const std::uint8_t part : node.date) record += Bytes(part, 1, false);
  record += Bytes(node.flags.value_or(static_cast<std::uint8_t>(plainFlags)), 1, false);
  record += Bytes(node.fileUnitSize, 1, false);
  record += Bytes(node.interleaveGap, 1, false);
  record += Both(node.volumeSequenceNumber, 2);
  record += Bytes(identifier.size(), 1, false);
  record += identifier;
  if (identifier.size() % 2 == 0) record.push_back('\0');
  record += node.systemUse;
  if (record.size() % 2 != 0) record.push_back('\0');
  Put(record, 0,
      Bytes(node.recordLength.value_or(static_cast<std::uint8_t>(record.size())), 1, false));
  if (node.recordLength.value_or(0) > record.size()) record.resize(*node.recordLength);
  return record;
}

std::string IsoBuilder::FolderExtent(const Folder& folder, std::size_t offset) {
  const std::uint32_t boundary = m_options.recordBoundary.value_or(m_options.blockSize);
  std::string extent;
  const auto append = [&](const std::string& record) {
    if (boundary != 0 && extent.size() % boundary + record.size() > boundary) {
      extent.resize((extent.size() / boundary + 1) * boundary);
    }
    extent += record;
    return offset + extent.size() - record.size();
  };
  // The records of the folder itself and of its parent tell the plain truth,
  // so that an override hits one record only.
  const auto dot = [&](const IsoNode& node, char identifier) {
    IsoNode plain;
    plain.isFolder = true;
    plain.extendedAttributeBlocks = node.extendedAttributeBlocks;
    m_places[&plain] = m_places.at(&node);
    append(Record(plain, {&identifier, 1}));
    m_places.erase(&plain);
  };
  if (!folder.node->omitDotRecords) {
    dot(*folder.node, '\0');
    dot(*folder.parent, '\1');
  }
  for (const auto& child : folder.node->children) {
    m_places[child.get()].record = append(Record(*child, child->identifier));
  }
  extent.resize(std::max<std::size_t>(BlocksOf(extent.size()), 1) * m_options.blockSize);
  return extent;
}

std::string IsoBuilder::Primary(std::uint32_t pathTableBytes, std::uint32_t little,
                                std::uint32_t big) const {
  const std::string noDate = std::string(16, '0') + '\0';
  std::string descriptor = MakeIsoDescriptor(1);
  Put(descriptor, 8, Padded(m_options.systemIdentifier, 32));
  Put(descriptor, 40, Padded(m_options.volumeIdentifier, 32));
  Put(descriptor, 80, Both(m_nNextBlock, 4));
  Put(descriptor, 120, Both(1, 2));
  Put(descriptor, 124, Both(1, 2));
  Put(descriptor, 128, Both(m_options.blockSize, 2));
  Put(descriptor, 132, Both(pathTableBytes, 4));
  Put(descriptor, 140, Bytes(little, 4, false));
  Put(descriptor, 148, Bytes(big, 4, true));
  Put(descriptor, 156, Record(m_root, std::string_view("\0", 1)));
  // Volume set, publisher, preparer, application and three file identifiers.
  Put(descriptor, 190, std::string(623, ' '));
  for (std::size_t i = 0; i < 4; ++i) Put(descriptor, 813 + 17 * i, noDate);
  Put(descriptor, 881, Bytes(1, 1, false));
  return descriptor;
}

std::string IsoBuilder::Build() {
  m_places.clear();
  ListFolders();
  const std::size_t descriptorCount = m_options.descriptorsBefore.size() +
                                      (m_options.hasPrimary ? 1U : 0U) +
                                      m_options.descriptorsAfter.size() + 1;
  m_nPrimary = m_options.descriptorOffset + m_options.descriptorsBefore.size() * kDescriptorSize;
  m_nNextBlock = BlocksOf(m_options.descriptorOffset + descriptorCount * kDescriptorSize);

  const auto pathTableBytes = static_cast<std::uint32_t>(PathTable(false).size());
  const std::uint32_t little = std::exchange(m_nNextBlock, m_nNextBlock + BlocksOf(pathTableBytes));
  const std::uint32_t big = std::exchange(m_nNextBlock, m_nNextBlock + BlocksOf(pathTableBytes));
  // Lengths do not depend on places, so a first writing of each extent tells
  // how much room it needs.
  for (const auto& [node, parent] : m_folders) {
    for (const auto& child : node->children) m_places[child.get()];
  }
  for (const Folder& folder : m_folders) {
    const auto length = static_cast<std::uint32_t>(FolderExtent(folder, 0).size());
    m_places[folder.node].length = length;
    m_places[folder.node].location = Allocate(*folder.node, length);
  }
  for (const auto& [node, parent] : m_folders) {
    for (const auto& child : node->children) {
      if (child->isFolder) continue;
      const auto length = static_cast<std::uint32_t>(child->content.size());
      m_places[child.get()].length = length;
      m_places[child.get()].location = Allocate(*child, length);
    }
  }

  std::string image(std::size_t{m_nNextBlock} * m_options.blockSize, '\0');
  Put(image, std::size_t{little} * m_options.blockSize, PathTable(false));
  Put(image, std::size_t{big} * m_options.blockSize, PathTable(true));
  for (const Folder& folder : m_folders) {
    Put(image, ContentOffsetOf(*folder.node), FolderExtent(folder, ContentOffsetOf(*folder.node)));
    for (const auto& child : folder.node->children) {
      if (!child->isFolder) Put(image, ContentOffsetOf(*child), child->content);
    }
  }
  m_places[&m_root].record = m_nPrimary + 156;
  std::vector<std::string> descriptors = m_options.descriptorsBefore;
  if (m_options.hasPrimary) descriptors.push_back(Primary(pathTableBytes, little, big));
  descriptors.insert(descriptors.end(), m_options.descriptorsAfter.begin(),
                     m_options.descriptorsAfter.end());
  if (m_options.hasTerminator) descriptors.push_back(MakeIsoDescriptor(255));
  std::size_t offset = m_options.descriptorOffset;
  for (const std::string& descriptor : descriptors) {
    Put(image, offset, descriptor);
    offset += kDescriptorSize;
  }
  return image;
}

}  // namespace testsupport
