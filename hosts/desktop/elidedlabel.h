// A line of text that gives way to a narrow window.
#pragma once

#include <QLabel>

namespace desktop {

/// Cuts its text in the middle when there is no room; the tool tip has it whole.
class ElidedLabel : public QLabel {
  Q_OBJECT

 public:
  explicit ElidedLabel(QWidget* parent = nullptr);

  void Show(const QString& text);
  const QString& Whole() const { return whole_; }

 protected:
  void resizeEvent(QResizeEvent* event) override;

 private:
  void Cut();

  QString whole_;
};

}  // namespace desktop
