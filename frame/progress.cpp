#include "frame/progress.h"

#include "frame/message.h"
#include "frame/summary.h"
#include "morvunp/messages.h"

namespace morvunp::frame {
namespace {

bool NextMessage(MSG& message) { return PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE) != FALSE; }

bool AskInterrupt() {
  return ShowMessage(L"Interrupt the unpack?", MB_YESNO | MB_ICONQUESTION) == IDYES;
}

}  // namespace

void SendProgress(const CUnpackState& state, DWORD percentage, const std::wstring& text) {
  if (state.m_hDialogProgress == nullptr) return;
  SendMessageW(state.m_hDialogProgress, WM_UNPACK_PROGRESS, percentage,
               text.empty() ? 0 : reinterpret_cast<LPARAM>(text.c_str()));
}

void UpdateProgress(const CUnpackState& state, ULONGLONG done, ULONGLONG total,
                    const std::wstring& text) {
  SendProgress(state, static_cast<DWORD>(PercentageOf(done, total)), text);
}

void DoEvents(CUnpackState& state) {
  MSG message;
  while (NextMessage(message)) {
    if (state.m_bStopRequest != 0) return;
    if (IsDialogMessageW(state.m_hDialogProgress, &message) == FALSE) {
      DispatchMessageW(&message);
    } else if (message.message == WM_UNPACK_STOP) {
      state.m_bStopRequest = 1;
      return;
    }
  }
}

bool MayGoOn(CUnpackState& state) {
  DoEvents(state);
  if (state.m_bStopRequest == 0) return true;
  if (AskInterrupt()) {
    state.m_bCancel = 1;
    return false;
  }
  state.m_bStopRequest = 0;
  return true;
}

bool MayGoOnMeanwhile(CUnpackState& state) {
  // A stop is to act within 0.2 s, and a look at the queue is to cost nothing.
  constexpr std::chrono::milliseconds kBetween{50};
  if (!state.m_options.pumpAlways) return true;
  // The answer holds until the operation has ended.
  if (state.m_bCancel != 0) return false;
  const auto now = std::chrono::steady_clock::now();
  if (now - state.m_lastPump < kBetween) return true;
  state.m_lastPump = now;
  return MayGoOn(state);
}

void ForgetStop(CUnpackState& state) {
  if (!state.m_options.pumpAlways) return;
  state.m_bCancel = 0;
  state.m_bStopRequest = 0;
}

bool WasInterrupted(const CUnpackState& state) {
  return state.m_options.pumpAlways && state.m_bCancel != 0;
}

bool ReportBlock(CUnpackState& state, ULONGLONG done, ULONGLONG total) {
  UpdateProgress(state, done, total, {});
  return MayGoOn(state);
}

void UpdateFileTree(const CUnpackState& state, std::wstring& lastReport, const std::wstring& path) {
  lastReport = path;
  if (state.m_pWndFileTree == nullptr) return;
  SendMessageW(state.m_pWndFileTree->GetSafeHwnd(), WM_UNPACK_FILETREE, 0,
               reinterpret_cast<LPARAM>(lastReport.c_str()));
}

}  // namespace morvunp::frame
