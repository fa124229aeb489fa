#include "hosts/common/outcomereport.h"

#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <string>
#include <vector>

#include "platform/text.h"

namespace host {
namespace {

bool IsFolderOnDisk(const std::wstring& path) {
  struct stat status {};
  return stat(platform::ToNativePath(path).c_str(), &status) == 0 && S_ISDIR(status.st_mode);
}

/// What the disk tells about a file that the library could not write.
Reason ReasonOfFailure(const Item& item, const OutputPlace& place) {
  struct stat status {};
  if (lstat(platform::ToNativePath(place.Path()).c_str(), &status) == 0) {
    if (S_ISLNK(status.st_mode)) return Reason::Of("failed: a symbolic link stands in its place");
    if (S_ISDIR(status.st_mode)) return Reason::Of("failed: a folder stands in its place");
  } else if (errno == ENAMETOOLONG) {
    return Reason::Of("refused: unsafe name");
  }
  if (!IsFolderOnDisk(place.folder)) return Reason::Of("failed: its folder could not be created");
  if (item.isEncrypted) return Reason::Of("failed: wrong password, or damaged in the archive");
  return Reason::Of("failed: damaged in the archive, or could not be written");
}

void Count(Totals& totals, const PlannedItem& item) {
  ++(item.isFolder ? totals.folders : totals.files);
  totals.bytes += item.size;
}

class Reporter {
 public:
  Reporter(const UnpackWatch& watch, const ReportSettings& settings, const TellMissing& tell)
      : watch_(watch), settings_(settings), tell_(tell) {
    const auto& runEnds = watch.RunEnds();
    for (std::size_t run = 0; run < runEnds.size(); ++run) {
      const bool hasEnded = settings.problems != nullptr && settings.problems->HasEnded(run);
      reached_.push_back(hasEnded ? watch.ReachedIn(run) : runEnds[run]);
    }
  }

  void Visit(const Item& item, const OutputPlace& place) {
    // What a changed archive lists beyond the plan was never asked for.
    if (index_ == watch_.Items().size()) return;
    const std::size_t index = index_++;
    while (index >= watch_.RunEnds()[run_]) ++run_;
    const PlannedItem& planned = watch_.Items()[index];
    if (planned.outcome == Outcome::kWritten ||
        (planned.isFolder && planned.outcome == Outcome::kNone && IsFolderOnDisk(place.folder))) {
      Count(totals_, planned);
      return;
    }
    ++totals_.missing;
    tell_(item, ReasonOf(index, item, place));
  }

  const Totals& Result() const { return totals_; }

 private:
  Reason ReasonOf(std::size_t index, const Item& item, const OutputPlace& place) const {
    const PlannedItem& planned = watch_.Items()[index];
    if (planned.outcome == Outcome::kRefused) return Reason::Of("refused: unsafe name");
    if (planned.outcome == Outcome::kCutShort) {
      return Reason::Of("cut short: the archive ends before the file does");
    }
    if (planned.outcome == Outcome::kWrongContent) {
      if (!item.isEncrypted) return Reason::Of("wrong content: damaged in the archive");
      return Reason::Of("wrong content: the password is wrong, or the archive is damaged");
    }
    if (planned.outcome == Outcome::kNotChecked) {
      return Reason::Of("not checked: what was written cannot be read again");
    }
    if (planned.outcome == Outcome::kKept) return settings_.kept;
    const ItemProblems* const problems = settings_.problems;
    if (problems != nullptr) {
      if (const Reason* reason = problems->Find(item.path)) return *reason;
    }
    if (settings_.stopped && index >= watch_.Next()) {
      const bool isInHand = index == watch_.Next() && watch_.InFile();
      return isInHand ? Reason::Of("interrupted") : Reason::Of("not reached");
    }
    if (index >= reached_[run_]) return Reason::Of("not reached");
    if (planned.isFolder) return Reason::Of("failed: the folder could not be created");
    return ReasonOfFailure(item, place);
  }

  const UnpackWatch& watch_;
  const ReportSettings& settings_;
  const TellMissing& tell_;
  Totals totals_;
  std::size_t index_ = 0;
  /// The run that the item belongs to.
  std::size_t run_ = 0;
  /// For each run the index behind the last item that was reached.
  std::vector<std::size_t> reached_;
};

Totals TotalsOfComplete(const std::vector<PlannedItem>& items) {
  Totals totals;
  for (const PlannedItem& item : items) Count(totals, item);
  return totals;
}

}  // namespace

Totals ReportOutcome(Archive& archive, const Request& request, const UnpackWatch& watch,
                     const ReportSettings& settings, const TellMissing& tell) {
  const bool isComplete = std::ranges::all_of(
      watch.Items(), [](const PlannedItem& item) { return item.outcome == Outcome::kWritten; });
  if (isComplete) return TotalsOfComplete(watch.Items());
  Reporter reporter(watch, settings, tell);
  ForEachPlanned(archive, request,
                 [&](const Item& item, const OutputPlace& place) { reporter.Visit(item, place); });
  return reporter.Result();
}

}  // namespace host
