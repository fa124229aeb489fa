// What the nodes of images have in common.
#pragma once

#include <memory>
#include <string>
#include <vector>

namespace testsupport {

template <class Node>
struct TreeNode {
  Node& AddFile(const std::string& nodeName, const std::string& bytes = {}) {
    Node& node = *children.emplace_back(std::make_unique<Node>());
    node.name = nodeName;
    node.content = bytes;
    return node;
  }
  Node& AddFolder(const std::string& nodeName) {
    Node& node = AddFile(nodeName);
    node.isFolder = true;
    return node;
  }

  std::string name;
  bool isFolder = false;
  bool hidden = false;
  /// Of a file.
  std::string content;
  /// Of a folder, recorded in this order.
  std::vector<std::unique_ptr<Node>> children;
};

}  // namespace testsupport
