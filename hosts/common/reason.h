// Why something did not work, in words for the user.
#pragma once

#include <string>

namespace host {

/// English text that a host may translate, and a name that it must make safe
/// to show before it puts it in.
struct Reason {
  /// "%1" stands for `path`.
  std::string text{};
  /// In the library's form; from an archive, so it may hold anything.
  std::wstring path{};
  /// What `text` is the cause of; empty when it stands alone.
  std::string effect{};

  /// A fixed text; the tools for translators collect what this is called with.
  static Reason Of(const char* text) { return {text}; }

  bool operator==(const Reason&) const = default;
};

}  // namespace host
