// The two windows that the library talks to while it unpacks.
#pragma once

#include "platform/framework.h"
#include "progressline.h"
#include "unpackwatch.h"

namespace terminal {

/// Hands the library's messages to the watch and keeps the progress line up
/// to date. Both must outlive the windows.
class UnpackWindows {
 public:
  UnpackWindows(UnpackWatch& watch, ProgressLine& line);
  ~UnpackWindows();
  UnpackWindows(const UnpackWindows&) = delete;
  UnpackWindows& operator=(const UnpackWindows&) = delete;

  HWND Progress() const { return progress_; }
  CWnd* FileTree() { return &fileTree_; }

 private:
  LRESULT OnProgress(UINT message, WPARAM wParam, LPARAM lParam);
  LRESULT OnFileTree(UINT message, LPARAM lParam);

  UnpackWatch& watch_;
  ProgressLine& line_;
  HWND progress_;
  CWnd fileTree_;
};

}  // namespace terminal
