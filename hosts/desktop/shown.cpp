#include "hosts/desktop/shown.h"

#include <QCoreApplication>

#include "hosts/common/escape.h"
#include "morvunp/platform/text.h"

namespace desktop {
namespace {

enum class Form { kName, kPath, kText };

QString Shown(std::wstring_view text, Form form) {
  QString shown;
  shown.reserve(static_cast<qsizetype>(text.size()));
  for (const wchar_t c : text) {
    if (c == L'\\' && form == Form::kPath) {
      shown += u'/';
    } else if (c == L'\n' && form == Form::kText) {
      shown += u'\n';
    } else if (host::NeedsEscape(c)) {
      shown += QString::fromStdString(host::EscapeOf(c));
    } else {
      shown += QStringView(QChar::fromUcs4(static_cast<char32_t>(c)));
    }
  }
  return shown;
}

QString Translated(const std::string& text) {
  return QCoreApplication::translate("host::Reason", text.c_str());
}

}  // namespace

QString ShownName(std::wstring_view name) { return Shown(name, Form::kName); }

QString ShownPath(std::wstring_view path) { return Shown(path, Form::kPath); }

QString ShownText(std::wstring_view text) { return Shown(text, Form::kText); }

QString ShownNativePath(std::string_view path) {
  return ShownPath(morvunp::platform::ToLibraryPath(path));
}

QString ShownReason(const host::Reason& reason) {
  const QString text = Translated(reason.text).replace("%1", ShownPath(reason.path));
  return reason.effect.empty() ? text : Translated(reason.effect) + ": " + text;
}

QString AsToolTip(const QString& text) { return "<p>" + text.toHtmlEscaped() + "</p>"; }

}  // namespace desktop
