// How the main window is put together.
#include <QAction>
#include <QApplication>
#include <QHeaderView>
#include <QLabel>
#include <QMenuBar>
#include <QSplitter>
#include <QStackedWidget>
#include <QStatusBar>
#include <QStyle>
#include <QToolBar>
#include <QTreeView>

#include "hosts/desktop/elidedlabel.h"
#include "hosts/desktop/mainwindow.h"
#include "hosts/desktop/sizecolumn.h"

namespace desktop {

QAction* MainWindow::MakeAction(const QString& text, const QKeySequence& key,
                                QStyle::StandardPixmap icon, void (MainWindow::*slot)()) {
  auto* const action = new QAction(style()->standardIcon(icon), text, this);
  action->setShortcut(key);
  connect(action, &QAction::triggered, this, slot);
  return action;
}

void MainWindow::MakeActions() {
  QAction* const open = MakeAction(tr("&Open…"), QKeySequence::Open, QStyle::SP_DialogOpenButton,
                                   &MainWindow::ChooseArchive);
  close_ = MakeAction(tr("&Close Archive"), QKeySequence::Close, QStyle::SP_DialogCloseButton,
                      &MainWindow::CloseArchive);
  up_ = MakeAction(tr("&Up"), QKeySequence(Qt::ALT | Qt::Key_Up), QStyle::SP_ArrowUp,
                   &MainWindow::GoUp);
  unpackAll_ = MakeAction(tr("Unpack &All…"), QKeySequence(Qt::CTRL | Qt::Key_E),
                          QStyle::SP_DialogApplyButton, &MainWindow::UnpackAll);
  unpackFolder_ = MakeAction(tr("Unpack &Folder…"), QKeySequence(Qt::CTRL | Qt::Key_D),
                             QStyle::SP_DirIcon, &MainWindow::UnpackFolder);
  unpackSelected_ = MakeAction(tr("Unpack &Selected…"), QKeySequence(Qt::CTRL | Qt::Key_U),
                               QStyle::SP_DialogSaveButton, &MainWindow::UnpackSelected);
  auto* const quit = new QAction(tr("&Quit"), this);
  quit->setShortcut(QKeySequence::Quit);
  connect(quit, &QAction::triggered, this, &QWidget::close);
  auto* const about = new QAction(tr("&About"), this);
  connect(about, &QAction::triggered, this, &MainWindow::ShowAbout);

  QMenu* const archive = menuBar()->addMenu(tr("&Archive"));
  archive->addActions({open, close_});
  archive->addSeparator();
  archive->addAction(quit);
  menuBar()->addMenu(tr("&Unpack"))->addActions({unpackAll_, unpackFolder_, unpackSelected_});
  menuBar()->addMenu(tr("&Go"))->addAction(up_);
  menuBar()->addMenu(tr("&Help"))->addAction(about);
  QToolBar* const bar = addToolBar(tr("Toolbar"));
  bar->setObjectName("toolbar");
  bar->setToolButtonStyle(Qt::ToolButtonTextBesideIcon);
  bar->setMovable(false);
  bar->addActions({open, up_, unpackAll_, unpackFolder_, unpackSelected_});
  fileView_->setContextMenuPolicy(Qt::ActionsContextMenu);
  fileView_->addActions({unpackSelected_, unpackFolder_, unpackAll_});
  folderView_->setContextMenuPolicy(Qt::ActionsContextMenu);
  folderView_->addActions({unpackFolder_, unpackAll_});
}

QTreeView* MainWindow::MakeFolderView() {
  auto* const view = new QTreeView;
  folders_ = new FolderModel(icons_, this);
  view->setObjectName("folders");
  view->setModel(folders_);
  view->setHeaderHidden(true);
  view->setUniformRowHeights(true);
  view->setTextElideMode(Qt::ElideMiddle);
  view->setAccessibleName(tr("Folders"));
  connect(view->selectionModel(), &QItemSelectionModel::currentChanged, this,
          [this](const QModelIndex& current) { ShowFolder(FolderModel::FolderAt(current)); });
  return view;
}

QTreeView* MainWindow::MakeFileView() {
  auto* const view = new QTreeView;
  files_ = new FileModel(icons_, this);
  view->setObjectName("files");
  view->setModel(files_);
  view->setRootIsDecorated(false);
  view->setItemsExpandable(false);
  view->setUniformRowHeights(true);
  view->setAllColumnsShowFocus(true);
  view->setAlternatingRowColors(true);
  view->setTextElideMode(Qt::ElideMiddle);
  view->setSelectionMode(QAbstractItemView::ExtendedSelection);
  view->setAccessibleName(tr("Files"));
  view->setItemDelegateForColumn(FileModel::kSize, new SizeColumn(view));
  view->header()->resizeSection(FileModel::kName, 320);
  view->header()->resizeSection(FileModel::kSize, 140);
  view->sortByColumn(FileModel::kName, Qt::AscendingOrder);
  view->setSortingEnabled(true);
  connect(view, &QTreeView::activated, this, &MainWindow::EnterItem);
  connect(view->selectionModel(), &QItemSelectionModel::selectionChanged, this, [this] {
    UpdateActions();
    UpdateSummaryLater();
  });
  return view;
}

void MainWindow::MakeViews() {
  folderView_ = MakeFolderView();
  fileView_ = MakeFileView();
  auto* const splitter = new QSplitter;
  splitter->addWidget(folderView_);
  splitter->addWidget(fileView_);
  splitter->setStretchFactor(1, 1);
  splitter->setSizes({220, 560});
  archivePage_ = splitter;
  auto* const hint = new QLabel(tr("Open an archive, or drop one here."));
  hint->setAlignment(Qt::AlignCenter);
  hint->setEnabled(false);
  emptyPage_ = hint;
  pages_ = new QStackedWidget;
  pages_->addWidget(emptyPage_);
  pages_->addWidget(archivePage_);
  setCentralWidget(pages_);
  summary_ = new ElidedLabel;
  summary_->setObjectName("summary");
  statusBar()->addWidget(summary_, 1);
}

}  // namespace desktop
