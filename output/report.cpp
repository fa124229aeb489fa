#include "output/report.h"

#include <cerrno>
#include <utility>

namespace morvunp::output {
namespace {

using morvunp::ItemReason;
using morvunp::ItemReport;
using morvunp::ItemResult;

ULONGLONG HashOf(std::wstring_view text) {
  frame::TextHash hash;
  for (const wchar_t c : text) hash.Add(c);
  return hash.Result();
}

}  // namespace

ItemReason ReasonOfError(int systemError) {
  switch (systemError) {
    case ENAMETOOLONG:
      return ItemReason::kNameTooLong;
    case ELOOP:
    case ENOTDIR:
    case EISDIR:
    case EEXIST:
      return ItemReason::kInTheWay;
    case ENOMEM:
      return ItemReason::kNoMemory;
    default:
      return ItemReason::kSystem;
  }
}

void Reporter::Begin(Item item) {
  m_item = std::move(item);
  m_outputPath.clear();
  m_nBytes = 0;
  m_bTold = false;
}

void Reporter::Send(const ItemReport& report) const {
  if (m_state.m_reportItem) m_state.m_reportItem(report);
}

void Reporter::TellNow(ItemResult result, ItemReason reason, int systemError,
                       std::wstring_view detail) {
  if (std::exchange(m_bTold, true)) return;
  if (result == ItemResult::kFailed) m_lastFailure = {reason, systemError, {}};
  Send({m_item.position, m_item.path, m_outputPath, m_item.size, m_nBytes, result, reason,
        systemError, detail});
}

bool Reporter::Tell(ItemResult result, ItemReason reason, std::wstring_view detail) {
  TellNow(result, reason, 0, detail);
  return false;
}

bool Reporter::TellRefusal() { return TellError(platform::LastSystemError()); }

bool Reporter::TellError(int systemError) {
  const ItemReason reason = ReasonOfError(systemError);
  if (reason == ItemReason::kInTheWay) return TellInTheWay(systemError);
  TellNow(ItemResult::kFailed, reason, reason == ItemReason::kSystem ? systemError : 0, {});
  return false;
}

bool Reporter::TellFailure(const morvunp::RunReport& why) {
  TellNow(ItemResult::kFailed, why.reason, why.systemError, why.detail);
  return false;
}

bool Reporter::TellInTheWay(int what) {
  TellNow(ItemResult::kFailed, ItemReason::kInTheWay, what, {});
  return false;
}

void Reporter::TellWritten(ItemReason defect) {
  m_written[HashOf(m_outputPath)] = {m_item.position, HashOf(m_item.path), m_item.size};
  Tell(defect == ItemReason::kNone ? ItemResult::kWritten : ItemResult::kFailed, defect);
}

void Reporter::TellReplaced() {
  const auto found = m_written.find(HashOf(m_outputPath));
  if (found == m_written.end()) return;
  const Written earlier = found->second;
  m_written.erase(found);
  Send({.position = earlier.position,
        .outputPath = m_outputPath,
        .recordedSize = earlier.size,
        .result = ItemResult::kReplaced});
}

bool Reporter::HasWritten(const std::wstring& outputPath, const std::wstring& path) const {
  const auto found = m_written.find(HashOf(outputPath));
  return found != m_written.end() && found->second.path == HashOf(path);
}

void Reporter::TellNotReached(Item item, ItemReason reason) {
  Begin(std::move(item));
  Tell(ItemResult::kNotReached, reason);
}

void Reporter::TellEnd(ItemReason reason, int systemError, std::wstring_view detail) {
  if (m_state.m_reportRun) m_state.m_reportRun({reason, systemError, detail});
}

}  // namespace morvunp::output
