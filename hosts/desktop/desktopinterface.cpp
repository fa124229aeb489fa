#include "hosts/desktop/desktopinterface.h"

#include <QApplication>
#include <QFileIconProvider>
#include <QFileInfo>
#include <QGridLayout>
#include <QMessageBox>

#include "hosts/common/libraryquestion.h"
#include "hosts/desktop/librarydialog.h"
#include "hosts/desktop/shown.h"
#include "morvunp/platform/text.h"

namespace desktop {
namespace {

/// A short text alone would leave no room for the caption.
void ShowWholeTitle(QMessageBox& box) {
  if (auto* const grid = qobject_cast<QGridLayout*>(box.layout())) {
    const int width = box.fontMetrics().horizontalAdvance(box.windowTitle()) * 2;
    grid->addItem(new QSpacerItem(width, 0), grid->rowCount(), 0, 1, grid->columnCount());
  }
}

}  // namespace

DesktopInterface::DesktopInterface(QWidget& mainWindow, FileIcons& fileIcons)
    : mainWindow_(mainWindow), fileIcons_(fileIcons) {
  mainWindowObject_.m_hWnd = morvunp::platform::MakeWindow(nullptr, nullptr);
  morvunp::platform::SetMainWindow(&mainWindowObject_);
  morvunp::platform::RegisterUserInterface(this);
}

DesktopInterface::~DesktopInterface() {
  morvunp::platform::RegisterUserInterface(nullptr);
  morvunp::platform::SetMainWindow(nullptr);
  DestroyWindow(mainWindowObject_.m_hWnd);
}

QWidget* DesktopInterface::Owner() const {
  QWidget* const modal = QApplication::activeModalWidget();
  return modal != nullptr ? modal : &mainWindow_;
}

UINT DesktopInterface::Show(CDialog& dialog) {
  LibraryDialog window(dialog, Owner());
  window.exec();
  return window.Pressed();
}

bool DesktopInterface::RunDialog(CDialog& dialog) {
  if (dialog.Template().id == morvunp::kPasswordDialog) {
    RunPasswordDialog(dialog);
    return true;
  }
  UINT pressed = Show(dialog);
  icons_.clear();
  if (running_ != nullptr && dialog.Template().id == morvunp::kReplaceDialog) {
    if (pressed == IDCANCEL) pressed = morvunp::kReplaceCancel;
    host::NoteReplaceAnswer(pressed, running_->stop);
  }
  return true;
}

host::PasswordAnswer DesktopInterface::MakePasswordAnswer() {
  return host::PasswordAnswer([this] { return AskPassword(); });
}

void DesktopInterface::RunPasswordDialog(CDialog& dialog) {
  if (password_ == nullptr) {
    Show(dialog);
    return;
  }
  passwordDialog_ = &dialog;
  const auto answer = password_->Get();
  passwordDialog_ = nullptr;
  if (!answer && running_ != nullptr) running_->stop.Cancel();
  if (dialog.Ended()) return;
  if (!answer) {
    dialog.PressEscape();
    return;
  }
  dialog.SetControlText(morvunp::kPasswordEdit, *answer);
  dialog.Press(IDOK);
}

std::optional<std::wstring> DesktopInterface::AskPassword() {
  if (Show(*passwordDialog_) != IDOK) return std::nullopt;
  return passwordDialog_->ControlText(morvunp::kPasswordEdit);
}

/// Of the files that follow a cancelled question, the report at the end tells
/// the same as their messages would.
bool DesktopInterface::WantsMessage() const {
  const bool isInFile = running_ != nullptr && running_->watch.InFile();
  return !isInFile || password_ == nullptr || password_->IsTyped();
}

int DesktopInterface::ShowMessageBox(const std::wstring& text, const std::wstring& caption,
                                     UINT type) {
  const bool isQuestion = (type & MB_YESNO) != 0;
  const bool isWanted = isQuestion || WantsMessage();
  if (!isQuestion && password_ != nullptr) password_->Reject();
  if (!isWanted) return IDOK;
  QMessageBox box(Owner());
  box.setWindowTitle(QString::fromStdWString(caption));
  box.setTextFormat(Qt::PlainText);
  box.setText(ShownText(text));
  box.setIcon((type & MB_ICONQUESTION) != 0 ? QMessageBox::Question : QMessageBox::Critical);
  box.setStandardButtons(isQuestion ? QMessageBox::Yes | QMessageBox::No : QMessageBox::Ok);
  box.setDefaultButton(isQuestion ? QMessageBox::Yes : QMessageBox::Ok);
  ShowWholeTitle(box);
  const bool isYes = box.exec() == QMessageBox::Yes;
  if (!isQuestion) return IDOK;
  if (running_ != nullptr) running_->stop.Answer(isYes);
  return isYes ? IDYES : IDNO;
}

void DesktopInterface::RunPendingEvents() {
  QCoreApplication::processEvents();
  if (running_ != nullptr) running_->stop.PostTo(running_->progressWindow);
}

HICON DesktopInterface::FindIcon(const std::wstring& path, bool byTypeOnly) {
  const QString native = QFile::decodeName(morvunp::platform::ToNativePath(path).c_str());
  const QIcon known = byTypeOnly ? QIcon() : QFileIconProvider().icon(QFileInfo(native));
  const QIcon icon = known.isNull() ? fileIcons_.OfFile(native) : known;
  icons_.push_back(std::make_unique<QIcon>(icon));
  return reinterpret_cast<HICON>(icons_.back().get());
}

}  // namespace desktop
