#include "hosts/common/unpackwindows.h"

#include "morvunp/messages.h"

namespace host {
namespace {

LPCWSTR TextOf(LPARAM lParam) { return reinterpret_cast<LPCWSTR>(lParam); }

}  // namespace

UnpackWindows::UnpackWindows(UnpackWatch& watch)
    : watch_(watch),
      progress_(morvunp::platform::MakeWindow(nullptr,
                                              [this](UINT message, WPARAM wParam, LPARAM lParam) {
                                                return OnProgress(message, wParam, lParam);
                                              })) {
  fileTree_.m_hWnd = morvunp::platform::MakeWindow(
      nullptr, [this](UINT message, WPARAM, LPARAM lParam) { return OnFileTree(message, lParam); });
}

UnpackWindows::~UnpackWindows() {
  DestroyWindow(progress_);
  DestroyWindow(fileTree_.m_hWnd);
}

LRESULT UnpackWindows::OnProgress(UINT message, WPARAM wParam, LPARAM lParam) {
  if (message != WM_UNPACK_PROGRESS) return 0;
  if (lParam != 0) watch_.FileStarts(TextOf(lParam));
  watch_.FileProgress(static_cast<unsigned>(wParam));
  if (onProgress) onProgress(static_cast<unsigned>(wParam));
  return 0;
}

LRESULT UnpackWindows::OnFileTree(UINT message, LPARAM lParam) {
  if (message != WM_UNPACK_FILETREE || lParam == 0) return 0;
  if (onCreated) onCreated(TextOf(lParam));
  return 0;
}

}  // namespace host
