// The program's window: an archive's folders beside the files of one of them.
#pragma once

#include <QMainWindow>
#include <QStyle>
#include <QTimer>
#include <memory>
#include <string>
#include <vector>

#include "hosts/common/plan.h"
#include "hosts/desktop/desktopinterface.h"
#include "hosts/desktop/document.h"
#include "hosts/desktop/fileicons.h"
#include "hosts/desktop/filemodel.h"
#include "hosts/desktop/foldermodel.h"
#include "hosts/desktop/options.h"

class QLabel;
class QStackedWidget;
class QTreeView;

namespace desktop {

class ElidedLabel;

class MainWindow : public QMainWindow {
  Q_OBJECT

 public:
  MainWindow();
  ~MainWindow() override;

  /// Opens the archive at `path`, a path of this system, in place of the one
  /// that is open. Shows the reason when it cannot.
  void Open(const std::string& path);

 protected:
  void closeEvent(QCloseEvent* event) override;
  void dragEnterEvent(QDragEnterEvent* event) override;
  void dropEvent(QDropEvent* event) override;

 private:
  void MakeActions();
  QAction* MakeAction(const QString& text, const QKeySequence& key, QStyle::StandardPixmap icon,
                      void (MainWindow::*slot)());
  void MakeViews();
  QTreeView* MakeFolderView();
  QTreeView* MakeFileView();
  void RestoreLayout();

  void ChooseArchive();
  void CloseArchive();
  void GoUp();
  void UnpackAll();
  void UnpackFolder();
  void UnpackSelected();
  void ShowAbout();

  void ShowDocument();
  void ShowFolder(ArchiveTree::Index folder);
  void EnterItem(const QModelIndex& index);
  void UpdateActions();
  /// Summaries walk the archive, so they wait until the selection rests.
  void UpdateSummaryLater();
  void UpdateSummary();
  QString SummaryText();
  void TellProblem(const QString& path, const host::Reason& reason);

  ArchiveTree::Index CurrentFolder() const;
  std::vector<ArchiveTree::Index> SelectedItems() const;
  std::vector<host::Run> RunsOfSelection() const;
  QString NameOfSelection() const;
  /// Asks for the target, then unpacks.
  void Unpack(const QString& what, std::vector<host::Run> runs);
  void RunUnpack(const host::Request& request);
  /// Nothing may be started meanwhile.
  class BusyScope;

  FileIcons icons_;
  DesktopInterface interface_{*this, icons_};
  std::unique_ptr<Document> document_;
  FolderModel* folders_ = nullptr;
  FileModel* files_ = nullptr;
  bool isBusy_ = false;

  QStackedWidget* pages_ = nullptr;
  QWidget* emptyPage_ = nullptr;
  QWidget* archivePage_ = nullptr;
  QTreeView* folderView_ = nullptr;
  QTreeView* fileView_ = nullptr;
  ElidedLabel* summary_ = nullptr;
  QTimer summaryTimer_;
  QAction* close_ = nullptr;
  QAction* up_ = nullptr;
  QAction* unpackAll_ = nullptr;
  QAction* unpackFolder_ = nullptr;
  QAction* unpackSelected_ = nullptr;
};

}  // namespace desktop
