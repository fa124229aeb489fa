// One unpack, from its plan to its outcome.
#pragma once

#include <QWidget>
#include <memory>

#include "hosts/common/outcomereport.h"
#include "hosts/common/passwordanswer.h"
#include "hosts/desktop/desktopinterface.h"
#include "hosts/desktop/missingmodel.h"
#include "hosts/desktop/outcomewindow.h"
#include "hosts/desktop/writtenmodel.h"

namespace desktop {

/// Runs on the caller's thread; the library keeps the windows alive meanwhile.
class UnpackJob {
 public:
  /// All three must outlive the job.
  UnpackJob(host::Archive& archive, host::PasswordAnswer& password, DesktopInterface& interface)
      : archive_(archive), password_(password), interface_(interface) {}

  /// Shows the progress in a window above `parent` until all is done.
  Outcome Run(const host::Request& request, QWidget* parent);

  MissingModel& Missing() { return missing_; }
  WrittenModel& Written() { return written_; }

 private:
  host::Totals Report(const host::Request& request, const host::UnpackWatch& watch);

  host::Archive& archive_;
  host::PasswordAnswer& password_;
  DesktopInterface& interface_;
  MissingModel missing_;
  WrittenModel written_;
};

}  // namespace desktop
