#include "rar/engine.h"

#include <array>
#include <cwchar>
#include <type_traits>
#include <utility>

#include "rar/enginename.h"

// Last, because it defines names of the platform layer as macros.
#ifndef _WIN32
#define _UNIX
#endif
#include <unrar/dll.hpp>
#ifndef _WIN32
#undef HANDLE
#undef LONG
#undef LPARAM
#undef UINT
#undef CALLBACK
#undef PASCAL
#endif

namespace rar {
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
  std::array<char, 16384> comment{};
  std::array<wchar_t, kEngineNameCapacity> source{};
};

bool Header::IsFolder() const { return (flags & RHDF_DIRECTORY) != 0; }
bool Header::IsEncrypted() const { return (flags & RHDF_ENCRYPTED) != 0; }
bool Header::HidesWrongPassword() const { return IsEncrypted() && unpackVersion < kRar5; }
bool Header::IsSplitAfter() const { return (flags & RHDF_SPLITAFTER) != 0; }
bool Header::IsContinuation() const { return (flags & RHDF_SPLITBEFORE) != 0; }

Engine::Engine() : m_pBuffers(std::make_unique<Buffers>()) {}

Engine::~Engine() { Close(); }

bool Engine::Open(const std::wstring& path) {
  Close();
  std::wstring name = ToEngineName(path);
  RAROpenArchiveDataEx& request = m_pBuffers->request;
  request = {};
  request.ArcNameW = name.data();
  request.OpenMode = RAR_OM_EXTRACT;
  request.CmtBuf = m_pBuffers->comment.data();
  request.CmtBufSize = static_cast<unsigned>(m_pBuffers->comment.size());
  m_hArchive = RAROpenArchiveEx(&request);
  m_bHasItem = false;
  m_bAtStart = true;
  m_nLost = kSuccess;
  return m_hArchive != nullptr && request.OpenResult == ERAR_SUCCESS;
}

bool Engine::Close() {
  // The engine's answer to a null handle.
  if (m_hArchive == nullptr) return false;
  const int code = RARCloseArchive(std::exchange(m_hArchive, nullptr));
  m_bHasItem = false;
  return code != ERAR_ECLOSE;
}

bool Engine::HasEncryptedHeaders() const {
  return (m_pBuffers->request.Flags & ROADF_ENCHEADERS) != 0;
}

void Engine::SetPassword(std::string password) {
  if (IsOpen()) RARSetPassword(m_hArchive, password.data());
}

int Engine::ReadHeader() {
  if (!IsOpen()) return ERAR_UNKNOWN;
  if (m_nLost != kSuccess) return m_nLost;
  RARHeaderDataEx& data = m_pBuffers->header;
  data.CmtBuf = nullptr;
  data.RedirName = m_pBuffers->source.data();
  data.RedirNameSize = static_cast<unsigned>(m_pBuffers->source.size());
  m_pBuffers->source[0] = 0;
  const int code = RARReadHeaderEx(m_hArchive, &data);
  m_bHasItem = code == ERAR_SUCCESS;
  if (!m_bHasItem) {
    m_nLost = code;
    return code;
  }
  m_bAtStart = false;
  // A name that fills the whole field has no terminating zero.
  const std::size_t length = wcsnlen(data.FileNameW, std::size(data.FileNameW));
  const std::size_t sourceLength = wcsnlen(data.RedirName, m_pBuffers->source.size());
  m_header = {.path = FromEngineName({data.FileNameW, length}),
              .isPathCut = length == std::size(data.FileNameW),
              .flags = data.Flags,
              .packedSize = Join(data.PackSizeHigh, data.PackSize),
              .unpackedSize = Join(data.UnpSizeHigh, data.UnpSize),
              .crc = data.FileCRC,
              .time = data.FileTime,
              .modified = {data.MtimeLow, data.MtimeHigh},
              .unpackVersion = data.UnpVer,
              .method = data.Method,
              .attributes = data.FileAttr,
              .isUnix = data.HostOS == kUnixHost,
              .redirection = RedirectionOf(data),
              .source = FromEngineName({data.RedirName, sourceLength})};
  return code;
}

bool Engine::NeedsPasswordToSkip() const {
  const bool isSolid = (m_pBuffers->request.Flags & ROADF_SOLID) != 0;
  return m_bHasItem && isSolid && m_header.IsEncrypted();
}

int Engine::Process(int operation, wchar_t* path) {
  m_bHasItem = false;
  const int code = RARProcessFileW(m_hArchive, operation, nullptr, path);
  if (!KeepsItsPlace(code)) m_nLost = code;
  return code;
}

int Engine::Skip() {
  if (m_bHasItem) m_nLost = Process(RAR_SKIP, nullptr);
  return m_nLost;
}

int Engine::Extract(const std::wstring& path) {
  if (!m_bHasItem) return ERAR_UNKNOWN;
  std::wstring name = ToEngineName(path);
  return Process(RAR_EXTRACT, name.data());
}

void Engine::SetCallback(Callback callback, LPARAM userData) {
  if (IsOpen()) RARSetCallback(m_hArchive, callback, userData);
}

void Engine::ClearCallback() { SetCallback(nullptr, 0); }

}  // namespace rar
