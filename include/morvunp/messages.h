// The private window messages between the library and its host.
//
// Texts that lParam points to belong to the library and are valid only while
// the message is being handled.
#pragma once

#include "platform/platform.h"

/// Sent to the progress dialog. wParam: percentage of the current file.
/// lParam: 0, or the name of the file that starts (zero-terminated).
inline constexpr UINT WM_UNPACK_PROGRESS = WM_USER + 100;

/// Posted by the host to its progress dialog, or a control of it, to ask for a
/// stop; the library then asks "Interrupt the unpack?".
inline constexpr UINT WM_UNPACK_STOP = WM_USER + 101;

/// Sent to the file-tree window. lParam: full path of a file that was written
/// or a folder that was created (zero-terminated).
inline constexpr UINT WM_UNPACK_FILETREE = WM_USER + 102;
