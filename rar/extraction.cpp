// Unpacking, and the engine's calls back while it does.
#include <algorithm>
#include <functional>
#include <optional>
#include <utility>

#include "frame/filesystem.h"
#include "frame/itempath.h"
#include "frame/keptexception.h"
#include "frame/keyedhash.h"
#include "frame/lent.h"
#include "frame/outputfolders.h"
#include "frame/pathgate.h"
#include "frame/progress.h"
#include "frame/replace.h"
#include "morvunp/dostime.h"
#include "morvunp/outputplace.h"
#include "morvunp/rarunpacker.h"
#include "rar/callbacks.h"
#include "rar/engine.h"
#include "rar/enginename.h"
#include "rar/linktarget.h"
#include "rar/outputfile.h"
#include "rar/password.h"

namespace rar {

/// What the items of one run share.
struct Run {
  const std::wstring& target;
  /// The place of the item with this path.
  std::function<std::optional<OutputPlace>(const std::wstring& path)> placeOf;
  /// The folder that the last file went into, and its resolved path.
  std::wstring folder;
  std::wstring resolvedFolder;
  /// By the hash of each path written, the hash of its item's path.
  std::unordered_map<std::size_t, std::size_t, frame::KeyedHash> written;
};

}  // namespace rar

namespace {

std::size_t HashOf(const std::wstring& path) { return std::hash<std::wstring>{}(path); }

bool IsRegularFile(const std::wstring& path) {
  const DWORD attributes = GetFileAttributesW(path.c_str());
  return attributes != INVALID_FILE_ATTRIBUTES &&
         (attributes & (FILE_ATTRIBUTE_DIRECTORY | FILE_ATTRIBUTE_REPARSE_POINT)) == 0;
}

bool IsRepetition(const rar::Header& header) {
  return header.redirection == rar::Redirection::kHardLink ||
         header.redirection == rar::Redirection::kFileCopy;
}

/// Permission bits for the file, before the umask.
DWORD ModeOf(const rar::Header& header) {
  if (header.isUnix) return header.attributes & 07777;
  return (header.attributes & FILE_ATTRIBUTE_READONLY) != 0 ? 0444 : 0666;
}

std::size_t FoldersIn(std::wstring_view path) {
  return static_cast<std::size_t>(std::count(path.begin(), path.end(), frame::kSeparator));
}

/// The engine has said that all went well, which does not mean that there is a
/// file: it makes no link that it takes for unsafe, and says nothing.
RarProblem LookAt(const std::wstring& path, const rar::Header& header, std::size_t depth) {
  // The engine heeds neither the umask of now nor the danger of set-uid. This
  // fails for a link, where nothing is, and where files have no modes.
  const DWORD mode = FILE_ATTRIBUTE_UNIX_EXTENSION | ModeOf(header) << 16;
  if (SetFileAttributesW(path.c_str(), mode) != FALSE) return RarProblem::kNone;
  const DWORD attributes = GetFileAttributesW(path.c_str());
  const bool isLink = header.redirection == rar::Redirection::kSymbolicLink;
  if (attributes == INVALID_FILE_ATTRIBUTES) {
    return isLink ? RarProblem::kUnsafeLink : RarProblem::kCannotWrite;
  }
  if ((attributes & FILE_ATTRIBUTE_REPARSE_POINT) == 0) return RarProblem::kNone;
  if (rar::StaysInside(platform::LinkTarget(path), depth)) return RarProblem::kNone;
  DeleteFileW(path.c_str());
  return RarProblem::kUnsafeLink;
}

}  // namespace

bool CRarUnpacker::Report(RarProblem problem) {
  if (m_reportProblem) {
    const bool isVolume = problem == RarProblem::kMissingVolume;
    m_reportProblem(m_hArchive->Current().path, problem,
                    isVolume ? m_strMissingVolume : std::wstring());
  }
  return false;
}

// One file.

bool CRarUnpacker::UnpackCurrentFile(const std::wstring& name, const std::wstring& folder) {
  if (!m_hArchive->HasItem() || m_hArchive->Current().IsPlainFolder()) return false;
  {
    const rar::Callbacks callbacks(*m_hArchive, CallbackProc, this);
    if (!UnpackItem(name, folder)) return false;
  }
  UpdateFileTree(m_state.m_strLastTarget);
  return true;
}

bool CRarUnpacker::UnpackItem(const std::wstring& name, const std::wstring& folder) {
  m_state.m_strLastTarget = frame::Join(folder, name);
  const rar::Header& header = m_hArchive->Current();
  if (header.IsContinuation()) return Report(RarProblem::kBeginsEarlier);
  if (header.isPathCut || !frame::IsSafePath(name, false)) return Report(RarProblem::kUnsafeName);
  const std::wstring path = OutputPath(name, folder);
  if (path.empty()) return Report(RarProblem::kCannotWrite);
  if (path.size() > rar::kLongestOutputPath) return Report(RarProblem::kUnsafeName);
  const bool isNew = !frame::FileExists(path);
  if (!isNew && !MayReplace(path)) return false;
  m_state.m_bCancel = 0;
  m_state.m_bStopRequest = 0;
  frame::SendProgress(m_state, 0, m_strCurrentName);
  m_nDone = 0;
  const bool isInRun = m_pRun != nullptr && folder.starts_with(m_pRun->target);
  const std::size_t above = isInRun ? m_pRun->target.size() : folder.size();
  const std::wstring& target = m_state.m_strLastTarget;
  const std::size_t depth = FoldersIn(target.substr(above + 1));
  const RarProblem problem = isNew ? Write(path, depth) : Replace(path, depth);
  if (problem != RarProblem::kNone) {
    if (m_state.m_bCancel == 0) Report(problem);
    return false;
  }
  if (m_pRun != nullptr) m_pRun->written[HashOf(target)] = HashOf(header.path);
  return true;
}

/// The path of the output file without any symbolic link before its name, as
/// the engine needs it. Empty when its folder does not exist.
std::wstring CRarUnpacker::OutputPath(const std::wstring& name, const std::wstring& folder) {
  std::wstring parent = folder;
  if (frame::HasParent(name)) {
    parent = frame::Join(folder, frame::ParentOf(name));
    if (!MakeOutputFolder(parent, folder)) return {};
  }
  if (m_pRun == nullptr) {
    const std::wstring resolved = platform::ResolvedPath(parent);
    return resolved.empty() ? resolved : frame::Join(resolved, frame::NameOf(name));
  }
  if (m_pRun->resolvedFolder.empty() || m_pRun->folder != parent) {
    m_pRun->folder = parent;
    m_pRun->resolvedFolder = platform::ResolvedPath(parent);
  }
  if (m_pRun->resolvedFolder.empty()) return {};
  return frame::Join(m_pRun->resolvedFolder, frame::NameOf(name));
}

/// Decides where something exists.
bool CRarUnpacker::MayReplace(const std::wstring& path) {
  // An archive that is being read is not to be replaced by its own content.
  if (path == platform::ResolvedPath(m_strArchive)) return Report(RarProblem::kCannotWrite);
  const frame::NewFile item{m_nTotal, TimeOfDosDateTime(m_nFileTime).value_or(0)};
  m_state.m_bCancel = 0;
  if (frame::MayWrite(m_state, m_state.m_strLastTarget, item, frame::Protection::kLeave)) {
    return true;
  }
  if (m_state.m_bCancel == 0) PassOver();
  return false;
}

RarProblem CRarUnpacker::Replace(const std::wstring& path, std::size_t depth) {
  rar::ExistingFile existing(path);
  if (!existing.IsAway()) return RarProblem::kCannotWrite;
  const RarProblem problem = Write(path, depth);
  if (problem == RarProblem::kNone) existing.Discard();
  return problem;
}

RarProblem CRarUnpacker::Write(const std::wstring& path, std::size_t depth) {
  return IsRepetition(m_hArchive->Current()) ? Repeat(path) : Extract(path, depth);
}

RarProblem CRarUnpacker::Extract(const std::wstring& path, std::size_t depth) {
  const rar::Header& header = m_hArchive->Current();
  const int code = m_hArchive->Extract(path);
  frame::ThrowKept(m_pThrown);
  if (m_state.m_bCancel != 0) return RarProblem::kCannotWrite;
  if (code == rar::kSuccess) return LookAt(path, header, depth);
  rar::ShowProblem(code);
  return ProblemOf(code, header.HidesWrongPassword());
}

/// Writes a hard link or a copy, which the engine would look for in the folder
/// that the process happens to be in.
RarProblem CRarUnpacker::Repeat(const std::wstring& path) {
  const rar::Header& header = m_hArchive->Current();
  if (m_pRun == nullptr || !frame::IsSafePath(header.source, true)) return RarProblem::kNoSource;
  const std::optional<OutputPlace> place = m_pRun->placeOf(header.source);
  if (!place) return RarProblem::kNoSource;
  const std::wstring source = place->Path();
  const auto written = m_pRun->written.find(HashOf(source));
  const bool isOurs = written != m_pRun->written.end() && written->second == HashOf(header.source);
  if (!isOurs || !IsRegularFile(source)) return RarProblem::kNoSource;
  const bool isLinked = header.redirection == rar::Redirection::kHardLink &&
                        CreateHardLinkW(path.c_str(), source.c_str(), nullptr) != FALSE;
  // A file system without hard links can still hold the content.
  if (isLinked) return RarProblem::kNone;
  if (CopyFileW(source.c_str(), path.c_str(), TRUE) == FALSE) return RarProblem::kCannotWrite;
  const frame::OpenFile file(CreateFileW(path.c_str(), GENERIC_READ, FILE_SHARE_READ, nullptr,
                                         OPEN_EXISTING, FILE_FLAG_OPEN_REPARSE_POINT, nullptr));
  if (file.IsOpen()) SetFileTime(file.Get(), nullptr, nullptr, &header.modified);
  return LookAt(path, header, 0);
}

bool CRarUnpacker::UnpackFile(const std::wstring& path, const std::wstring& target) {
  RARFILEFULLINFO info;
  if (!LocateFile(path, info)) return false;
  const std::wstring name = m_strCurrentName;
  if (!IsSafeItem(info.strPath, frame::NameOf(info.strPath))) {
    return Report(RarProblem::kUnsafeName);
  }
  if (!LocateSource()) return Report(RarProblem::kNoSource);
  m_strCurrentName = name;
  const auto report = [this](const std::wstring& folder) { UpdateFileTree(folder); };
  frame::OutputFolders folders(m_state, target, report);
  return frame::WriteItem(*this, folders, PlaceOfFile(m_state.m_iniUnpack, path, target));
}

/// Alone, a hard link or a copy comes out with the data of the item that it
/// repeats. Goes there; several may lie between.
bool CRarUnpacker::LocateSource() {
  constexpr int kLongestChain = 16;
  for (int i = 0; IsRepetition(m_hArchive->Current()); ++i) {
    RARFILEFULLINFO info;
    // A copy, because the header changes with each step of the search.
    const std::wstring source = m_hArchive->Current().source;
    if (i == kLongestChain || !LocateFile(source, info)) return false;
  }
  return true;
}

// Runs.

template <class PlaceOf>
bool CRarUnpacker::UnpackItems(const std::wstring& target, PlaceOf placeOf) {
  const auto placeOfFile = [&](const std::wstring& path) { return placeOf(path, false); };
  rar::Run run{target, placeOfFile, {}, {}, {}};
  const frame::Lent lent(m_pRun, run);
  const auto place = [&](const RARFILEFULLINFO& info) -> std::optional<OutputPlace> {
    const rar::Header& header = m_hArchive->Current();
    // What continues a file was dealt with at its beginning, unless the archive
    // was opened in its midst.
    if (header.IsContinuation() && m_nHeader > 1) return std::nullopt;
    return placeOf(info.strPath, header.IsPlainFolder());
  };
  const auto isSafe = [this] {
    const rar::Header& header = m_hArchive->Current();
    const bool isSafePath = IsSafeItem(header.path, frame::NameOf(header.path));
    return (isSafePath && !header.isPathCut) || Report(RarProblem::kUnsafeName);
  };
  return frame::UnpackByWalking<RARFILEFULLINFO>(
      *this, m_state, target, [this](const std::wstring& folder) { UpdateFileTree(folder); }, place,
      isSafe);
}

bool CRarUnpacker::UnpackFolder(const std::wstring& path, const std::wstring& target) {
  return UnpackItems(target, [&](const std::wstring& item, bool isFolder) {
    return PlaceInFolderRun(m_state.m_iniUnpack, path, item, isFolder, target);
  });
}

bool CRarUnpacker::UnpackArchive(const std::wstring& target) {
  return UnpackItems(target,
                     [&](const std::wstring& item, bool isFolder) -> std::optional<OutputPlace> {
                       // Without folders there is nothing for a link to one to lead to.
                       const bool isFlat = m_state.m_iniUnpack.bUnpackArchiveNoPaths != 0;
                       if (isFlat && m_hArchive->Current().IsFolder()) return std::nullopt;
                       return PlaceInArchiveRun(m_state.m_iniUnpack, item, isFolder, target);
                     });
}

// What the engine calls.

int CRarUnpacker::CallbackProc(UINT message, LPARAM userData, LPARAM p1, LPARAM p2) {
  auto& unpacker = *reinterpret_cast<CRarUnpacker*>(userData);
  return frame::KeepException(unpacker.m_pThrown, rar::kStop,
                              [&] { return unpacker.OnCallback(message, p1, p2); });
}

int CRarUnpacker::OnCallback(UINT message, LPARAM p1, LPARAM p2) {
  switch (message) {
    case rar::kChangeVolume:
      if (p2 != rar::kVolumeMissing) return rar::kGoOn;
      m_strMissingVolume = platform::ToLibraryPath(reinterpret_cast<const char*>(p1));
      return rar::kStop;
    case rar::kProcessData:
      m_nDone += static_cast<ULONGLONG>(p2);
      return frame::ReportBlock(m_state, m_nDone, m_nTotal) ? rar::kGoOn : rar::kStop;
    case rar::kNeedPassword:
      return OnPasswordNeeded(reinterpret_cast<char*>(p1), static_cast<std::size_t>(p2));
    default:
      return rar::kGoOn;
  }
}

int CRarUnpacker::OnPasswordNeeded(char* buffer, std::size_t capacity) {
  const auto answer = rar::AskPassword();
  if (!answer) return rar::kStop;
  const std::string password = rar::NarrowPassword(*answer);
  if (password.size() >= capacity) return rar::kStop;
  std::copy_n(password.c_str(), password.size() + 1, buffer);
  return rar::kGoOn;
}
