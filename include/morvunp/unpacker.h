// The contract that all unpacker classes share, as a concept.
//
// There is no common base class: a host holds a std::variant of the classes
// and visits it. One object opens one archive at a time:
//
//   construct; SetIni, SetIniYesToAll, SetOptions;
//   SetWndFileTree, SetHandleDialogProgress;
//   OpenArchive; walk and read records and texts; unpack; GetIniYesToAll;
//   CloseArchive; destroy.
//
// An operation works on the thread that calls it. Objects on different threads
// know nothing of each other, and an object may be used by one thread after the
// other. Windows, the message queue, the user interface and the code page of
// platform::SetAnsiCodePage are each thread's own.
//
// IsListComplete is false when something is missing from what the archive says it
// has: items from its list, or data of theirs from its file. GetWalkProblem tells
// why: kCutShort where the file ends before the archive does, kMissingVolume where
// a set does, kDamaged otherwise, or what is wrong with the password of encrypted
// headers. The end of a run tells it, too, where the run did not end for another
// reason. Ask again behind a walk: it may have come to what could not be read.
//
// Paths inside an archive are joined by one backslash, without a leading one.
// Target folders are absolute paths in the library's form (see
// morvunp::platform::ToLibraryPath), without a trailing backslash. Every operation
// reports failure as false or an empty text.
//
// A host may throw in whatever the library calls: window procedures, dialogs,
// pending events, reports. The engine below is brought to its end first, then
// the same exception leaves the operation, in all formats. The file in hand goes,
// as when the user interrupts; the object can be used on.
#pragma once

#include <concepts>
#include <string>

#include "morvunp/itemrouter.h"
#include "morvunp/records.h"
#include "morvunp/unpackoptions.h"

namespace morvunp {

template <class T>
concept Unpacker = requires(T unpacker, const INIUNPACK& settings, INIYESTOALL& answers,
                            CWnd* window, HWND dialog, const UnpackOptions& options,
                            const ItemRouter& router, const std::wstring& text,
                            typename T::ShortInfo& shortInfo, typename T::FullInfo& fullInfo) {
  { unpacker.SetIni(settings) } -> std::same_as<void>;
  { unpacker.SetIniYesToAll(answers) } -> std::same_as<void>;
  { unpacker.GetIniYesToAll(answers) } -> std::same_as<void>;
  { unpacker.SetWndFileTree(window) } -> std::same_as<void>;
  { unpacker.SetHandleDialogProgress(dialog) } -> std::same_as<void>;
  {
    unpacker.SetItemReport(morvunp::ItemReportFunction(), morvunp::RunReportFunction())
    } -> std::same_as<void>;
  { unpacker.GetPosition() } -> std::same_as<ULONGLONG>;
  { unpacker.SetOptions(options) } -> std::same_as<bool>;
  { unpacker.IsListComplete() } -> std::same_as<bool>;
  { unpacker.GetWalkProblem() } -> std::same_as<morvunp::ItemReason>;
  { unpacker.OpenArchive(text) } -> std::same_as<bool>;
  { unpacker.CloseArchive() } -> std::same_as<bool>;
  { unpacker.FindFile() } -> std::same_as<bool>;
  { unpacker.FindNextFile() } -> std::same_as<bool>;
  { unpacker.GetFileShortInfo(shortInfo) } -> std::same_as<bool>;
  { unpacker.GetFileFullInfo(fullInfo) } -> std::same_as<bool>;
  { unpacker.IsFolder(text) } -> std::same_as<bool>;
  { unpacker.GetFileOutputInfo(text) } -> std::same_as<std::wstring>;
  { unpacker.GetFolderOutputInfo(text) } -> std::same_as<std::wstring>;
  { unpacker.GetArchiveOutputInfo() } -> std::same_as<std::wstring>;
  { unpacker.UnpackCurrentFile(text, text) } -> std::same_as<bool>;
  { unpacker.UnpackFile(text, text) } -> std::same_as<bool>;
  { unpacker.UnpackFolder(text, text) } -> std::same_as<bool>;
  { unpacker.UnpackArchive(text) } -> std::same_as<bool>;
  { unpacker.UnpackItems(text, router) } -> std::same_as<bool>;
};

/// Reads the current item into either record of the class.
template <class U>
bool ReadItem(U& unpacker, typename U::ShortInfo& record) {
  return unpacker.GetFileShortInfo(record);
}
template <class U>
bool ReadItem(U& unpacker, typename U::FullInfo& record) {
  return unpacker.GetFileFullInfo(record);
}

/// True when items may be missing from the list: FindFile can be false then
/// although some can be walked.
template <class U>
bool IsListCut(const U& unpacker) {
  return !unpacker.IsListComplete();
}

/// Walks all items of an open archive and calls `visit` with a record of each
/// until it returns false. `Record` is the class's ShortInfo or FullInfo. Uses
/// the object's own cursor. A damaged list is walked as far as it goes.
template <class Record, class U, class Visit>
void WalkItems(U& unpacker, Visit visit) {
  Record record;
  bool more = unpacker.FindFile() || IsListCut(unpacker);
  while (more) {
    more = unpacker.FindNextFile();
    if (!ReadItem(unpacker, record) || !visit(record)) return;
  }
}

}  // namespace morvunp
