// C7zUnpacker: unpacking. Every operation is one call of the engine, which asks
// for each item's stream through C7zExtractCallback.
#include <algorithm>
#include <utility>

#include "frame/iteminfo.h"
#include "frame/itempath.h"
#include "frame/keptexception.h"
#include "frame/lent.h"
#include "frame/progress.h"
#include "morvunp/dostime.h"
#include "morvunp/outputplace.h"
#include "morvunp/sevenzipunpacker.h"
#include "output/root.h"
#include "output/walk.h"
#include "sevenzip/engine.h"
#include "sevenzip/extractcallback.h"
#include "sevenzip/guarded.h"
#include "sevenzip/property.h"

namespace frame = morvunp::frame;
namespace output = morvunp::output;
namespace platform = morvunp::platform;
namespace sevenzip = morvunp::sevenzip;

namespace {

bool IsSafe(const std::wstring& path) { return morvunp::IsSafeItem(path, frame::NameOf(path)); }

/// Why the engine ended a run.
morvunp::RunReport ReportOf(HRESULT result) {
  if (result == S_OK) return {};
  if (result == E_OUTOFMEMORY) return {morvunp::ItemReason::kNoMemory};
  const int systemError = platform::LastSystemError();
  const bool isOfSystem = systemError != 0 && result == platform::ResultOfError(GetLastError());
  if (!isOfSystem) return {morvunp::ItemReason::kDamaged};
  const morvunp::ItemReason reason = output::ReasonOfError(systemError);
  return {reason, reason == morvunp::ItemReason::kSystem ? systemError : 0};
}

}  // namespace

output::Root C7zUnpacker::RootAt(const std::wstring& target) {
  return {m_state, target, [this](const std::wstring& folder) { UpdateFileTree(folder); }};
}

// One item.

void C7zUnpacker::BeginItem(const SEVENZIPFILEFULLINFO& info) {
  m_nTotal = info.nSize;
  m_nItemDateTime = info.nDateTime;
  m_bEncrypted = info.strMethod.find(L"7zAES") != std::wstring::npos;
  m_pRoot->Begin({m_nCurrent, info.strPath, m_nTotal,
                  morvunp::TimeOfDosDateTime(m_nItemDateTime).value_or(0)});
}

bool C7zUnpacker::RefuseName() {
  return m_pRoot->Report().Tell(morvunp::ItemResult::kRefused, morvunp::ItemReason::kUnsafeName);
}

bool C7zUnpacker::UnpackFile(const std::wstring& path, const std::wstring& target) {
  m_nMode = kSingleItem;
  SEVENZIPFILEFULLINFO info;
  if (!LocateFile(path) || !GetFileFullInfo(info) || frame::IsFolderItem(info)) return false;
  output::Root root = RootAt(target);
  const frame::Lent lent(m_pRoot, root);
  BeginItem(info);
  if (!IsSafe(path)) return RefuseName();
  return UnpackAt(morvunp::PlaceOfFile(m_state.m_iniUnpack, path, target));
}

bool C7zUnpacker::UnpackCurrentFile(const std::wstring& name, const std::wstring& folder) {
  m_nMode = kSingleItem;
  SEVENZIPFILEFULLINFO info;
  if (!GetFileFullInfo(info) || frame::IsFolderItem(info)) return false;
  output::Root root = RootAt(folder);
  const frame::Lent lent(m_pRoot, root);
  BeginItem(info);
  if (!IsSafe(name) || !IsSafe(info.strPath)) return RefuseName();
  if (!frame::HasParent(name)) return UnpackAt({folder, name});
  return UnpackAt({frame::Join(folder, frame::ParentOf(name)), std::wstring(frame::NameOf(name))});
}

/// The current item, which is the one in hand, by a call of the engine.
bool C7zUnpacker::UnpackAt(const morvunp::OutputPlace& place) {
  if (!m_pRoot->Enter(place)) return false;
  if (m_pRoot->Decide() != output::Root::Answer::kWrite) return false;
  BeginFile(place.name);
  const auto callback = sevenzip::Create<sevenzip::C7zExtractCallback>();
  callback->Init(m_pEngine->Archive(), *m_pRoot, *this);
  callback->SetTotal(m_nTotal);
  const DWORD index = m_nCurrent;
  return RunExtract(&index, 1, *callback.Get());
}

void C7zUnpacker::BeginFile(const std::wstring& name) {
  m_state.m_bCancel = 0;
  m_state.m_bStopRequest = 0;
  frame::SendProgress(m_state, 0, name);
}

/// A file that is open behind the engine is not whole.
bool C7zUnpacker::RunExtract(const DWORD* indices, DWORD count,
                             sevenzip::C7zExtractCallback& callback) {
  HRESULT result = m_pEngine->Archive()->Extract(indices, count, 0, &callback);
  const bool isAlone = m_nMode == kSingleItem;
  if (callback.WasPasswordRefused() && m_state.m_options.goOn && !isAlone) {
    result = ExtractPlainRest(callback);
  }
  morvunp::RunReport end = ReportOf(result);
  if (callback.WasPasswordRefused()) end = {morvunp::ItemReason::kNoPassword};
  if (result == E_ABORT && !callback.WasPasswordRefused()) end = m_pRoot->Report().LastFailure();
  if (m_pRoot->Report().End()) end = *m_pRoot->Report().End();
  if (m_state.m_bCancel != 0) end = {morvunp::ItemReason::kInterrupted};
  frame::ThrowKept(sevenzip::Thrown());
  const bool isInHand = isAlone || callback.HasInHand();
  if (m_state.m_bCancel != 0) m_pRoot->Out().Remove();
  if (m_pRoot->Out().IsOpen() || (isInHand && result != S_OK)) {
    m_pRoot->Report().TellFailure(end);
    m_pRoot->Out().KeepBroken();
  }
  if (!isAlone) {
    const bool isAtEnd = TellRest(end);
    if (m_nMode == kRoutedRun) return isAtEnd;
  }
  return m_state.m_bCancel == 0 && result == S_OK;
}

bool C7zUnpacker::IsEncrypted(DWORD index) const {
  sevenzip::Property isEncrypted;
  m_pEngine->Archive()->GetProperty(index, sevenzip::kpidEncrypted, isEncrypted.Receive());
  return isEncrypted.IsTrue();
}

/// Without a password: what is encrypted is told, the rest comes out.
HRESULT C7zUnpacker::ExtractPlainRest(sevenzip::C7zExtractCallback& callback) {
  callback.ForgetRefusal();
  std::vector<DWORD> plain;
  SEVENZIPFILEFULLINFO info;
  m_bPlainOnly = true;
  for (m_nCurrent = m_nNext; m_nCurrent < m_nItemCount; ++m_nCurrent) {
    const bool isRead = GetFileFullInfo(info);
    if (!isRead || RouteInRun(info.strPath, frame::IsFolderItem(info)).IsPassOver()) continue;
    if (!IsEncrypted(m_nCurrent)) {
      plain.push_back(m_nCurrent);
      continue;
    }
    BeginItem(info);
    m_pRoot->Report().Tell(morvunp::ItemResult::kFailed, morvunp::ItemReason::kNoPassword);
  }
  return m_pEngine->Archive()->Extract(plain.data(), static_cast<DWORD>(plain.size()), 0,
                                       &callback);
}

/// The items that an engine which ended early has not come to.
bool C7zUnpacker::TellRest(morvunp::RunReport end) {
  const bool isCut = end.reason != morvunp::ItemReason::kNone && !m_pRoot->Report().HasEnough();
  // The engine asks for a password before it comes to the item that wants it.
  bool isAsked = end.reason == morvunp::ItemReason::kNoPassword;
  SEVENZIPFILEFULLINFO info;
  while (isCut && m_state.m_reportItem && m_nNext < m_nItemCount) {
    m_nCurrent = m_nNext++;
    const bool isRead = GetFileFullInfo(info);
    if (!isRead || RouteInRun(info.strPath, frame::IsFolderItem(info)).IsPassOver()) continue;
    if (m_bPlainOnly && IsEncrypted(m_nCurrent)) continue;
    if (std::exchange(isAsked, false)) {
      BeginItem(info);
      m_pRoot->Report().Tell(morvunp::ItemResult::kFailed, end.reason);
      continue;
    }
    m_pRoot->Report().TellNotReached({m_nCurrent, info.strPath, info.nSize}, end.reason);
  }
  if (!isCut && !m_bRouterEnded) end.reason = GetWalkProblem();
  return m_pRoot->TellEnd(end);
}

// Many items.

bool C7zUnpacker::UnpackFolder(const std::wstring& folder, const std::wstring& target) {
  std::vector<DWORD> indices;
  m_nMode = kFolderRun;
  m_strFolder = folder;
  m_strTarget = target;
  FindItem([&](const SEVENZIPFILESHORTINFO& info) {
    if (PlaceInRun(info.strPath, frame::IsFolderItem(info))) indices.push_back(m_nCurrent);
    return false;
  });
  return RunOverItems(indices.data(), static_cast<DWORD>(indices.size()), target);
}

bool C7zUnpacker::UnpackArchive(const std::wstring& target) {
  m_nMode = kArchiveRun;
  return RunOverItems(nullptr, sevenzip::kAllItems, target);
}

bool C7zUnpacker::UnpackItems(const std::wstring& target, const morvunp::ItemRouter& router) {
  m_nMode = kRoutedRun;
  m_routes.clear();
  m_bRouterEnded = false;
  std::vector<DWORD> indices;
  // Before it begins the engine wants to know all items that are wanted.
  FindItem([&](const SEVENZIPFILESHORTINFO& info) {
    sevenzip::Property size;
    m_pEngine->Archive()->GetProperty(m_nCurrent, sevenzip::kpidSize, size.Receive());
    const bool isFolder = frame::IsFolderItem(info);
    const morvunp::Route route =
        router({m_nCurrent, info.strPath, isFolder ? 0 : size.Number64(), isFolder});
    m_bRouterEnded = route.IsEnd();
    if (route.IsEnd() || route.IsPassOver()) return route.IsEnd();
    m_routes.emplace_back(m_nCurrent, route);
    indices.push_back(m_nCurrent);
    return false;
  });
  const bool isAtEnd = RunOverItems(indices.data(), static_cast<DWORD>(indices.size()), target);
  m_routes = {};
  m_bRouterEnded = false;
  return isAtEnd;
}

bool C7zUnpacker::RunOverItems(const DWORD* indices, DWORD count, const std::wstring& target) {
  m_state.m_bCancel = 0;
  m_state.m_bStopRequest = 0;
  m_bReplaceCancelled = 0;
  m_bPlainOnly = false;
  m_bFolderInHand = false;
  m_strTarget = target;
  m_nNext = 0;
  if (m_pEngine->Archive() == nullptr) return false;
  FindFile();
  output::Root root = RootAt(m_strTarget);
  const frame::Lent lent(m_pRoot, root);
  const auto callback = sevenzip::Create<sevenzip::C7zExtractCallback>();
  callback->Init(m_pEngine->Archive(), root, *this);
  return RunExtract(indices, count, *callback.Get());
}

/// Where an item goes in the run in hand; none when it does not belong to it.
std::optional<morvunp::OutputPlace> C7zUnpacker::PlaceInRun(const std::wstring& path,
                                                            bool isFolder) const {
  return m_nMode == kFolderRun
             ? morvunp::PlaceInFolderRun(m_state.m_iniUnpack, m_strFolder, path, isFolder,
                                         m_strTarget)
             : morvunp::PlaceInArchiveRun(m_state.m_iniUnpack, path, isFolder, m_strTarget);
}

/// What becomes of the current item in the run in hand.
morvunp::Route C7zUnpacker::RouteInRun(const std::wstring& path, bool isFolder) const {
  if (m_nMode != kRoutedRun) return output::RouteTo(PlaceInRun(path, isFolder));
  const auto route =
      std::lower_bound(m_routes.begin(), m_routes.end(), m_nCurrent,
                       [](const auto& left, DWORD index) { return left.first < index; });
  const bool isWanted = route != m_routes.end() && route->first == m_nCurrent;
  return isWanted ? route->second : morvunp::Route::PassOver();
}

/// Makes an item current and prepares it for writing where it goes.
bool C7zUnpacker::ProcessItem(DWORD index) {
  m_nCurrent = index;
  m_nNext = index + 1;
  m_bHasCurrent = true;
  SEVENZIPFILEFULLINFO info;
  if (!GetFileFullInfo(info)) return false;
  const bool isFolder = frame::IsFolderItem(info);
  m_bFolderInHand = isFolder;
  const morvunp::Route route = RouteInRun(info.strPath, isFolder);
  if (route.IsPassOver()) return false;
  BeginItem(info);
  if (route.Sink() != nullptr) {
    const bool isBegun =
        m_pRoot->BeginSink(*route.Sink(), {index, info.strPath, m_nTotal, isFolder});
    if (!isBegun) return false;
    if (!isFolder) BeginFile(std::wstring(frame::NameOf(info.strPath)));
    return !isFolder;
  }
  if (!IsSafe(info.strPath)) return RefuseName();
  const auto place = m_nMode == kRoutedRun ? m_pRoot->Admit(route.Place(), isFolder)
                                           : std::optional(route.Place());
  if (!place) return false;
  if (place->name.empty()) return m_pRoot->MakeFolder(place->folder);
  m_strCurrentName = place->name;
  m_strCurrentFolder = place->folder;
  return ProcessUnpackCurrentFile(place->name, place->folder);
}

bool C7zUnpacker::ProcessUnpackFolder(const std::wstring&, const std::wstring&, DWORD index) {
  return ProcessItem(index);
}

bool C7zUnpacker::ProcessUnpackArchive(const std::wstring&, DWORD index) {
  return ProcessItem(index);
}

bool C7zUnpacker::ProcessUnpackCurrentFile(const std::wstring& name, const std::wstring& folder) {
  m_strOutputPath = frame::Join(folder, name);
  m_bReplaceCancelled = 0;
  m_state.m_bCancel = 0;
  if (!m_pRoot->Enter({folder, name})) return false;
  const output::Root::Answer answer = m_pRoot->Decide();
  if (answer == output::Root::Answer::kWrite) {
    BeginFile(name);
    return true;
  }
  // A file that cannot be created ends the run as well, unless it is to go on.
  const bool isEnd = answer == output::Root::Answer::kFailed && !m_pRoot->Report().GoesOn();
  m_bReplaceCancelled = isEnd ? 1 : m_state.m_bCancel;
  return false;
}
