#include "hosts/desktop/librarydialog.h"

#include <QApplication>
#include <QFontMetrics>
#include <QFrame>
#include <QIcon>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QScreen>

#include "hosts/desktop/shown.h"

namespace desktop {
namespace {

using morvunp::platform::ControlKind;
using morvunp::platform::ControlTemplate;

/// "MS Shell Dlg" is no font: it stands for the one that the system's own
/// dialogs have.
QFont FontOf(const morvunp::platform::DialogTemplate& dialog) {
  const bool isShellFont = dialog.fontFace == L"MS Shell Dlg";
  QFont font = isShellFont ? QApplication::font() : QFont(QString::fromStdWString(dialog.fontFace));
  font.setPointSize(dialog.fontPoints);
  font.setWeight(QFont::Normal);
  return font;
}

}  // namespace

DialogUnits::DialogUnits(const QFont& font) {
  const QString letters = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz";
  const QFontMetrics metrics(font);
  baseX_ = (metrics.horizontalAdvance(letters) / 26 + 1) / 2;
  baseY_ = metrics.height();
}

QRect DialogUnits::Pixels(const morvunp::platform::DialogRect& units) const {
  return {QPoint(units.x * baseX_ / 4, units.y * baseY_ / 8), Pixels(units.width, units.height)};
}

QSize DialogUnits::Pixels(int width, int height) const {
  return {(width * baseX_ + 2) / 4, (height * baseY_ + 4) / 8};
}

LibraryDialog::LibraryDialog(CDialog& model, QWidget* parent)
    : QDialog(parent, Qt::Tool | Qt::CustomizeWindowHint | Qt::WindowTitleHint), model_(model) {
  const morvunp::platform::DialogTemplate& layout = model.Template();
  setWindowTitle(QString::fromStdWString(layout.caption));
  setFont(FontOf(layout));
  // Its texts are English whatever the language of the program.
  setLayoutDirection(Qt::LeftToRight);
  const DialogUnits units(font());
  setFixedSize(units.Pixels(layout.width, layout.height));
  for (const ControlTemplate& control : layout.controls) {
    QWidget* const widget = MakeControl(control, units.Pixels(control.rect));
    widget->setGeometry(units.Pixels(control.rect));
    if (control.kind == ControlKind::kSeparator) widget->setFixedHeight(2);
    if (control.id != 0) widget->setObjectName(NameOf(control.id));
  }
  // The first tab stop, which need not be the default button.
  for (QWidget* const widget : findChildren<QWidget*>(Qt::FindDirectChildrenOnly)) {
    if ((widget->focusPolicy() & Qt::TabFocus) == 0) continue;
    widget->setFocus();
    return;
  }
}

QWidget* LibraryDialog::MakeControl(const ControlTemplate& control, const QRect& place) {
  switch (control.kind) {
    case ControlKind::kPushButton:
    case ControlKind::kDefaultPushButton:
      return MakeButton(control);
    case ControlKind::kText:
    case ControlKind::kTextRight:
      return MakeText(control, place);
    case ControlKind::kIcon:
      return MakeIcon(control, place);
    case ControlKind::kPasswordEdit:
      return MakePasswordEdit(control);
    case ControlKind::kSeparator:
      break;
  }
  auto* const line = new QFrame(this);
  line->setFrameStyle(static_cast<int>(QFrame::HLine) | static_cast<int>(QFrame::Sunken));
  return line;
}

QWidget* LibraryDialog::MakeButton(const ControlTemplate& control) {
  auto* const button = new QPushButton(QString::fromStdWString(control.text), this);
  // Enter presses the button that has the focus, and else the default one.
  button->setAutoDefault(true);
  button->setDefault(control.kind == ControlKind::kDefaultPushButton);
  connect(button, &QPushButton::clicked, this, [this, id = control.id] { Press(id); });
  return button;
}

QWidget* LibraryDialog::MakeText(const ControlTemplate& control, const QRect& place) {
  const std::wstring text = control.id != 0 ? model_.ControlText(control.id) : control.text;
  const QString shown = ShownText(text.empty() ? control.text : text);
  auto* const label = new QLabel(this);
  label->setTextFormat(Qt::PlainText);
  label->setAlignment(Qt::AlignTop |
                      (control.kind == ControlKind::kTextRight ? Qt::AlignRight : Qt::AlignLeft));
  label->setText(fontMetrics().elidedText(shown, Qt::ElideMiddle, place.width()));
  if (label->text() != shown) label->setToolTip(AsToolTip(shown));
  label->setAccessibleName(shown);
  return label;
}

QWidget* LibraryDialog::MakeIcon(const ControlTemplate& control, const QRect& place) {
  auto* const label = new QLabel(this);
  label->setAlignment(Qt::AlignCenter);
  if (const auto* icon = reinterpret_cast<const QIcon*>(model_.ControlIcon(control.id))) {
    const int side = std::min(place.width(), place.height());
    label->setPixmap(icon->pixmap(QSize(side, side), devicePixelRatio()));
  }
  return label;
}

QWidget* LibraryDialog::MakePasswordEdit(const ControlTemplate& control) {
  auto* const edit = new QLineEdit(QString::fromStdWString(model_.ControlText(control.id)), this);
  edit->setEchoMode(QLineEdit::Password);
  edit->setTextMargins(0, 0, 0, 0);
  edits_[control.id] = edit;
  return edit;
}

void LibraryDialog::Press(UINT id) {
  for (const auto& [control, edit] : edits_) {
    model_.SetControlText(control, edit->text().toStdWString());
  }
  pressed_ = id;
  model_.Press(id);
  if (model_.Ended()) done(QDialog::Accepted);
}

void LibraryDialog::reject() {
  pressed_ = IDCANCEL;
  model_.PressEscape();
  if (model_.Ended()) done(QDialog::Rejected);
}

void LibraryDialog::keyPressEvent(QKeyEvent* event) {
  if (event->key() == Qt::Key_F1 && model_.PressHelp()) return;
  QDialog::keyPressEvent(event);
}

void LibraryDialog::showEvent(QShowEvent* event) {
  QDialog::showEvent(event);
  const QScreen* const monitor = parentWidget() != nullptr ? parentWidget()->screen() : screen();
  move(monitor->availableGeometry().center() - rect().center());
}

}  // namespace desktop
