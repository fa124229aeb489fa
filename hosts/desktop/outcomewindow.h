// The end of an unpack: what came out, and what did not.
#pragma once

#include <QDialog>
#include <string>

#include "hosts/common/outcomereport.h"
#include "hosts/desktop/missingmodel.h"
#include "hosts/desktop/writtenmodel.h"

namespace desktop {

/// What is left of an unpack when it has ended.
struct Outcome {
  host::Totals totals;
  bool wasStopped = false;
  /// Folder that was unpacked to, a path of this system.
  std::string target;
};

/// The heading of an outcome in one sentence.
QString SentenceOf(const Outcome& outcome);

class OutcomeWindow : public QDialog {
  Q_OBJECT

 public:
  OutcomeWindow(const Outcome& outcome, MissingModel& missing, WrittenModel& written,
                QWidget* parent);

 private:
  void OpenFolder();

  std::string target_;
};

}  // namespace desktop
