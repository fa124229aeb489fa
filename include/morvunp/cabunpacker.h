// Cabinets.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

#include "morvunp/itemrouter.h"
#include "morvunp/unpackstate.h"

namespace morvunp::cab {
class Cabinet;
class CCabItemInfo;
class Extraction;
}  // namespace morvunp::cab

namespace morvunp::output {
class Root;
}

/// What every format tells of an item.
struct CABFILESHORTINFO {
  /// The part of the whole path after its last "."; empty when there is none.
  std::wstring strExt;
  /// The part of the name before its last "."; the whole name without one.
  std::wstring strTitle;
  std::wstring strName;
  /// Path inside the cabinet.
  std::wstring strPath;
  /// The path contains a backslash.
  BYTE bInFolder = 0;
  /// The path ends with a backslash; only strPath is set then.
  BYTE bFolder = 0;
};

/// All that is known of an item.
struct CABFILEFULLINFO {
  std::wstring strExt;
  std::wstring strTitle;
  std::wstring strName;
  std::wstring strPath;
  /// Bytes.
  LONG nSize = 0;
  /// MS-DOS date and time, local.
  WORD nDate = 0;
  WORD nTime = 0;
  /// As the cabinet records them: read-only 0x01, hidden 0x02, system 0x04,
  /// archive 0x20, executable 0x40, name is UTF-8 0x80.
  WORD nAttribs = 0;
  BYTE bInFolder = 0;
  BYTE bFolder = 0;
};

/// Opens cabinets through the decompression interface of "Cabinet.dll". See
/// morvunp/unpacker.h for the common contract.
///
/// Every look-up, summary text and UnpackFile reads the cabinet's table anew,
/// after which the cursor stands elsewhere. Only one object of a thread may
/// unpack at a time. FindNextFile throws CInvalidArgException past the last
/// item.
class MORVUNP_API CCabUnpacker {
 public:
  using ShortInfo = CABFILESHORTINFO;
  using FullInfo = CABFILEFULLINFO;

  CCabUnpacker();
  ~CCabUnpacker();
  CCabUnpacker(const CCabUnpacker&) = delete;
  CCabUnpacker& operator=(const CCabUnpacker&) = delete;

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
  /// False when nothing was ever opened. Keeps the item list.
  bool CloseArchive();

  /// Reads the cabinet's table. False when it holds no file or is damaged; the
  /// items before the damage can be walked nevertheless, see IsListComplete.
  bool FindFile();
  bool InitScan();
  bool FindNextFile();
  /// Place of the current item in the walk, from 0; the one that reports name.
  ULONGLONG GetPosition() const;
  /// See morvunp/unpacker.h. That the file is cut is known when it is opened, that
  /// the table cannot be read whole after a scan. A missing cabinet of the set is
  /// told by the end of a run, and where the whole set is walked, by the scan.
  bool IsListComplete() const;
  morvunp::ItemReason GetWalkProblem() const;
  /// The name of the cabinet that the last scan of a set missed; empty when
  /// there was none.
  std::wstring GetMissingCabinet() const;
  bool GetFileShortInfo(CABFILESHORTINFO& info) const;
  bool GetFileFullInfo(CABFILEFULLINFO& info) const;
  /// True when the path of an item in a folder contains `path` + "\" anywhere.
  bool IsFolder(const std::wstring& path);

  std::wstring GetFileOutputInfo(const std::wstring& path);
  std::wstring GetFolderOutputInfo(const std::wstring& path);
  std::wstring GetArchiveOutputInfo();

  /// Writes the item that the last UnpackFile selected to `folder` + "\" +
  /// `name`; the second half of UnpackFile.
  bool UnpackCurrentFile(const std::wstring& name, const std::wstring& folder);
  bool UnpackFile(const std::wstring& path, const std::wstring& target);
  bool UnpackFolder(const std::wstring& path, const std::wstring& target);
  bool UnpackArchive(const std::wstring& target);
  /// See morvunp/itemrouter.h. `target` is not looked at where everything goes
  /// into sinks. True when the pass came to the end that the router wanted.
  bool UnpackItems(const std::wstring& target, const morvunp::ItemRouter& router);

  /// The object that wrote a file last on this thread.
  static void* GetThis();

  // What the decompression interface calls.
  static void* FDIAlloc(ULONGLONG size);
  static void FDIFree(void* memory);
  static INT_PTR FDIOpen(char* path, int openFlags, int mode);
  static UINT FDIRead(INT_PTR file, void* buffer, UINT count);
  static UINT FDIWrite(INT_PTR file, void* buffer, UINT count);
  static int FDIClose(INT_PTR file);
  static LONG FDISeek(INT_PTR file, LONG distance, int origin);
  static INT_PTR FDICallback_Scan(FDINOTIFICATIONTYPE type, FDINOTIFICATION* notification);
  static INT_PTR FDICallback_Extract(FDINOTIFICATIONTYPE type, FDINOTIFICATION* notification);

 protected:
  using FolderMap = std::unordered_map<DWORD, std::wstring>;

  static void SetThis(void* unpacker);

  bool CreateFDIContext();
  bool DestroyFDIContext();
  bool LocateFile(const std::wstring& path);
  void EmptyShortInfo(CABFILESHORTINFO& info) const;
  void EmptyFullInfo(CABFILEFULLINFO& info) const;
  void RemoveAllItems();

  /// Prepare the writing of one reported file. True when it is to be written.
  bool ProcessUnpackCurrentFile(const std::wstring& name, const std::wstring& folder);
  bool ProcessUnpackFolder(const std::wstring& folder, const std::wstring& target,
                           const char* fileName);
  bool ProcessUnpackArchive(const std::wstring& target, const char* fileName);

  void DoEvents();
  void UpdateProgress(DWORD done, DWORD total, const std::wstring& text);
  void UpdateFileTree(const std::wstring& path);
  std::wstring FormatOfNumber64(ULONGLONG number) const;
  double ConvUInt64ToDouble(ULONGLONG number) const;
  DWORD HashKey(LPCWSTR text) const;
  DWORD CheckFolderMap(FolderMap& map, const std::wstring& path) const;
  bool CheckFolder(std::vector<std::wstring>& list, const std::wstring& path) const;
  bool CreateFolder(const std::wstring& path);
  bool FileExists(const std::wstring& path) const;
  bool SetFileTimeModified(const std::wstring& path, DWORD dosDateTime) const;

  morvunp::CUnpackState m_state;

 private:
  morvunp::output::Root RootAt(const std::wstring& target);
  void BeginItem(const std::wstring& path);
  void BeginItem(const morvunp::cab::CCabItemInfo& item);
  bool RefuseName();
  bool UnpackAt(const morvunp::OutputPlace& place);
  bool SelectItem(const std::wstring& path);
  morvunp::Route RouteOf(ULONGLONG position, const morvunp::cab::CCabItemInfo& item) const;
  bool ProcessRouted(const morvunp::cab::CCabItemInfo& item);
  bool ProcessPlace(const morvunp::OutputPlace& place);
  INT_PTR Declined() const;
  std::wstring NameOf(const char* name) const;
  bool ProcessItem(const char* fileName);
  void NoteSet();
  bool RunPass();
  bool RunOverItems(DWORD mode, const std::wstring& target);
  morvunp::RunReport EndOfPass(bool isCopied) const;
  bool TellRest(bool isCopied);
  void BeginFile(const std::wstring& name);
  INT_PTR OnCopyFile(const FDINOTIFICATION& notification);
  INT_PTR OnCloseFile(const FDINOTIFICATION& notification);
  INT_PTR OnEnumerate();
  INT_PTR OnPartialFile(const FDINOTIFICATION& notification);
  INT_PTR OnFileFailed(const FDINOTIFICATION& notification);
  UINT OnWrite(const void* bytes, UINT count);

  std::unique_ptr<morvunp::cab::Cabinet> m_pCabinet;
  std::unique_ptr<morvunp::cab::Extraction> m_pExtraction;
};
