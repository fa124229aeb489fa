// Telling what became of each item, and how the run ended.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>

#include "frame/keyedhash.h"
#include "morvunp/itemrouter.h"
#include "morvunp/unpackstate.h"

namespace morvunp::output {

/// An item on its way out.
struct Item {
  /// Place in the walk, from 0.
  ULONGLONG position = 0;
  /// In the archive.
  std::wstring path;
  /// Bytes, and the time that the question shows.
  ULONGLONG size = 0;
  __time64_t timeModified = 0;
};

/// Why the system's last refusal means for an item.
morvunp::ItemReason ReasonOfError(int systemError);

/// There is no room on the disk, for this file and for others.
bool IsFull(int systemError);

/// The one place from which the reports of a run are told. Whoever decides
/// about the item in hand says so here; its first failure is the one that
/// counts, since the others follow from it.
class Reporter {
 public:
  explicit Reporter(const CUnpackState& state) : m_state(state) {}

  void Begin(Item item);
  /// The item in hand goes there, which hears what becomes of it as well.
  void SetSink(morvunp::ItemSink& sink) { m_pSink = &sink; }
  const Item& Current() const { return m_item; }
  void SetOutputPath(std::wstring path) { m_outputPath = std::move(path); }
  const std::wstring& OutputPath() const { return m_outputPath; }
  void AddBytes(ULONGLONG bytes) { m_nBytes += bytes; }
  ULONGLONG Bytes() const { return m_nBytes; }
  /// The existing file is written into although it was to stay until the end.
  void SetInPlace() { m_bInPlace = true; }
  const morvunp::UnpackOptions& Options() const { return m_state.m_options; }
  /// The run is to end here, and why: kNone where nothing more is wanted.
  void SetEnd(const morvunp::RunReport& why) {
    if (!m_end) m_end = why;
  }
  const std::optional<morvunp::RunReport>& End() const { return m_end; }
  bool IsPastLimit() const { return m_end && m_end->reason == morvunp::ItemReason::kLimit; }
  /// A sink wants nothing more, so that nothing behind was to be reached.
  bool HasEnough() const { return m_end && m_end->reason == morvunp::ItemReason::kNone; }
  /// After an item that failed there is no reason to end the run.
  bool GoesOn() const { return m_state.m_options.goOn && !m_end; }
  /// Why the last item that failed did.
  const morvunp::RunReport& LastFailure() const { return m_lastFailure; }

  /// Of the item in hand. Always false, for callers that end with a failure.
  bool Tell(morvunp::ItemResult result, morvunp::ItemReason reason = morvunp::ItemReason::kNone,
            std::wstring_view detail = {});
  /// The system's last refusal. Always false.
  bool TellRefusal();
  bool TellError(int systemError);
  /// What ended the run. Always false.
  bool TellFailure(const morvunp::RunReport& why);
  /// `what` as ItemReport::systemError has it for kInTheWay. Always false.
  bool TellInTheWay(int what);

  /// The item in hand passes a limit, which ends the run. Always false.
  bool TellLimit();

  /// The item in hand has come out at its output path, with a defect or none.
  void TellWritten(morvunp::ItemReason defect = morvunp::ItemReason::kNone);
  /// What this run wrote at the output path of the item in hand goes.
  void TellReplaced();
  /// The item at `path` in the archive is what this run wrote at `outputPath`.
  bool HasWritten(const std::wstring& outputPath, const std::wstring& path) const;

  void TellNotReached(Item item, morvunp::ItemReason reason);
  /// The item in hand was the last that was begun; tells how the run ended:
  /// what set an end, or else `why`. True when it came to the end that was
  /// wanted.
  bool TellEnd(const morvunp::RunReport& why);

 private:
  struct Written {
    ULONGLONG position;
    ULONGLONG path;
    ULONGLONG size;
  };

  void TellNow(morvunp::ItemResult result, morvunp::ItemReason reason, int systemError,
               std::wstring_view detail);
  void Send(const morvunp::ItemReport& report) const;
  void SendToSink(const morvunp::ItemReport& report);

  const CUnpackState& m_state;
  Item m_item;
  std::wstring m_outputPath;
  ULONGLONG m_nBytes = 0;
  /// Nothing is left to be told of it; so before the first.
  bool m_bTold = true;
  bool m_bInPlace = false;
  morvunp::ItemSink* m_pSink = nullptr;
  std::optional<morvunp::RunReport> m_end;
  morvunp::RunReport m_lastFailure;
  /// What came out, by keyed hashes of output paths: a run may have millions.
  std::unordered_map<ULONGLONG, Written, frame::KeyedHash> m_written;
};

}  // namespace morvunp::output
