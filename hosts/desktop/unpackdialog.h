// Asks where to unpack to, and how.
#pragma once

#include <QDialog>
#include <array>

#include "hosts/desktop/options.h"

class QCheckBox;
class QLineEdit;

namespace desktop {

class UnpackDialog : public QDialog {
  Q_OBJECT

 public:
  /// `what` names what is going to be unpacked.
  UnpackDialog(const QString& what, const Options& options, QWidget* parent);

  /// What was chosen.
  Options Chosen() const;

 protected:
  /// Only with a folder that can be written to.
  void accept() override;

 private:
  void Browse();
  QCheckBox* AddCheckBox(const QString& text, BYTE INIUNPACK::*field, const INIUNPACK& settings);

  struct Box {
    QCheckBox* box;
    BYTE INIUNPACK::*field;
  };
  QLineEdit* target_;
  std::array<Box, 4> boxes_{};
};

}  // namespace desktop
