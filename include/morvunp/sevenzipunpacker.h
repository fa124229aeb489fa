// 7z archives, through the 7-Zip engine.
#pragma once

#include <functional>
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
}
namespace morvunp::sevenzip {
class C7zExtractCallback;
class Engine;
class Password;
}  // namespace morvunp::sevenzip

/// What every format tells of an item. For a folder only the path and one of
/// the two bytes are set.
struct SEVENZIPFILESHORTINFO {
  /// Text after the last "." of the whole path; empty without one.
  std::wstring strExt;
  /// The name up to its last "."; the whole name without one.
  std::wstring strTitle;
  std::wstring strName;
  /// Path inside the archive.
  std::wstring strPath;
  /// 1 for a folder inside another folder.
  BYTE bInFolder = 0;
  /// 1 for a folder that is in no other.
  BYTE bFolder = 0;
};

/// All that is known of an item; 0 or empty where the archive does not say.
struct SEVENZIPFILEFULLINFO {
  std::wstring strExt;
  std::wstring strTitle;
  std::wstring strName;
  std::wstring strPath;
  /// Bytes.
  ULONGLONG nSize = 0;
  /// Bytes. Of the files that are compressed together the first one carries the
  /// size of all.
  ULONGLONG nPackedSize = 0;
  /// FILE_ATTRIBUTE bits; with FILE_ATTRIBUTE_UNIX_EXTENSION a Unix mode in the
  /// high half.
  DWORD nAttributes = 0;
  /// Modification time in local time: MS-DOS date in the high half, time in the
  /// low half.
  DWORD nDateTime = 0;
  /// CRC-32 of the unpacked data.
  DWORD nCRC = 0;
  /// Such as "LZMA2:24".
  std::wstring strMethod;
  BYTE bInFolder = 0;
  BYTE bFolder = 0;
};

/// Opens 7z archives. See morvunp/unpacker.h for the common contract.
///
/// The engine is loaded for every open; without it OpenArchive gives false. A
/// wrong password or damaged data shows nowhere in the results, only in the
/// reports of the items. A copy has no archive open.
class MORVUNP_API C7zUnpacker {
 public:
  using ShortInfo = SEVENZIPFILESHORTINFO;
  using FullInfo = SEVENZIPFILEFULLINFO;

  C7zUnpacker();
  virtual ~C7zUnpacker();
  C7zUnpacker(const C7zUnpacker& other);
  C7zUnpacker& operator=(const C7zUnpacker& other);

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

  bool OpenArchive(const std::wstring& path);
  /// Opens a split set by its first volume: name.001 (or .01, .0001) or name.aa.
  /// The first volume that is missing ends the set.
  bool OpenMultiVolumeArchive(const std::wstring& firstVolume);
  bool CloseArchive();

  /// False as well when nothing is open. Otherwise see morvunp/unpacker.h: the
  /// engine may find headers damaged and open what it understands of them. It opens
  /// no archive that is cut or lacks its last volumes; then GetWalkProblem tells why
  /// the last open failed.
  bool IsListComplete() const;
  morvunp::ItemReason GetWalkProblem() const;

  bool FindFile();
  bool FindNextFile();
  /// Place of the current item in the walk, from 0; the one that reports name.
  ULONGLONG GetPosition() const;
  bool GetFileShortInfo(SEVENZIPFILESHORTINFO& info) const;
  bool GetFileFullInfo(SEVENZIPFILEFULLINFO& info) const;
  /// True when the path of a folder contains `path` anywhere.
  bool IsFolder(const std::wstring& path);

  std::wstring GetFileOutputInfo(const std::wstring& path);
  std::wstring GetFolderOutputInfo(const std::wstring& path);
  std::wstring GetArchiveOutputInfo();

  /// Writes the cursor's item to `folder` + "\" + `name`.
  bool UnpackCurrentFile(const std::wstring& name, const std::wstring& folder);
  bool UnpackFile(const std::wstring& path, const std::wstring& target);
  bool UnpackFolder(const std::wstring& path, const std::wstring& target);
  bool UnpackArchive(const std::wstring& target);
  /// See morvunp/itemrouter.h. `target` is not looked at where everything goes
  /// into sinks. True when the pass came to the end that the router wanted.
  bool UnpackItems(const std::wstring& target, const morvunp::ItemRouter& router);

 protected:
  using FolderMap = std::unordered_map<DWORD, std::wstring>;
  friend class morvunp::sevenzip::C7zExtractCallback;

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
  void EmptyShortInfo(SEVENZIPFILESHORTINFO& info) const;
  void EmptyFullInfo(SEVENZIPFILEFULLINFO& info) const;
  /// Makes the first item with this path current, ignoring case.
  bool LocateFile(const std::wstring& path);

  // Prepare one item that the engine is about to unpack. False: it is not to be
  // written; the run ends when m_bReplaceCancelled is set.
  bool ProcessUnpackFolder(const std::wstring& folder, const std::wstring& target, DWORD index);
  bool ProcessUnpackArchive(const std::wstring& target, DWORD index);
  bool ProcessUnpackCurrentFile(const std::wstring& name, const std::wstring& folder);

  morvunp::CUnpackState m_state;
  /// The password that was typed during the last open that succeeded.
  std::wstring m_strArchivePassword;
  BYTE m_bPasswordKnown = 0;
  /// When set, opens take m_strArchivePassword instead of asking. The library
  /// never sets it.
  BYTE m_bReusePassword = 0;

  /// Why the last open failed, where that is known.
  morvunp::ItemReason m_nOpenProblem = morvunp::ItemReason::kNone;

  // The cursor.
  DWORD m_nItemCount = 0;
  DWORD m_nPosition = 0;
  DWORD m_nCurrent = 0;

  // The run in hand.
  static constexpr DWORD kSingleItem = 1;
  static constexpr DWORD kFolderRun = 2;
  static constexpr DWORD kArchiveRun = 3;
  static constexpr DWORD kRoutedRun = 4;
  DWORD m_nMode = 0;
  std::wstring m_strFolder;
  std::wstring m_strTarget;
  // Where the item in hand goes.
  std::wstring m_strCurrentName;
  std::wstring m_strCurrentFolder;
  std::wstring m_strOutputPath;
  /// The run ends: Cancel, or a file that cannot be created.
  BYTE m_bReplaceCancelled = 0;
  // Size and MS-DOS date and time of the item in hand.
  ULONGLONG m_nTotal = 0;
  DWORD m_nItemDateTime = 0;

 private:
  template <class Callback, class Stream>
  bool OpenStream(Callback& callback, Stream* stream);
  bool HasCurrent() const;
  /// Walks all items from the first and stops at the one that `isIt` accepts.
  bool FindItem(const std::function<bool(const SEVENZIPFILESHORTINFO&)>& isIt);
  std::wstring TextOf(morvunp::frame::Totals totals);

  morvunp::output::Root RootAt(const std::wstring& target);
  /// The current item, of the record, as what is reported of it.
  void BeginItem(const SEVENZIPFILEFULLINFO& info);
  bool RefuseName();
  bool UnpackAt(const morvunp::OutputPlace& place);
  void BeginFile(const std::wstring& name);
  bool ProcessItem(DWORD index);
  bool RunExtract(const DWORD* indices, DWORD count,
                  morvunp::sevenzip::C7zExtractCallback& callback);
  bool IsEncrypted(DWORD index) const;
  HRESULT ExtractPlainRest(morvunp::sevenzip::C7zExtractCallback& callback);
  bool RunOverItems(const DWORD* indices, DWORD count, const std::wstring& target);
  std::optional<morvunp::OutputPlace> PlaceInRun(const std::wstring& path, bool isFolder) const;
  morvunp::Route RouteInRun(const std::wstring& path, bool isFolder) const;
  bool TellRest(morvunp::RunReport end);

  std::unique_ptr<morvunp::sevenzip::Engine> m_pEngine;
  /// What the run in hand writes into; null in none.
  morvunp::output::Root* m_pRoot = nullptr;
  /// Of a routed run: what is wanted, by rising place in the walk.
  std::vector<std::pair<DWORD, morvunp::Route>> m_routes;
  /// The item in hand is a folder, if only by the separator behind its name.
  bool m_bFolderInHand = false;
  /// The router wanted no more behind these.
  bool m_bRouterEnded = false;
  /// Encrypted items were told to lack a password.
  bool m_bPlainOnly = false;
  /// The first item that the run in hand has not come to.
  DWORD m_nNext = 0;
  /// The item in hand cannot be decoded without a password.
  bool m_bEncrypted = false;
  /// An item has been made current since the archive was opened.
  bool m_bHasCurrent = false;
};
