#include "rar/engine.h"

#include <array>
#include <cwchar>
#include <type_traits>
#include <utility>

#include "frame/dostime.h"
#include "rar/enginename.h"

// Last, because it defines names of the platform layer as macros.
#define _UNIX
#include <unrar/dll.hpp>
#undef HANDLE
#undef LONG
#undef LPARAM
#undef UINT
#undef CALLBACK
#undef PASCAL

namespace morvunp::rar {
namespace {

static_assert(std::is_same_v<UNRARCALLBACK, Callback>);
static_assert(kSuccess == ERAR_SUCCESS && kEndOfArchive == ERAR_END_ARCHIVE &&
              kNoMemory == ERAR_NO_MEMORY && kBadData == ERAR_BAD_DATA &&
              kCannotOpen == ERAR_EOPEN && kCannotCreate == ERAR_ECREATE &&
              kCannotWrite == ERAR_EWRITE && kMissingPassword == ERAR_MISSING_PASSWORD &&
              kBadPassword == ERAR_BAD_PASSWORD);
static_assert(kChangeVolume == static_cast<Message>(UCM_CHANGEVOLUME) &&
              kProcessData == static_cast<Message>(UCM_PROCESSDATA) &&
              kNeedPassword == static_cast<Message>(UCM_NEEDPASSWORD) &&
              kVolumeMissing == RAR_VOL_ASK);

constexpr unsigned kUnixHost = 3;
/// The first version that keeps a check of the password.
constexpr DWORD kRar5 = 50;
constexpr unsigned kRedirectsToHardLink = 4;
constexpr unsigned kRedirectsToCopy = 5;

ULONGLONG Join(unsigned high, unsigned low) { return ULONGLONG{high} << 32 | low; }

Redirection RedirectionOf(const RARHeaderDataEx& data) {
  switch (data.RedirType) {
    case 0:
      return Redirection::kNone;
    case kRedirectsToHardLink:
      return Redirection::kHardLink;
    case kRedirectsToCopy:
      return Redirection::kFileCopy;
    default:
      return Redirection::kSymbolicLink;
  }
}

/// After these the engine stands where the next header begins.
bool KeepsItsPlace(int code) {
  switch (code) {
    case ERAR_SUCCESS:
    case ERAR_BAD_DATA:
    case ERAR_UNKNOWN_FORMAT:
    case ERAR_ECREATE:
    case ERAR_EREFERENCE:
    case ERAR_BAD_PASSWORD:
      return true;
    default:
      return false;
  }
}

}  // namespace

/// What the engine reads into; large, so kept from header to header.
struct Engine::Buffers {
  RAROpenArchiveDataEx request{};
  RARHeaderDataEx header{};
  /// The engine cuts longer ones.
  std::array<wchar_t, 65536> comment{};
  std::array<wchar_t, kEngineNameCapacity> source{};

  void* Open(const std::wstring& path, unsigned mode);
  int ReadHeader(void* archive);
  Header DecodedHeader() const;
  bool HasOpened(unsigned flag) const { return (request.Flags & flag) != 0; }
};

/// An archive that the engine has opened.
class Engine::Stream {
 public:
  Stream() = default;
  ~Stream() { Close(); }
  Stream(const Stream&) = delete;
  Stream& operator=(const Stream&) = delete;

  /// False when the engine gave nothing to close.
  bool Open(Buffers& buffers, const std::wstring& path, unsigned mode) {
    m_hArchive = buffers.Open(path, mode);
    return m_hArchive != nullptr;
  }
  bool Close() {
    return m_hArchive != nullptr &&
           RARCloseArchive(std::exchange(m_hArchive, nullptr)) != ERAR_ECLOSE;
  }
  void SetPassword(std::string& password) { RARSetPassword(m_hArchive, password.data()); }
  void SetCallback(Callback callback, LPARAM userData) {
    RARSetCallback(m_hArchive, callback, userData);
  }
  int ReadHeader(Buffers& buffers) { return buffers.ReadHeader(m_hArchive); }
  int Skip() { return RARProcessFileW(m_hArchive, RAR_SKIP, nullptr, nullptr); }
  int Test() { return RARProcessFileW(m_hArchive, RAR_TEST, nullptr, nullptr); }
  int Extract(wchar_t* path) { return RARProcessFileW(m_hArchive, RAR_EXTRACT, nullptr, path); }

 private:
  void* m_hArchive = nullptr;
};

bool Header::IsFolder() const { return (flags & RHDF_DIRECTORY) != 0; }
bool Header::IsEncrypted() const { return (flags & RHDF_ENCRYPTED) != 0; }
bool Header::IsOldLink() const {
  constexpr DWORD kFileType = 0170000;
  constexpr DWORD kLink = 0120000;
  const bool isLink =
      redirection == Redirection::kSymbolicLink ||
      (redirection == Redirection::kNone && isUnix && (attributes & kFileType) == kLink);
  return isLink && unpackVersion < kRar5 && source.empty();
}
bool Header::HidesWrongPassword() const { return IsEncrypted() && unpackVersion < kRar5; }
bool Header::IsSplitAfter() const { return (flags & RHDF_SPLITAFTER) != 0; }
bool Header::IsContinuation() const { return (flags & RHDF_SPLITBEFORE) != 0; }

void* Engine::Buffers::Open(const std::wstring& path, unsigned mode) {
  std::wstring name = ToEngineName(path);
  request = {};
  request.ArcNameW = name.data();
  request.OpenMode = mode;
  comment[0] = 0;
  request.CmtBufW = comment.data();
  request.CmtBufSize = static_cast<unsigned>(comment.size());
  return RAROpenArchiveEx(&request);
}

int Engine::Buffers::ReadHeader(void* archive) {
  header.CmtBuf = nullptr;
  header.RedirName = source.data();
  header.RedirNameSize = static_cast<unsigned>(source.size());
  source[0] = 0;
  return RARReadHeaderEx(archive, &header);
}

Header Engine::Buffers::DecodedHeader() const {
  // A name that fills the whole field has no terminating zero.
  const std::size_t length = wcsnlen(header.FileNameW, std::size(header.FileNameW));
  const FILETIME modified{header.MtimeLow, header.MtimeHigh};
  // The engine's own MS-DOS time may be that of another thread's archive.
  const DWORD dosTime = frame::DosDateTimeOf(modified);
  const std::size_t sourceLength = wcsnlen(source.data(), source.size());
  return {.path = FromEngineName({header.FileNameW, length}),
          .isPathCut = length == std::size(header.FileNameW),
          .flags = header.Flags,
          .packedSize = Join(header.PackSizeHigh, header.PackSize),
          .unpackedSize = Join(header.UnpSizeHigh, header.UnpSize),
          .crc = header.FileCRC,
          .time = dosTime != 0 ? dosTime : header.FileTime,
          .modified = modified,
          .unpackVersion = header.UnpVer,
          .method = header.Method,
          .attributes = header.FileAttr,
          .isUnix = header.HostOS == kUnixHost,
          .redirection = RedirectionOf(header),
          .source = FromEngineName({source.data(), sourceLength})};
}

Engine::Engine() : m_pBuffers(std::make_unique<Buffers>()) {}

Engine::~Engine() = default;

bool Engine::Open(const std::wstring& path) {
  Close();
  m_nWalked = 0;
  m_nFollowed = 0;
  m_nLost = kSuccess;
  auto archive = std::make_unique<Stream>();
  if (!archive->Open(*m_pBuffers, path, RAR_OM_EXTRACT)) return false;
  m_pWalk = std::move(archive);
  if (m_pBuffers->request.OpenResult != ERAR_SUCCESS) return false;
  if (!m_pBuffers->HasOpened(ROADF_SOLID)) return true;
  auto listing = std::make_unique<Stream>();
  if (!listing->Open(*m_pBuffers, path, RAR_OM_LIST)) return false;
  m_pData = std::exchange(m_pWalk, std::move(listing));
  return m_pBuffers->request.OpenResult == ERAR_SUCCESS;
}

bool Engine::Close() {
  m_bHasItem = false;
  m_pData.reset();
  const std::unique_ptr<Stream> walk = std::move(m_pWalk);
  return walk != nullptr && walk->Close();
}

bool Engine::IsOpen() const { return m_pWalk != nullptr; }

int Engine::OpenResult() const { return static_cast<int>(m_pBuffers->request.OpenResult); }

bool Engine::HasEncryptedHeaders() const { return m_pBuffers->HasOpened(ROADF_ENCHEADERS); }

void Engine::SetPassword(std::string password) {
  if (m_pWalk != nullptr) m_pWalk->SetPassword(password);
  if (m_pData != nullptr) m_pData->SetPassword(password);
}

int Engine::ReadHeader() {
  if (!IsOpen() || OpenResult() != kSuccess) return ERAR_UNKNOWN;
  if (m_nLost == kSuccess) m_nLost = m_pWalk->ReadHeader(*m_pBuffers);
  m_bHasItem = m_nLost == kSuccess;
  if (!m_bHasItem) return m_nLost;
  ++m_nWalked;
  m_header = m_pBuffers->DecodedHeader();
  return kSuccess;
}

int Engine::Skip() {
  if (std::exchange(m_bHasItem, false)) m_nLost = m_pWalk->Skip();
  return m_nLost;
}

template <class Process>
int Engine::ProcessItem(Process process) {
  if (!m_bHasItem) return ERAR_UNKNOWN;
  if (m_pData == nullptr) {
    m_bHasItem = false;
    const int code = process(*m_pWalk);
    if (!KeepsItsPlace(code)) m_nLost = code;
    return code;
  }
  int code = Follow();
  if (code == kSuccess) code = process(*m_pData);
  Skip();
  if (!KeepsItsPlace(code)) m_nLost = code;
  return code;
}

int Engine::Test() {
  return ProcessItem([](Stream& stream) { return stream.Test(); });
}

int Engine::Extract(const std::wstring& path) {
  std::wstring name = ToEngineName(path);
  return ProcessItem([&](Stream& stream) { return stream.Extract(name.data()); });
}

std::wstring Engine::Comment() const {
  const auto& comment = m_pBuffers->comment;
  return {comment.data(), wcsnlen(comment.data(), comment.size())};
}

bool Engine::Resume(const std::wstring& path, const std::function<void()>& usePassword) {
  const ULONGLONG number = m_nWalked;
  if (!Open(path)) return false;
  usePassword();
  while (m_nWalked < number) {
    if (ReadHeader() != kSuccess) return false;
    if (m_nWalked < number && Skip() != kSuccess) return false;
  }
  return true;
}

bool Engine::IsVolume() const { return m_pBuffers->HasOpened(ROADF_VOLUME); }

/// Brings the handle that extracts to the item in hand, decoding what lies
/// between. Continuations are no items, and a listing leaves them out.
int Engine::Follow() {
  while (m_nFollowed < m_nWalked) {
    const int code = m_pData->ReadHeader(*m_pBuffers);
    if (code != kSuccess) return code;
    const bool isContinuation = (m_pBuffers->header.Flags & RHDF_SPLITBEFORE) != 0;
    if (!isContinuation && ++m_nFollowed == m_nWalked) break;
    m_bFollowing = true;
    const int skipped = m_bHandOverPassed ? m_pData->Test() : m_pData->Skip();
    m_bFollowing = false;
    // What is damaged may still leave later items whole.
    if (skipped == ERAR_BAD_PASSWORD || !KeepsItsPlace(skipped)) return skipped;
  }
  return m_pBuffers->DecodedHeader().path == m_header.path ? kSuccess : ERAR_UNKNOWN;
}

void Engine::SetCallback(Callback callback, LPARAM userData) {
  if (m_pWalk != nullptr) m_pWalk->SetCallback(callback, userData);
  if (m_pData != nullptr) m_pData->SetCallback(callback, userData);
}

void Engine::ClearCallback() { SetCallback(nullptr, 0); }

}  // namespace morvunp::rar
