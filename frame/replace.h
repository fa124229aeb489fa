// May a file be written where one exists? The decision that every unpacker
// takes first.
#pragma once

#include <string>

#include "morvunp/unpackstate.h"

namespace frame {

/// What the replace dialog tells of the archive's item.
struct NewFile {
  ULONGLONG nSize = 0;
  __time64_t timeModified = 0;
};

/// What a class does with a protected file that is to be replaced.
enum class Protection { kClear, kLeave };

/// Decides for the path `target`, asking when the settings say so. True: write
/// (a protected file has lost its read-only, hidden and system attributes
/// unless `protection` says to leave them). False: do not; m_bCancel is set
/// when the user chose Cancel. Yes To All is kept in m_iniYesToAll.
bool MayWrite(CUnpackState& state, const std::wstring& target, const NewFile& item,
              Protection protection);

/// Creates the output file of `item` at `target`, deciding first where
/// something exists. Never writes through a symbolic link. Null result:
/// INVALID_HANDLE_VALUE. Close with CloseHandle.
HANDLE CreateOutputFile(CUnpackState& state, const std::wstring& target, const NewFile& item);

/// The same for runs that end when a file cannot be created: `isDeclined` tells
/// whether a missing file is due to the decision.
HANDLE CreateOutputFile(CUnpackState& state, const std::wstring& target, const NewFile& item,
                        bool& isDeclined);

/// Creates or truncates the file of a decision that was taken before.
HANDLE ReplaceOutputFile(const std::wstring& target);

}  // namespace frame
