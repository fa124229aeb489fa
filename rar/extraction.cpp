// Unpacking, and the engine's calls back while it does. The engine decodes and
// checks; the files are written here.
#include <algorithm>
#include <cerrno>
#include <functional>
#include <optional>
#include <unordered_map>
#include <utility>

#include "frame/itempath.h"
#include "frame/keptexception.h"
#include "frame/keyedhash.h"
#include "frame/lent.h"
#include "frame/progress.h"
#include "morvunp/dostime.h"
#include "morvunp/outputplace.h"
#include "morvunp/rarunpacker.h"
#include "output/pathgate.h"
#include "output/root.h"
#include "output/walk.h"
#include "rar/callbacks.h"
#include "rar/engine.h"
#include "rar/enginename.h"
#include "rar/oldlink.h"
#include "rar/owners.h"
#include "rar/password.h"

namespace frame = morvunp::frame;
namespace output = morvunp::output;
namespace platform = morvunp::platform;
namespace rar = morvunp::rar;

using morvunp::ItemReason;
using morvunp::ItemResult;

namespace morvunp::rar {

/// Where a router sent the items so far, by keyed hashes of their paths.
class Places {
 public:
  void Add(const std::wstring& path, const OutputPlace& place) {
    m_places[frame::HashOfText(path)] = place;
  }
  std::optional<OutputPlace> Of(const std::wstring& path) const {
    const auto found = m_places.find(frame::HashOfText(path));
    return found != m_places.end() ? std::optional(found->second) : std::nullopt;
  }

 private:
  std::unordered_map<ULONGLONG, OutputPlace, frame::KeyedHash> m_places;
};

/// What the items of one run share.
struct Run {
  output::Root& root;
  /// The place of the item with this path; none in an operation of one item.
  std::function<std::optional<OutputPlace>(const std::wstring& path)> placeOf;
  OldLinks oldLinks;
  /// The password was asked for in vain.
  bool isPasswordRefused = false;
  /// How often the archive was opened again to go on.
  int resumed = 0;
  /// Opened where the first file wants one.
  std::optional<Owners> owners{};
  /// The rest of the data in hand is not wanted: its file cannot be written.
  bool isDropped = false;
};

}  // namespace morvunp::rar

namespace {

bool IsRepetition(const rar::Header& header) {
  return header.redirection == rar::Redirection::kHardLink ||
         header.redirection == rar::Redirection::kFileCopy;
}

/// Permission bits for the file, before the umask.
DWORD ModeOf(const rar::Header& header) {
  if (header.isUnix) return header.attributes & 0777;
  return (header.attributes & FILE_ATTRIBUTE_READONLY) != 0 ? 0444 : 0666;
}

output::FileFacts FactsOf(const rar::Header& header) {
  output::FileFacts facts;
  const bool isDated = header.modified.dwLowDateTime != 0 || header.modified.dwHighDateTime != 0;
  if (isDated) facts.lastWrite = header.modified;
  facts.attributes = FILE_ATTRIBUTE_UNIX_EXTENSION | ModeOf(header) << 16;
  return facts;
}

}  // namespace

output::Root CRarUnpacker::RootAt(const std::wstring& target) {
  m_hArchive->HandOverPassed(m_state.m_options.pumpAlways);
  return {m_state, target, [this](const std::wstring& folder) { UpdateFileTree(folder); }};
}

output::Item CRarUnpacker::CurrentItem(const std::wstring& path) const {
  return {GetPosition(), path, m_nTotal, morvunp::TimeOfDosDateTime(m_nFileTime).value_or(0)};
}

// One file.

bool CRarUnpacker::UnpackCurrentFile(const std::wstring& name, const std::wstring& folder) {
  if (!m_hArchive->HasItem() || m_hArchive->Current().IsPlainFolder()) return false;
  output::Root root = RootAt(folder);
  rar::Run run{root, {}, rar::OldLinks(m_strArchive)};
  const frame::Lent lent(m_pRun, run);
  root.Begin(CurrentItem(m_hArchive->Current().path));
  const std::wstring& inside = m_hArchive->Current().path;
  const bool isSafe =
      morvunp::IsSafeItem(inside, frame::NameOf(inside)) && output::IsSafePath(name, false);
  if (!isSafe || m_hArchive->Current().isPathCut) {
    return root.Report().Tell(ItemResult::kRefused, ItemReason::kUnsafeName);
  }
  if (!frame::HasParent(name)) return UnpackAt({folder, name});
  return UnpackAt({frame::Join(folder, frame::ParentOf(name)), std::wstring(frame::NameOf(name))});
}

/// The current item, which is the one in hand.
bool CRarUnpacker::WriteItem(const morvunp::OutputPlace& place) {
  const rar::Header& header = m_hArchive->Current();
  output::Reporter& report = m_pRun->root.Report();
  if (!morvunp::IsSafeItem(header.path, frame::NameOf(header.path))) {
    return report.Tell(ItemResult::kRefused, ItemReason::kUnsafeName);
  }
  if (header.isPathCut) return report.Tell(ItemResult::kRefused, ItemReason::kNameTooLong);
  return place.name.empty() ? MakeFolder(place.folder) : UnpackAt(place);
}

bool CRarUnpacker::MakeFolder(const std::wstring& folder) {
  if (!m_pRun->root.MakeFolder(folder)) return false;
  output::FileFacts facts = FactsOf(m_hArchive->Current());
  // What other systems record of a folder is no mode.
  if (!m_hArchive->Current().isUnix) facts.attributes.reset();
  m_pRun->root.NoteFolder(facts);
  return true;
}

bool CRarUnpacker::UnpackAt(const morvunp::OutputPlace& place) {
  output::Root& root = m_pRun->root;
  if (m_hArchive->Current().IsContinuation()) {
    return root.Report().Tell(ItemResult::kFailed, ItemReason::kBeginsEarlier);
  }
  if (IsWithoutPassword()) return TellNoPassword();
  if (!root.Enter(place)) return false;
  m_state.m_bCancel = 0;
  const output::Root::Answer answer = root.Decide();
  if (answer == output::Root::Answer::kDeclined && m_state.m_bCancel == 0) PassOver();
  if (answer != output::Root::Answer::kWrite) return false;
  BeginData();
  {
    const rar::Callbacks callbacks(*m_hArchive, CallbackProc, this);
    if (!Write()) return false;
  }
  UpdateFileTree(m_state.m_strLastTarget);
  return true;
}

void CRarUnpacker::BeginData() {
  m_state.m_bStopRequest = 0;
  frame::SendProgress(m_state, 0, m_strCurrentName);
  m_nDone = 0;
}

/// The current item, whose data goes to a sink. What links and copies say is in
/// their headers.
bool CRarUnpacker::Drain() {
  output::Root& root = m_pRun->root;
  const rar::Header& header = m_hArchive->Current();
  if (header.IsContinuation()) {
    return root.Report().Tell(ItemResult::kFailed, ItemReason::kBeginsEarlier);
  }
  if (header.redirection != rar::Redirection::kNone) return root.Out().Finish({});
  if (IsWithoutPassword()) return TellNoPassword();
  m_state.m_bCancel = 0;
  BeginData();
  const rar::Callbacks callbacks(*m_hArchive, CallbackProc, this);
  return WriteData();
}

/// The item cannot be had, because the user was asked before and gave none.
bool CRarUnpacker::IsWithoutPassword() const {
  return m_pRun->isPasswordRefused && m_hArchive->Current().IsEncrypted();
}

bool CRarUnpacker::TellNoPassword() {
  return m_pRun->root.Report().Tell(ItemResult::kFailed, ItemReason::kNoPassword);
}

/// Behind an item: where the engine has lost its place and the run is to go on,
/// the archive is opened again.
void CRarUnpacker::Resume() {
  // Each time all headers up to the item are read once more.
  constexpr int kMostResumed = 100;
  const bool isOver = m_state.m_bCancel != 0 || !m_pRun->root.Report().GoesOn();
  if (isOver || !m_hArchive->HasLostPlace() || m_pRun->resumed == kMostResumed) return;
  ++m_pRun->resumed;
  m_strMissingVolume.clear();
  m_strVolumeAsked.clear();
  m_bWalking = true;
  const bool isResumed = m_hArchive->Resume(m_strArchive, [this] {
    UsePassword();
    m_hArchive->SetCallback(CallbackProc, reinterpret_cast<LPARAM>(this));
  });
  m_hArchive->ClearCallback();
  m_bWalking = false;
  frame::ThrowKept(m_pThrown);
  if (isResumed) m_nWalkProblem = ItemReason::kNone;
}

bool CRarUnpacker::Write() {
  const rar::Header& header = m_hArchive->Current();
  if (IsRepetition(header)) return Repeat(FactsOfCurrent());
  if (header.IsOldLink()) return WriteOldLink();
  if (header.redirection == rar::Redirection::kSymbolicLink) {
    return m_pRun->root.MakeLink(header.source, &header.modified);
  }
  return WriteData();
}

/// With the owner, where it is wanted and can be given.
output::FileFacts CRarUnpacker::FactsOfCurrent() {
  output::FileFacts facts = FactsOf(m_hArchive->Current());
  const bool isWanted = m_state.m_options.owners && platform::MayGiveFilesAway();
  if (!isWanted || m_pRun->root.Out().HasSink() || m_hArchive->IsVolume()) return facts;
  if (!m_pRun->owners) m_pRun->owners.emplace(m_strArchive);
  facts.owner = m_pRun->owners->OwnerOf(m_hArchive->Walked() - 1, m_hArchive->Current());
  return facts;
}

bool CRarUnpacker::WriteData() {
  output::Root& root = m_pRun->root;
  m_pRun->isDropped = false;
  // A copy: behind it the engine may stand elsewhere.
  const output::FileFacts facts = FactsOfCurrent();
  const int code = m_hArchive->Test();
  // What is behind an interruption is nothing that anybody wants.
  if (m_state.m_bCancel != 0 || m_pThrown) root.Out().Remove();
  if (code != rar::kSuccess || m_pRun->isDropped) root.Out().RemoveBroken();
  frame::ThrowKept(m_pThrown);
  if (code != rar::kSuccess) return Fail(code);
  if (m_pRun->isDropped) return false;
  // An empty file comes into being here.
  if (!root.Out().IsOpen() &&
      !root.Open(output::Placing::kBeside, *facts.attributes >> 16 & 0777)) {
    return false;
  }
  if (root.Out().Finish(facts)) return true;
  root.Out().RemoveBroken();
  return false;
}

/// The engine's answer is told, and shown where it has a message.
bool CRarUnpacker::Fail(int code) {
  output::Reporter& report = m_pRun->root.Report();
  if (m_state.m_bCancel != 0) {
    return report.Tell(ItemResult::kFailed, ItemReason::kInterrupted);
  }
  rar::ShowProblem(code);
  ItemReason reason = ProblemOf(code, m_hArchive->Current().HidesWrongPassword());
  const bool isCut = (m_gap.isDataCut && m_gap.items == m_nItems) || IsBeyondEnd();
  const bool isDamaged =
      reason == ItemReason::kDamaged || reason == ItemReason::kWrongPasswordOrDamaged;
  if (isDamaged && isCut) reason = ItemReason::kCutShort;
  const bool isVolume = reason == ItemReason::kMissingVolume;
  return report.Tell(ItemResult::kFailed, reason, isVolume ? m_strMissingVolume : std::wstring());
}

/// What the archive does not tell, the engine does by making the link, where
/// nobody else can look.
bool CRarUnpacker::WriteOldLink() {
  constexpr LPCWSTR kName = L"link";
  const rar::Header& header = m_hArchive->Current();
  output::Root& root = m_pRun->root;
  const bool isAlone = !m_hArchive->IsVolume();
  if (const auto target =
          isAlone ? m_pRun->oldLinks.TargetOf(m_hArchive->Walked() - 1, header) : std::nullopt) {
    return root.MakeLink(*target, &header.modified);
  }
  const std::wstring folder = root.MakePrivateFolder();
  if (folder.empty()) return root.Report().TellRefusal();
  const FILETIME modified = header.modified;
  const std::wstring parent = frame::Join(platform::ResolvedPath(root.Target()), folder);
  const int code = m_hArchive->Extract(frame::Join(parent, kName));
  const std::wstring target = root.TakeLinkFrom(folder, kName);
  root.RemovePrivateFolder(folder);
  frame::ThrowKept(m_pThrown);
  if (code != rar::kSuccess) return Fail(code);
  // The engine makes no link that it takes for unsafe, and says nothing.
  if (target.empty()) return root.Report().Tell(ItemResult::kRefused, ItemReason::kUnsafeLink);
  return root.MakeLink(target, &modified);
}

/// Writes a hard link or a copy.
bool CRarUnpacker::Repeat(const output::FileFacts& facts) {
  const rar::Header& header = m_hArchive->Current();
  output::Root& root = m_pRun->root;
  std::optional<morvunp::OutputPlace> source;
  if (m_pRun->placeOf && output::IsSafePath(header.source, true)) {
    source = m_pRun->placeOf(header.source);
  }
  if (!source) return root.Report().Tell(ItemResult::kRefused, ItemReason::kNoSource);
  return header.redirection == rar::Redirection::kHardLink
             ? root.MakeHardLink(*source, header.source, facts)
             : root.Copy(*source, header.source, facts);
}

bool CRarUnpacker::UnpackFile(const std::wstring& path, const std::wstring& target) {
  RARFILEFULLINFO info;
  if (!LocateFile(path, info) || m_hArchive->Current().IsPlainFolder()) return false;
  const std::wstring name = m_strCurrentName;
  output::Root root = RootAt(target);
  rar::Run run{root, {}, rar::OldLinks(m_strArchive)};
  const frame::Lent lent(m_pRun, run);
  root.Begin(CurrentItem(info.strPath));
  if (!morvunp::IsSafeItem(info.strPath, frame::NameOf(info.strPath))) {
    return root.Report().Tell(ItemResult::kRefused, ItemReason::kUnsafeName);
  }
  if (!LocateSource()) return root.Report().Tell(ItemResult::kRefused, ItemReason::kNoSource);
  m_strCurrentName = name;
  return UnpackAt(morvunp::PlaceOfFile(m_state.m_iniUnpack, path, target));
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

/// What continues a file was dealt with at its beginning, unless the archive was
/// opened in its midst.
bool CRarUnpacker::IsRest() const {
  return m_hArchive->Current().IsContinuation() && m_nHeader > 1;
}

template <class PlaceOf>
bool CRarUnpacker::RunOverItems(const std::wstring& target, PlaceOf placeOf) {
  output::Root root = RootAt(target);
  const auto placeOfFile = [&](const std::wstring& path) { return placeOf(path, false); };
  rar::Run run{root, placeOfFile, rar::OldLinks(m_strArchive)};
  const frame::Lent lent(m_pRun, run);
  const auto routeOf = [&](const RARFILEFULLINFO& info) {
    if (IsRest()) return morvunp::Route::PassOver();
    return output::RouteTo(placeOf(info.strPath, m_hArchive->Current().IsPlainFolder()));
  };
  const bool result = output::UnpackByWalking<RARFILEFULLINFO>(
      *this, m_state, root, routeOf,
      [this](const RARFILEFULLINFO& info) { return CurrentItem(info.strPath); },
      [this](output::Root&, const morvunp::Route& route) {
        const bool isWritten = WriteItem(route.Place());
        Resume();
        return isWritten;
      });
  TellRest(routeOf);
  return result;
}

bool CRarUnpacker::UnpackItems(const std::wstring& target, const morvunp::ItemRouter& router) {
  output::Root root = RootAt(target);
  rar::Places places;
  rar::Run run{root, [&](const std::wstring& path) { return places.Of(path); },
               rar::OldLinks(m_strArchive)};
  const frame::Lent lent(m_pRun, run);
  const morvunp::ItemRouter route = [&](const morvunp::RoutedItem& item) {
    return IsRest() ? morvunp::Route::PassOver() : router(item);
  };
  const auto routedOf = [this](const RARFILEFULLINFO& info) -> morvunp::RoutedItem {
    const rar::Header& header = m_hArchive->Current();
    return {GetPosition(), info.strPath, m_nTotal, header.IsPlainFolder(),
            IsRepetition(header) ? std::wstring_view(header.source) : std::wstring_view()};
  };
  output::UnpackByRouter<RARFILEFULLINFO>(
      *this, m_state, root, route, routedOf,
      [this](const RARFILEFULLINFO& info) { return CurrentItem(info.strPath); },
      [&](output::Root&, const morvunp::OutputPlace& place) {
        places.Add(m_hArchive->Current().path, place);
        const bool isWritten = WriteItem(place);
        Resume();
        return isWritten;
      },
      [this](output::Root&) {
        const bool isIntact = Drain();
        Resume();
        return isIntact;
      });
  return TellRest([&](const RARFILEFULLINFO& info) { return route(routedOf(info)); });
}

/// Where the engine has lost its place, or a volume is missing, the items
/// behind are found by another walk, as far as there are headers.
template <class RouteOf>
bool CRarUnpacker::TellRest(RouteOf routeOf) {
  output::Reporter& report = m_pRun->root.Report();
  morvunp::RunReport end{GetWalkProblem(), 0, m_strMissingVolume};
  if (output::IsFull(report.LastFailure().systemError)) end = report.LastFailure();
  if (report.End()) end = *report.End();
  if (m_state.m_bCancel != 0) end = {ItemReason::kInterrupted};
  const std::wstring missing = m_strMissingVolume;
  end.detail = end.reason == ItemReason::kMissingVolume ? missing : std::wstring_view();
  const ItemReason problem = m_nWalkProblem;
  const bool hasRest = problem != ItemReason::kNone && m_nItems != 0 && !report.HasEnough();
  if (m_state.m_reportItem && hasRest) {
    const ULONGLONG last = GetPosition();
    morvunp::WalkItems<RARFILEFULLINFO>(*this, [&](const RARFILEFULLINFO& info) {
      if (GetPosition() <= last) return true;
      const morvunp::Route route = routeOf(info);
      if (route.IsEnd()) return false;
      if (!route.IsPassOver()) report.TellNotReached(CurrentItem(info.strPath), end.reason);
      return true;
    });
    m_nWalkProblem = problem;
    m_strMissingVolume = missing;
  }
  return m_pRun->root.TellEnd(end);
}

bool CRarUnpacker::UnpackFolder(const std::wstring& path, const std::wstring& target) {
  return RunOverItems(target, [&](const std::wstring& item, bool isFolder) {
    return morvunp::PlaceInFolderRun(m_state.m_iniUnpack, path, item, isFolder, target);
  });
}

bool CRarUnpacker::UnpackArchive(const std::wstring& target) {
  return RunOverItems(
      target, [&](const std::wstring& item, bool isFolder) -> std::optional<morvunp::OutputPlace> {
        // Without folders there is nothing for a link to one to lead to.
        const bool isFlat = m_state.m_iniUnpack.bUnpackArchiveNoPaths != 0;
        if (isFlat && m_hArchive->Current().IsFolder()) return std::nullopt;
        return morvunp::PlaceInArchiveRun(m_state.m_iniUnpack, item, isFolder, target);
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
      if (p2 == rar::kVolumeMissing) return OnVolumeMissing(reinterpret_cast<char*>(p1));
      m_strVolumeAsked.clear();
      return rar::kGoOn;
    case rar::kProcessData:
      return OnData(reinterpret_cast<const void*>(p1), static_cast<std::size_t>(p2));
    case rar::kNeedPassword:
      return OnPasswordNeeded(reinterpret_cast<char*>(p1), static_cast<std::size_t>(p2));
    default:
      return rar::kGoOn;
  }
}

/// A file comes into being with its first byte. One that cannot be written is
/// decoded to its end, because the engine loses its place when it is stopped;
/// but there is no going on without space.
int CRarUnpacker::OnData(const void* bytes, std::size_t length) {
  if (m_hArchive->IsFollowing()) return frame::MayGoOnMeanwhile(m_state) ? rar::kGoOn : rar::kStop;
  output::Root& root = m_pRun->root;
  if (length != 0 && !m_pRun->isDropped) {
    const DWORD mode = ModeOf(m_hArchive->Current());
    m_pRun->isDropped = !(root.Out().IsOpen() || root.Open(output::Placing::kBeside, mode)) ||
                        !root.Out().Write(bytes, static_cast<DWORD>(length));
    if (m_pRun->isDropped && output::IsFull(root.Report().LastFailure().systemError)) {
      return rar::kStop;
    }
    if (root.Report().End()) return rar::kStop;
  }
  m_nDone += length;
  return frame::ReportBlock(m_state, m_nDone, m_nTotal) ? rar::kGoOn : rar::kStop;
}

/// `name` is the path at which the engine looks, and where it takes another one
/// from. The host is asked once for each volume; one that the engine cannot use
/// would be asked for again and again.
int CRarUnpacker::OnVolumeMissing(char* name) {
  constexpr std::size_t kCapacity = 1024;
  const std::wstring path = platform::ToLibraryPath(name);
  const auto& ask = m_state.m_options.onMissingVolume;
  auto answer = m_volumeAnswers.find(path);
  if (ask && answer == m_volumeAnswers.end()) {
    const auto where = ask(std::wstring(frame::NameOf(path)));
    const std::string native = where ? platform::ToNativePath(*where) : std::string();
    answer = m_volumeAnswers.insert({path, native}).first;
  }
  const bool isKnown = answer != m_volumeAnswers.end() && !answer->second.empty() &&
                       answer->second.size() < kCapacity && path != m_strVolumeAsked;
  if (!isKnown) {
    m_strMissingVolume = path;
    return rar::kStop;
  }
  m_strVolumeAsked = path;
  std::copy_n(answer->second.c_str(), answer->second.size() + 1, name);
  return rar::kGoOn;
}

int CRarUnpacker::OnPasswordNeeded(char* buffer, std::size_t capacity) {
  // A walk alone asks for none.
  if (m_bWalking) return rar::kStop;
  const auto answer = rar::AskPassword();
  const bool isRefusal = !answer && m_state.m_options.goOn;
  if (m_pRun != nullptr && isRefusal) m_pRun->isPasswordRefused = true;
  if (!answer) return rar::kStop;
  const std::string password = rar::NarrowPassword(*answer);
  if (password.size() >= capacity) return rar::kStop;
  std::copy_n(password.c_str(), password.size() + 1, buffer);
  return rar::kGoOn;
}
