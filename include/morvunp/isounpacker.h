// CD and DVD images: ISO 9660 (ECMA-119) and UDF (ECMA-167).
#pragma once

#include <memory>
#include <string>
#include <unordered_map>
#include <vector>

#include "morvunp/itemrouter.h"
#include "morvunp/unpackstate.h"

namespace morvunp::iso {
class Image;
}
namespace morvunp::output {
class Root;
struct Item;
}  // namespace morvunp::output

/// What every format tells of an item.
struct ISOFILESHORTINFO {
  /// The part of the name after its last "."; empty when there is none.
  std::wstring strExt;
  /// The part of the name before its last "."; the whole name without one.
  std::wstring strTitle;
  std::wstring strName;
  /// Path inside the image.
  std::wstring strPath;
  /// The path contains a backslash: the item is not in the root.
  BYTE bInFolder = 0;
  BYTE bFolder = 0;
};

/// All that is known of an item.
struct ISOFILEFULLINFO {
  std::wstring strExt;
  std::wstring strTitle;
  std::wstring strName;
  std::wstring strPath;
  /// ISO 9660: logical block number of the extent. UDF: 0.
  DWORD nLocation = 0;
  /// ISO 9660: size in bytes. UDF: 0.
  DWORD nSize = 0;
  /// UDF: size in bytes (information length). ISO 9660: 0.
  ULONGLONG nSize64 = 0;
  /// UDF: bytes in the recorded blocks, or the size when none are recorded.
  /// ISO 9660: 0.
  ULONGLONG nPackedSize = 0;
  /// Seconds since 1970-01-01 00:00 UTC; the recorded time is taken as local.
  __time64_t timeModified = 0;
  /// As timeModified. ISO 9660: 0.
  __time64_t timeAccessed = 0;
  BYTE bHidden = 0;
  BYTE bInFolder = 0;
  BYTE bFolder = 0;
};

/// Opens disc images. See morvunp/unpacker.h for the common contract.
///
/// OpenArchive can throw CAtlException when a recorded date is impossible and
/// CInvalidArgException when a UDF structure names a partition that does not
/// exist; FindNextFile throws CInvalidArgException past the last item.
class MORVUNP_API CIsoUnpacker {
 public:
  using ShortInfo = ISOFILESHORTINFO;
  using FullInfo = ISOFILEFULLINFO;

  CIsoUnpacker();
  virtual ~CIsoUnpacker();
  CIsoUnpacker(const CIsoUnpacker&) = delete;
  CIsoUnpacker& operator=(const CIsoUnpacker&) = delete;

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
  /// Keeps the item list, which stays readable.
  bool CloseArchive();
  /// Classifies the file without opening it as the object's image.
  void CheckIsoImage(const std::wstring& path);
  /// See morvunp/unpacker.h; of the image opened last. An image is cut when the
  /// data of an item or a directory lies beyond its end: what is missing behind all
  /// of them, such as padding, is missing from no item.
  bool IsListComplete() const;
  morvunp::ItemReason GetWalkProblem() const;
  /// Frees the UDF partition and volume lists.
  void RemoveUDFAllItems();

  bool FindFile();
  bool FindNextFile();
  /// Place of the current item in the walk, from 0; the one that reports name.
  ULONGLONG GetPosition() const;
  bool GetFileShortInfo(ISOFILESHORTINFO& info) const;
  bool GetFileFullInfo(ISOFILEFULLINFO& info) const;
  /// Makes the first item with this path current, ignoring case.
  bool LocateFile(const std::wstring& path);
  /// True when the path of a folder contains `path` anywhere.
  bool IsFolder(const std::wstring& path);

  std::wstring GetFileOutputInfo(const std::wstring& path);
  std::wstring GetFolderOutputInfo(const std::wstring& path);
  std::wstring GetArchiveOutputInfo();

  /// Writes the cursor's item to `folder` under the last component of `name`.
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
  bool SetFileTimeModified(const std::wstring& path, __time64_t time) const;
  void EmptyShortInfo(ISOFILESHORTINFO& info) const;
  void EmptyFullInfo(ISOFILEFULLINFO& info) const;
  void RemoveAllItems();

  morvunp::CUnpackState m_state;

 private:
  morvunp::output::Item CurrentItem(const std::wstring& path) const;
  morvunp::output::Root RootAt(const std::wstring& target);
  bool WriteItem(morvunp::output::Root& root, const morvunp::OutputPlace& place);
  bool WriteData(morvunp::output::Root& root);
  bool TellEnd(morvunp::output::Root& root) const;
  template <class PlaceOf>
  bool RunOverItems(const std::wstring& target, PlaceOf placeOf);

  std::unique_ptr<morvunp::iso::Image> m_pImage;
};
