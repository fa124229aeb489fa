#include "output/report.h"

#include <cerrno>
#include <utility>

namespace morvunp::output {
namespace {

using morvunp::ItemReason;
using morvunp::ItemReport;
using morvunp::ItemResult;

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

bool IsFull(int systemError) { return systemError == ENOSPC || systemError == EDQUOT; }

void Reporter::Begin(Item item) {
  m_item = std::move(item);
  m_outputPath.clear();
  m_nBytes = 0;
  m_bTold = false;
  m_bInPlace = false;
  m_pSink = nullptr;
}

void Reporter::Send(const ItemReport& report) const {
  if (m_state.m_reportItem) m_state.m_reportItem(report);
}

void Reporter::SendToSink(const ItemReport& report) {
  morvunp::ItemSink* const sink = std::exchange(m_pSink, nullptr);
  if (sink != nullptr && !sink->End(report)) SetEnd({});
}

void Reporter::TellNow(ItemResult result, ItemReason reason, int systemError,
                       std::wstring_view detail) {
  if (std::exchange(m_bTold, true)) return;
  if (result == ItemResult::kFailed) m_lastFailure = {reason, systemError, {}};
  if (m_state.m_options.goOn && IsFull(systemError)) SetEnd(m_lastFailure);
  const ItemReport report{m_item.position, m_item.path, m_outputPath, m_item.size, m_nBytes,
                          result,          reason,      systemError,  detail,      m_bInPlace};
  Send(report);
  SendToSink(report);
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

bool Reporter::TellLimit() {
  SetEnd({ItemReason::kLimit});
  return Tell(ItemResult::kFailed, ItemReason::kLimit);
}

void Reporter::TellWritten(ItemReason defect) {
  m_written[frame::HashOfText(m_outputPath)] = {m_item.position, frame::HashOfText(m_item.path),
                                                m_item.size};
  Tell(defect == ItemReason::kNone ? ItemResult::kWritten : ItemResult::kFailed, defect);
}

void Reporter::TellReplaced() {
  const auto found = m_written.find(frame::HashOfText(m_outputPath));
  if (found == m_written.end()) return;
  const Written earlier = found->second;
  m_written.erase(found);
  Send({.position = earlier.position,
        .outputPath = m_outputPath,
        .recordedSize = earlier.size,
        .result = ItemResult::kReplaced});
}

bool Reporter::HasWritten(const std::wstring& outputPath, const std::wstring& path) const {
  const auto found = m_written.find(frame::HashOfText(outputPath));
  return found != m_written.end() && found->second.path == frame::HashOfText(path);
}

void Reporter::TellNotReached(Item item, ItemReason reason) {
  Begin(std::move(item));
  Tell(ItemResult::kNotReached, reason);
}

bool Reporter::TellEnd(const morvunp::RunReport& why) {
  const morvunp::RunReport end = m_end.value_or(why);
  if (m_state.m_reportRun) m_state.m_reportRun(end);
  return end.reason == ItemReason::kNone;
}

}  // namespace morvunp::output
