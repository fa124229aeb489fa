#include "frame/replace.h"

#include <array>

#include "frame/confirmreplace.h"
#include "frame/itempath.h"
#include "frame/summary.h"

namespace frame {
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

std::wstring SizeLine(ULONGLONG size) { return L"size: " + FormatOfNumber64(size) + L" bytes"; }

std::wstring TimeLine(__time64_t time) { return L"modified: " + LocalTimeText(time, L"%x, %X"); }

void DescribeExisting(CConfirmReplace& dialog, const std::wstring& target) {
  WIN32_FIND_DATAW found;
  const HANDLE search = FindFirstFileW(target.c_str(), &found);
  if (search == INVALID_HANDLE_VALUE) return;
  FindClose(search);
  dialog.m_strOldSize = SizeLine(ULONGLONG{found.nFileSizeHigh} << 32 | found.nFileSizeLow);
  dialog.m_strOldModified = TimeLine(platform::SecondsOfFileTime(found.ftLastWriteTime));
}

INT_PTR Ask(const Kind& kind, const std::wstring& target, const NewFile& item) {
  CConfirmReplace dialog;
  dialog.m_strMessage = kind.message;
  dialog.m_strFileName = L"'" + std::wstring(NameOf(target)) + L"'.";
  dialog.m_strPath = target;
  DescribeExisting(dialog, target);
  dialog.m_strNewSize = SizeLine(item.nSize);
  dialog.m_strNewModified = TimeLine(item.timeModified);
  return dialog.DoModal();
}

/// True when the answer is to write.
bool Confirmed(CUnpackState& state, const Kind& kind, const std::wstring& target,
               const NewFile& item) {
  if (state.m_iniYesToAll.*kind.answer != 0 || state.m_iniUnpack.bConfirmReplace == 0) return true;
  if (GetFileAttributesW(target.c_str()) == INVALID_FILE_ATTRIBUTES) return true;
  switch (Ask(kind, target, item)) {
    case CConfirmReplace::kYesToAll:
      state.m_iniYesToAll.*kind.answer = 1;
      return true;
    case CConfirmReplace::kNo:
      return false;
    case CConfirmReplace::kCancel:
      state.m_bCancel = 1;
      return false;
    default:
      return true;
  }
}

HANDLE OpenForWriting(const std::wstring& target, DWORD disposition) {
  return CreateFileW(target.c_str(), GENERIC_WRITE, 0, nullptr, disposition,
                     FILE_ATTRIBUTE_NORMAL | FILE_FLAG_OPEN_REPARSE_POINT, nullptr);
}

}  // namespace

bool MayWrite(CUnpackState& state, const std::wstring& target, const NewFile& item,
              Protection protection) {
  const DWORD attributes = GetFileAttributesW(target.c_str());
  if (attributes == INVALID_FILE_ATTRIBUTES) return true;
  // Writing would go to wherever a link leads, and a folder cannot be replaced
  // whatever the answer.
  if ((attributes & (FILE_ATTRIBUTE_REPARSE_POINT | FILE_ATTRIBUTE_DIRECTORY)) != 0) return false;
  if (!Confirmed(state, KindOf(attributes), target, item)) return false;
  if (protection == Protection::kClear && (attributes & kProtective) != 0) {
    SetFileAttributesW(target.c_str(), attributes & ~kProtective);
  }
  return true;
}

HANDLE CreateOutputFile(CUnpackState& state, const std::wstring& target, const NewFile& item) {
  bool isDeclined = false;
  return CreateOutputFile(state, target, item, isDeclined);
}

HANDLE CreateOutputFile(CUnpackState& state, const std::wstring& target, const NewFile& item,
                        bool& isDeclined) {
  isDeclined = false;
  // Most files are new, and creating one exclusively tells so in one call.
  const HANDLE fresh = OpenForWriting(target, CREATE_NEW);
  if (fresh != INVALID_HANDLE_VALUE || GetLastError() != ERROR_FILE_EXISTS) return fresh;
  isDeclined = !MayWrite(state, target, item, Protection::kClear);
  return isDeclined ? INVALID_HANDLE_VALUE : ReplaceOutputFile(target);
}

HANDLE ReplaceOutputFile(const std::wstring& target) {
  return OpenForWriting(target, CREATE_ALWAYS);
}

}  // namespace frame
