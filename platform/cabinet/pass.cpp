#include "platform/cabinet/pass.h"

#include <algorithm>
#include <cstring>
#include <string_view>

namespace cabinet {
namespace {

/// A file of the caller's, closed through the caller unless it was handed back.
class Output {
 public:
  Output(const Host& host, INT_PTR file) : m_host(host), m_nFile(file) {}
  ~Output() {
    if (m_nFile != 0) m_host.close(m_nFile);
  }
  Output(const Output&) = delete;
  Output& operator=(const Output&) = delete;

  INT_PTR Get() const { return m_nFile; }
  INT_PTR Release() { return std::exchange(m_nFile, 0); }

 private:
  const Host& m_host;
  INT_PTR m_nFile;
};

bool IsControl(char c) { return (c >= 0 && c < ' ') || c == '\x7F'; }

/// The name of a neighbour as a cabinet records it, if it can only mean a file
/// of the cabinet's own folder. Callers may see more than text in control
/// characters.
const char* Plain(const char* recorded) {
  const std::string_view name = recorded;
  const bool isSpecial = name.empty() || name == "." || name == "..";
  const bool leadsElsewhere = name.find_first_of("\\/") != name.npos;
  if (isSpecial || leadsElsewhere || std::ranges::any_of(name, IsControl)) {
    Fail(FDIERROR_CORRUPT_CABINET);
  }
  return recorded;
}

/// Room for the path of a folder, and for what a caller may put in its place.
std::size_t FolderSize(const char* folder) {
  return std::max<std::size_t>(std::strlen(folder) + 1, CB_MAX_CAB_PATH);
}

}  // namespace

Pass::Pass(const Host& host, const char* name, const char* folder, int flags, PFNFDINOTIFY notify,
           void* user)
    : m_host(host),
      m_pszName(name),
      m_bWholeSet((flags & FDI_WHOLE_SET) != 0),
      m_bGoOn((flags & FDI_GO_ON) != 0),
      m_pfnNotify(notify),
      m_pUser(user),
      m_nFolderSize(FolderSize(folder)),
      m_folder(host, m_nFolderSize),
      m_pTable(Make<Volume>(host, host, folder, name)),
      m_data(host, *this) {
  std::memset(m_folder.Get(), 0, m_nFolderSize);
  std::memcpy(m_folder.Get(), folder, std::strlen(folder));
}

void Pass::Run() {
  PassTable();
  while (m_bWholeSet && m_pTable->header.HasNext()) {
    GoToNextTable();
    PassTable();
  }
}

void Pass::PassTable() {
  Header& header = m_pTable->header;
  NotifyCabinetInfo(header);
  m_pTable->reader.Seek(header.filesOffset);
  NotifyEnumerate(header.files);
  for (int left = header.files; left > 0; --left) {
    PassFile(ReadFile(m_pTable->reader));
    if (m_data.HasMoved() && !std::exchange(m_bMoveAnnounced, true)) NotifyEnumerate(left - 1);
  }
  NotifyEnumerate(0);
}

void Pass::GoToNextTable() {
  const Header& last = m_pTable->header;
  const char* const name = Plain(last.nextCabinet);
  auto next = OpenNext(name, *m_pTable);
  std::memcpy(m_nextName, name, std::strlen(name) + 1);
  m_pszName = m_nextName;
  next->reader.Seek(next->header.filesOffset);
  m_bFirstFolderContinues = next->header.files > 0 && ReadFile(next->reader).IsFromPrevious();
  const WORD lastFolder = static_cast<WORD>(last.folders > 0 ? last.folders - 1 : 0);
  m_data.EnterTable(m_bFirstFolderContinues ? std::optional(lastFolder) : std::nullopt);
  m_pTable = std::move(next);
}

// Notifications.

FDINOTIFICATION Pass::About(const Header& header) const {
  FDINOTIFICATION notification;
  notification.psz3 = reinterpret_cast<char*>(m_folder.Get());
  notification.pv = m_pUser;
  notification.setID = header.setId;
  notification.iCabinet = header.index;
  return notification;
}

FDINOTIFICATION Pass::About(const File& file) const {
  FDINOTIFICATION notification;
  notification.psz1 = const_cast<char*>(file.name);
  notification.pv = m_pUser;
  notification.cb = static_cast<LONG>(file.size);
  notification.date = file.date;
  notification.time = file.time;
  notification.attribs = file.attributes;
  notification.iFolder = file.folder;
  notification.setID = m_pTable->header.setId;
  notification.iCabinet = m_pTable->header.index;
  return notification;
}

INT_PTR Pass::Notify(FDINOTIFICATIONTYPE type, FDINOTIFICATION& notification) {
  const INT_PTR answer = m_pfnNotify(type, &notification);
  if (answer == -1) Fail(FDIERROR_USER_ABORT);
  return answer;
}

void Pass::NotifyCabinetInfo(Header& header) {
  FDINOTIFICATION notification = About(header);
  notification.psz1 = header.nextCabinet;
  notification.psz2 = header.nextDisk;
  Notify(fdintCABINET_INFO, notification);
}

void Pass::NotifyEnumerate(int filesLeft) {
  FDINOTIFICATION notification;
  notification.pv = m_pUser;
  notification.cb = static_cast<LONG>(m_pTable->reader.Position());
  notification.setID = m_pTable->header.setId;
  notification.iFolder = static_cast<USHORT>(filesLeft);
  Notify(fdintENUMERATE, notification);
}

// Files.

void Pass::PassFile(const File& file) {
  if (!file.IsFromPrevious()) {
    CopyFile(file);
    return;
  }
  m_bFirstFolderContinues = true;
  FDINOTIFICATION notification = About(file);
  notification.psz2 = m_pTable->header.previousCabinet;
  notification.psz3 = m_pTable->header.previousDisk;
  Notify(fdintPARTIAL_FILE, notification);
}

void Pass::CopyFile(const File& file) {
  FDINOTIFICATION notification = About(file);
  const INT_PTR answer = Notify(fdintCOPY_FILE, notification);
  if (answer == 0) return;
  Output output(m_host, answer);
  try {
    WriteData(file, output.Get());
  } catch (const Failure& failure) {
    if (!GoesOn(failure.error)) throw;
    m_data.Abandon(FolderOf(file), failure.error);
    FailFile(file, output.Release(), failure.error);
    return;
  }
  CloseFile(file, output.Release());
}

/// What is wrong with the data of one folder leaves the others as they are.
bool Pass::GoesOn(FDIERROR error) const {
  switch (error) {
    case FDIERROR_CABINET_NOT_FOUND:
    case FDIERROR_NOT_A_CABINET:
    case FDIERROR_UNKNOWN_CABINET_VERSION:
    case FDIERROR_CORRUPT_CABINET:
    case FDIERROR_BAD_COMPR_TYPE:
    case FDIERROR_MDI_FAIL:
    case FDIERROR_WRONG_CABINET:
    case FDIERROR_EOF:
      return m_bGoOn;
    default:
      return false;
  }
}

void Pass::FailFile(const File& file, INT_PTR output, FDIERROR error) {
  FDINOTIFICATION notification = About(file);
  notification.hf = output;
  notification.fdie = error;
  Notify(fdintFILE_FAILED, notification);
}

void Pass::WriteData(const File& file, INT_PTR output) {
  if (file.size == 0) return;
  m_data.GoTo(FolderOf(file), file);
  for (std::size_t left = file.size; left > 0;) {
    const auto bytes = m_data.Bytes();
    const auto length = static_cast<UINT>(std::min(left, bytes.size()));
    if (m_host.write(output, const_cast<BYTE*>(bytes.data()), length) != length) {
      Fail(FDIERROR_TARGET_FILE);
    }
    m_data.Drop(length);
    left -= length;
  }
}

void Pass::CloseFile(const File& file, INT_PTR output) {
  FDINOTIFICATION notification = About(file);
  notification.hf = output;
  notification.cb = (file.attributes & _A_EXEC) != 0 ? 1 : 0;
  notification.attribs &= static_cast<USHORT>(~_A_EXEC);
  if (Notify(fdintCLOSE_FILE_INFO, notification) == FALSE) Fail(FDIERROR_USER_ABORT);
}

WORD Pass::FolderOf(const File& file) const {
  if (!file.IsToNext()) return file.folder;
  if (m_pTable->header.folders == 0) Fail(FDIERROR_CORRUPT_CABINET);
  return static_cast<WORD>(m_pTable->header.folders - 1);
}

// Cabinets.

Owned<Volume> Pass::Open(const char* name) {
  return Make<Volume>(m_host, m_host, reinterpret_cast<const char*>(m_folder.Get()), name);
}

/// A neighbour has the same set and the next number, up or down.
Owned<Volume> Pass::OpenNeighbour(const char* name, const Volume& current, int step) {
  auto volume = Open(name);
  if (volume->header.setId != current.header.setId ||
      volume->header.index != current.header.index + step) {
    Fail(FDIERROR_WRONG_CABINET);
  }
  return volume;
}

/// A folder that came from the previous cabinet can be unpacked from its very
/// beginning only, however far back that lies.
Owned<Volume> Pass::First(WORD& folder) {
  auto volume = Open(m_pszName);
  bool continues = m_bFirstFolderContinues && folder == 0;
  while (continues) {
    if (!volume->header.HasPrevious()) Fail(FDIERROR_CORRUPT_CABINET);
    volume = OpenNeighbour(Plain(volume->header.previousCabinet), *volume, -1);
    const Header& header = volume->header;
    if (header.folders == 0) Fail(FDIERROR_WRONG_CABINET);
    folder = static_cast<WORD>(header.folders - 1);
    volume->reader.Seek(header.filesOffset);
    continues = folder == 0 && header.files > 0 && ReadFile(volume->reader).IsFromPrevious();
  }
  return volume;
}

bool Pass::IsEarlier(const Volume& volume) const {
  return volume.header.index < m_pTable->header.index;
}

Owned<Volume> Pass::Next(const Volume& current) {
  const char* const name = Plain(current.header.nextCabinet);
  // On the way from a folder's beginning to the cabinet of this pass there is
  // nothing to ask: their names led here.
  if (IsEarlier(current)) return OpenNeighbour(name, current, 1);
  auto volume = OpenNext(name, current);
  NotifyCabinetInfo(volume->header);
  return volume;
}

/// Asks for the next cabinet until it is there. The caller may have put a disk
/// in at the second time of asking; when that does not help and the path stays
/// as it was, asking again would never end.
Owned<Volume> Pass::OpenNext(const char* name, const Volume& current) {
  char* const folder = reinterpret_cast<char*>(m_folder.Get());
  Memory lastFolder(m_host, m_nFolderSize);
  FDIERROR error = FDIERROR_NONE;
  for (int asked = 1;; ++asked) {
    FDINOTIFICATION notification = About(current.header);
    notification.psz1 = const_cast<char*>(name);
    notification.psz2 = const_cast<char*>(current.header.nextDisk);
    notification.fdie = error;
    // Only the caller knows whether it ends the pass or has no such cabinet.
    const bool isRefused = m_pfnNotify(fdintNEXT_CABINET, &notification) == -1;
    if (isRefused) Fail(m_bGoOn ? FDIERROR_CABINET_NOT_FOUND : FDIERROR_USER_ABORT);
    folder[m_nFolderSize - 1] = '\0';
    try {
      return OpenNeighbour(name, current, 1);
    } catch (const Failure& failure) {
      error = failure.error;
    }
    const bool isUnchanged = std::memcmp(lastFolder.Get(), folder, m_nFolderSize) == 0;
    if (error == FDIERROR_ALLOC_FAIL || (asked > 1 && isUnchanged)) Fail(error);
    std::memcpy(lastFolder.Get(), folder, m_nFolderSize);
  }
}

}  // namespace cabinet
