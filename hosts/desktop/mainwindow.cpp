#include "hosts/desktop/mainwindow.h"

#include <QAction>
#include <QCloseEvent>
#include <QDragEnterEvent>
#include <QFile>
#include <QFileDialog>
#include <QFileInfo>
#include <QGuiApplication>
#include <QHeaderView>
#include <QMenuBar>
#include <QMessageBox>
#include <QMimeData>
#include <QSettings>
#include <QStackedWidget>
#include <QStatusBar>
#include <QToolBar>
#include <QTreeView>
#include <exception>

#include "hosts/desktop/elidedlabel.h"
#include "hosts/desktop/outcomewindow.h"
#include "hosts/desktop/shown.h"
#include "hosts/desktop/unpackdialog.h"
#include "hosts/desktop/unpackjob.h"
#include "morvunp/platform/text.h"

namespace desktop {
namespace {

constexpr const char* kGeometry = "window/geometry";
constexpr const char* kColumns = "window/columns";

/// The one local file that is dropped; empty for anything else.
QString DroppedFile(const QMimeData& data) {
  const QList<QUrl> urls = data.urls();
  return urls.size() == 1 ? urls.front().toLocalFile() : QString();
}

std::string NativePath(const QString& path) { return QFile::encodeName(path).toStdString(); }

std::wstring TargetOf(const QString& folder) {
  std::wstring target = morvunp::platform::ToLibraryPath(NativePath(folder));
  if (target.ends_with(L'\\')) target.pop_back();
  return target;
}

}  // namespace

class MainWindow::BusyScope {
 public:
  explicit BusyScope(MainWindow& window) : window_(window) {
    window_.isBusy_ = true;
    window_.summaryTimer_.stop();
    window_.UpdateActions();
  }
  ~BusyScope() {
    window_.isBusy_ = false;
    window_.UpdateActions();
  }
  BusyScope(const BusyScope&) = delete;
  BusyScope& operator=(const BusyScope&) = delete;

 private:
  MainWindow& window_;
};

MainWindow::MainWindow() {
  setAcceptDrops(true);
  MakeViews();
  MakeActions();
  summaryTimer_.setSingleShot(true);
  summaryTimer_.setInterval(120);
  connect(&summaryTimer_, &QTimer::timeout, this, &MainWindow::UpdateSummary);
  RestoreLayout();
  ShowDocument();
}

MainWindow::~MainWindow() {
  folders_->Show(nullptr, {});
  files_->Show(nullptr, ArchiveTree::kRoot);
}

void MainWindow::RestoreLayout() {
  const QSettings stored;
  resize(860, 520);
  restoreGeometry(stored.value(kGeometry).toByteArray());
  fileView_->header()->restoreState(stored.value(kColumns).toByteArray());
}

void MainWindow::closeEvent(QCloseEvent* event) {
  // The library is in the middle of a call.
  if (isBusy_) {
    event->ignore();
    return;
  }
  QSettings stored;
  stored.setValue(kGeometry, saveGeometry());
  stored.setValue(kColumns, fileView_->header()->saveState());
  event->accept();
}

void MainWindow::dragEnterEvent(QDragEnterEvent* event) {
  if (!isBusy_ && !DroppedFile(*event->mimeData()).isEmpty()) event->acceptProposedAction();
}

void MainWindow::dropEvent(QDropEvent* event) {
  const QString path = DroppedFile(*event->mimeData());
  if (isBusy_ || path.isEmpty()) return;
  event->acceptProposedAction();
  Open(NativePath(path));
}

void MainWindow::ChooseArchive() {
  const QString folder = document_ ? QFile::decodeName(document_->Path().c_str()) : QString();
  const QString path = QFileDialog::getOpenFileName(
      this, tr("Open Archive"), folder,
      tr("Archives") + " (*.7z *.001 *.aa *.cab *.iso *.udf *.img *.rar);;" + tr("All files") +
          " (*)");
  if (!path.isEmpty()) Open(NativePath(path));
}

void MainWindow::Open(const std::string& path) {
  if (isBusy_) return;
  const BusyScope busy(*this);
  const QString shownPath = ShownNativePath(path);
  try {
    QGuiApplication::setOverrideCursor(Qt::BusyCursor);
    auto document = std::make_unique<Document>(
        path, interface_, [&](const host::Reason& reason) { TellProblem(shownPath, reason); });
    QGuiApplication::restoreOverrideCursor();
    CloseArchive();
    document_ = std::move(document);
    ShowDocument();
    if (document_->Gap()) TellProblem(shownPath, *document_->Gap());
  } catch (const host::OpenError& error) {
    QGuiApplication::restoreOverrideCursor();
    if (!error.wasCancelled) TellProblem(shownPath, error.reason);
  } catch (const std::exception& error) {
    QGuiApplication::restoreOverrideCursor();
    TellProblem(shownPath, {error.what()});
  }
  interface_.SetPasswordAnswer(document_ ? &document_->Password() : nullptr);
}

void MainWindow::CloseArchive() {
  folders_->Show(nullptr, {});
  files_->Show(nullptr, ArchiveTree::kRoot);
  interface_.SetPasswordAnswer(nullptr);
  document_.reset();
  ShowDocument();
}

void MainWindow::TellProblem(const QString& path, const host::Reason& reason) {
  QMessageBox box(this);
  box.setIcon(QMessageBox::Warning);
  box.setWindowTitle(tr("Open Archive"));
  box.setTextFormat(Qt::PlainText);
  box.setText(path + "\n\n" + ShownReason(reason));
  box.exec();
}

void MainWindow::ShowDocument() {
  if (document_) {
    const QString name = QFileInfo(QFile::decodeName(document_->Path().c_str())).fileName();
    const QString shown = ShownName(name.toStdWString());
    setWindowTitle(shown + " — morvunp");
    folders_->Show(&document_->Tree(), shown);
    const QModelIndex root = folders_->IndexOf(ArchiveTree::kRoot);
    folderView_->expand(root);
    folderView_->setCurrentIndex(root);
    fileView_->setFocus();
  } else {
    setWindowTitle("morvunp");
  }
  pages_->setCurrentWidget(document_ ? archivePage_ : emptyPage_);
  UpdateActions();
  UpdateSummaryLater();
}

ArchiveTree::Index MainWindow::CurrentFolder() const {
  return FolderModel::FolderAt(folderView_->currentIndex());
}

void MainWindow::ShowFolder(ArchiveTree::Index folder) {
  files_->Show(document_ ? &document_->Tree() : nullptr, folder);
  fileView_->scrollToTop();
  UpdateActions();
  UpdateSummaryLater();
}

void MainWindow::EnterItem(const QModelIndex& index) {
  const ArchiveTree::Index item = files_->ItemAt(index);
  if (!document_->Tree().At(item).isFolder) return;
  folderView_->setCurrentIndex(folders_->IndexOf(item));
}

void MainWindow::GoUp() {
  const QModelIndex parent = folderView_->currentIndex().parent();
  if (parent.isValid()) folderView_->setCurrentIndex(parent);
}

std::vector<ArchiveTree::Index> MainWindow::SelectedItems() const {
  std::vector<ArchiveTree::Index> items;
  for (const QModelIndex& index : fileView_->selectionModel()->selectedRows()) {
    items.push_back(files_->ItemAt(index));
  }
  return items;
}

void MainWindow::UpdateActions() {
  const bool isReady = document_ != nullptr && !isBusy_;
  const bool isInFolder = isReady && CurrentFolder() != ArchiveTree::kRoot;
  close_->setEnabled(isReady);
  unpackAll_->setEnabled(isReady);
  unpackFolder_->setEnabled(isInFolder);
  up_->setEnabled(isInFolder);
  unpackSelected_->setEnabled(isReady && fileView_->selectionModel()->hasSelection());
}

void MainWindow::UpdateSummaryLater() { summaryTimer_.start(); }

QString MainWindow::SummaryText() {
  if (!document_) return {};
  const auto items = SelectedItems();
  if (items.empty()) return ShownText(document_->SummaryOf(CurrentFolder()));
  if (items.size() == 1) return ShownText(document_->SummaryOf(items.front()));
  qulonglong bytes = 0;
  for (const ArchiveTree::Index item : items) bytes += document_->Tree().At(item).size;
  return tr("%n item(s) selected, %1 bytes in files", nullptr, static_cast<int>(items.size()))
      .arg(QLocale().toString(bytes));
}

void MainWindow::UpdateSummary() {
  // The library must not be called in the middle of its own call.
  if (isBusy_) return;
  const BusyScope busy(*this);
  summary_->Show(SummaryText().replace('\n', ' '));
}

void MainWindow::UnpackAll() {
  Unpack(tr("Everything in the archive"), {{.kind = host::RunKind::kArchive}});
}

void MainWindow::UnpackFolder() {
  const std::wstring path = document_->Tree().PathOf(CurrentFolder());
  Unpack(tr("The folder %1").arg(ShownPath(path)),
         {{.kind = host::RunKind::kFolder, .path = path}});
}

std::vector<host::Run> MainWindow::RunsOfSelection() const {
  const ArchiveTree& tree = document_->Tree();
  std::vector<host::Run> runs;
  host::Run files{.kind = host::RunKind::kFiles};
  for (const ArchiveTree::Index item : SelectedItems()) {
    if (tree.At(item).isFolder) {
      runs.push_back({.kind = host::RunKind::kFolder, .path = tree.PathOf(item)});
    } else {
      files.files.insert(tree.PathOf(item));
    }
  }
  if (files.files.size() == 1) {
    runs.push_back({.kind = host::RunKind::kFile, .path = *files.files.begin()});
  } else if (!files.files.empty()) {
    runs.push_back(std::move(files));
  }
  return runs;
}

QString MainWindow::NameOfSelection() const {
  const auto items = SelectedItems();
  if (items.size() == 1) return ShownPath(document_->Tree().PathOf(items.front()));
  return tr("%n selected item(s)", nullptr, static_cast<int>(items.size()));
}

void MainWindow::UnpackSelected() { Unpack(NameOfSelection(), RunsOfSelection()); }

void MainWindow::Unpack(const QString& what, std::vector<host::Run> runs) {
  if (isBusy_) return;
  Options options = LoadOptions();
  if (options.target.isEmpty()) {
    options.target = QFileInfo(QFile::decodeName(document_->Path().c_str())).absolutePath();
  }
  UnpackDialog dialog(what, options, this);
  if (dialog.exec() != QDialog::Accepted) return;
  options = dialog.Chosen();
  SaveOptions(options);
  RunUnpack({options.settings, TargetOf(options.target), std::move(runs)});
}

void MainWindow::RunUnpack(const host::Request& request) {
  const BusyScope busy(*this);
  UnpackJob job(document_->Archive(), document_->Password(), interface_);
  const Outcome outcome = job.Run(request, this);
  OutcomeWindow(outcome, job.Missing(), job.Written(), this).exec();
}

void MainWindow::ShowAbout() {
  QMessageBox::about(this, tr("About morvunp"),
                     tr("morvunp %1 shows and unpacks 7z, cabinet, ISO/UDF and RAR archives.")
                         .arg(QGuiApplication::applicationVersion()));
}

}  // namespace desktop
