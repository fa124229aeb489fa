// A dialog of the library as a real window.
#pragma once

#include <QDialog>
#include <map>

#include "morvunp/platform/framework.h"

class QLineEdit;

namespace desktop {

/// Turns dialog units, which follow the font, into pixels.
class DialogUnits {
 public:
  explicit DialogUnits(const QFont& font);

  QRect Pixels(const morvunp::platform::DialogRect& units) const;
  QSize Pixels(int width, int height) const;

 private:
  /// Pixels of 4 horizontal and 8 vertical units.
  int baseX_;
  int baseY_;
};

/// Laid out from the dialog's template. Its buttons press those of the model,
/// which decides when it has ended.
class LibraryDialog : public QDialog {
  Q_OBJECT

 public:
  LibraryDialog(CDialog& model, QWidget* parent);

  /// The id of the button that ended the dialog; IDCANCEL for Escape and for a
  /// closed window.
  UINT Pressed() const { return pressed_; }

  /// The widget of a control; null when there is none of this id.
  QWidget* Control(UINT id) const { return findChild<QWidget*>(NameOf(id)); }

 protected:
  void reject() override;
  void keyPressEvent(QKeyEvent* event) override;
  void showEvent(QShowEvent* event) override;

 private:
  static QString NameOf(UINT id) { return QString::number(id); }
  QWidget* MakeControl(const morvunp::platform::ControlTemplate& control, const QRect& place);
  QWidget* MakeButton(const morvunp::platform::ControlTemplate& control);
  QWidget* MakeText(const morvunp::platform::ControlTemplate& control, const QRect& place);
  QWidget* MakeIcon(const morvunp::platform::ControlTemplate& control, const QRect& place);
  QWidget* MakePasswordEdit(const morvunp::platform::ControlTemplate& control);
  void Press(UINT id);

  CDialog& model_;
  std::map<UINT, QLineEdit*> edits_;
  UINT pressed_ = IDCANCEL;
};

}  // namespace desktop
