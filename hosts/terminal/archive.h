// An open archive of any format, and the reason when there is none.
#pragma once

#include <memory>
#include <string>
#include <type_traits>
#include <utility>
#include <variant>

#include "itemrecord.h"
#include "morvunp/morvunp.h"

namespace terminal {

/// The object of the format that knew the archive; never null.
using Archive = std::variant<std::unique_ptr<CCabUnpacker>, std::unique_ptr<CIsoUnpacker>>;

/// What an unpacker is told before it opens an archive. The windows are not
/// owned and must outlive the archive; null when nothing is unpacked.
struct ArchiveSetup {
  INIUNPACK settings;
  CWnd* fileTree = nullptr;
  HWND progressWindow = nullptr;
};

/// Opens the file at `path`, a path of this system. Throws CommandError with
/// the reason when it is no archive that can be used.
Archive OpenArchiveFile(const std::string& path, const ArchiveSetup& setup);

/// kExitComplete when the list of items is all that the archive holds;
/// otherwise says that it is cut or damaged and gives kExitIncomplete.
int CheckComplete(Archive& archive, const std::string& path);

/// Calls `operation` with the unpacker object itself.
template <class Operation>
auto WithUnpacker(Archive& archive, Operation operation) {
  return std::visit([&](auto& unpacker) { return operation(*unpacker); }, archive);
}

/// Walks all items and calls `visit(const Item&)` until it returns false.
template <class Visit>
void ForEachItem(Archive& archive, Visit visit) {
  WithUnpacker(archive, [&](auto& unpacker) {
    using Record = typename std::remove_cvref_t<decltype(unpacker)>::FullInfo;
    WalkItems<Record>(unpacker, [&](const Record& record) { return visit(ItemOf(record)); });
  });
}

}  // namespace terminal
