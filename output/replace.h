// May a file be written where one exists? The question that every unpacker
// puts first, to the host's function or by the dialog.
#pragma once

#include <string>

#include "morvunp/unpackstate.h"
#include "output/report.h"
#include "platform/below.h"

namespace morvunp::output {

/// Decides about the file `found` at the path `target`, asking when the
/// settings say so. m_bCancel is set when the user chose Cancel. Yes To All is
/// kept in m_iniYesToAll.
morvunp::ExistingFileAnswer DecideAbout(CUnpackState& state, const std::wstring& target,
                                        const platform::FoundFile& found, const Item& item);

/// The existing file is read-only, hidden or system.
bool IsProtected(const platform::FoundFile& found);

}  // namespace morvunp::output
