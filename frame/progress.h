// Progress reports, the message pump, the interrupt question and the reports
// to the host's file-tree window.
#pragma once

#include <string>

#include "morvunp/unpackstate.h"

namespace morvunp::frame {

/// Sends `percentage` to the progress dialog, with a text unless it is empty.
void SendProgress(const CUnpackState& state, DWORD percentage, const std::wstring& text);

/// Sends done / total as a percentage; a total of 0 gives 0.
void UpdateProgress(const CUnpackState& state, ULONGLONG done, ULONGLONG total,
                    const std::wstring& text);

/// Empties the thread's message queue; notes a stop request of the progress
/// dialog and stops there.
void DoEvents(CUnpackState& state);

/// Pumps messages and, on a stop request, asks. False when the user interrupts
/// (m_bCancel is then set).
bool MayGoOn(CUnpackState& state);

/// The sequence after every written block: report, pump, and on a stop request
/// the question. False when the user interrupts (m_bCancel is then set).
bool ReportBlock(CUnpackState& state, ULONGLONG done, ULONGLONG total);

/// For where data is passed over and archives are opened: pumps now and then
/// where the options ask for it. False when the user interrupts.
bool MayGoOnMeanwhile(CUnpackState& state);

/// Before an operation in which it may be so: stops of earlier ones are over.
void ForgetStop(CUnpackState& state);
/// Behind one.
bool WasInterrupted(const CUnpackState& state);

/// Reports a written file or a created folder. `lastReport` is the class's
/// string of this thread, to which the message points.
void UpdateFileTree(const CUnpackState& state, std::wstring& lastReport, const std::wstring& path);

}  // namespace morvunp::frame
