// One pass of FDICopy over a cabinet.
#pragma once

#include "platform/cabinet/datastream.h"

namespace cabinet {

class Pass : private VolumeSource {
 public:
  Pass(const Host& host, const char* name, const char* folder, int flags, PFNFDINOTIFY notify,
       void* user);

  /// Reports every file of the cabinet and copies those that the caller wants.
  /// Throws Failure.
  void Run();

 private:
  void PassTable();
  void GoToNextTable();
  FDINOTIFICATION About(const Header& header) const;
  INT_PTR Notify(FDINOTIFICATIONTYPE type, FDINOTIFICATION& notification);
  void NotifyCabinetInfo(Header& header);
  void NotifyEnumerate(int filesLeft);
  FDINOTIFICATION About(const File& file) const;
  void PassFile(const File& file);
  void CopyFile(const File& file);
  void WriteData(const File& file, INT_PTR output);
  void CloseFile(const File& file, INT_PTR output);
  bool GoesOn(FDIERROR error) const;
  void FailFile(const File& file, INT_PTR output, FDIERROR error);
  WORD FolderOf(const File& file) const;

  Owned<Volume> First(WORD& folder) override;
  bool IsEarlier(const Volume& volume) const override;
  Owned<Volume> Next(const Volume& current) override;
  Owned<Volume> OpenNext(const char* name, const Volume& current);
  Owned<Volume> OpenNeighbour(const char* name, const Volume& current, int step);
  Owned<Volume> Open(const char* name);

  const Host& m_host;
  /// Of the cabinet whose table is passed.
  const char* m_pszName;
  char m_nextName[CB_MAX_CAB_PATH] = {};
  bool m_bWholeSet;
  bool m_bGoOn;
  PFNFDINOTIFY m_pfnNotify;
  void* m_pUser;
  /// The folder of all cabinets; the caller may change it between them.
  std::size_t m_nFolderSize;
  Memory m_folder;
  Owned<Volume> m_pTable;
  /// Files at the start of the table came from the previous cabinet, and with
  /// them the first folder.
  bool m_bFirstFolderContinues = false;
  bool m_bMoveAnnounced = false;
  DataStream m_data;
};

}  // namespace cabinet
