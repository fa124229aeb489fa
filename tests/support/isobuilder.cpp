#include "support/isobuilder.h"

#include <algorithm>
#include <utility>

#include "support/bytes.h"

namespace testsupport {
namespace {

constexpr std::size_t kDescriptorSize = 2048;

/// Little-endian, then big-endian.
std::string Both(std::uint64_t value, std::size_t count) {
  const std::string little = Little(value, count);
  return little + std::string(little.rbegin(), little.rend());
}

}  // namespace

std::string MakeIsoDescriptor(std::uint8_t type, std::string_view standardIdentifier,
                              std::uint8_t version) {
  std::string descriptor(kDescriptorSize, '\0');
  Put(descriptor, 0, Little(type, 1));
  Put(descriptor, 1, standardIdentifier);
  Put(descriptor, 6, Little(version, 1));
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
    for (const auto& child : node->children) {
      if (child->isFolder) m_folders.push_back({child.get(), node});
    }
  }
}

std::string IsoBuilder::Record(const IsoNode& node, std::string_view identifier) const {
  const Place& place = m_places.at(&node);
  const unsigned plainFlags = (node.hidden ? 1U : 0U) | (node.isFolder ? kIsoFlagFolder : 0U);
  std::string record(1, '\0');
  record += Little(node.extendedAttributeBlocks, 1);
  record += Both(node.location.value_or(place.location), 4);
  record += Both(node.dataLength.value_or(place.length), 4);
  for (const std::uint8_t part : node.date) record += Little(part, 1);
  record += Little(node.flags.value_or(static_cast<std::uint8_t>(plainFlags)), 1);
  record += std::string(2, '\0') + Both(1, 2);
  record += Little(identifier.size(), 1);
  record += identifier;
  if (identifier.size() % 2 == 0) record.push_back('\0');
  record += node.systemUse;
  if (record.size() % 2 != 0) record.push_back('\0');
  Put(record, 0, Little(node.recordLength.value_or(static_cast<std::uint8_t>(record.size())), 1));
  if (node.recordLength.value_or(0) > record.size()) record.resize(*node.recordLength);
  return record;
}

std::string IsoBuilder::FolderExtent(const Folder& folder, std::size_t offset) {
  const std::uint32_t boundary = m_options.blockSize;
  std::string extent;
  const auto append = [&](const std::string& record) {
    if (extent.size() % boundary + record.size() > boundary) {
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
  dot(*folder.node, '\0');
  dot(*folder.parent, '\1');
  for (const auto& child : folder.node->children) {
    m_places[child.get()].record = append(Record(*child, child->name));
  }
  extent.resize(std::max<std::size_t>(BlocksOf(extent.size()), 1) * m_options.blockSize);
  return extent;
}

// Without path tables, which are for systems that have no memory for folders.
std::string IsoBuilder::Primary() const {
  std::string descriptor = MakeIsoDescriptor(1);
  Put(descriptor, 8, "SYSTEM");
  Put(descriptor, 40, "VOLUME");
  Put(descriptor, 80, Both(m_nNextBlock, 4));
  Put(descriptor, 120, Both(1, 2) + Both(1, 2) + Both(m_options.blockSize, 2));
  Put(descriptor, 156, Record(m_root, std::string_view("\0", 1)));
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

  // Lengths do not depend on places, so a first writing of each extent tells
  // how much room it needs.
  m_places[&m_root];
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
  for (const Folder& folder : m_folders) {
    Put(image, ContentOffsetOf(*folder.node), FolderExtent(folder, ContentOffsetOf(*folder.node)));
    for (const auto& child : folder.node->children) {
      if (!child->isFolder) Put(image, ContentOffsetOf(*child), child->content);
    }
  }
  m_places[&m_root].record = m_nPrimary + 156;
  std::vector<std::string> descriptors = m_options.descriptorsBefore;
  if (m_options.hasPrimary) descriptors.push_back(Primary());
  descriptors.insert(descriptors.end(), m_options.descriptorsAfter.begin(),
                     m_options.descriptorsAfter.end());
  descriptors.push_back(MakeIsoDescriptor(255));
  std::size_t offset = m_options.descriptorOffset;
  for (const std::string& descriptor : descriptors) {
    Put(image, offset, descriptor);
    offset += kDescriptorSize;
  }
  return image;
}

}  // namespace testsupport
