#include "hosts/desktop/outcomewindow.h"

#include <QDesktopServices>
#include <QDialogButtonBox>
#include <QFile>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QListView>
#include <QLocale>
#include <QPushButton>
#include <QStyle>
#include <QTabWidget>
#include <QTreeView>
#include <QUrl>
#include <QVBoxLayout>

#include "hosts/desktop/elidedlabel.h"
#include "hosts/desktop/shown.h"

namespace desktop {
namespace {

QString Number(std::uint64_t number) { return QLocale().toString(static_cast<qulonglong>(number)); }

QWidget* ListOf(MissingModel& missing) {
  auto* const list = new QTreeView;
  list->setObjectName("missing");
  list->setModel(&missing);
  list->setRootIsDecorated(false);
  list->setUniformRowHeights(true);
  list->setTextElideMode(Qt::ElideMiddle);
  list->header()->resizeSection(0, 280);
  return list;
}

QWidget* ListOf(WrittenModel& written) {
  auto* const list = new QListView;
  list->setObjectName("written");
  list->setModel(&written);
  list->setUniformItemSizes(true);
  list->setTextElideMode(Qt::ElideMiddle);
  return list;
}

}  // namespace

QString SentenceOf(const Outcome& outcome) {
  const host::Totals& totals = outcome.totals;
  const QString sentence = outcome.wasStopped
                               ? OutcomeWindow::tr("Stopped. Files: %1, folders: %2, bytes: %3.")
                               : OutcomeWindow::tr("Unpacked. Files: %1, folders: %2, bytes: %3.");
  return sentence.arg(Number(totals.files), Number(totals.folders), Number(totals.bytes));
}

OutcomeWindow::OutcomeWindow(const Outcome& outcome, MissingModel& missing, WrittenModel& written,
                             QWidget* parent)
    : QDialog(parent), target_(outcome.target) {
  const bool isComplete = outcome.totals.missing == 0 && !outcome.wasStopped;
  setWindowTitle(isComplete ? tr("Unpacked") : tr("Not everything came out"));
  auto* const icon = new QLabel(this);
  const int side = style()->pixelMetric(QStyle::PM_MessageBoxIconSize);
  icon->setPixmap(style()
                      ->standardIcon(isComplete ? QStyle::SP_MessageBoxInformation
                                                : QStyle::SP_MessageBoxWarning)
                      .pixmap(side, side));
  auto* const sentence = new QLabel(SentenceOf(outcome), this);
  sentence->setObjectName("sentence");
  sentence->setTextFormat(Qt::PlainText);
  auto* const place = new ElidedLabel(this);
  place->Show(ShownNativePath(outcome.target));

  auto* const tabs = new QTabWidget(this);
  if (outcome.totals.missing != 0) {
    tabs->addTab(ListOf(missing), tr("Did not come out (%1)").arg(Number(outcome.totals.missing)));
  }
  tabs->addTab(ListOf(written),
               tr("Written (%1)").arg(Number(static_cast<std::uint64_t>(written.rowCount()))));

  auto* const buttons = new QDialogButtonBox(QDialogButtonBox::Close, this);
  QPushButton* const open = buttons->addButton(tr("&Open Folder"), QDialogButtonBox::ActionRole);
  open->setObjectName("open");
  connect(open, &QPushButton::clicked, this, &OutcomeWindow::OpenFolder);
  connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
  buttons->button(QDialogButtonBox::Close)->setDefault(true);
  buttons->button(QDialogButtonBox::Close)->setFocus();

  auto* const texts = new QVBoxLayout;
  texts->addWidget(sentence);
  texts->addWidget(place);
  auto* const top = new QHBoxLayout;
  top->addWidget(icon);
  top->addLayout(texts, 1);
  auto* const layout = new QVBoxLayout(this);
  layout->addLayout(top);
  layout->addWidget(tabs, 1);
  layout->addWidget(buttons);
  resize(600, 360);
}

void OutcomeWindow::OpenFolder() {
  QDesktopServices::openUrl(QUrl::fromLocalFile(QFile::decodeName(target_.c_str())));
}

}  // namespace desktop
