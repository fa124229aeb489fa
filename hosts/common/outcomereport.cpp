#include "hosts/common/outcomereport.h"

#include <algorithm>

namespace host {
namespace {

using morvunp::ItemResult;

bool CameOut(const PlannedItem& item) {
  return item.isTold &&
         (item.result == ItemResult::kWritten || item.result == ItemResult::kFolderMade ||
          item.result == ItemResult::kIntact);
}

Reason ReasonOfItem(const PlannedItem& item, std::wstring_view detail, const Reason& kept) {
  if (!item.isTold) return Reason::Of("not reached");
  switch (item.result) {
    case ItemResult::kKept:
      return kept;
    case ItemResult::kReplaced:
      return Reason::Of("replaced by a later item with the same output path");
    case ItemResult::kNotReached:
      return Reason::Of("not reached");
    default:
      return ReasonOf(item.reason, detail, item.systemError);
  }
}

void Count(Totals& totals, const PlannedItem& item) {
  ++(item.isFolder ? totals.folders : totals.files);
  totals.bytes += item.size;
}

}  // namespace

Totals ReportOutcome(Archive& archive, const Request& request, const UnpackWatch& watch,
                     const ReportSettings& settings, const TellMissing& tell) {
  Totals totals;
  for (const PlannedItem& item : watch.Items()) {
    if (CameOut(item)) {
      Count(totals, item);
    } else {
      ++totals.missing;
    }
  }
  if (totals.missing == 0) return totals;
  std::size_t index = 0;
  ForEachPlanned(archive, request, [&](const Item& item, const morvunp::OutputPlace&) {
    // What a changed archive lists beyond the plan was never asked for.
    if (index == watch.Items().size()) return;
    const PlannedItem& planned = watch.Items()[index];
    if (!CameOut(planned)) {
      tell(item, ReasonOfItem(planned, watch.DetailOf(index), settings.kept));
    }
    ++index;
  });
  return totals;
}

}  // namespace host
