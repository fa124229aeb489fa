#include "hosts/desktop/unpackdialog.h"

#include <QCheckBox>
#include <QDialogButtonBox>
#include <QDir>
#include <QFileDialog>
#include <QFileInfo>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QMessageBox>
#include <QPushButton>
#include <QVBoxLayout>

#include "hosts/desktop/elidedlabel.h"

namespace desktop {

UnpackDialog::UnpackDialog(const QString& what, const Options& options, QWidget* parent)
    : QDialog(parent) {
  setWindowTitle(tr("Unpack"));
  auto* const whatLabel = new ElidedLabel(this);
  whatLabel->Show(what);
  auto* const targetLabel = new QLabel(tr("&Unpack to:"), this);
  target_ = new QLineEdit(options.target, this);
  target_->setObjectName("target");
  targetLabel->setBuddy(target_);
  auto* const browse = new QPushButton(tr("&Browse…"), this);
  browse->setAutoDefault(false);
  connect(browse, &QPushButton::clicked, this, &UnpackDialog::Browse);
  auto* const row = new QHBoxLayout;
  row->addWidget(target_, 1);
  row->addWidget(browse);

  const INIUNPACK& settings = options.settings;
  boxes_ = {{
      {AddCheckBox(tr("Ask before an &existing file is replaced"), &INIUNPACK::bConfirmReplace,
                   settings),
       &INIUNPACK::bConfirmReplace},
      {AddCheckBox(tr("Everything: put all &files into one folder"),
                   &INIUNPACK::bUnpackArchiveNoPaths, settings),
       &INIUNPACK::bUnpackArchiveNoPaths},
      {AddCheckBox(tr("A folder: leave out the folders &above it"),
                   &INIUNPACK::bUnpackFolderRelative, settings),
       &INIUNPACK::bUnpackFolderRelative},
      {AddCheckBox(tr("Selected files: leave &out their folders"), &INIUNPACK::bUnpackFileNoPath,
                   settings),
       &INIUNPACK::bUnpackFileNoPath},
  }};
  auto* const group = new QGroupBox(tr("Options"), this);
  auto* const groupLayout = new QVBoxLayout;
  for (const Box& box : boxes_) groupLayout->addWidget(box.box);
  group->setLayout(groupLayout);

  auto* const buttons = new QDialogButtonBox(QDialogButtonBox::Cancel, this);
  buttons->addButton(tr("U&npack"), QDialogButtonBox::AcceptRole)->setDefault(true);
  connect(buttons, &QDialogButtonBox::accepted, this, &UnpackDialog::accept);
  connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
  auto* const layout = new QVBoxLayout(this);
  layout->addWidget(whatLabel);
  layout->addWidget(targetLabel);
  layout->addLayout(row);
  layout->addWidget(group);
  layout->addWidget(buttons);
  setMinimumWidth(480);
}

QCheckBox* UnpackDialog::AddCheckBox(const QString& text, BYTE INIUNPACK::*field,
                                     const INIUNPACK& settings) {
  auto* const box = new QCheckBox(text, this);
  box->setChecked(settings.*field != 0);
  return box;
}

Options UnpackDialog::Chosen() const {
  Options options;
  for (const Box& box : boxes_) options.settings.*box.field = box.box->isChecked() ? 1 : 0;
  options.target = QDir::cleanPath(QDir().absoluteFilePath(target_->text()));
  return options;
}

void UnpackDialog::Browse() {
  const QString chosen = QFileDialog::getExistingDirectory(this, tr("Unpack to"), target_->text());
  if (!chosen.isEmpty()) target_->setText(chosen);
}

void UnpackDialog::accept() {
  const QString target = Chosen().target;
  const bool isUsable =
      !target_->text().isEmpty() && QDir().mkpath(target) && QFileInfo(target).isWritable();
  if (isUsable) {
    QDialog::accept();
    return;
  }
  QMessageBox box(QMessageBox::Warning, tr("Unpack"),
                  tr("This folder cannot be written to. Choose another one."), QMessageBox::Ok,
                  this);
  box.exec();
  target_->setFocus();
}

}  // namespace desktop
