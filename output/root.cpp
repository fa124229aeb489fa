#include "output/root.h"

#include <algorithm>
#include <cerrno>
#include <vector>

#include "frame/itempath.h"
#include "output/linktarget.h"
#include "output/pathgate.h"
#include "output/replace.h"
#include "platform/below.h"

namespace morvunp::output {

using morvunp::ItemReason;
using morvunp::ItemResult;

void Root::BeginSink(morvunp::ItemSink& sink, const morvunp::RoutedItem& item) {
  m_reporter.SetSink(sink);
  sink.Begin(item);
  if (item.isFolder) {
    m_reporter.Tell(ItemResult::kIntact);
  } else {
    m_file.Attach(sink);
  }
}

std::optional<OutputPlace> Root::Admit(const OutputPlace& place, bool isFolder) {
  std::wstring path = place.Path();
  const std::wstring& target = Target();
  const bool isBelow = path.size() > target.size() && path.starts_with(target) &&
                       path[target.size()] == frame::kSeparator;
  const bool isNamed = isFolder || IsSafeName(place.name, false);
  if (isBelow && isNamed && IsSafePath(path.substr(target.size() + 1), true)) {
    return isFolder ? OutputPlace{std::move(path), {}} : place;
  }
  m_reporter.Tell(ItemResult::kRefused, ItemReason::kUnsafeName);
  return std::nullopt;
}

bool Root::MakeFolder(const std::wstring& folder) {
  m_reporter.SetOutputPath(folder);
  if (!m_folders.Enter(folder, folder)) return false;
  m_reporter.Tell(ItemResult::kFolderMade);
  return true;
}

bool Root::Enter(const OutputPlace& place) {
  m_name = place.name;
  m_existing.reset();
  const std::wstring path = place.Path();
  m_reporter.SetOutputPath(path);
  if (!m_folders.Enter(place.folder, path)) return false;
  m_state.m_strLastTarget = path;
  return true;
}

Root::Answer Root::Create() {
  // Most files are new, and creating one exclusively tells so in one call.
  m_existing.reset();
  if (m_file.Create(m_name, kDefaultMode)) return Answer::kWrite;
  if (GetLastError() != ERROR_FILE_EXISTS) {
    m_reporter.TellRefusal();
    return Answer::kFailed;
  }
  const Answer answer = Decide();
  if (answer != Answer::kWrite) return answer;
  return Open(Placing::kInPlace) ? Answer::kWrite : Answer::kFailed;
}

Root::Answer Root::Decide() {
  platform::FoundFile found;
  m_existing.reset();
  if (platform::FindBelow(m_folders.Current(), m_name.c_str(), found) != FALSE) {
    return DecideAbout(found);
  }
  if (GetLastError() == ERROR_FILE_NOT_FOUND) return Answer::kWrite;
  m_reporter.TellRefusal();
  return Answer::kFailed;
}

Root::Answer Root::DecideAbout(const platform::FoundFile& found) {
  // Writing would go to wherever a link leads, a folder cannot be replaced
  // whatever the answer, and what is being read must not change.
  const bool isFolder = (found.attributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
  if (isFolder || (found.attributes & FILE_ATTRIBUTE_REPARSE_POINT) != 0) {
    m_reporter.TellInTheWay(isFolder ? EISDIR : ELOOP);
    return Answer::kDeclined;
  }
  if (IsArchive(found)) {
    m_reporter.TellInTheWay(ETXTBSY);
    return Answer::kFailed;
  }
  if (!MayReplace(m_state, m_state.m_strLastTarget, found, m_reporter.Current())) {
    const bool isCancelled = m_state.m_bCancel != 0;
    m_reporter.Tell(ItemResult::kKept, isCancelled ? ItemReason::kInterrupted : ItemReason::kNone);
    return Answer::kDeclined;
  }
  m_existing = found;
  return Answer::kWrite;
}

bool Root::IsArchive(const platform::FoundFile& found) const {
  const auto& files = m_state.m_archiveFiles;
  return std::find(files.begin(), files.end(), found.identity) != files.end();
}

bool Root::Open(Placing placing, std::optional<DWORD> mode) {
  if (m_state.m_options.safeReplace) placing = Placing::kBeside;
  const bool isOpen = m_existing ? m_file.Replace(m_name, *m_existing, placing, mode)
                                 : m_file.Create(m_name, mode.value_or(kDefaultMode));
  return isOpen || m_reporter.TellRefusal();
}

/// Makes something that is no file under the name in hand, or under another
/// one that then takes the place of the existing file.
template <class Make>
bool Root::MakeName(Make make) {
  const HANDLE folder = m_folders.Current();
  const std::wstring name = m_existing ? PrivateName() : m_name;
  if (!make(folder, name)) return false;
  if (!m_existing) return true;
  if (platform::ReplaceBelow(folder, name.c_str(), m_name.c_str()) != FALSE) {
    m_reporter.TellReplaced();
    return true;
  }
  const int error = platform::LastSystemError();
  platform::DeleteBelow(folder, name.c_str());
  return platform::FailWithErrno(error) != FALSE;
}

bool Root::MakeLink(const std::wstring& target, const FILETIME* lastWrite) {
  if (!StaysInside(target, m_folders.Depth())) {
    return m_reporter.Tell(ItemResult::kRefused, ItemReason::kUnsafeLink);
  }
  const bool isMade = MakeName([&](HANDLE folder, const std::wstring& name) {
    if (platform::CreateSymbolicLinkBelow(folder, name.c_str(), target.c_str()) == FALSE) {
      return false;
    }
    // Not every file system dates links.
    if (lastWrite != nullptr) platform::SetTimeBelow(folder, name.c_str(), *lastWrite);
    return true;
  });
  if (!isMade) return m_reporter.TellRefusal();
  m_reporter.TellWritten();
  return true;
}

bool Root::MakeHardLink(const OutputPlace& source, const std::wstring& path,
                        const FileFacts& facts) {
  if (!m_reporter.HasWritten(source.Path(), path)) {
    return m_reporter.Tell(ItemResult::kRefused, ItemReason::kNoSource);
  }
  const frame::OpenFile from = m_folders.Open(source.folder);
  const bool isMade = MakeName([&](HANDLE folder, const std::wstring& name) {
    return from.IsOpen() &&
           platform::LinkBelow(from.Get(), source.name.c_str(), folder, name.c_str()) != FALSE;
  });
  // A file system without hard links can still hold the content.
  if (!isMade) return Copy(source, path, facts);
  m_reporter.TellWritten();
  return true;
}

bool Root::Copy(const OutputPlace& source, const std::wstring& path, const FileFacts& facts) {
  if (!m_reporter.HasWritten(source.Path(), path)) {
    return m_reporter.Tell(ItemResult::kRefused, ItemReason::kNoSource);
  }
  const frame::OpenFile folder = m_folders.Open(source.folder);
  const frame::OpenFile from(folder.IsOpen()
                                 ? platform::OpenFileBelow(folder.Get(), source.name.c_str())
                                 : INVALID_HANDLE_VALUE);
  if (!from.IsOpen()) return m_reporter.Tell(ItemResult::kRefused, ItemReason::kNoSource);
  const DWORD mode = facts.attributes ? *facts.attributes >> 16 & 0777 : 0666;
  if (!Open(Placing::kBeside, mode)) return false;
  std::vector<BYTE> block(std::size_t{256} * 1024);
  for (;;) {
    DWORD read = 0;
    const auto length = static_cast<DWORD>(block.size());
    const bool isRead = ReadFile(from.Get(), block.data(), length, &read, nullptr) != FALSE;
    if (isRead && read == 0) return m_file.Finish(facts);
    if (!isRead || !m_file.Write(block.data(), read)) break;
  }
  m_reporter.TellRefusal();
  m_file.RemoveBroken();
  return false;
}

std::wstring Root::MakePrivateFolder() {
  const HANDLE root = m_folders.Root(false);
  if (root == INVALID_HANDLE_VALUE) return {};
  std::wstring name = PrivateName();
  return platform::CreateFolderBelow(root, name.c_str(), 0700) != FALSE ? name : std::wstring();
}

std::wstring Root::TakeLinkFrom(const std::wstring& privateFolder, const std::wstring& name) {
  const frame::OpenFile folder(
      platform::OpenFolderBelow(m_folders.Root(false), privateFolder.c_str()));
  if (!folder.IsOpen()) return {};
  std::wstring target = platform::LinkTargetBelow(folder.Get(), name.c_str());
  platform::DeleteBelow(folder.Get(), name.c_str());
  return target;
}

void Root::RemovePrivateFolder(const std::wstring& privateFolder) {
  platform::RemoveFolderBelow(m_folders.Root(false), privateFolder.c_str());
}

}  // namespace morvunp::output
