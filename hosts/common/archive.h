// An open archive of any format, and the reason when there is none.
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <type_traits>
#include <utility>
#include <variant>

#include "hosts/common/itemproblems.h"
#include "hosts/common/itemrecord.h"
#include "hosts/common/passwordanswer.h"
#include "morvunp/morvunp.h"

namespace host {

/// The object of the format that knew the archive; never null.
/// RAR and 7z come last: their archives may follow a program, so that they are
/// also found inside files of other formats.
using Archive = std::variant<std::unique_ptr<CCabUnpacker>, std::unique_ptr<CIsoUnpacker>,
#if MORVUNP_HAS_RAR
                             std::unique_ptr<CRarUnpacker>,
#endif
                             std::unique_ptr<C7zUnpacker>>;

/// What an unpacker is told before it opens an archive. The windows are not
/// owned and must outlive the archive; null when nothing is unpacked.
struct ArchiveSetup {
  INIUNPACK settings{};
  CWnd* fileTree = nullptr;
  HWND progressWindow = nullptr;
  /// Told what became of each item.
  morvunp::ItemReportFunction onItem{};
  PasswordAnswer* password = nullptr;
  /// Told of each password that was wrong before another one is asked for.
  std::function<void(const Reason&)> onWrongPassword{};
};

/// Prepares an open archive for another run; standing answers are forgotten.
/// The password stays as it was.
void SetUpArchive(Archive& archive, const ArchiveSetup& setup);

/// Why an archive cannot be opened.
struct OpenError {
  Reason reason;
  /// The user did not want to give its password.
  bool wasCancelled = false;
};

/// Opens the file at `path`, a path of this system. Throws OpenError when it is
/// no archive that can be used.
Archive OpenArchiveFile(const std::string& path, const ArchiveSetup& setup);

/// What is missing from the archive; none when nothing is. Ask behind a walk.
std::optional<Reason> ReasonOfGap(Archive& archive);

/// The library's text about the whole archive.
std::wstring SummaryOf(Archive& archive);
/// The library's text about the item at `path`.
std::wstring SummaryOf(Archive& archive, const std::wstring& path, bool isFolder);

/// Calls `operation` with the unpacker object itself.
template <class Operation>
auto WithUnpacker(Archive& archive, Operation operation) {
  return std::visit([&](auto& unpacker) { return operation(*unpacker); }, archive);
}

/// Walks the records of all items, those of split files put together.
template <class Record, class U, class Visit>
void WalkWholeItems(U& unpacker, Visit visit) {
  if constexpr (requires(Record record) { AddPart(record, record); }) {
    Record whole;
    bool hasWhole = false;
    bool goesOn = true;
    morvunp::WalkItems<Record>(unpacker, [&](const Record& record) {
      if (hasWhole && IsContinuation(record)) {
        AddPart(whole, record);
        return true;
      }
      if (hasWhole) goesOn = visit(whole);
      whole = record;
      hasWhole = true;
      return goesOn;
    });
    if (hasWhole && goesOn) visit(whole);
  } else {
    morvunp::WalkItems<Record>(unpacker, visit);
  }
}

/// Walks all items and calls `visit(const Item&)` until it returns false.
template <class Visit>
void ForEachItem(Archive& archive, Visit visit) {
  WithUnpacker(archive, [&](auto& unpacker) {
    using Record = typename std::remove_cvref_t<decltype(unpacker)>::FullInfo;
    std::uint64_t position = 0;
    WalkWholeItems<Record>(unpacker, [&](const Record& record) {
      Item item = ItemOf(record);
      item.position = position++;
      return visit(item);
    });
  });
}

}  // namespace host
