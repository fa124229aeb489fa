#include "output/file.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <new>
#include <random>
#include <utility>

#include "platform/below.h"

namespace morvunp::output {
namespace {

/// As many as find a free one of 2^64 names, unless somebody is at work who
/// wants none to be free.
constexpr int kAttempts = 8;

/// The system's answer for a folder in which no file can be made.
bool IsClosedFolder(int systemError) {
  return systemError == EACCES || systemError == EPERM || systemError == EROFS;
}

}  // namespace

std::wstring PrivateName() {
  std::random_device device;
  ULONGLONG number = ULONGLONG{device()} << 32 | device();
  std::wstring name = L".morvunp-";
  for (int i = 0; i < 16; ++i, number >>= 4) name += L"0123456789abcdef"[number & 15];
  return name;
}

bool File::Create(const std::wstring& name, DWORD mode) {
  m_name = name;
  m_aside.clear();
  m_placing = Placing::kFresh;
  m_mode = mode;
  m_file.Take(platform::CreateFileBelow(m_folders.Current(), name.c_str(), mode));
  return m_bPending = m_file.IsOpen();
}

bool File::Replace(const std::wstring& name, const platform::FoundFile& existing, Placing placing,
                   std::optional<DWORD> mode) {
  m_name = name;
  m_aside.clear();
  m_placing = placing;
  if (placing == Placing::kBeside) return CreateBeside(existing, mode) || RewriteInstead(existing);
  if (Rewrite(existing)) return true;
  // Gone meanwhile: the name is free.
  if (platform::LastSystemError() == ENOENT) return Create(name, mode.value_or(kDefaultMode));
  if (platform::LastSystemError() != EMLINK) return false;
  m_placing = Placing::kBeside;
  return CreateBeside(existing, mode);
}

bool File::Rewrite(const platform::FoundFile& existing) {
  constexpr DWORD kSetId = 06000;
  if (existing.links > 1 || (existing.mode & kSetId) != 0) {
    return platform::FailWithErrno(EMLINK) != FALSE;
  }
  // A protection that cannot be cleared shows when the file is opened.
  constexpr DWORD kProtective =
      FILE_ATTRIBUTE_SYSTEM | FILE_ATTRIBUTE_READONLY | FILE_ATTRIBUTE_HIDDEN;
  if ((existing.attributes & kProtective) != 0) {
    platform::ClearProtectionBelow(m_folders.Current(), m_name.c_str());
  }
  m_file.Take(platform::RewriteFileBelow(m_folders.Current(), m_name.c_str()));
  m_bPending = m_file.IsOpen();
  if (m_bPending) m_reporter.TellReplaced();
  return m_bPending;
}

/// Where there can be no file beside the existing one. One that must not be
/// written into stays, and the folder's refusal counts.
bool File::RewriteInstead(const platform::FoundFile& existing) {
  const int refusal = platform::LastSystemError();
  if (!m_reporter.Options().safeReplace || !IsClosedFolder(refusal)) return false;
  m_placing = Placing::kInPlace;
  m_aside.clear();
  if (!Rewrite(existing)) return platform::FailWithErrno(refusal) != FALSE;
  m_reporter.SetInPlace();
  return true;
}

bool File::CreateBeside(const platform::FoundFile& existing, std::optional<DWORD> mode) {
  for (int i = 0; i < kAttempts; ++i) {
    m_aside = PrivateName();
    m_mode = mode.value_or(existing.mode) & 0777;
    m_file.Take(platform::CreateFileBelow(m_folders.Current(), m_aside.c_str(), m_mode));
    if (m_file.IsOpen()) break;
    if (GetLastError() != ERROR_FILE_EXISTS) return false;
  }
  // The umask may have held some back. A refusal leaves the file less open.
  m_bPending = m_file.IsOpen();
  if (m_bPending && !mode) platform::SetModeOf(m_file.Get(), m_mode);
  return m_bPending;
}

bool File::Hand(const void* bytes, DWORD length) {
  m_reporter.AddBytes(length);
  if (m_pSink->Write(bytes, length)) return true;
  m_pSink = nullptr;
  m_reporter.SetEnd({});
  return m_reporter.Tell(morvunp::ItemResult::kNotReached, morvunp::ItemReason::kInterrupted);
}

/// What came before stays: the rest only tells that there is more.
void File::Keep(const void* bytes, DWORD length) {
  m_reporter.AddBytes(length);
  const std::size_t room = kLongestText + 1 - m_text->size();
  m_text->append(static_cast<const char*>(bytes), std::min<std::size_t>(length, room));
}

void File::Detach() {
  m_pSink = nullptr;
  m_text.reset();
  m_bDropped = false;
}

bool File::HandZeros(ULONGLONG length) {
  static constexpr std::array<BYTE, 65536> kZeros{};
  while (length > 0) {
    const auto part = static_cast<DWORD>(std::min<ULONGLONG>(length, kZeros.size()));
    if (!Hand(kZeros.data(), part)) return false;
    length -= part;
  }
  return true;
}

/// What could not be written was told. True when the rest is to be dropped.
bool File::GiveUp() { return m_bDropped = m_reporter.GoesOn(); }

bool File::Write(const void* bytes, DWORD length) {
  if (m_bDropped) return true;
  if (!m_budget.TakeBytes(length)) return m_reporter.TellLimit();
  if (HasSink()) return Hand(bytes, length);
  if (IsCollecting()) {
    Keep(bytes, length);
    return true;
  }
  DWORD written = 0;
  const BOOL done = WriteFile(m_file.Get(), bytes, length, &written, nullptr);
  m_reporter.AddBytes(written);
  if (done != FALSE && written == length) return true;
  done == FALSE ? m_reporter.TellRefusal() : m_reporter.TellError(EIO);
  return GiveUp();
}

bool File::Skip(ULONGLONG length) {
  if (m_bDropped) return true;
  if (!m_budget.TakeBytes(length)) return m_reporter.TellLimit();
  if (HasSink()) return HandZeros(length);
  if (frame::MoveFilePointer(m_file.Get(), static_cast<LONGLONG>(length), FILE_CURRENT) !=
      ERROR_SUCCESS) {
    return m_reporter.TellRefusal();
  }
  m_reporter.AddBytes(length);
  return true;
}

bool File::EndHere() {
  return HasSink() || m_bDropped || SetEndOfFile(m_file.Get()) != FALSE || m_reporter.TellRefusal();
}

bool File::Finish(const FileFacts& facts, morvunp::ItemReason defect) {
  if (std::exchange(m_pSink, nullptr) != nullptr) {
    const bool isIntact = defect == morvunp::ItemReason::kNone;
    m_reporter.Tell(isIntact ? morvunp::ItemResult::kIntact : morvunp::ItemResult::kFailed, defect);
    return true;
  }
  if (m_bDropped) return false;
  if (facts.lastWrite) {
    SetFileTime(m_file.Get(), &*facts.lastWrite, nullptr, &*facts.lastWrite);
  }
  // What the mode says is meant for this owner.
  if (facts.owner) platform::SetOwnerOf(m_file.Get(), *facts.owner);
  // A new file was created with its mode.
  const DWORD wanted = facts.attributes.value_or(0);
  const bool hasMode = m_placing != Placing::kInPlace &&
                       (wanted & FILE_ATTRIBUTE_UNIX_EXTENSION) != 0 &&
                       (wanted >> 16 & 0777) == (m_mode & 0777);
  if (facts.attributes && !hasMode) platform::SetAttributesOf(m_file.Get(), wanted);
  if (!m_file.Close()) {
    m_reporter.TellRefusal();
    KeepBroken();
    return false;
  }
  if (!TakeName()) return m_reporter.TellRefusal();
  m_reporter.TellWritten(defect);
  return true;
}

bool File::TakeName() {
  if (m_aside.empty()) {
    m_bPending = false;
    return true;
  }
  const HANDLE folder = m_folders.Current();
  if (platform::ReplaceBelow(folder, m_aside.c_str(), m_name.c_str()) == FALSE) {
    const int error = platform::LastSystemError();
    Remove();
    return platform::FailWithErrno(error) != FALSE;
  }
  m_bPending = false;
  m_aside.clear();
  m_reporter.TellReplaced();
  return true;
}

bool File::MayStay(morvunp::BrokenFiles asFormat) const {
  // What was whole is worth more than what is broken.
  if (!m_aside.empty()) return false;
  const morvunp::BrokenFiles wanted = m_reporter.Options().brokenFiles;
  if (wanted != morvunp::BrokenFiles::kAsFormat) return wanted == morvunp::BrokenFiles::kKeep;
  return asFormat == morvunp::BrokenFiles::kKeep && !m_reporter.IsPastLimit();
}

bool File::RefuseDefect(morvunp::ItemReason defect) {
  const morvunp::UnpackOptions& options = m_reporter.Options();
  const bool isWatched =
      options.safeReplace || options.brokenFiles != morvunp::BrokenFiles::kAsFormat;
  const bool isWhole = defect == morvunp::ItemReason::kNone;
  if (isWhole || !isWatched || HasSink() || MayStay(morvunp::BrokenFiles::kKeep)) return false;
  Remove();
  m_reporter.Tell(morvunp::ItemResult::kFailed, defect);
  return true;
}

void File::EndBroken(morvunp::BrokenFiles asFormat) {
  Detach();
  if (!MayStay(asFormat)) return Remove();
  m_bPending = false;
  m_file.Close();
}

void File::Remove() {
  Detach();
  if (!std::exchange(m_bPending, false)) return;
  const std::wstring& name = m_aside.empty() ? m_name : m_aside;
  const platform::FileIdentity ours =
      m_file.IsOpen() ? platform::IdentityOf(m_file.Get()) : platform::FileIdentity{};
  m_file.Close();
  platform::FoundFile named;
  // Not what may have come to its name since; nobody knows the other name.
  const bool isOurs =
      !m_aside.empty() || (platform::FindBelow(m_folders.Current(), name.c_str(), named) != FALSE &&
                           ours == named.identity);
  if (isOurs) platform::DeleteBelow(m_folders.Current(), name.c_str());
  m_aside.clear();
}

File::~File() {
  try {
    Remove();
  } catch (const std::bad_alloc&) {
    // Not even memory for a name is left: the file stays.
  }
}

}  // namespace morvunp::output
