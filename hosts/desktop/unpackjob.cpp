#include "hosts/desktop/unpackjob.h"

#include <QCoreApplication>
#include <QElapsedTimer>

#include "hosts/common/unpackrun.h"
#include "hosts/common/unpackwindows.h"
#include "hosts/desktop/progresswindow.h"
#include "morvunp/platform/text.h"

namespace desktop {
namespace {

/// Tells the interface what is running, until the run has ended.
class RunningScope {
 public:
  RunningScope(DesktopInterface& interface, RunningUnpack running)
      : interface_(interface), running_(running) {
    interface_.SetRunning(&running_);
  }
  ~RunningScope() { interface_.SetRunning(nullptr); }
  RunningScope(const RunningScope&) = delete;
  RunningScope& operator=(const RunningScope&) = delete;

 private:
  DesktopInterface& interface_;
  RunningUnpack running_;
};

/// The windows of a run are gone when it ends.
class SetUpScope {
 public:
  SetUpScope(host::Archive& archive, const host::ArchiveSetup& setup) : archive_(archive) {
    host::SetUpArchive(archive, setup);
  }
  ~SetUpScope() { host::SetUpArchive(archive_, {}); }
  SetUpScope(const SetUpScope&) = delete;
  SetUpScope& operator=(const SetUpScope&) = delete;

 private:
  host::Archive& archive_;
};

}  // namespace

Outcome UnpackJob::Run(const host::Request& request, QWidget* parent) {
  password_.StartOver();
  written_.Start(request.target);
  host::UnpackWatch watch;
  watch.Start(host::MakePlan(archive_, request));
  host::StopRequest stop;
  host::UnpackWindows windows(watch);
  ProgressWindow progress(written_, watch.TotalBytes(), parent);

  // The library pumps after each block; files without any would starve the
  // windows.
  QElapsedTimer sincePump;
  sincePump.start();
  windows.onProgress = [&](unsigned percentage) {
    progress.Show(watch.CurrentName(), percentage, watch.BytesDone());
    constexpr qint64 kLongest = 50;
    if (sincePump.elapsed() < kLongest) return;
    sincePump.start();
    interface_.RunPendingEvents();
  };
  windows.onCreated = [&](std::wstring_view path) { written_.Add(path); };
  QObject::connect(&progress, &ProgressWindow::StopWanted, [&] {
    stop.Make();
    stop.PostTo(windows.Progress());
  });
  {
    const SetUpScope setUp(archive_,
                           {request.settings, windows.FileTree(), windows.Progress(),
                            [&](const morvunp::ItemReport& report) { watch.Told(report); }});
    const RunningScope running(interface_, {watch, stop, windows.Progress()});
    progress.show();
    host::UnpackRequest(archive_, request, stop, watch);
  }
  written_.Publish();
  Outcome outcome;
  outcome.totals = Report(request, watch);
  outcome.wasStopped = stop.Stopped();
  outcome.target = morvunp::platform::ToNativePath(request.target);
  return outcome;
}

host::Totals UnpackJob::Report(const host::Request& request, const host::UnpackWatch& watch) {
  return host::ReportOutcome(archive_, request, watch, {},
                             [this](const host::Item& item, const host::Reason& reason) {
                               missing_.Add(item.path, reason);
                             });
}

}  // namespace desktop
