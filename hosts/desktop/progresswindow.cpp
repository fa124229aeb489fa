#include "hosts/desktop/progresswindow.h"

#include <QDialogButtonBox>
#include <QLabel>
#include <QListView>
#include <QProgressBar>
#include <QPushButton>
#include <QVBoxLayout>
#include <algorithm>

#include "hosts/desktop/elidedlabel.h"
#include "hosts/desktop/shown.h"

namespace desktop {
namespace {

constexpr int kRedrawMilliseconds = 50;
/// A view lays out all of its rows for each of these.
constexpr int kPublishMilliseconds = 500;
constexpr int kSteps = 1000;

int StepsOf(std::uint64_t done, std::uint64_t total) {
  if (total == 0) return 0;
  const double part = static_cast<double>(done) / static_cast<double>(total);
  return static_cast<int>(std::min(part, 1.0) * kSteps);
}

}  // namespace

ProgressWindow::ProgressWindow(WrittenModel& written, std::uint64_t totalBytes, QWidget* parent)
    : QDialog(parent), written_(written), totalBytes_(totalBytes) {
  setWindowTitle(tr("Unpacking"));
  setWindowModality(Qt::ApplicationModal);
  nameLabel_ = new ElidedLabel(this);
  nameLabel_->setObjectName("name");
  fileBar_ = new QProgressBar(this);
  fileBar_->setObjectName("file");
  totalBar_ = new QProgressBar(this);
  totalBar_->setObjectName("total");
  totalBar_->setMaximum(kSteps);
  list_ = new QListView(this);
  list_->setObjectName("written");
  list_->setModel(&written_);
  list_->setUniformItemSizes(true);
  list_->setTextElideMode(Qt::ElideMiddle);
  list_->setFocusPolicy(Qt::TabFocus);
  auto* const buttons = new QDialogButtonBox(this);
  QPushButton* const stop = buttons->addButton(tr("&Stop"), QDialogButtonBox::RejectRole);
  stop->setObjectName("stop");
  stop->setFocus();
  auto* const layout = new QVBoxLayout(this);
  layout->addWidget(nameLabel_);
  layout->addWidget(fileBar_);
  layout->addWidget(new QLabel(tr("Everything:"), this));
  layout->addWidget(totalBar_);
  layout->addWidget(new QLabel(tr("Written:"), this));
  layout->addWidget(list_, 1);
  layout->addWidget(buttons);
  resize(560, 380);
  connect(buttons, &QDialogButtonBox::rejected, this, &ProgressWindow::StopWanted);
  connect(&redrawTimer_, &QTimer::timeout, this, &ProgressWindow::Redraw);
  redrawTimer_.start(kRedrawMilliseconds);
  connect(&publishTimer_, &QTimer::timeout, this, &ProgressWindow::Publish);
  publishTimer_.start(kPublishMilliseconds);
}

void ProgressWindow::Show(std::wstring_view name, unsigned percentage, std::uint64_t done) {
  if (name != name_) name_ = name;
  percentage_ = percentage;
  done_ = done;
}

void ProgressWindow::Redraw() {
  nameLabel_->Show(ShownName(name_));
  fileBar_->setValue(static_cast<int>(std::min(percentage_, 100U)));
  totalBar_->setValue(StepsOf(done_, totalBytes_));
}

void ProgressWindow::Publish() {
  const int rows = written_.rowCount();
  written_.Publish();
  if (written_.rowCount() != rows) list_->scrollToBottom();
}

}  // namespace desktop
