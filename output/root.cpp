#include "output/root.h"

#include <algorithm>
#include <cerrno>
#include <new>
#include <vector>

#include "frame/itempath.h"
#include "output/linktarget.h"
#include "output/pathgate.h"
#include "output/replace.h"
#include "platform/below.h"

namespace morvunp::output {

using morvunp::ItemReason;
using morvunp::ItemResult;

Root::~Root() {
  try {
    // A folder may be about to lose the permission that this takes.
    m_file.Remove();
    m_folderFacts.Settle(m_folders);
  } catch (const std::bad_alloc&) {
    // Not even memory for a path is left: the folders stay as they are.
  }
}

void Root::Begin(Item item) {
  m_file.Detach();
  m_reporter.Begin(std::move(item));
  if (!m_budget.TakeItem()) m_reporter.TellLimit();
}

bool Root::BeginSink(morvunp::ItemSink& sink, const morvunp::RoutedItem& item) {
  if (m_reporter.End()) return false;
  m_reporter.SetSink(sink);
  sink.Begin(item);
  if (item.isFolder) {
    m_reporter.Tell(ItemResult::kIntact);
  } else {
    m_file.Attach(sink);
  }
  return true;
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

/// False, which is told, where the run is over or goes deeper than it may.
/// `itself` is 1 for a folder that is an item of its own.
bool Root::MayEnter(const std::wstring& folder, std::size_t itself) {
  if (m_reporter.End()) return false;
  if (!m_budget.LimitsDepth()) return true;
  const std::size_t depth = m_folders.DepthOf(folder);
  return m_budget.AllowsDepth(depth - std::min(depth, itself)) || m_reporter.TellLimit();
}

bool Root::MakeFolder(const std::wstring& folder) {
  m_reporter.SetOutputPath(folder);
  if (!MayEnter(folder, 1)) return false;
  if (!m_folders.Enter(folder, folder)) return false;
  m_reporter.Tell(ItemResult::kFolderMade);
  return true;
}

void Root::NoteFolder(const FileFacts& facts) {
  // What was chosen as target is the user's.
  const std::wstring& folder = m_reporter.OutputPath();
  if (m_state.m_options.folderFacts && m_folders.DepthOf(folder) > 0) {
    m_folderFacts.Note(folder, facts);
  }
}

bool Root::TellEnd(const morvunp::RunReport& why) {
  m_folderFacts.Settle(m_folders);
  return m_reporter.TellEnd(why);
}

bool Root::Enter(const OutputPlace& place) {
  m_name = place.name;
  m_existing.reset();
  const std::wstring path = place.Path();
  m_reporter.SetOutputPath(path);
  if (!MayEnter(place.folder, 0)) return false;
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
  while (platform::FindBelow(m_folders.Current(), m_name.c_str(), found) != FALSE) {
    if (const auto answer = DecideAbout(found)) return *answer;
  }
  if (GetLastError() == ERROR_FILE_NOT_FOUND) return Answer::kWrite;
  m_reporter.TellRefusal();
  return Answer::kFailed;
}

/// None: the file in hand has another name now.
std::optional<Root::Answer> Root::DecideAbout(const platform::FoundFile& found) {
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
  using What = morvunp::ExistingFileAnswer::What;
  const auto answer =
      output::DecideAbout(m_state, m_state.m_strLastTarget, found, m_reporter.Current());
  if (answer.what == What::kWrite) {
    m_existing = found;
    return Answer::kWrite;
  }
  if (answer.what == What::kOtherName) {
    return TakeOtherName(answer.name) ? std::nullopt : std::optional(Answer::kDeclined);
  }
  const bool isCancelled = m_state.m_bCancel != 0;
  m_reporter.Tell(ItemResult::kKept, isCancelled ? ItemReason::kInterrupted : ItemReason::kNone);
  return Answer::kDeclined;
}

/// The file in hand goes by this name, in the same folder.
bool Root::TakeOtherName(const std::wstring& name) {
  if (!IsSafeName(name, m_folders.Depth() == 0)) {
    return m_reporter.Tell(ItemResult::kRefused, ItemReason::kUnsafeName);
  }
  std::wstring& path = m_state.m_strLastTarget;
  path.replace(path.size() - m_name.size(), m_name.size(), name);
  m_name = name;
  m_reporter.SetOutputPath(path);
  m_otherNames[frame::HashOfText(m_reporter.Current().path)] = name;
  return true;
}

/// Where the item `path`, whose place is this, came out in this run.
std::optional<OutputPlace> Root::SourceAt(const OutputPlace& place,
                                          const std::wstring& path) const {
  if (m_reporter.HasWritten(place.Path(), path)) return place;
  const auto other = m_otherNames.find(frame::HashOfText(path));
  if (other == m_otherNames.end()) return std::nullopt;
  const OutputPlace renamed{place.folder, other->second};
  return m_reporter.HasWritten(renamed.Path(), path) ? std::optional(renamed) : std::nullopt;
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

bool Root::FinishLink(const FileFacts& facts, ItemReason defect) {
  const std::string text = m_file.TakeText();
  const bool isTarget =
      !text.empty() && text.size() <= File::kLongestText && text.find('\0') == text.npos;
  if (defect == ItemReason::kNone && !isTarget) defect = ItemReason::kDamaged;
  if (defect != ItemReason::kNone) return m_reporter.Tell(ItemResult::kFailed, defect);
  return MakeLink(platform::ToLibraryPath(text), facts.lastWrite ? &*facts.lastWrite : nullptr);
}

bool Root::MakeHardLink(const OutputPlace& place, const std::wstring& path,
                        const FileFacts& facts) {
  const auto source = SourceAt(place, path);
  if (!source) return m_reporter.Tell(ItemResult::kRefused, ItemReason::kNoSource);
  const frame::OpenFile from = m_folders.Open(source->folder);
  const bool isMade = MakeName([&](HANDLE folder, const std::wstring& name) {
    return from.IsOpen() &&
           platform::LinkBelow(from.Get(), source->name.c_str(), folder, name.c_str()) != FALSE;
  });
  // A file system without hard links can still hold the content.
  if (!isMade) return Copy(place, path, facts);
  m_reporter.TellWritten();
  return true;
}

bool Root::Copy(const OutputPlace& place, const std::wstring& path, const FileFacts& facts) {
  const auto source = SourceAt(place, path);
  if (!source) return m_reporter.Tell(ItemResult::kRefused, ItemReason::kNoSource);
  const frame::OpenFile folder = m_folders.Open(source->folder);
  const frame::OpenFile from(folder.IsOpen()
                                 ? platform::OpenFileBelow(folder.Get(), source->name.c_str())
                                 : INVALID_HANDLE_VALUE);
  if (!from.IsOpen()) return m_reporter.Tell(ItemResult::kRefused, ItemReason::kNoSource);
  const DWORD mode = facts.attributes ? *facts.attributes >> 16 & 0777 : 0666;
  if (!Open(Placing::kBeside, mode)) return false;
  std::vector<BYTE> block(std::size_t{256} * 1024);
  for (;;) {
    DWORD read = 0;
    const auto length = static_cast<DWORD>(block.size());
    const bool isRead = ReadFile(from.Get(), block.data(), length, &read, nullptr) != FALSE;
    if (isRead && read == 0 && m_file.Finish(facts)) return true;
    if (isRead && read == 0) break;
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
