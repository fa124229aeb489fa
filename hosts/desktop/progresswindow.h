// Shows a running unpack and lets the user stop it.
#pragma once

#include <QDialog>
#include <QTimer>
#include <cstdint>

#include "hosts/desktop/writtenmodel.h"

class QListView;
class QProgressBar;
class QPushButton;

namespace desktop {

class ElidedLabel;

/// Modal, so that nothing else can be started. It takes numbers as fast as they
/// come and redraws some times a second.
class ProgressWindow : public QDialog {
  Q_OBJECT

 public:
  /// `written` is filled by others; this window shows it as it grows.
  ProgressWindow(WrittenModel& written, std::uint64_t totalBytes, QWidget* parent);

  /// `done` bytes of all are done with; the file in hand is `name`, of which
  /// `percentage` is written.
  void Show(std::wstring_view name, unsigned percentage, std::uint64_t done);
  /// Draws what was told last.
  void Redraw();

 signals:
  /// The user wants to stop.
  void StopWanted();

 protected:
  /// Escape and closing are wishes too: the window ends with the run.
  void reject() override { emit StopWanted(); }

 private:
  void Publish();

  WrittenModel& written_;
  std::uint64_t totalBytes_;
  std::wstring name_;
  unsigned percentage_ = 0;
  std::uint64_t done_ = 0;
  ElidedLabel* nameLabel_;
  QProgressBar* fileBar_;
  QProgressBar* totalBar_;
  QListView* list_;
  QTimer redrawTimer_;
  QTimer publishTimer_;
};

}  // namespace desktop
