#include "hosts/desktop/elidedlabel.h"

#include "hosts/desktop/shown.h"

namespace desktop {

ElidedLabel::ElidedLabel(QWidget* parent) : QLabel(parent) {
  setTextFormat(Qt::PlainText);
  setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Fixed);
}

void ElidedLabel::Show(const QString& text) {
  whole_ = text;
  setAccessibleName(text);
  Cut();
}

void ElidedLabel::resizeEvent(QResizeEvent* event) {
  QLabel::resizeEvent(event);
  Cut();
}

void ElidedLabel::Cut() {
  setText(fontMetrics().elidedText(whole_, Qt::ElideMiddle, width()));
  setToolTip(text() == whole_ ? QString() : AsToolTip(whole_));
}

}  // namespace desktop
