#include "hosts/common/unpackwatch.h"

#include <algorithm>
#include <numeric>
#include <utility>

namespace host {
namespace {

bool WasReached(const PlannedItem& item) {
  // Refusals are known beforehand.
  return item.hasBegun || (item.outcome != Outcome::kNone && item.outcome != Outcome::kRefused);
}

}  // namespace

void UnpackWatch::Start(Plan plan) {
  plan_ = std::move(plan);
  for (const PlannedItem& item : plan_.items) total_ += item.size;
}

void UnpackWatch::FileStarts(std::wstring_view name) {
  if (AdvanceTo(name)) plan_.items[next_].hasBegun = true;
  currentName_ = name;
  inFile_ = true;
  percentage_ = 0;
}

void UnpackWatch::FileProgress(unsigned percentage) { percentage_ = percentage; }

Outcome UnpackWatch::OutcomeOf(const PlannedItem& item, const WrittenFile& file) const {
  if (item.isFolder) return Outcome::kWritten;
  const auto content = item.crc ? file.Read() : std::nullopt;
  if (!content) return OutcomeOfUnread(item, file);
  if (content->size < item.size) return Outcome::kCutShort;
  return content->crc == item.crc ? Outcome::kWritten : Outcome::kWrongContent;
}

Outcome UnpackWatch::OutcomeOfUnread(const PlannedItem& item, const WrittenFile& file) const {
  const bool isWhole = item.size == 0 || percentage_ >= 100 || file.Size() == item.size;
  if (!isWhole) return Outcome::kCutShort;
  switch (plan_.lastVerdict ? plan_.lastVerdict() : SevenZipVerdict::kNone) {
    case SevenZipVerdict::kGood:
      return Outcome::kWritten;
    case SevenZipVerdict::kBad:
      return Outcome::kWrongContent;
    case SevenZipVerdict::kNone:
      break;
  }
  return item.crc ? Outcome::kNotChecked : Outcome::kWritten;
}

void UnpackWatch::Created(const WrittenFile& file) {
  const std::uint64_t hash = HashOfPath(file.Path());
  const bool isNext = next_ < plan_.items.size() && plan_.items[next_].pathHash == hash;
  const std::size_t index = isNext ? next_ : Find(hash);
  // A folder that no item of the archive stands for.
  if (index == plan_.items.size()) return;
  PlannedItem& item = plan_.items[index];
  item.outcome = OutcomeOf(item, file);
  if (!item.isFolder) Pass(index + 1);
}

void UnpackWatch::Kept(std::wstring_view name) {
  if (!AdvanceTo(name)) return;
  plan_.items[next_].outcome = Outcome::kKept;
  Pass(next_ + 1);
}

std::size_t UnpackWatch::ReachedIn(std::size_t run) const {
  const std::size_t begin = run > 0 ? plan_.runEnds[run - 1] : 0;
  std::size_t end = plan_.runEnds[run];
  while (end > begin && !WasReached(plan_.items[end - 1])) --end;
  return end;
}

std::uint64_t UnpackWatch::BytesDone() const {
  if (!inFile_ || next_ >= plan_.items.size()) return passed_;
  const auto part = static_cast<double>(plan_.items[next_].size) * percentage_ / 100.0;
  return passed_ + std::min(static_cast<std::uint64_t>(part), plan_.items[next_].size);
}

bool UnpackWatch::IsFileNamed(std::size_t index, std::uint32_t nameHash) const {
  const PlannedItem& item = plan_.items[index];
  return !item.isFolder && item.nameHash == nameHash && item.outcome == Outcome::kNone;
}

bool UnpackWatch::AdvanceTo(std::wstring_view name) {
  if (!namesFollowPlan_) return false;
  const std::uint32_t hash = HashOfName(name);
  std::size_t index = next_;
  while (index < plan_.items.size() && !IsFileNamed(index, hash)) ++index;
  // Searching on for each of many unknown names would take quadratic time.
  namesFollowPlan_ = index < plan_.items.size();
  if (!namesFollowPlan_) return false;
  Pass(index);
  return true;
}

std::size_t UnpackWatch::Find(std::uint64_t pathHash) {
  if (byPath_.size() != plan_.items.size()) {
    byPath_.resize(plan_.items.size());
    std::iota(byPath_.begin(), byPath_.end(), 0U);
    std::stable_sort(byPath_.begin(), byPath_.end(), [&](std::uint32_t left, std::uint32_t right) {
      return plan_.items[left].pathHash < plan_.items[right].pathHash;
    });
  }
  auto found = std::lower_bound(
      byPath_.begin(), byPath_.end(), pathHash,
      [&](std::uint32_t index, std::uint64_t hash) { return plan_.items[index].pathHash < hash; });
  for (; found != byPath_.end() && plan_.items[*found].pathHash == pathHash; ++found) {
    const PlannedItem& item = plan_.items[*found];
    if (item.isFolder || (*found >= next_ && item.outcome == Outcome::kNone)) return *found;
  }
  return plan_.items.size();
}

void UnpackWatch::Pass(std::size_t end) {
  for (; next_ < end; ++next_) passed_ += plan_.items[next_].size;
  inFile_ = false;
}

}  // namespace host
