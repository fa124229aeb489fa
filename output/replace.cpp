#include "output/replace.h"

#include <array>

#include "frame/confirmreplace.h"
#include "frame/itempath.h"
#include "frame/summary.h"

namespace morvunp::output {
namespace {

constexpr DWORD kProtective =
    FILE_ATTRIBUTE_SYSTEM | FILE_ATTRIBUTE_READONLY | FILE_ATTRIBUTE_HIDDEN;

/// A kind of existing file. The attribute 0 matches every file.
struct Kind {
  DWORD attribute;
  LPCWSTR message;
  BYTE INIYESTOALL::*answer;
};

constexpr std::array<Kind, 4> kKinds{{
    {FILE_ATTRIBUTE_SYSTEM, L"This folder already contains a system file named",
     &INIYESTOALL::bYesToAllSystem},
    {FILE_ATTRIBUTE_READONLY, L"This folder already contains a read-only file named",
     &INIYESTOALL::bYesToAllReadOnly},
    {FILE_ATTRIBUTE_HIDDEN, L"This folder already contains a hidden file named",
     &INIYESTOALL::bYesToAllHidden},
    {0, L"This folder already contains a file named", &INIYESTOALL::bYesToAllNormal},
}};

const Kind& KindOf(DWORD attributes) {
  for (const Kind& kind : kKinds) {
    if ((attributes & kind.attribute) != 0) return kind;
  }
  return kKinds.back();
}

std::wstring SizeLine(ULONGLONG size) {
  return L"size: " + frame::FormatOfNumber64(size) + L" bytes";
}

std::wstring TimeLine(__time64_t time) {
  return L"modified: " + frame::LocalTimeText(time, L"%x, %X");
}

INT_PTR Ask(const Kind& kind, const std::wstring& target, const platform::FoundFile& found,
            const Item& item) {
  frame::CConfirmReplace dialog;
  dialog.m_strMessage = kind.message;
  dialog.m_strFileName = L"'" + std::wstring(frame::NameOf(target)) + L"'.";
  dialog.m_strPath = target;
  dialog.m_strOldSize = SizeLine(found.size);
  dialog.m_strOldModified = TimeLine(platform::SecondsOfFileTime(found.lastWrite));
  dialog.m_strNewSize = SizeLine(item.size);
  dialog.m_strNewModified = TimeLine(item.timeModified);
  return dialog.DoModal();
}

}  // namespace

bool IsProtected(const platform::FoundFile& found) { return (found.attributes & kProtective) != 0; }

namespace {

/// False: keep it.
bool MayReplace(CUnpackState& state, const std::wstring& target, const platform::FoundFile& found,
                const Item& item) {
  const Kind& kind = KindOf(found.attributes);
  if (state.m_iniYesToAll.*kind.answer != 0 || state.m_iniUnpack.bConfirmReplace == 0) return true;
  switch (Ask(kind, target, found, item)) {
    case frame::CConfirmReplace::kYesToAll:
      state.m_iniYesToAll.*kind.answer = 1;
      return true;
    case frame::CConfirmReplace::kNo:
      return false;
    case frame::CConfirmReplace::kCancel:
      state.m_bCancel = 1;
      return false;
    default:
      return true;
  }
}

}  // namespace

ExistingFileAnswer DecideAbout(CUnpackState& state, const std::wstring& target,
                               const platform::FoundFile& found, const Item& item) {
  using What = ExistingFileAnswer::What;
  const ExistingFileFunction& ask = state.m_options.onExistingFile;
  if (!ask) return {MayReplace(state, target, found, item) ? What::kWrite : What::kKeep};
  ExistingFileAnswer answer = ask({target, found.size, found.lastWrite, found.attributes,
                                   item.position, item.path, item.size, item.timeModified});
  if (answer.what == What::kCancel) state.m_bCancel = 1;
  return answer;
}

}  // namespace morvunp::output
