// The two windows that the library talks to while it unpacks.
#pragma once

#include <functional>
#include <string_view>

#include "hosts/common/unpackwatch.h"
#include "morvunp/platform/framework.h"

namespace host {

/// Hands the library's messages to the watch, which must outlive the windows.
class UnpackWindows {
 public:
  explicit UnpackWindows(UnpackWatch& watch);
  ~UnpackWindows();
  UnpackWindows(const UnpackWindows&) = delete;
  UnpackWindows& operator=(const UnpackWindows&) = delete;

  HWND Progress() const { return progress_; }
  CWnd* FileTree() { return &fileTree_; }

  /// Called after the watch was told, with the percentage of the file in hand.
  std::function<void(unsigned percentage)> onProgress;
  /// A file was written or a folder created at this path of the library.
  std::function<void(std::wstring_view path)> onCreated;

 private:
  LRESULT OnProgress(UINT message, WPARAM wParam, LPARAM lParam);
  LRESULT OnFileTree(UINT message, LPARAM lParam);

  UnpackWatch& watch_;
  HWND progress_;
  CWnd fileTree_;
};

}  // namespace host
