// RAR archives and volume sets, with encryption, through the UnRAR library.
#pragma once

#include <exception>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

#include "morvunp/itemrouter.h"
#include "morvunp/unpackstate.h"

namespace morvunp::frame {
class Totals;
}
namespace morvunp::output {
class Root;
struct FileFacts;
struct Item;
}  // namespace morvunp::output

namespace morvunp::rar {
class Engine;
struct Run;

/// An engine that is a member: a copy of its owner starts with nothing open.
class MORVUNP_API OwnEngine {
 public:
  OwnEngine();
  ~OwnEngine();
  OwnEngine(const OwnEngine&);
  OwnEngine& operator=(const OwnEngine&);

  Engine* operator->() const { return m_pEngine.get(); }
  Engine& operator*() const { return *m_pEngine; }

 private:
  std::unique_ptr<Engine> m_pEngine;
};

/// What an archive lacks, as its headers show when it is opened.
struct Gap {
  /// kNone, kCutShort or kDamaged.
  ItemReason problem = ItemReason::kNone;
  /// Where the file is cut: number of the items whose headers it has.
  std::optional<ULONGLONG> items{};
  /// It is cut in the data of the last of them.
  bool isDataCut = false;
  /// Bytes of an archive whose headers are encrypted: only a walk can show that it
  /// takes more than these. 0 of others and of volumes.
  ULONGLONG hiddenSize = 0;
};
}  // namespace morvunp::rar

/// What every format tells of an item, and whether a file is split.
struct RARFILESHORTINFO {
  /// Files only: the part of the whole path after its last "."; empty when
  /// there is none.
  std::wstring strExt;
  /// Files only: the part of the name before its last "."; the whole name
  /// without one.
  std::wstring strTitle;
  /// Files only.
  std::wstring strName;
  /// Path inside the archive.
  std::wstring strPath;
  /// A folder inside another folder.
  BYTE bInFolder = 0;
  /// A folder in the root.
  BYTE bFolder = 0;
  /// The file continues in the next volume.
  BYTE bSplitAfter = 0;
};

/// All that is known of an item. Of a folder only the path and the flags.
struct RARFILEFULLINFO {
  std::wstring strExt;
  std::wstring strTitle;
  std::wstring strName;
  std::wstring strPath;
  /// Always empty.
  std::wstring strReserved;
  DWORD nUnpVer = 0;
  /// nUnpVer again.
  DWORD nUnpVer2 = 0;
  /// kRarSplitBefore and further flags of the header.
  DWORD nFlags = 0;
  DWORD nMethod = 0;
  /// MS-DOS date and time; see morvunp/dostime.h.
  DWORD nFileTime = 0;
  DWORD nFileCRC = 0;
  DWORD nPackSize = 0;
  DWORD nPackSizeHigh = 0;
  DWORD nUnpSize = 0;
  DWORD nUnpSizeHigh = 0;
  DWORD nFileAttr = 0;
  /// nFileAttr again.
  DWORD nFileAttr2 = 0;
  BYTE bInFolder = 0;
  BYTE bFolder = 0;
  BYTE bSplitAfter = 0;
};

namespace morvunp {

/// In nFlags: this is the continuation of a file that began in an earlier
/// volume. A volume set may have such a header for each part of a file.
inline constexpr DWORD kRarSplitBefore = 0x01;

}  // namespace morvunp

/// Opens RAR archives. See morvunp/unpacker.h for the common contract.
///
/// The archive is a stream: each record operation reads the next header, and
/// the end shows as one that returns false. A copy of an object knows archive
/// and password, but opens the archive for itself: call FindFile first.
class MORVUNP_API CRarUnpacker {
 public:
  using ShortInfo = RARFILESHORTINFO;
  using FullInfo = RARFILEFULLINFO;

  CRarUnpacker();

  void SetIni(const INIUNPACK& settings);
  void SetIniYesToAll(const INIYESTOALL& answers);
  void GetIniYesToAll(INIYESTOALL& answers) const;
  void SetWndFileTree(CWnd* window);
  void SetHandleDialogProgress(HWND dialog);
  /// See morvunp/itemreport.h. Either may be empty.
  void SetItemReport(morvunp::ItemReportFunction item, morvunp::RunReportFunction run = {});
  /// See morvunp/unpackoptions.h. False, and nothing changes, when the system
  /// does not know the code page or it is no superset of ASCII.
  bool SetOptions(const morvunp::UnpackOptions& options);

  /// Asks for the password when the headers are encrypted.
  bool OpenArchive(const std::wstring& path);
  bool CloseArchive();

  /// Opens the archive again and goes before the first header.
  bool FindFile();
  /// Passes over the item whose header was read last, if it has not been
  /// unpacked. False when that fails; true at the end of the archive, too.
  bool FindNextFile();
  /// Place of the current item in the walk, from 0; the one that reports name.
  ULONGLONG GetPosition() const;
  /// Shows a message when the header is damaged or the password wrong.
  bool GetFileShortInfo(RARFILESHORTINFO& info);
  bool GetFileFullInfo(RARFILEFULLINFO& info);
  /// True when the path of a folder contains `path` anywhere.
  bool IsFolder(const std::wstring& path);
  /// See morvunp/unpacker.h. A cut or a damaged beginning is known when the
  /// archive is opened, other damage and a missing volume when a walk has come to
  /// it. The walk of an unpack run ends where the engine loses its place: the
  /// items behind are not reached.
  bool IsListComplete() const;
  morvunp::ItemReason GetWalkProblem() const;
  /// Whether the summary texts count a split file once. Where this was not called
  /// they do not: each volume's part of it counts as a file.
  void CountSplitFilesOnce(bool isOnce);

  /// The comment of the archive opened last; empty without one. At most 65,535
  /// characters.
  std::wstring GetComment() const;

  std::wstring GetFileOutputInfo(const std::wstring& path);
  std::wstring GetFolderOutputInfo(const std::wstring& path);
  std::wstring GetArchiveOutputInfo();

  /// Writes the item whose header was read last to `folder` + "\" + `name`.
  bool UnpackCurrentFile(const std::wstring& name, const std::wstring& folder);
  bool UnpackFile(const std::wstring& path, const std::wstring& target);
  bool UnpackFolder(const std::wstring& path, const std::wstring& target);
  bool UnpackArchive(const std::wstring& target);
  /// See morvunp/itemrouter.h. `target` is not looked at where everything goes
  /// into sinks. True when the pass came to the end that the router wanted.
  bool UnpackItems(const std::wstring& target, const morvunp::ItemRouter& router);

 protected:
  using FolderMap = std::unordered_map<DWORD, std::wstring>;

  void DoEvents();
  void UpdateProgress(ULONGLONG done, ULONGLONG total, const std::wstring& text);
  void UpdateFileTree(const std::wstring& path);
  std::wstring FormatOfNumber64(ULONGLONG number) const;
  double ConvUInt64ToDouble(ULONGLONG number) const;
  DWORD HashKey(LPCWSTR text) const;
  DWORD CheckFolderMap(FolderMap& map, const std::wstring& path) const;
  bool CheckFolder(std::vector<std::wstring>& list, const std::wstring& path) const;
  bool CreateFolder(const std::wstring& path);
  bool FileExists(const std::wstring& path) const;
  void EmptyShortInfo(RARFILESHORTINFO& info) const;
  void EmptyFullInfo(RARFILEFULLINFO& info) const;
  /// Opens the archive again and reads headers up to the first item with this
  /// path, ignoring case.
  bool LocateFile(const std::wstring& path, RARFILEFULLINFO& info);

  /// What the engine calls while it works on a file; `userData` is the object.
  static int CallbackProc(UINT message, LPARAM userData, LPARAM p1, LPARAM p2);

  morvunp::CUnpackState m_state;
  /// Of the open archive, when m_bPasswordSet.
  std::wstring m_strCurrentPassword;
  std::wstring m_strArchive;
  morvunp::rar::OwnEngine m_hArchive;
  /// -1 before a walk, then the number of headers that it has moved to.
  LONGLONG m_nHeader = -1;
  // The file in hand: its size, MS-DOS date and time, how much of it is done,
  // and its name.
  ULONGLONG m_nTotal = 0;
  DWORD m_nFileTime = 0;
  ULONGLONG m_nDone = 0;
  std::wstring m_strCurrentName;
  BYTE m_bPasswordSet = 0;
  /// The one that was accepted last.
  std::wstring m_strSavedPassword;
  /// When set, OpenArchive does not ask but takes m_strSavedPassword. The
  /// library never sets it.
  BYTE m_bReusePassword = 0;
  BYTE m_bPasswordSaved = 0;

 private:
  bool AskForHeaders();
  void UsePassword();
  int ReadHeader();
  int PassOver();
  void NoteUnopened();
  morvunp::ItemReason ProblemOf(int code, bool isEncrypted) const;
  bool IsBeyondEnd() const;
  std::wstring TextOf(morvunp::frame::Totals totals);

  template <class PlaceOf>
  bool RunOverItems(const std::wstring& target, PlaceOf placeOf);
  bool IsRest() const;
  bool LocateSource();
  morvunp::output::Root RootAt(const std::wstring& target);
  morvunp::output::Item CurrentItem(const std::wstring& path) const;
  bool WriteItem(const morvunp::OutputPlace& place);
  bool MakeFolder(const std::wstring& folder);
  bool UnpackAt(const morvunp::OutputPlace& place);
  bool Drain();
  bool IsWithoutPassword() const;
  bool TellNoPassword();
  void Resume();
  void BeginData();
  bool Write();
  bool WriteData();
  bool WriteOldLink();
  bool Repeat(const morvunp::output::FileFacts& facts);
  morvunp::output::FileFacts FactsOfCurrent();
  bool Fail(int code);
  template <class RouteOf>
  bool TellRest(RouteOf routeOf);
  int OnData(const void* bytes, std::size_t length);

  int OnCallback(UINT message, LPARAM p1, LPARAM p2);
  int OnVolumeMissing(char* name);
  template <class Step>
  int Walk(Step step);
  int OnPasswordNeeded(char* buffer, std::size_t capacity);

  /// What ended the last walk.
  morvunp::ItemReason m_nWalkProblem = morvunp::ItemReason::kNone;
  /// The engine is at work for the walk and not for an item.
  bool m_bWalking = false;
  /// Where the host said that volumes are which were missed; empty where it does
  /// not know.
  std::map<std::wstring, std::string> m_volumeAnswers;
  /// The engine asked for this one last and has not opened it since.
  std::wstring m_strVolumeAsked;
  morvunp::rar::Gap m_gap;
  BYTE m_bCountsOnce = 0;
  /// Bytes that the archive has at least, from what the walk has come to.
  ULONGLONG m_nLeastSize = 0;
  /// Number of items that the walk has come to.
  ULONGLONG m_nItems = 0;
  /// The volume that the engine asked for in vain.
  std::wstring m_strMissingVolume;
  /// Thrown in a callback, to be thrown again behind the engine.
  std::exception_ptr m_pThrown;
  /// The run in hand; null in none.
  morvunp::rar::Run* m_pRun = nullptr;
};
