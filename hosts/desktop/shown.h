// What comes from archives and from the library, made fit for a window.
//
// Names come from strangers: characters that would drive the layout or reverse
// a name are shown as escapes. Nothing here is ever rich text.
#pragma once

#include <QString>
#include <string>
#include <string_view>

#include "hosts/common/reason.h"

namespace desktop {

QString ShownName(std::wstring_view name);
/// A path in the library's form, with "/" between its components.
QString ShownPath(std::wstring_view path);
/// Text of the library; line ends stay.
QString ShownText(std::wstring_view text);
/// A path of this system.
QString ShownNativePath(std::string_view path);
/// Translated where there is a translation.
QString ShownReason(const host::Reason& reason);

/// For a tool tip, which would take other text for rich text.
QString AsToolTip(const QString& text);

}  // namespace desktop
