// What the library and its host say to each other: the private window messages
// and the two dialogs, by the numbers of their templates and controls.
//
// Texts that lParam points to belong to the library and are valid only while
// the message is being handled.
#pragma once

#include "morvunp/platform/platform.h"

/// Sent to the progress dialog. wParam: percentage of the current file.
/// lParam: 0, or the name of the file that starts (zero-terminated).
inline constexpr UINT WM_UNPACK_PROGRESS = WM_USER + 100;

/// Posted by the host to its progress dialog, or a control of it, to ask for a
/// stop; the library then asks "Interrupt the unpack?".
inline constexpr UINT WM_UNPACK_STOP = WM_USER + 101;

/// Sent to the file-tree window. lParam: full path of a file that was written
/// or a folder that was created (zero-terminated).
inline constexpr UINT WM_UNPACK_FILETREE = WM_USER + 102;

namespace morvunp {

/// "Confirm File Replace": may an existing file be replaced? The four buttons,
/// and texts and icons of both files. Its default button is "No".
inline constexpr UINT kReplaceDialog = 1001;
inline constexpr UINT kReplaceCancel = 1001;
inline constexpr UINT kReplaceNo = 1002;
inline constexpr UINT kReplaceYes = 1003;
inline constexpr UINT kReplaceYesToAll = 1004;
inline constexpr UINT kReplaceDefault = kReplaceNo;
inline constexpr UINT kReplaceMessage = 1005;
inline constexpr UINT kReplaceName = 1006;
inline constexpr UINT kReplaceOldSize = 1007;
inline constexpr UINT kReplaceOldModified = 1008;
inline constexpr UINT kReplaceNewSize = 1009;
inline constexpr UINT kReplaceNewModified = 1010;
inline constexpr UINT kReplaceOldIcon = 1011;
inline constexpr UINT kReplaceNewIcon = 1012;

/// "Enter Password": one masked line, OK (IDOK, the default) and Cancel
/// (IDCANCEL).
inline constexpr UINT kPasswordDialog = 1014;
inline constexpr UINT kPasswordEdit = 1013;

}  // namespace morvunp
