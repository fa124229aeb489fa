#include "hosts/common/unpackwatch.h"

#include <algorithm>
#include <utility>

namespace host {

void UnpackWatch::Start(Plan plan) {
  plan_ = std::move(plan);
  for (const PlannedItem& item : plan_.items) total_ += item.size;
}

void UnpackWatch::EnterRun(std::size_t run) { run_ = run; }

void UnpackWatch::FileStarts(std::wstring_view name) {
  currentName_ = name;
  inFile_ = true;
  percentage_ = 0;
}

void UnpackWatch::FileProgress(unsigned percentage) { percentage_ = percentage; }

void UnpackWatch::Told(const morvunp::ItemReport& report) {
  if (run_ >= plan_.runEnds.size()) return;
  const auto begin = plan_.items.begin();
  const auto first = begin + static_cast<std::ptrdiff_t>(run_ > 0 ? plan_.runEnds[run_ - 1] : 0);
  const auto last = begin + static_cast<std::ptrdiff_t>(plan_.runEnds[run_]);
  const auto item = std::lower_bound(
      first, last, report.position,
      [](const PlannedItem& left, std::uint64_t position) { return left.position < position; });
  if (item == last || item->position != report.position) return;
  item->isTold = true;
  item->result = report.result;
  item->reason = report.reason;
  item->systemError = report.systemError;
  const auto index = static_cast<std::size_t>(item - begin);
  if (!report.detail.empty()) details_[index] = report.detail;
  if (report.result != morvunp::ItemResult::kReplaced) Pass(index + 1);
}

std::wstring_view UnpackWatch::DetailOf(std::size_t index) const {
  const auto found = details_.find(index);
  return found != details_.end() ? std::wstring_view(found->second) : std::wstring_view();
}

std::uint64_t UnpackWatch::BytesDone() const {
  if (!inFile_ || next_ >= plan_.items.size()) return passed_;
  const auto part = static_cast<double>(plan_.items[next_].size) * percentage_ / 100.0;
  return passed_ + std::min(static_cast<std::uint64_t>(part), plan_.items[next_].size);
}

void UnpackWatch::Pass(std::size_t end) {
  for (; next_ < end; ++next_) passed_ += plan_.items[next_].size;
  inFile_ = false;
}

}  // namespace host
